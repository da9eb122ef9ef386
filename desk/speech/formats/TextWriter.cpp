#include "desk/speech/formats/JsonNames.h"
#include "desk/speech/formats/Writers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace desk::speech
{

namespace
{

QString timecodeOfMs(int ms, const ExportSettings& settings)
{
    const Rational rate = settings.captions.frameRate;
    // The frame that is on the screen at that instant.
    const qint64 frame = qint64(ms) * rate.num / (1000 * rate.den);
    return timecodeText(settings.firstFrame + frame, rate, settings.timecode);
}

QString quoted(QString field)
{
    return QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

} // namespace

QByteArray writePlainText(const Transcript& transcript, const ExportSettings& settings)
{
    QString text;
    if (!settings.title.isEmpty())
        text = settings.title.simplified() + QLatin1String("\n\n");
    for (const Segment& segment : transcript.segments) {
        const QString name = displayName(transcript, segment.speaker).simplified();
        text += timecodeOfMs(segment.startMs(), settings) + QLatin1String("  ");
        if (!name.isEmpty())
            text += name + QLatin1String(": ");
        text += blockText(segment.words).text + QLatin1Char('\n');
    }
    return text.toUtf8();
}

QByteArray writeCsv(const Transcript& transcript, const ExportSettings& settings)
{
    QString text(QChar::ByteOrderMark);
    text += QLatin1String("Start,End,Speaker,Text\r\n");
    for (const Segment& segment : transcript.segments) {
        text += timecodeOfMs(segment.startMs(), settings) + QLatin1Char(',') + timecodeOfMs(segment.endMs(), settings) +
                QLatin1Char(',') + quoted(displayName(transcript, segment.speaker)) + QLatin1Char(',') +
                quoted(blockText(segment.words).text) + QLatin1String("\r\n");
    }
    return text.toUtf8();
}

QByteArray writeTranscriptJson(const Transcript& transcript, const ExportSettings& settings)
{
    QJsonArray speakers;
    for (const Speaker& speaker : transcript.speakers)
        speakers.append(QJsonObject{{own::id, speaker.id}, {own::name, speaker.name}});
    QJsonArray segments;
    for (const Segment& segment : transcript.segments) {
        QJsonArray words;
        for (const Word& word : segment.words) {
            QJsonObject object{{own::start, word.startMs}, {own::end, word.endMs}, {own::text, word.text}};
            if (word.confidence >= 0)
                object[QLatin1String(own::confidence)] = word.confidence;
            words.append(object);
        }
        QJsonObject object{{own::speaker, segment.speaker}, {own::words, words}};
        if (segment.track >= 0)
            object[QLatin1String(own::track)] = segment.track;
        segments.append(object);
    }
    QJsonObject document{{own::format, own::formatName},
                         {own::version, own::currentVersion},
                         {own::speakers, speakers},
                         {own::segments, segments}};
    if (!settings.title.isEmpty())
        document[QLatin1String(own::title)] = settings.title;
    return QJsonDocument(document).toJson();
}

} // namespace desk::speech
