#include "desk/services/OutputFormat.h"

#include "StratacutUI/ImfDict.h"
#include "desk/services/MixMode.h"

#include <QHash>
#include <QMap>

#include <algorithm>
#include <array>
#include <tuple>

namespace desk::services
{

namespace
{
struct NamedRate {
    const char* name;
    Rational rate;
};

const std::array<NamedRate, 8> namedRates{{{"23.976", {24000, 1001}},
                                           {"24", {24, 1}},
                                           {"25", {25, 1}},
                                           {"29.97", {30000, 1001}},
                                           {"30", {30, 1}},
                                           {"50", {50, 1}},
                                           {"59.94", {60000, 1001}},
                                           {"60", {60, 1}}}};

constexpr std::array<std::pair<int, int>, 2> sizes{{{1920, 1080}, {2048, 1080}}};
/// Offered picture rates in 10^6 bits a second; the levels of a profile decide which of them a format can have.
constexpr std::array<int, 7> bitRates{50, 100, 150, 200, 250, 300, 400};

QStringList sizeNames()
{
    QStringList names;
    for (const auto& [width, height] : sizes)
        names += words::resolution(width, height);
    return names;
}

QStringList layoutNames()
{
    QStringList names;
    for (const MixMode& mode : layoutModes())
        names += QLatin1String(mode.name);
    return names;
}

QStringList compressions()
{
    return {words::compression(imf::J2kSettings::Mode::Lossy), words::compression(imf::J2kSettings::Mode::Reversible)};
}
} // namespace

namespace words
{
QString frameRate(Rational rate)
{
    for (const NamedRate& named : namedRates) {
        if (named.rate == rate)
            return QLatin1String(named.name);
    }
    return {};
}

Rational frameRate(const QString& name)
{
    for (const NamedRate& named : namedRates) {
        if (name == QLatin1String(named.name))
            return named.rate;
    }
    return {};
}

QStringList frameRates()
{
    QStringList names;
    for (const NamedRate& named : namedRates)
        names += QLatin1String(named.name);
    return names;
}

QString resolution(int width, int height)
{
    return QStringLiteral("%1x%2").arg(width).arg(height);
}

QString compression(imf::J2kSettings::Mode mode)
{
    return mode == imf::J2kSettings::Mode::Lossy ? QStringLiteral("JPEG 2000 lossy")
                                                 : QStringLiteral("JPEG 2000 reversible");
}

QString colour(imf::Colour colour)
{
    static const QMap<imf::Colour, QString> names{{imf::Colour::Bt601_625, QStringLiteral("BT.601 625")},
                                                  {imf::Colour::Bt601_525, QStringLiteral("BT.601 525")},
                                                  {imf::Colour::Bt709, QStringLiteral("BT.709")},
                                                  {imf::Colour::XvYcc, QStringLiteral("xvYCC")},
                                                  {imf::Colour::Bt2020, QStringLiteral("BT.2020")},
                                                  {imf::Colour::P3D65Pq, QStringLiteral("P3D65 PQ")},
                                                  {imf::Colour::Bt2020Pq, QStringLiteral("BT.2020 PQ")},
                                                  {imf::Colour::Bt2020Hlg, QStringLiteral("BT.2020 HLG")}};
    return names.value(colour, QLatin1String(unknown));
}

QString sampleRate(int hertz)
{
    return QStringLiteral("%1 kHz").arg(hertz / 1000.0);
}

QString profile(const imf::J2kProfile& profile)
{
    static const char* const bases[] = {"2K", "4K", "8K"};
    const int base = ((profile.rsiz >> 8) - 4) % 3;
    return QStringLiteral("%1, main level %2, sublevel %3")
        .arg(QLatin1String(base < 0 ? unknown : bases[base]))
        .arg(profile.mainLevel)
        .arg(profile.subLevel);
}
} // namespace words

imf::PictureFormat OutputFormat::picture() const
{
    imf::PictureFormat format;
    format.width = width;
    format.height = height;
    format.frameRate = rate;
    return format;
}

imf::J2kSettings OutputFormat::j2k() const
{
    return {mode, double(megabits)};
}

const QStringList& OutputFormat::keys()
{
    static const QStringList all{ImfDict::ApplicationPattern,
                                 ImfDict::Resolution,
                                 ImfDict::FrameRate,
                                 ImfDict::Colorimetry,
                                 ImfDict::ColorDepth,
                                 ImfDict::Compression,
                                 ImfDict::CompressionProfile,
                                 ImfDict::StereoscopicSettings,
                                 ImfDict::Format,
                                 ImfDict::SampleRate,
                                 ImfDict::BitDepth,
                                 ImfDict::AudioMix};
    return all;
}

QStringList OutputFormat::choices(const QString& parameter) const
{
    if (parameter == QLatin1String(ImfDict::CompressionProfile))
        return profileChoices();
    static const QHash<QString, QStringList> fixed{
        {ImfDict::ApplicationPattern, {words::application}},
        {ImfDict::Compression, compressions()},
        {ImfDict::Resolution, sizeNames()},
        {ImfDict::FrameRate, words::frameRates()},
        {ImfDict::Colorimetry, {words::colour(imf::Colour::Bt709)}},
        {ImfDict::ColorDepth, {QStringLiteral("10")}},
        {ImfDict::StereoscopicSettings, {words::monoscopic}},
        {ImfDict::BitDepth, {QStringLiteral("24")}},
        {ImfDict::Format, {words::pcm}},
        {ImfDict::SampleRate, {words::sampleRate(48000)}},
        {ImfDict::AudioMix, layoutNames()},
    };
    return fixed.value(parameter);
}

QString OutputFormat::profileName(int bitRate) const
{
    const auto profile = imf::chooseProfile(picture(), {mode, double(bitRate)});
    if (!profile)
        return {};
    const QString name = words::profile(*profile);
    return mode == imf::J2kSettings::Mode::Reversible ? name : QStringLiteral("%1, %2 Mbit/s").arg(name).arg(bitRate);
}

QStringList OutputFormat::profileChoices() const
{
    if (mode == imf::J2kSettings::Mode::Reversible)
        return {profileName(megabits)};
    QStringList names;
    for (int bitRate : bitRates) {
        const QString name = profileName(bitRate);
        if (!name.isEmpty())
            names += name;
    }
    return names;
}

QString OutputFormat::value(const QString& parameter) const
{
    if (parameter == QLatin1String(ImfDict::Compression))
        return words::compression(mode);
    if (parameter == QLatin1String(ImfDict::Resolution))
        return words::resolution(width, height);
    if (parameter == QLatin1String(ImfDict::FrameRate))
        return words::frameRate(rate);
    if (parameter == QLatin1String(ImfDict::CompressionProfile))
        return profileName(megabits);
    if (parameter == QLatin1String(ImfDict::AudioMix))
        return audioMix.isEmpty() ? QLatin1String(layoutModes().at(1).name) : audioMix;
    return choices(parameter).value(0);
}

bool OutputFormat::set(const QString& parameter, const QString& value)
{
    const int position = choices(parameter).indexOf(value);
    if (position < 0)
        return false;
    if (parameter == QLatin1String(ImfDict::Compression))
        mode = position == 0 ? imf::J2kSettings::Mode::Lossy : imf::J2kSettings::Mode::Reversible;
    else if (parameter == QLatin1String(ImfDict::Resolution))
        std::tie(width, height) = sizes[std::size_t(position)];
    else if (parameter == QLatin1String(ImfDict::FrameRate))
        rate = words::frameRate(value);
    else if (parameter == QLatin1String(ImfDict::AudioMix))
        audioMix = value;
    else if (parameter == QLatin1String(ImfDict::CompressionProfile) && mode == imf::J2kSettings::Mode::Lossy)
        megabits = *std::find_if(bitRates.begin(), bitRates.end(), [&](int r) { return profileName(r) == value; });
    settleBitRate();
    return true;
}

void OutputFormat::settleBitRate()
{
    if (!profileName(megabits).isEmpty())
        return;
    const auto fits = std::find_if(bitRates.rbegin(), bitRates.rend(),
                                   [this](int r) { return r < megabits && !profileName(r).isEmpty(); });
    if (fits != bitRates.rend())
        megabits = *fits;
}

QJsonObject OutputFormat::toJson() const
{
    QJsonObject json;
    for (const QString& parameter : keys())
        json.insert(parameter, value(parameter));
    json.insert(QLatin1String(ImfDict::AudioMapping), mapping);
    return json;
}

OutputFormat OutputFormat::fromJson(const QJsonObject& json)
{
    OutputFormat format;
    for (const QString& parameter : keys())
        format.set(parameter, json.value(parameter).toString());
    format.mapping = json.value(QLatin1String(ImfDict::AudioMapping)).toArray();
    return format;
}

} // namespace desk::services
