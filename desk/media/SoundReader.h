#pragma once

#include "desk/media/Sequence.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace desk::media
{

/// Samples a second of everything that SoundReader hands out.
constexpr int soundRate = 48000;

/// A stretch of sound, one vector a track, all of the same length.
struct SoundBlock {
    /// Signed values on the scale of 24 bits: full scale is 8388608. What the file holds as whole numbers keeps to
    /// -8388608 to 8388607; what is floating point in it, or is decoded or resampled, may go beyond that.
    std::vector<std::vector<std::int32_t>> tracks;
    /// For each track the samples of this block that the file does not hold and that are silence instead.
    std::vector<qint64> padded;
    /// Whether a sample may be above full scale. False is certain, and saves a look at each.
    bool mayExceed = true;
};

/// Reads audio tracks of a sequence by sample. Sample 0 sounds with the start of frame 0: sound that starts earlier is
/// cut, sound that starts later or ends earlier is filled with silence. The samples of frame n are those from
/// firstSampleOfFrame(n, rate, soundRate) to that of n + 1.
///
/// PCM of 48 kHz and up to 24 bits comes out as it is in the file. Other rates are resampled.
///
/// Used by one thread at a time, which may change between calls; several readers of one sequence are independent.
class SoundReader
{
public:
    /// `tracks` are places in Sequence::audio, each at most once; the order is that of SoundBlock::tracks.
    static Result<std::unique_ptr<SoundReader>> open(const Sequence& sequence, const QVector<int>& tracks);
    ~SoundReader();

    SoundReader(const SoundReader&) = delete;
    SoundReader& operator=(const SoundReader&) = delete;

    /// `count` samples from sample `first` (>= 0) on. Going on from where the last call ended is fast. Fails where the
    /// sound cannot be decoded; the end of the file is no failure but silence.
    Result<SoundBlock> read(qint64 first, qint64 count);
    /// The same into a block that has been read before, whose memory is used again; after a failure it holds anything.
    Status read(qint64 first, qint64 count, SoundBlock& block);

private:
    class Private;
    explicit SoundReader(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};

} // namespace desk::media
