#pragma once

#include "desk/speech/model/Repair.h"
#include "desk/speech/recognition/Recogniser.h"

#include <QHash>

#include <atomic>

namespace desk::speech
{

/// How a clip's speakers are told apart.
enum class SpeakersBy {
    /// By track where the clip has several that differ, else by voice.
    Automatic,
    /// Every track is one speaker's.
    Track,
    /// By the sound of the voice.
    Voice,
};

struct RecognitionJob {
    /// The clip's name, for messages.
    QString clipName;
    /// Tells this state of the clip's media from any other; what was recognised of another is not gone on with.
    QString media;
    int lengthMs = 0;
    QVector<SoundOpener> tracks;
    /// What Segment::track says of each; empty for their places in `tracks`.
    QVector<int> numbers;
    SpeakersBy speakersBy = SpeakersBy::Automatic;
};

/// A recognised clip.
struct RecognitionResult {
    Transcript transcript;
    RepairReport repairs;
};

/// What a job tells of itself, on its thread.
class RecognitionEvents
{
public:
    virtual ~RecognitionEvents() = default;
    /// @param percent 0 to 99.
    virtual void progress(int percent) = 0;
    /// What a track brought; already repaired.
    virtual void recognised(int track, const Batch& batch) = 0;
};

/// What a former run found of a track.
struct RecognisedPart {
    QVector<QVector<Word>> utterances;
    qint64 resumeAt = 0;
};

/// Recognises a clip from where a former run stopped. Blocks.
/// @param former by track.
/// @param isCancelled asked often; the result is an error without text then.
/// @return never a transcript without words.
Result<RecognitionResult> recogniseClip(const RecognitionJob& job, Recogniser& recogniser,
                                        const QHash<int, RecognisedPart>& former, RecognitionEvents& events,
                                        const std::atomic<bool>& isCancelled);

} // namespace desk::speech
