#pragma once

#include "desk/speech/model/Repair.h"

#include <QRandomGenerator>

#include <algorithm>

/// Transcripts as text and text as transcripts.
namespace texts
{

/// "100-300 hello|300-500 you / 2: 700-900 yes": segments with their speakers and words.
inline QString textOf(const desk::speech::Transcript& transcript)
{
    QStringList segments;
    for (const desk::speech::Segment& segment : transcript.segments) {
        QStringList words;
        for (const desk::speech::Word& word : segment.words)
            words << QStringLiteral("%1-%2 %3").arg(word.startMs).arg(word.endMs).arg(word.text);
        const QString name = desk::speech::displayName(transcript, segment.speaker);
        segments << (name.isEmpty() ? QString() : name + ": ") + words.join('|');
    }
    return segments.join(QStringLiteral(" / "));
}

/// "100-300 hello|300-500 you"
inline QVector<desk::speech::Word> wordsOf(const QString& text)
{
    QVector<desk::speech::Word> words;
    const QStringList parts = text.split('|', Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        const QString times = part.section(' ', 0, 0);
        const int dash = times.indexOf('-', 1);
        words.append({times.leftRef(dash).toInt(), times.midRef(dash + 1).toInt(), part.section(' ', 1), -1});
    }
    return words;
}

inline desk::speech::Transcript transcriptOf(const QVector<std::pair<int, QString>>& segments, int countOfSpeakers)
{
    desk::speech::Transcript transcript;
    for (const auto& [speaker, words] : segments)
        transcript.segments.append({speaker, wordsOf(words)});
    for (int id = 1; id <= countOfSpeakers; ++id)
        transcript.speakers.append({id, QString()});
    return transcript;
}

/// Any words at any times of ten minutes, from slow to far too fast, with pauses, overlaps, very long and odd words.
inline desk::speech::Transcript randomTranscript(QRandomGenerator& random)
{
    static const QStringList odd{QString(90, 'x'),
                                 "\U0001F469\u200D\U0001F467",
                                 "e\u0301te\u0301",
                                 "\u4f60\u597d",
                                 "a-->b",
                                 "<i>",
                                 "&amp;",
                                 "end.",
                                 "however,",
                                 "\u05e9\u05dc\u05d5\u05dd",
                                 "\"q\""};
    desk::speech::Transcript transcript;
    const int pace = 20 + random.bounded(600);
    for (int i = random.bounded(1, 40); i > 0; --i) {
        desk::speech::Segment segment{random.bounded(-1, 3), {}, random.bounded(-1, 4)};
        int at = random.bounded(600000);
        for (int k = random.bounded(1, 60); k > 0; --k) {
            const int end = at + random.bounded(2 * pace);
            const QString text = random.bounded(8) == 0
                                     ? odd[random.bounded(odd.size())]
                                     : QString(random.bounded(1, 12), QChar('a' + random.bounded(26)));
            segment.words.append({at, end, text, -1});
            at = end + (random.bounded(10) == 0 ? random.bounded(4000) : 0);
        }
        transcript.segments.append(segment);
    }
    transcript.speakers = {{0, "Anna"}, {1, "B \"the\" <C>, D"}, {2, QString()}};
    std::stable_sort(transcript.segments.begin(), transcript.segments.end(),
                     [](const auto& a, const auto& b) { return a.startMs() < b.startMs(); });
    return transcript;
}

} // namespace texts
