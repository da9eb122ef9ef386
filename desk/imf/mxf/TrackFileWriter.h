#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/SoundFormat.h"
#include "desk/imf/j2k/J2kProfile.h"

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

namespace desk::imf
{

/// What packing list, composition and asset map need to know about a finished track file.
struct TrackFileInfo {
    /// The asset's identifier: the UUID inside the file package's UMID.
    QUuid id;
    /// Bytes.
    qint64 size = 0;
    /// 20 raw bytes.
    QByteArray sha1;
    /// In edit units: frames, or samples for sound.
    qint64 duration = 0;
    Rational editRate;
    /// The RegXML element (ST 2001-1) of the file's essence descriptor with its own namespace declarations, made from
    /// the very sets in the file; goes into EssenceDescriptor of the composition as it is.
    QByteArray descriptorXml;
};

/// What every track file is created with.
struct TrackFileTarget {
    /// Where to write: a temporary name in the file system of the package. An existing file is an error.
    QString path;
    /// Null: a new random identifier.
    QUuid id;
    /// In edit units; exactly so many must be appended.
    qint64 duration = 0;
};

/// Writes a frame-wrapped JPEG 2000 track file (ST 422, ST 2067-5 "AS-02"): OP1a, header, pairs of body and index
/// partitions of 60 s each, footer, random index pack. One thread. A writer that is destroyed before finish() leaves
/// its incomplete file for the caller to remove.
class PictureTrackWriter
{
public:
    /// `codestreamSizes`, bytes of every codestream to come: with it the whole layout is known in advance and the hash
    /// is taken while writing. Without it the partition packs get the footer's place at the end, and since SHA-1 must
    /// see them first the file is hashed once more in finish(), mostly from the page cache.
    static Result<std::unique_ptr<PictureTrackWriter>> create(const TrackFileTarget& target,
                                                              const PictureFormat& format, const J2kProfile& profile,
                                                              const QVector<qint64>& codestreamSizes = {});
    ~PictureTrackWriter();

    /// The next frame. Fails when the disk is full or gone, when the codestream is not of the profile (Rsiz) or of the
    /// first frame's coding parameters, and after `duration` frames.
    Status append(const QByteArray& codestream);
    /// Writes what is left, syncs the file to the disk and closes it.
    Result<TrackFileInfo> finish();

private:
    struct State;
    explicit PictureTrackWriter(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

/// Writes a clip-wrapped 24-bit PCM track file (ST 382, ST 2067-5) with its multi-channel audio labels (ST 377-4). The
/// layout is known in advance: hashed while written. One thread.
class SoundTrackWriter
{
public:
    static Result<std::unique_ptr<SoundTrackWriter>> create(const TrackFileTarget& target, const SoundFormat& format);
    ~SoundTrackWriter();

    /// `count` samples of every channel, interleaved, signed, the 24-bit value in the low bits: -8388608 to 8388607.
    Status append(const std::int32_t* interleaved, qint64 count);
    /// The same with each channel apart, in the order of the format's channels.
    Status append(const std::vector<const std::int32_t*>& channels, qint64 count);
    /// The same as packed 24-bit little-endian bytes; a whole number of samples of all channels.
    Status appendPacked(const QByteArray& bytes);
    Result<TrackFileInfo> finish();

private:
    struct State;
    explicit SoundTrackWriter(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

} // namespace desk::imf
