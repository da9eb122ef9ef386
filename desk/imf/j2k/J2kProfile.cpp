#include "desk/imf/j2k/J2kProfile.h"

#include "desk/imf/mxf/Ul.h"

#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <functional>

namespace desk::imf
{

namespace
{

using Mode = J2kSettings::Mode;

constexpr int highestMainLevel = 11;
/// Samples of all components a second, in millions, by main level (ISO/IEC 15444-1:2004/Amd 8).
constexpr double megasamples[highestMainLevel + 1] = {0, 65, 130, 195, 260, 520, 1200, 2400, 4800, 9600, 19200, 38400};
/// Highest sub level a main level allows.
constexpr int highestSubLevel[highestMainLevel + 1] = {0, 1, 1, 1, 2, 3, 4, 5, 6, 7, 8, 9};

/// A family of profiles: how its capability word and its label start, and what Application 2E lets it hold.
struct Family {
    Mode mode;
    int maxWidth;
    int maxHeight;
    int maxMainLevel;
    quint16 rsizBase;
    std::uint8_t labelByte;
};

const Family families[] = {
    {Mode::Lossy, 2048, 1556, 6, 0x0400, 0x02},      {Mode::Lossy, 4096, 3112, 8, 0x0500, 0x03},
    {Mode::Lossy, 8192, 6224, 11, 0x0600, 0x04},     {Mode::Reversible, 2048, 1556, 6, 0x0700, 0x05},
    {Mode::Reversible, 4096, 3112, 8, 0x0800, 0x06}, {Mode::Reversible, 8192, 6224, 11, 0x0900, 0x07},
};

enum RateSet { BroadcastRates, UhdRates, CinemaRates };

const Rational rateTable[] = {{25, 1}, {30, 1}, {30000, 1001}, {24, 1}, {24000, 1001},
                              {50, 1}, {60, 1}, {60000, 1001}, {120, 1}};
constexpr int rateCounts[] = {3, 8, 9};

constexpr unsigned bit(Colour colour)
{
    return 1U << unsigned(colour);
}

constexpr unsigned bit(Sampling sampling)
{
    return 1U << unsigned(sampling);
}

constexpr unsigned sdColours = bit(Colour::Bt601_625) | bit(Colour::Bt601_525) | bit(Colour::Bt709);
constexpr unsigned fullSampling = bit(Sampling::YCbCr444) | bit(Sampling::Rgb444);

/// One row of the image characteristics of Application 2E (ST 2067-21:2020, progressive ones).
struct Application {
    int maxWidth;
    int maxHeight;
    unsigned colours;
    QVector<int> depths;
    RateSet rates;
    unsigned samplings;
};

const QVector<Application>& applications()
{
    static const QVector<Application> rows = {
        {1920, 1080, sdColours, {8, 10}, BroadcastRates, bit(Sampling::YCbCr422)},
        {1920, 1080, sdColours, {8, 10}, BroadcastRates, fullSampling},
        {3840, 2160, bit(Colour::XvYcc), {8, 10}, UhdRates, bit(Sampling::YCbCr422)},
        {3840, 2160, bit(Colour::Bt709), {8, 10, 12, 16}, UhdRates, bit(Sampling::YCbCr422)},
        {3840, 2160, bit(Colour::Bt2020) | bit(Colour::Bt2020Hlg), {10, 12}, UhdRates, bit(Sampling::YCbCr422)},
        {3840, 2160, bit(Colour::Bt2020Pq), {10, 12, 16}, UhdRates, bit(Sampling::YCbCr422)},
        {4096, 3112, bit(Colour::Bt709), {8, 10, 12, 16}, CinemaRates, bit(Sampling::Rgb444)},
        {4096, 3112, bit(Colour::Bt2020) | bit(Colour::Bt2020Hlg), {10, 12}, CinemaRates, bit(Sampling::Rgb444)},
        {4096, 3112, bit(Colour::P3D65Pq) | bit(Colour::Bt2020Pq), {10, 12, 16}, CinemaRates, bit(Sampling::Rgb444)},
    };
    return rows;
}

bool hasRate(RateSet set, Rational rate)
{
    return std::find(rateTable, rateTable + rateCounts[set], rate) != rateTable + rateCounts[set];
}

/// A property of a picture, asked in this order; the first that no row is left for is the one to blame.
struct Property {
    std::function<bool(const Application&, const PictureFormat&)> fits;
    std::function<QString(const PictureFormat&)> complaint;
};

const QVector<Property>& properties()
{
    static const QVector<Property> list = {
        {[](const Application& row, const PictureFormat& f) { return (row.colours & bit(f.colour)) != 0; },
         [](const PictureFormat&) { return QStringLiteral("the colour system is none that Application 2E knows"); }},
        {[](const Application& row, const PictureFormat& f) {
             return (row.samplings & bit(f.sampling)) != 0 &&
                    (f.sampling == Sampling::Rgb444 || f.range == Range::Narrow);
         },
         [](const PictureFormat&) {
             return QStringLiteral("the sampling or range does not go with the colour system in Application 2E");
         }},
        {[](const Application& row, const PictureFormat& f) {
             return f.width <= row.maxWidth && f.height <= row.maxHeight;
         },
         [](const PictureFormat& f) {
             return QStringLiteral(
                        "a picture of %1x%2 is larger than Application 2E allows with this colour and sampling")
                 .arg(f.width)
                 .arg(f.height);
         }},
        {[](const Application& row, const PictureFormat& f) { return row.depths.contains(f.bitDepth); },
         [](const PictureFormat& f) {
             return QStringLiteral("%1 bits a component are not possible with this colour and sampling")
                 .arg(f.bitDepth);
         }},
        {[](const Application& row, const PictureFormat& f) { return hasRate(row.rates, f.frameRate); },
         [](const PictureFormat& f) {
             return QStringLiteral("%1/%2 frames a second are not possible with this size, colour and sampling")
                 .arg(f.frameRate.num)
                 .arg(f.frameRate.den);
         }},
    };
    return list;
}

Error refusal(const QString& what, const QString& next)
{
    return {{}, QStringLiteral("picture format"), QStringLiteral("ST 2067-21"), what, next};
}

Status checkApplication(const PictureFormat& format)
{
    if (format.width < 32 || format.height < 32)
        return refusal(QStringLiteral("a picture of %1x%2 is too small").arg(format.width).arg(format.height),
                       QStringLiteral("choose at least 32x32"));
    QVector<Application> left = applications();
    for (const Property& property : properties()) {
        const auto fits = [&](const Application& row) { return !property.fits(row, format); };
        left.erase(std::remove_if(left.begin(), left.end(), fits), left.end());
        if (left.isEmpty())
            return refusal(property.complaint(format), QStringLiteral("choose another picture format"));
    }
    return {};
}

double samplesPerSecond(const PictureFormat& format)
{
    const int chromaWidth = format.sampling == Sampling::YCbCr422 ? (format.width + 1) / 2 : format.width;
    return double(format.width + 2 * chromaWidth) * format.height * format.frameRate.toDouble();
}

double subLevelLimit(int subLevel)
{
    return 100.0 * double(1 << subLevel);
}

/// The levels are numbered through, main level by main level.
int levelNumber(int mainLevel, int subLevel)
{
    int number = 1 + subLevel;
    for (int level = 0; level < mainLevel; ++level)
        number += highestSubLevel[level] + 1;
    return number;
}

J2kProfile makeProfile(const Family& family, int mainLevel, int subLevel)
{
    const auto number = std::uint64_t(levelNumber(mainLevel, subLevel));
    const Ul label(0x060e2b340401010d, 0x0401020203010000 | std::uint64_t(family.labelByte) << 8 | number);
    J2kProfile profile;
    profile.mode = family.mode;
    profile.rsiz = quint16(family.rsizBase | subLevel << 4 | mainLevel);
    profile.mainLevel = mainLevel;
    profile.subLevel = subLevel;
    profile.pictureCoding = label.toBytes();
    return profile;
}

const Family& familyFor(const PictureFormat& format, Mode mode)
{
    return *std::find_if(std::begin(families), std::end(families), [&](const Family& family) {
        return family.mode == mode && format.width <= family.maxWidth && format.height <= family.maxHeight;
    });
}

} // namespace

Result<J2kProfile> chooseProfile(const PictureFormat& format, const J2kSettings& settings)
{
    if (const Status status = checkApplication(format); !status)
        return status.error();
    const bool lossy = settings.mode == Mode::Lossy;
    if (lossy && !(settings.megabitsPerSecond >= 1))
        return refusal(QStringLiteral("the bit rate is below 1 Mbit/s"), QStringLiteral("choose a higher bit rate"));
    const Family& family = familyFor(format, settings.mode);
    if (family.maxWidth > 2048 && format.width <= 2048)
        return refusal(
            QStringLiteral("a picture of %1x%2 is too high for the 2K profiles and too narrow for the 4K ones")
                .arg(format.width)
                .arg(format.height),
            QStringLiteral("choose another picture size"));
    for (int level = 1; level <= family.maxMainLevel; ++level) {
        if (megasamples[level] * 1e6 < samplesPerSecond(format))
            continue;
        int subLevel = lossy ? 1 : 0;
        while (lossy && subLevel <= highestSubLevel[level] && subLevelLimit(subLevel) < settings.megabitsPerSecond)
            ++subLevel;
        if (subLevel > highestSubLevel[level])
            continue;
        J2kProfile profile = makeProfile(family, level, subLevel);
        if (lossy)
            profile.maxFrameBytes =
                qint64(std::floor(settings.megabitsPerSecond * 125000 / format.frameRate.toDouble()));
        return profile;
    }
    return refusal(
        QStringLiteral("no level of the profile holds %1 Mbit/s at this size and rate").arg(settings.megabitsPerSecond),
        QStringLiteral("choose a lower bit rate or frame rate"));
}

Result<J2kProfile> profileOfLabel(const QByteArray& pictureCoding)
{
    const Ul label = pictureCoding.size() == 16 ? Ul::from(pictureCoding.constData()) : Ul();
    for (const Family& family : families) {
        for (int level = 0; level <= highestMainLevel; ++level) {
            for (int subLevel = 0; subLevel <= highestSubLevel[level]; ++subLevel) {
                J2kProfile profile = makeProfile(family, level, subLevel);
                if (label.matches(Ul::from(profile.pictureCoding.constData())))
                    return profile;
            }
        }
    }
    return Error{{}, QStringLiteral("picture coding"), {}, QStringLiteral("the label is none of the IMF profiles"), {}};
}

} // namespace desk::imf
