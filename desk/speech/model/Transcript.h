#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

namespace desk::speech
{

/// A spoken word. Times are milliseconds from the start of the clip; the end is not before the start.
struct Word {
    int startMs = 0;
    int endMs = 0;
    /// One word with its punctuation, without white space.
    QString text;
    /// How sure the recogniser is, 0 to 1; -1 where nothing is known.
    double confidence = -1;

    friend bool operator==(const Word& a, const Word& b)
    {
        return a.startMs == b.startMs && a.endMs == b.endMs && a.text == b.text && a.confidence == b.confidence;
    }
};

/// What one speaker says in one go: words in the order in which they are spoken.
struct Segment {
    /// Speaker::id; -1 where nobody knows.
    int speaker = -1;
    QVector<Word> words;
    /// The first of the clip's audio tracks in which it was heard, counted from 0; -1 where nobody knows.
    int track = -1;

    /// 0 without words.
    int startMs() const { return words.isEmpty() ? 0 : words.first().startMs; }

    int endMs() const { return words.isEmpty() ? 0 : words.last().endMs; }

    friend bool operator==(const Segment& a, const Segment& b)
    {
        return a.speaker == b.speaker && a.words == b.words && a.track == b.track;
    }
};

struct Speaker {
    /// Counted from 1. Unique in the transcript, and once stored in the project.
    int id = 0;
    /// Empty while the speaker has none.
    QString name;

    friend bool operator==(const Speaker& a, const Speaker& b) { return a.id == b.id && a.name == b.name; }
};

/// A clip's transcript. A value. Segments are in the order of their start and may overlap where people talk at once.
struct Transcript {
    QVector<Segment> segments;
    /// The speakers that the segments name.
    QVector<Speaker> speakers;

    int countOfWords() const;
};

/// A segment's words as one block of text.
struct BlockText {
    QString text;
    /// For each word where it starts and where it ends (just past it) in `text`, in UTF-16 code units.
    std::vector<int> starts;
    std::vector<int> ends;
};

/// Words stand apart by a blank, but not between characters of scripts that are written without blanks.
BlockText blockText(const QVector<Word>& words);

/// The words of a text that says nothing of where they begin: parted at white space, and at each character of a script
/// that is written without blanks. Punctuation stays with the word before it.
QStringList splitWords(const QString& text);

/// Words of the given texts whose times share out the span by their length.
QVector<Word> spreadWords(const QStringList& texts, int startMs, int endMs);

/// The name, or without one "Speaker " and the identification; empty for a speaker whom the transcript does not list.
QString displayName(const Transcript& transcript, int speaker);

} // namespace desk::speech
