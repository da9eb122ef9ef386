#pragma once

#include "desk/media/FfHandles.h"

#include <array>
#include <cstdint>
#include <vector>

namespace desk::media
{

/// What the sample values of a picture mean.
struct ColourMeaning {
    bool rgb = false;
    bool fullRange = false;
    /// Luma weights of red and blue (BT.709: 0.2126 and 0.0722); not used for RGB.
    double kr = 0.2126;
    double kb = 0.0722;

    /// YCbCr of BT.709 in whatever range: each component stands for itself.
    bool hasTargetMatrix() const { return !rgb && kr == 0.2126 && kb == 0.0722; }

    /// Already BT.709 YCbCr in narrow range.
    bool isTarget() const { return hasTargetMatrix() && !fullRange; }
};

/// Where the file is silent, YCbCr of 720 lines and more is BT.709 and of fewer is BT.601, and narrow; RGB is full.
/// `known` is false for systems that no 3x3 matrix describes.
struct MeaningOf {
    ColourMeaning meaning;
    bool known = true;
};

MeaningOf colourMeaning(const AVFrame& frame);

/// The pixel format without the old names that stand for full range.
AVPixelFormat plainFormat(int format);

/// Three rows of samples Y Cb Cr or R G B, in place to Y Cb Cr of BT.709 in narrow range at 16 bits. The values are
/// in the upper `depth` bits of each word.
class ColourMatrix
{
public:
    ColourMatrix(const ColourMeaning& from, int depth);

    void apply(const std::array<std::uint16_t*, 3>& rows, int width) const;
    /// One component by itself, where ColourMeaning::hasTargetMatrix() holds.
    void applyRange(int component, std::uint16_t* row, int width) const;

private:
    std::array<float, 9> m_factors{};
    std::array<float, 3> m_offsets{};
};

/// Chroma of half the width, each sample on the left one of its pair.
void halveRow(const std::uint16_t* in, int width, std::vector<std::uint16_t>& out);

} // namespace desk::media
