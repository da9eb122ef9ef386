#pragma once

#include "desk/base/Rational.h"

#include <array>
#include <cstdint>
#include <vector>

namespace desk::imf
{

enum class Sampling { YCbCr422, YCbCr444, Rgb444 };
/// The colour systems of ST 2067-21, COLOR.1 to COLOR.8; the writer makes Bt709 (COLOR.3).
enum class Colour { Unknown, Bt601_625, Bt601_525, Bt709, XvYcc, Bt2020, P3D65Pq, Bt2020Pq, Bt2020Hlg };

enum class Range { Narrow, Full };

/// The uncompressed picture of a track: every frame of the track has it.
struct PictureFormat {
    int width = 0;
    int height = 0;
    Sampling sampling = Sampling::YCbCr422;
    /// Bits of a component, 8 to 16.
    int bitDepth = 10;
    Colour colour = Colour::Bt709;
    Rational frameRate;
    /// Narrow (64 to 940 of 10 bits) or the full range of the words; YCbCr is always narrow.
    Range range = Range::Narrow;
};

/// One frame as planes of samples in the low bits of 16-bit words, rows without padding. Plane order Y Cb Cr or R G B;
/// with 4:2:2 planes 1 and 2 are (width + 1) / 2 wide. Narrow (video) range for YCbCr.
struct Picture {
    std::array<std::vector<std::uint16_t>, 3> planes;
};

} // namespace desk::imf
