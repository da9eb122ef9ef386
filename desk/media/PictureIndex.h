#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/media/MediaFile.h"

#include <optional>
#include <vector>

namespace desk::media
{

/// Maps frame numbers to times of presentation and back. Every frame lies on the grid first + n / rate.
class PictureIndex
{
public:
    enum class Access {
        /// Frames are recognised by their time and can be sought.
        ByTime,
        /// The file gives no reliable times: frames are counted from the start of the file.
        ByCount
    };

    /// What only a picture itself tells for certain.
    struct Shape {
        int width = 0;
        int height = 0;
        bool interlaced = false;
    };

    int stream = -1;
    KnownPicture known;
    /// Of frame 0, where it was decoded on the way and is whole.
    std::optional<Shape> shape;
    Access access = Access::ByTime;
    Rational rate;
    /// Seconds a tick.
    AVRational timeBase{1, 1};
    /// Time of frame 0 in ticks.
    qint64 first = 0;
    qint64 frames = 0;

    qint64 numberOf(qint64 time) const
    {
        return av_rescale_q_rnd(time - first, timeBase, {int(rate.den), int(rate.num)}, AV_ROUND_NEAR_INF);
    }

    qint64 timeOf(qint64 number) const
    {
        return first + av_rescale_q(number, {int(rate.den), int(rate.num)}, timeBase);
    }
};

PictureIndex::Shape shapeOf(const AVFrame& frame);

/// Finds rate, first time and length of the picture in `file`, whose position is undefined afterwards. Fails for a
/// variable rate and for a cut file.
Result<PictureIndex> indexPicture(const QString& path, AVFormatContext& file, int stream);

/// The constant rate that ascending times (ticks of `timeBase`) keep, the declared one where it fits; otherwise the
/// number of the first time that keeps none.
struct RateFit {
    Rational rate;
    qint64 firstMisfit = -1;
};

RateFit fitRate(const std::vector<qint64>& times, AVRational timeBase, const std::vector<Rational>& declared);

} // namespace desk::media
