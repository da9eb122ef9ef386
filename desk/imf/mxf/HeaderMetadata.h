#pragma once

#include "desk/base/Rational.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/SoundFormat.h"
#include "desk/imf/j2k/Codestream.h"
#include "desk/imf/mxf/MetadataSets.h"

#include <QByteArray>
#include <QUuid>
#include <QVector>

namespace desk::imf
{

/// The essence descriptor of a track file and its sub-descriptors.
struct Description {
    MetadataSet descriptor;
    QVector<MetadataSet> subDescriptors;
};

/// What the packages of a track file need to know about its one essence track.
struct EssenceTrack {
    QUuid assetId;
    Rational editRate;
    qint64 duration = 0;
    Ul dataDefinition;
    Ul container;
    /// Key of the essence element; its last four bytes are the track number.
    Ul essenceKey;
};

inline constexpr quint32 bodySid = 1;
inline constexpr quint32 indexSid = 129;

/// CDCI or RGBA descriptor with its JPEG 2000 sub-descriptor (ST 422, ST 2067-21).
Description describePicture(const PictureFormat& format, const CodestreamHeader& header,
                            const QByteArray& pictureCoding);
/// WAVE PCM descriptor with soundfield group and channel labels (ST 382, ST 377-4).
Description describeSound(const SoundFormat& format);
/// The whole header metadata of an OP1a file: preface, identification, storage, material package, file package.
MetadataSets buildHeader(const EssenceTrack& track, Description description);
/// The header metadata as bytes with fill behind it.
QByteArray serialiseHeader(const MetadataSets& sets);

} // namespace desk::imf
