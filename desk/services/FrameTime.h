#pragma once

#include "desk/base/Rational.h"

namespace desk::services
{

inline constexpr qint64 msPerSecond = 1000;

enum class FrameRounding { Down, Up };

/// The time at which a frame starts, in milliseconds. Rounded up, frameOfMs() leads back to the frame at any rate below
/// 1000.
constexpr qint64 msOfFrame(qint64 frame, Rational rate, FrameRounding rounding)
{
    const qint64 scaled = frame * msPerSecond * rate.den;
    return (rounding == FrameRounding::Down ? scaled : scaled + rate.num - 1) / rate.num;
}

/// The frame that shows a millisecond.
constexpr qint64 frameOfMs(qint64 ms, Rational rate)
{
    return ms * rate.num / (msPerSecond * rate.den);
}

} // namespace desk::services
