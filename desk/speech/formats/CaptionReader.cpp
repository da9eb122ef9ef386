#include "desk/speech/formats/Readers.h"
#include "desk/speech/formats/TextReading.h"
#include "desk/speech/model/Repair.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace desk::speech
{

namespace
{

/// The cues of a caption file, one after the other.
class CueReader
{
public:
    CueReader(const QString& text, QString fileName) : m_file(std::move(fileName)), m_lines(linesOf(text)) {}

    /// @param first the line, from 0, that cues may start at.
    Result<Transcript> read(int first)
    {
        m_at = first;
        while (skipToTiming()) {
            const Status status = readCue();
            if (!status.ok())
                return status.error();
        }
        return m_problem.what.isEmpty() ? Result<Transcript>(m_transcript) : Result<Transcript>(m_problem);
    }

    /// Passes the header and the blocks before the first cue. @return whether the file starts as WebVTT must.
    bool startsAsWebVtt() const
    {
        const QString first = m_lines.first();
        return first.startsWith(QLatin1String("WEBVTT")) && (first.size() == 6 || first[6].isSpace());
    }

private:
    static bool isTiming(const QString& line) { return line.contains(QLatin1String("-->")); }

    static bool isBlank(const QString& line) { return line.trimmed().isEmpty(); }

    /// What is no cue and stands before a blank line: a counter or name, notes, styles and regions of WebVTT. A cue
    /// without timing is a failure, or its text would be lost.
    bool skipToTiming()
    {
        static const QRegularExpression skipped(QStringLiteral("^(NOTE|STYLE|REGION)(\\s|$)"));
        while (m_at < m_lines.size()) {
            if (isBlank(m_lines[m_at])) {
                ++m_at;
            } else if (isTiming(m_lines[m_at])) {
                return true;
            } else if (skipped.match(m_lines[m_at]).hasMatch()) {
                while (m_at < m_lines.size() && !isBlank(m_lines[m_at]))
                    ++m_at;
            } else if (m_at + 1 < m_lines.size() && isTiming(m_lines[m_at + 1])) {
                ++m_at;
                return true;
            } else if (isCounter(m_lines[m_at]) && (m_at + 1 == m_lines.size() || isBlank(m_lines[m_at + 1]))) {
                ++m_at;
            } else {
                m_problem = errorAtLine(m_file, m_at + 1, QStringLiteral("there is text outside of any cue"),
                                        QStringLiteral("give it a line with times and import the file again"));
                return false;
            }
        }
        return false;
    }

    static bool isCounter(const QString& line)
    {
        bool isNumber = false;
        line.trimmed().toLongLong(&isNumber);
        return isNumber;
    }

    Status readCue()
    {
        const QString timing = m_lines[m_at];
        const int arrow = timing.indexOf(QLatin1String("-->"));
        const auto start = parsedTime(timing.left(arrow));
        // Positions and settings follow the end.
        const auto end =
            parsedTime(timing.mid(arrow + 3).trimmed().section(QRegularExpression(QStringLiteral("\\s")), 0, 0));
        if (!start || !end) {
            return errorAtLine(m_file, m_at + 1, QStringLiteral("the times cannot be read"),
                               QStringLiteral("write them as 00:00:01,000 --> 00:00:02,000 and import the file again"));
        }
        if (*end < *start)
            return errorAtLine(m_file, m_at + 1, QStringLiteral("the cue ends before it starts"));
        QStringList text;
        for (++m_at; m_at < m_lines.size() && !isBlank(m_lines[m_at]); ++m_at) {
            // A blank line was forgotten: what comes is the next cue, with its counter if it has one.
            if (isTiming(m_lines[m_at])) {
                if (!text.isEmpty() && isCounter(text.last()))
                    text.removeLast();
                break;
            }
            text.append(m_lines[m_at]);
        }
        addCue(text.join(QLatin1Char('\n')), *start, *end);
        return {};
    }

    /// One segment a voice.
    void addCue(const QString& text, int start, int end)
    {
        static const QRegularExpression voice(QStringLiteral("<v(?:\\.[^\\s>]*)?\\s+([^>]+)>"));
        QStringList names{QString()};
        QStringList parts;
        int from = 0;
        auto matches = voice.globalMatch(text);
        while (matches.hasNext()) {
            const auto match = matches.next();
            parts.append(text.mid(from, match.capturedStart() - from));
            names.append(withoutMarkup(match.captured(1)).simplified());
            from = match.capturedEnd();
        }
        parts.append(text.mid(from));
        shareOut(parts, names, {start, end});
    }

    /// Gives each part of a cue time by its length.
    void shareOut(const QStringList& parts, const QStringList& names, TimeSpan cue)
    {
        QVector<qint64> ends;
        qint64 length = 0;
        for (const QString& part : parts) {
            length += withoutMarkup(part).simplified().size();
            ends.append(length);
        }
        const qint64 span = cue.endMs - cue.startMs;
        for (int i = 0; i < parts.size() && length > 0; ++i) {
            const qint64 before = i > 0 ? ends[i - 1] : 0;
            addPart(parts[i], names[i], cue.startMs + int(span * before / length),
                    cue.startMs + int(span * ends[i] / length));
        }
    }

    void addPart(const QString& text, const QString& name, int start, int end)
    {
        static const QRegularExpression stamp(QStringLiteral("<([\\d:.]+)>"));
        Segment segment;
        segment.speaker = speakerOf(name);
        int from = 0;
        int fromMs = start;
        auto matches = stamp.globalMatch(text);
        while (matches.hasNext()) {
            const auto match = matches.next();
            const auto ms = parsedTime(match.captured(1));
            if (!ms)
                continue;
            segment.words +=
                spreadWords(splitWords(withoutMarkup(text.mid(from, match.capturedStart() - from))), fromMs, *ms);
            from = match.capturedEnd();
            fromMs = *ms;
        }
        segment.words += spreadWords(splitWords(withoutMarkup(text.mid(from))), fromMs, std::max(fromMs, end));
        if (!segment.words.isEmpty())
            m_transcript.segments.append(segment);
    }

    int speakerOf(const QString& name)
    {
        if (name.isEmpty())
            return -1;
        int& id = m_speakers[name];
        if (id == 0) {
            id = m_speakers.size();
            m_transcript.speakers.append({id, name});
        }
        return id;
    }

    QString m_file;
    QStringList m_lines;
    int m_at = 0;
    Error m_problem;
    Transcript m_transcript;
    QHash<QString, int> m_speakers;
};

} // namespace

Result<Transcript> readSubRip(const QByteArray& bytes, const QString& fileName)
{
    return CueReader(decodedText(bytes), fileName).read(0);
}

Result<Transcript> readWebVtt(const QByteArray& bytes, const QString& fileName)
{
    CueReader reader(unicodeText(bytes), fileName);
    if (!reader.startsAsWebVtt()) {
        return errorAtLine(fileName, 1, QStringLiteral("a WebVTT file starts with \"WEBVTT\""),
                           QStringLiteral("save the captions as WebVTT again"));
    }
    return reader.read(1);
}

} // namespace desk::speech
