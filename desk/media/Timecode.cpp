#include "desk/media/Timecode.h"

#include <QRegularExpression>

#include <algorithm>

namespace desk::media
{

namespace
{

/// The whole number of frames that a second of timecode counts.
qint64 counted(Rational rate)
{
    return std::max<qint64>(1, (rate.num + rate.den - 1) / rate.den);
}

/// Numbers left out at each minute but every tenth.
qint64 dropped(qint64 perSecond)
{
    return perSecond / 30 * 2;
}

} // namespace

Timecode Timecode::startingAt(const QString& text, Rational rate)
{
    static const QRegularExpression form(QStringLiteral("^(\\d\\d):(\\d\\d):(\\d\\d)([:;.])(\\d+)$"));
    Timecode timecode;
    timecode.rate = rate.isValid() ? rate : Rational(24, 1);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return timecode;
    const qint64 perSecond = counted(timecode.rate);
    const qint64 minutes = match.captured(1).toInt() * 60 + match.captured(2).toInt();
    timecode.start = (minutes * 60 + match.captured(3).toInt()) * perSecond + match.captured(5).toInt();
    if (match.captured(4) != QLatin1String(":") && rate.den == 1001 && perSecond % 30 == 0) {
        timecode.count = Count::Drop;
        timecode.start -= dropped(perSecond) * (minutes - minutes / 10);
    }
    return timecode;
}

QString Timecode::text(qint64 frame) const
{
    const qint64 perSecond = counted(rate);
    const bool drops = count == Count::Drop;
    const qint64 skip = drops ? dropped(perSecond) : 0;
    const qint64 tenMinutes = perSecond * 600 - skip * 9;
    const qint64 day = tenMinutes * 144;
    qint64 number = ((start + frame) % day + day) % day;
    if (drops) {
        const qint64 tens = number / tenMinutes;
        const qint64 rest = number % tenMinutes;
        const qint64 minute = perSecond * 60 - skip;
        number += skip * (tens * 9 + (rest < perSecond * 60 ? 0 : 1 + (rest - perSecond * 60) / minute));
    }
    const qint64 seconds = number / perSecond;
    const auto two = [](qint64 value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); };
    return two(seconds / 3600) + QLatin1Char(':') + two(seconds / 60 % 60) + QLatin1Char(':') + two(seconds % 60) +
           QLatin1Char(drops ? ';' : ':') + two(number % perSecond);
}

} // namespace desk::media
