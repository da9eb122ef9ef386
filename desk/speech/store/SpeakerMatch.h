#pragma once

#include "desk/speech/model/Repair.h"

#include <QHash>

namespace desk::speech
{

/// A segment as it is kept: its speaker is the corrected one.
struct KeptSegment {
    Segment segment;
    /// The speaker that the recogniser or the file gave it.
    int heard = -1;
};

/// The user moved what was heard in a time span as one speaker to another.
struct Correction {
    TimeSpan span;
    int heard = -1;
    int speaker = -1;
};

/// Which of the project's speakers those of a new transcript are: one of the same name; else, unless the names differ,
/// the one who was heard longest while the new one speaks. Each of the former is given once.
/// @param former the transcript that is replaced; may be empty.
/// @param known all speakers of the project.
/// @return for each of fresh.speakers the identification, -1 where it is a speaker nobody knows yet.
QHash<int, int> matchSpeakers(const Transcript& fresh, const QVector<KeptSegment>& former,
                              const QVector<Speaker>& known);

/// Moves the segments of which a correction's span covers at least half: those heard as the same speaker, or all of
/// them where none was.
void applyCorrections(QVector<KeptSegment>& segments, const QVector<Correction>& corrections);

} // namespace desk::speech
