#pragma once

#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/SoundFormat.h"
#include "desk/imf/j2k/J2kProfile.h"
#include "desk/imf/mxf/TrackFileWriter.h"

#include <QString>
#include <QVector>

#include <cstdint>
#include <vector>

/// Small picture and sound track files with known contents, made in a fraction of a second.
namespace tinytracks
{

/// 320x180 4:2:2 10-bit BT.709.
desk::imf::PictureFormat format(desk::Rational frameRate = {24, 1});
/// Frame `n`: ramps and a box that moves, within narrow range.
desk::imf::Picture picture(const desk::imf::PictureFormat& format, int n);
/// `count` interleaved samples from `first`: another sine a channel.
std::vector<std::int32_t> samples(int channels, qint64 first, qint64 count);
desk::imf::SoundFormat sound(const QString& soundfield = QStringLiteral("sgST"));

/// Writes `folder`/picture.mxf with `frames` frames; Reversible decodes to picture() exactly.
desk::Result<desk::imf::TrackFileInfo>
writePicture(const QString& path, int frames,
             desk::imf::J2kSettings settings = {desk::imf::J2kSettings::Mode::Reversible, 0},
             desk::Rational frameRate = {24, 1});
/// Writes `count` samples of samples() with the soundfield's channels.
desk::Result<desk::imf::TrackFileInfo> writeSound(const QString& path, qint64 count,
                                                  const QString& soundfield = QStringLiteral("sgST"));

} // namespace tinytracks
