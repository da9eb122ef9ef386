#include "desk/speech/formats/JsonNames.h"
#include "desk/speech/formats/Readers.h"
#include "desk/speech/formats/TextReading.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <cmath>
#include <limits>

namespace desk::speech
{

namespace
{

Error badItem(const QString& file, const QString& list, int number, const QString& what)
{
    return {file, QStringLiteral("\"%1\", entry %2").arg(list).arg(number), QString(), what,
            QStringLiteral("write the file again with the program that made it")};
}

Result<QJsonObject> parsedObject(const QByteArray& bytes, const QString& fileName)
{
    // Recognisers cut characters in two where a token ends inside one; a strict parser would refuse the whole file.
    const QByteArray even = unicodeText(bytes).toUtf8();
    QJsonParseError problem{};
    const QJsonDocument document = QJsonDocument::fromJson(even, &problem);
    if (problem.error != QJsonParseError::NoError) {
        const int line = even.left(problem.offset).count('\n') + 1;
        return errorAtLine(fileName, line, QStringLiteral("the JSON is not valid: %1").arg(problem.errorString()),
                           QStringLiteral("write the file again with the program that made it"));
    }
    return document.object();
}

/// A number of milliseconds that fits; nothing otherwise.
bool readMs(const QJsonValue& value, int& ms)
{
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!std::isfinite(number) || std::abs(number) > std::numeric_limits<int>::max())
        return false;
    ms = int(std::lround(number));
    return true;
}

bool readSpan(const QJsonValue& value, const char* from, const char* to, Word& word)
{
    const QJsonObject span = value.toObject();
    return readMs(span[QLatin1String(from)], word.startMs) && readMs(span[QLatin1String(to)], word.endMs);
}

QString joined(const QVector<Word>& words)
{
    QString text;
    for (const Word& word : words)
        text += word.text;
    return text;
}

/// Words of the tokens; a token that starts with a blank starts a word. Special tokens ("[_BEG_]") are none.
QVector<Word> wordsOfTokens(const QJsonArray& tokens)
{
    QVector<Word> words;
    for (const QJsonValue& value : tokens) {
        const QJsonObject token = value.toObject();
        const QString text = token[QLatin1String(whisper::text)].toString();
        Word word;
        if (text.startsWith(QLatin1String("[_")) ||
            !readSpan(token[QLatin1String(whisper::offsets)], whisper::from, whisper::to, word))
            continue;
        word.confidence = token[QLatin1String(whisper::probability)].toDouble(-1);
        word.text = text.trimmed();
        const bool startsWord = words.isEmpty() || text.startsWith(QLatin1Char(' '));
        if (word.text.isEmpty())
            continue;
        if (startsWord) {
            words.append(word);
            continue;
        }
        words.last().text += word.text;
        words.last().endMs = word.endMs;
        words.last().confidence = std::min(words.last().confidence, word.confidence);
    }
    return words;
}

/// Tokens whose texts do not add up to the segment's text (characters cut in two, or no tokens) are not used.
QVector<Word> whisperWords(const QJsonObject& segment, const Word& span)
{
    const QStringList texts = splitWords(segment[QLatin1String(whisper::text)].toString());
    const QVector<Word> words = wordsOfTokens(segment[QLatin1String(whisper::tokens)].toArray());
    QString plain = texts.join(QString());
    if (joined(words) == plain && words.size() == texts.size())
        return words;
    return spreadWords(texts, span.startMs, span.endMs);
}

Result<Word> ownWord(const QJsonValue& value, const QString& fileName, int segment)
{
    const QJsonObject object = value.toObject();
    Word word;
    word.text = object[QLatin1String(own::text)].toString();
    if (!readSpan(value, own::start, own::end, word) || word.text.isEmpty())
        return badItem(fileName, QLatin1String(own::segments), segment, QStringLiteral("a word lacks text or times"));
    word.confidence = object[QLatin1String(own::confidence)].toDouble(-1);
    return word;
}

QVector<Speaker> ownSpeakers(const QJsonArray& values)
{
    QVector<Speaker> speakers;
    QSet<int> seen;
    for (const QJsonValue& value : values) {
        const QJsonObject object = value.toObject();
        const Speaker speaker{object[QLatin1String(own::id)].toInt(), object[QLatin1String(own::name)].toString()};
        if (speaker.id > 0 && !seen.contains(speaker.id))
            speakers.append(speaker);
        seen.insert(speaker.id);
    }
    return speakers;
}

} // namespace

Result<Transcript> readWhisperJson(const QByteArray& bytes, const QString& fileName)
{
    const auto document = parsedObject(bytes, fileName);
    if (!document)
        return document.error();
    Transcript transcript;
    const QJsonArray segments = (*document)[QLatin1String(whisper::segments)].toArray();
    for (int i = 0; i < segments.size(); ++i) {
        const QJsonObject object = segments[i].toObject();
        Word span;
        if (!readSpan(object[QLatin1String(whisper::offsets)], whisper::from, whisper::to, span))
            return badItem(fileName, QLatin1String(whisper::segments), i + 1, QStringLiteral("the times are missing"));
        transcript.segments.append({-1, whisperWords(object, span)});
    }
    return transcript;
}

Result<Transcript> readTranscriptJson(const QByteArray& bytes, const QString& fileName)
{
    const auto document = parsedObject(bytes, fileName);
    if (!document)
        return document.error();
    if ((*document)[QLatin1String(own::version)].toInt() != own::currentVersion) {
        return Error{fileName, QLatin1String(own::version), QString(),
                     QStringLiteral("the transcript was written by another version of the desk"),
                     QStringLiteral("export it there as WebVTT and import that")};
    }
    Transcript transcript;
    transcript.speakers = ownSpeakers((*document)[QLatin1String(own::speakers)].toArray());
    const QJsonArray segments = (*document)[QLatin1String(own::segments)].toArray();
    for (int i = 0; i < segments.size(); ++i) {
        const QJsonObject object = segments[i].toObject();
        Segment segment;
        segment.speaker = object[QLatin1String(own::speaker)].toInt(-1);
        segment.track = std::max(-1, object[QLatin1String(own::track)].toInt(-1));
        const QJsonArray words = object[QLatin1String(own::words)].toArray();
        for (const QJsonValue& value : words) {
            const auto word = ownWord(value, fileName, i + 1);
            if (!word)
                return word.error();
            segment.words.append(*word);
        }
        transcript.segments.append(segment);
    }
    return transcript;
}

} // namespace desk::speech
