#include "desk/services/MixMode.h"

#include "desk/imf/mxf/Labels.h"

#include <algorithm>

namespace desk::services
{

namespace
{
constexpr MixMode mono{"Mono", "sgM", MixRule::Sum};
constexpr MixMode stereo{"Stereo", "sgST", MixRule::Place};
constexpr MixMode surround30{"3.0", "sg30", MixRule::Route};
constexpr MixMode surround40{"4.0", "sg40", MixRule::Route};
constexpr MixMode surround50{"5.0", "sg50", MixRule::Route};
constexpr MixMode surround51{"5.1", "sg51", MixRule::Route};
constexpr MixMode surround60{"6.0", "sg60", MixRule::Route};
constexpr MixMode surround61{"6.1", "sg61", MixRule::Route};
constexpr MixMode surround70{"7.0", "sg70", MixRule::Route};
constexpr MixMode surround71{"7.1", "sg71", MixRule::Route};
constexpr MixMode surround71Sds{"7.1 SDS", "sgSDS", MixRule::Route};
} // namespace

QVector<QString> MixMode::channels() const
{
    return imf::findSoundfield(QLatin1String(soundfield))->channelSymbols();
}

const QVector<MixMode>& mixModes()
{
    // What a soundfield is called when it is read back is the first mode that makes it.
    static const QVector<MixMode> modes{mono,
                                        stereo,
                                        {"5.1 to Stereo", "sgST", MixRule::Downmix},
                                        {"Dual Mono", "sgDM", MixRule::Route},
                                        {"Lt-Rt", "sgLtRt", MixRule::Route},
                                        surround30,
                                        surround40,
                                        surround50,
                                        surround51,
                                        surround60,
                                        surround61,
                                        surround70,
                                        surround71,
                                        surround71Sds,
                                        {"Discrete", "sgDNS", MixRule::Number}};
    return modes;
}

QStringList mixModeNames()
{
    QStringList names;
    for (const MixMode& mode : mixModes())
        names += QLatin1String(mode.name);
    return names;
}

const MixMode* findMixMode(const QString& name)
{
    const auto& modes = mixModes();
    const auto found =
        std::find_if(modes.begin(), modes.end(), [&](const MixMode& mode) { return name == QLatin1String(mode.name); });
    return found == modes.end() ? nullptr : &*found;
}

const QVector<MixMode>& layoutModes()
{
    static const QVector<MixMode> modes{mono,       stereo,     surround30, surround40, surround50,   surround51,
                                        surround60, surround61, surround70, surround71, surround71Sds};
    return modes;
}

const QVector<MixMode>& plainLayoutModes()
{
    static const QVector<MixMode> modes{mono, stereo, surround51, surround71};
    return modes;
}

} // namespace desk::services
