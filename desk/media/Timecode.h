#pragma once

#include "desk/base/Rational.h"

#include <QString>

namespace desk::media
{

/// Timecode as SMPTE ST 12-1 counts it: "hh:mm:ss:ff", and "hh:mm:ss;ff" where the count drops numbers (29.97 and 59.94
/// frames a second). Times of a day: 24 hours follow on 0.
struct Timecode {
    /// Frames a second, exact.
    Rational rate{24, 1};
    enum class Count { NonDrop, Drop } count = Count::NonDrop;
    /// Frames from 00:00:00:00 to frame 0 of what is counted.
    qint64 start = 0;

    /// The timecode that starts at a text, from 0 where the text is none.
    static Timecode startingAt(const QString& text, Rational rate);

    QString text(qint64 frame) const;
};

} // namespace desk::media
