#include "desk/media/PictureTurn.h"

#include "desk/media/ColourMath.h"

#include <utility>

namespace desk::media
{

namespace
{

/// Where the first sample of the turned picture comes from, and how far the next one to the right and below is.
struct Walk {
    std::ptrdiff_t start;
    std::ptrdiff_t right;
    std::ptrdiff_t down;
};

Walk walkOf(std::ptrdiff_t width, std::ptrdiff_t height, int clockwise)
{
    switch (clockwise) {
    case 90:
        return {(height - 1) * width, -width, 1};
    case 180:
        return {height * width - 1, -1, -width};
    default:
        return {width - 1, width, -1};
    }
}

} // namespace

PictureTarget targetBeforeTurn(const PictureTarget& target, int clockwise)
{
    PictureTarget lying = target;
    if (clockwise == 90 || clockwise == 270)
        std::swap(lying.width, lying.height);
    lying.sampling = Sampling::YCbCr444;
    return lying;
}

Frame turned(const Frame& lying, const PictureTarget& target, int clockwise)
{
    const Walk walk = walkOf(lying.format.width, lying.format.height, clockwise);
    Frame out;
    out.number = lying.number;
    out.format = target;
    std::vector<std::uint16_t> row(std::size_t(target.width));
    std::vector<std::uint16_t> half;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const bool halves = plane > 0 && target.sampling == Sampling::YCbCr422;
        std::vector<std::uint16_t>& words = out.planes[plane];
        words.reserve(row.size() * std::size_t(target.height));
        for (int y = 0; y < target.height; ++y) {
            std::ptrdiff_t place = walk.start + y * walk.down;
            for (std::uint16_t& word : row) {
                word = lying.planes[plane][std::size_t(place)];
                place += walk.right;
            }
            if (halves)
                halveRow(row.data(), target.width, half);
            const std::vector<std::uint16_t>& finished = halves ? half : row;
            words.insert(words.end(), finished.begin(), finished.end());
        }
    }
    return out;
}

} // namespace desk::media
