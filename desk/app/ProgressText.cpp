#include "desk/app/ProgressText.h"

#include <QLocale>

namespace desk::app
{

QString durationText(double seconds)
{
    const qint64 whole = qint64(seconds + 0.5);
    const QString minutes = QStringLiteral("%1:%2").arg(whole / 60 % 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
    return whole < 3600 ? minutes : QStringLiteral("%1:%2").arg(whole / 3600).arg(minutes, 5, QLatin1Char('0'));
}

QStringList progressFacts(const services::ExportProgress& progress)
{
    const QLocale locale;
    QStringList facts{QStringLiteral("%1 of %2 frames").arg(progress.frames).arg(progress.totalFrames),
                      QStringLiteral("%1 frames/s").arg(locale.toString(progress.framesPerSecond, 'f', 1)),
                      locale.formattedDataSize(progress.bytes)};
    if (progress.frames == progress.totalFrames)
        facts += QStringLiteral("finishing");
    else if (progress.secondsLeft >= 0)
        facts += QStringLiteral("%1 left").arg(durationText(progress.secondsLeft));
    return facts;
}

} // namespace desk::app
