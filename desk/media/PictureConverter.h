#pragma once

#include "desk/base/Result.h"
#include "desk/media/FfHandles.h"
#include "desk/media/PictureReader.h"

namespace desk::media
{

/// Turns decoded pictures into target pictures: colour, size and depth. FFmpeg's scaler only changes size and chroma
/// sampling; colours and depths are computed here, where every rounding is known.
class PictureConverter
{
public:
    /// `pixelAspect` is the width of a source pixel over its height.
    PictureConverter(const PictureTarget& target, Rational pixelAspect);
    ~PictureConverter();

    /// Fails for pixel formats that cannot be read; fills everything of `out` but its number.
    Status convert(const AVFrame& in, Frame& out);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Makes `out` a black picture of the target's format; leaves its number alone.
void blacken(const PictureTarget& target, Frame& out);

} // namespace desk::media
