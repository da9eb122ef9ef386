#pragma once

#include "desk/media/Sequence.h"
#include "desk/speech/model/Transcript.h"

#include <functional>
#include <vector>

namespace desk::services
{

/// A stretch of a sequence in which a clip sounds. Counts samples at 48 kHz.
struct SpokenRange {
    std::shared_ptr<const media::Sequence> clip;
    /// In the sequence; the end is not included.
    qint64 start = 0;
    qint64 end = 0;
    /// What of the clip sounds at `start`.
    qint64 clipStart = 0;
    /// The clip's tracks of which words are shown; empty for all.
    QVector<int> tracks = {};
};

/// An audio track that can be transcribed or left out: a channel of a media file, or a whole track of a timeline.
struct SpeechTrack {
    int number = 0;
    /// For the user: "A2  Mono  Boom (eng)".
    QString name;
};

QVector<SpeechTrack> speechTracks(const media::Sequence& sequence);

/// Where which clip sounds, in the order of the start. A media file is one range of itself; of a timeline, tracks that
/// carry the same part of a clip at the same time are one range.
/// @param chosen numbers of the speech tracks that count; empty for all.
std::vector<SpokenRange> spokenRanges(const media::Sequence& sequence, const QVector<int>& chosen = {});

/// A sequence's transcript, and where each of its segments comes from.
struct MappedTranscript {
    struct Origin {
        /// Sequence::id of the clip, and the segment's place in the clip's transcript.
        QString clip;
        int segment = -1;
    };

    speech::Transcript transcript;
    std::vector<Origin> origins;
};

/// Answers null for a clip that has none.
using TranscriptFinder = std::function<std::shared_ptr<const speech::Transcript>(const QString& clip)>;

/// The clips' transcripts at the times of the sequence. A word belongs to the range in which its middle sounds, and its
/// times end with the range. Words of which nobody knows the track count on every one. What is said at once on several
/// tracks stays so.
MappedTranscript mapTranscript(const std::vector<SpokenRange>& ranges, const TranscriptFinder& find);

} // namespace desk::services
