#include "desk/media/PictureIndex.h"

#include <array>
#include <cmath>

namespace desk::media
{

namespace
{

constexpr std::array<Rational, 13> usualRates{{{24000, 1001},
                                               {24, 1},
                                               {25, 1},
                                               {30000, 1001},
                                               {30, 1},
                                               {48000, 1001},
                                               {48, 1},
                                               {50, 1},
                                               {60000, 1001},
                                               {60, 1},
                                               {100, 1},
                                               {120000, 1001},
                                               {120, 1}}};

bool isUsual(Rational rate)
{
    return std::find(usualRates.begin(), usualRates.end(), rate) != usualRates.end();
}

/// Number of the first time further than `tolerance` ticks, or three quarters of a frame, from the grid; the count when
/// there is none.
qint64 firstMisfit(const std::vector<qint64>& times, double ticksPerFrame, double tolerance)
{
    // Where a frame is a tick, as in AVI, a frame that is left out is a tick off.
    const double allowed = std::min(tolerance, 0.75 * ticksPerFrame);
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (std::abs(double(times[i] - times[0]) - double(i) * ticksPerFrame) > allowed)
            return qint64(i);
    }
    return qint64(times.size());
}

/// Usual rates that the file declares come first, then the other usual ones, then whatever else it declares.
std::vector<Rational> candidates(const std::vector<Rational>& declared)
{
    std::vector<Rational> rates;
    std::copy_if(declared.begin(), declared.end(), std::back_inserter(rates), isUsual);
    rates.insert(rates.end(), usualRates.begin(), usualRates.end());
    std::copy_if(declared.begin(), declared.end(), std::back_inserter(rates),
                 [](Rational rate) { return rate.isValid() && !isUsual(rate); });
    return rates;
}

} // namespace

RateFit fitRate(const std::vector<qint64>& times, AVRational timeBase, const std::vector<Rational>& declared)
{
    const double tick = av_q2d(timeBase);
    const auto count = qint64(times.size());
    qint64 longest = 0;
    // Times that were rounded to milliseconds by an earlier container are off by more than a tick of this one.
    for (const double tolerance : {1.0, std::max(1.0, 0.001 / tick)}) {
        for (const Rational rate : candidates(declared)) {
            const qint64 fits = firstMisfit(times, 1.0 / (rate.toDouble() * tick), tolerance);
            if (fits == count)
                return {rate, -1};
            longest = std::max(longest, fits);
        }
    }
    return {{}, longest};
}

} // namespace desk::media
