#pragma once

#include "desk/media/Sequence.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace desk::media
{

enum class Sampling { YCbCr422, YCbCr444 };

/// What a picture is converted to: BT.709 YCbCr in narrow (video) range.
struct PictureTarget {
    int width = 1920;
    int height = 1080;
    /// Bits of a component, 8 to 16.
    int bitDepth = 10;
    Sampling sampling = Sampling::YCbCr422;
};

/// One frame as planes Y, Cb, Cr of samples in the low bits of 16-bit words, rows without padding. With 4:2:2 the
/// chroma planes are (width + 1) / 2 wide.
struct Frame {
    /// The number of the frame in the sequence, from 0.
    qint64 number = 0;
    PictureTarget format;
    std::array<std::vector<std::uint16_t>, 3> planes;
};

struct PictureReaderOptions {
    /// Threads of the decoder; 0 takes one for each core.
    int threads = 0;
    /// Through decodes several frames at once and is the fastest from frame to frame; Jump answers single frames
    /// soonest. Both give the same frames.
    enum class Access { Through, Jump } access = Access::Through;
};

/// Reads the pictures of a sequence by number. Frame n is the n-th picture that a player shows, whatever the codec,
/// its groups of pictures, edit lists and start times.
///
/// Used by one thread at a time, which may change between calls; several readers of one sequence are independent.
class PictureReader
{
public:
    /// Fails when the sequence has no picture, the file is not the one that was opened, or the decoder is missing.
    static Result<std::unique_ptr<PictureReader>> open(const Sequence& sequence, const PictureTarget& target,
                                                       const PictureReaderOptions& options = {});
    ~PictureReader();

    PictureReader(const PictureReader&) = delete;
    PictureReader& operator=(const PictureReader&) = delete;

    /// Frame `number`, 0 <= number < Sequence::frames. Fast for the next frame and a few on; any other is sought. The
    /// picture is turned as the file asks for and keeps its shape: black fills what it leaves of the target. A picture
    /// that has the target's size, sampling, matrix and range keeps every sample, shifted where the depth differs.
    /// Where the file does not name its matrix, 720 lines and more are BT.709 and fewer BT.601.
    ///
    /// Fails for a number out of range and for a frame that cannot be decoded whole; the reader stays usable.
    Result<Frame> read(qint64 number);

private:
    class Private;
    explicit PictureReader(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};

} // namespace desk::media
