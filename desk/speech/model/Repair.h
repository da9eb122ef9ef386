#pragma once

#include "desk/speech/model/Transcript.h"

namespace desk::speech
{

/// Milliseconds, the end not included.
struct TimeSpan {
    int startMs = 0;
    int endMs = 0;
};

/// How many words came with times that could not be, by the first thing that was wrong with each.
struct RepairReport {
    /// Ended before they started, or started before a word that comes earlier.
    int backwards = 0;
    /// Ended after the next word of the same speaker started.
    int overlapping = 0;
    /// Lay outside the clip, wholly or in part.
    int outside = 0;
    /// Had no text and were dropped.
    int withoutText = 0;

    int total() const { return backwards + overlapping + outside + withoutText; }

    RepairReport& operator+=(const RepairReport& other);
};

/// Makes times that nobody vouches for usable: afterwards every word lies inside the span, words start in ascending
/// order and none ends after the next one starts. The longest ascending run of starts is believed; words that do not
/// fit into it are laid between their neighbours. The order and the number of words with text stay.
RepairReport repairWords(QVector<Word>& words, TimeSpan span);

/// Repairs every segment by itself, drops those without words and puts the others in the order of their start. Segments
/// that overlap stay so: people talk at once.
RepairReport repairTranscript(Transcript& transcript, TimeSpan span);

} // namespace desk::speech
