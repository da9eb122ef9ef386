#include "imf/support/TinyTracks.h"

#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/Labels.h"

#include <cmath>

namespace tinytracks
{

using namespace desk;
using namespace desk::imf;

PictureFormat format(Rational frameRate)
{
    PictureFormat format;
    format.width = 320;
    format.height = 180;
    format.frameRate = frameRate;
    return format;
}

Picture picture(const PictureFormat& format, int n)
{
    const int scale = 1 << (format.bitDepth - 8);
    Picture picture;
    for (int plane = 0; plane < 3; ++plane) {
        const bool half = plane > 0 && format.sampling == Sampling::YCbCr422;
        const int width = half ? (format.width + 1) / 2 : format.width;
        for (int y = 0; y < format.height; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool box = (x - 4 * n) % width < 24 && y > 40 && y < 90;
                const int level = box ? 220 - 20 * plane : 16 + (x + 3 * y + 7 * n) % 200;
                picture.planes[std::size_t(plane)].push_back(std::uint16_t(level * scale));
            }
        }
    }
    return picture;
}

std::vector<std::int32_t> samples(int channels, qint64 first, qint64 count)
{
    std::vector<std::int32_t> values;
    for (qint64 i = first; i < first + count; ++i) {
        for (int channel = 0; channel < channels; ++channel)
            values.push_back(std::int32_t(std::lround(8388607 * std::sin(double(i) * (channel + 1) * 0.0131))));
    }
    return values;
}

SoundFormat sound(const QString& soundfield)
{
    SoundFormat format;
    format.soundfield = soundfield;
    const auto symbols = findSoundfield(soundfield)->channelSymbols();
    for (const QString& symbol : symbols)
        format.channels.append({symbol});
    format.language = QStringLiteral("en-US");
    format.title = QStringLiteral("Tiny tracks");
    return format;
}

Result<TrackFileInfo> writePicture(const QString& path, int frames, J2kSettings settings, Rational frameRate)
{
    const PictureFormat pictureFormat = format(frameRate);
    const auto profile = chooseProfile(pictureFormat, settings);
    if (!profile)
        return profile.error();
    auto writer = PictureTrackWriter::create({path, {}, frames}, pictureFormat, *profile);
    if (!writer)
        return writer.error();
    for (int n = 0; n < frames; ++n) {
        const auto codestream = encodeFrame(picture(pictureFormat, n), pictureFormat, *profile);
        if (!codestream)
            return codestream.error();
        if (const Status status = (*writer)->append(*codestream); !status)
            return status.error();
    }
    return (*writer)->finish();
}

Result<TrackFileInfo> writeSound(const QString& path, qint64 count, const QString& soundfield)
{
    const SoundFormat soundFormat = sound(soundfield);
    auto writer = SoundTrackWriter::create({path, {}, count}, soundFormat);
    if (!writer)
        return writer.error();
    const auto values = samples(soundFormat.channels.size(), 0, count);
    if (const Status status = (*writer)->append(values.data(), count); !status)
        return status.error();
    return (*writer)->finish();
}

} // namespace tinytracks
