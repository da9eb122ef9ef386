#pragma once

#include "desk/imf/PictureFormat.h"

#include <cmath>
#include <cstdint>

namespace bench
{

/// 1080p 4:2:2 10-bit BT.709.
inline desk::imf::PictureFormat hd()
{
    desk::imf::PictureFormat format;
    format.width = 1920;
    format.height = 1080;
    format.frameRate = {24, 1};
    return format;
}

/// Waves of several sizes with a little noise: about as hard to code as a camera picture.
inline desk::imf::Picture picture(const desk::imf::PictureFormat& format, int n)
{
    desk::imf::Picture picture;
    std::uint32_t random = std::uint32_t(n) * 2654435761U + 1;
    for (int plane = 0; plane < 3; ++plane) {
        const int width = plane == 0 ? format.width : (format.width + 1) / 2;
        auto& samples = picture.planes[std::size_t(plane)];
        samples.reserve(std::size_t(width) * std::size_t(format.height));
        for (int y = 0; y < format.height; ++y) {
            for (int x = 0; x < width; ++x) {
                random = random * 1664525U + 1013904223U;
                const double wave = 150 * std::sin((x + 3 * n) * 0.01) * std::cos(y * 0.013) +
                                    60 * std::sin(x * 0.11 + y * 0.07) + 30 * std::sin((x * 0.5 + n) * 0.9);
                samples.push_back(std::uint16_t(500 + wave + double(random >> 28)));
            }
        }
    }
    return picture;
}

} // namespace bench
