#pragma once

#include "desk/base/Rational.h"

#include <QString>

#include <algorithm>
#include <cmath>

namespace desk
{

/// The timecode of a frame (ST 12-1), "hh:mm:ss:ff", counted on from `start`, that of frame 0; empty counts as zero.
/// A ";" before the frames of `start` means drop-frame, which only rates near 30 and 60 have. Passes from 23:59:59 to
/// zero.
inline QString timecodeOf(qint64 frame, Rational rate, const QString& start)
{
    const qint64 nominal = std::max<qint64>(1, std::llround(rate.toDouble()));
    const bool drops = start.contains(QLatin1Char(';')) && nominal % 30 == 0;
    // Numbers that each minute leaves out, but for every tenth.
    const qint64 dropped = drops ? nominal / 15 : 0;
    const qint64 minute = nominal * 60 - dropped;
    const qint64 tenMinutes = minute * 10 + dropped;
    const auto part = [&start](int place) { return start.midRef(place * 3, 2).toInt(); };
    const qint64 minutes = part(0) * 60 + part(1);
    qint64 count = (minutes * 60 + part(2)) * nominal + part(3) - dropped * (minutes - minutes / 10) + frame;
    count %= tenMinutes * 6 * 24;
    if (drops) {
        const qint64 within = count % tenMinutes;
        count += dropped * 9 * (count / tenMinutes);
        count += within < dropped ? 0 : dropped * ((within - dropped) / minute);
    }
    const auto two = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const qint64 seconds = count / nominal;
    return two(seconds / 3600) + QLatin1Char(':') + two(seconds / 60 % 60) + QLatin1Char(':') + two(seconds % 60) +
           QLatin1Char(drops ? ';' : ':') + two(count % nominal);
}

} // namespace desk
