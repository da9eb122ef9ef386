#pragma once

#include "desk/base/Result.h"
#include "desk/speech/model/Transcript.h"

#include <QHash>
#include <QSet>

namespace desk::speech
{

/// How far the transcription of a clip is.
struct ClipState {
    enum class Stage { Missing, Waiting, Running, Failed, Done };

    Stage stage = Stage::Missing;
    /// 0 to 100, while it runs; -1 while the media and the recogniser's model are being opened.
    int percent = 0;
    /// Why it failed and what to do, one sentence. With Stage::Done: the transcript is that of before.
    QString failure;

    static ClipState preparing() { return {Stage::Running, -1, QString()}; }

    friend bool operator==(const ClipState& a, const ClipState& b)
    {
        return a.stage == b.stage && a.percent == b.percent && a.failure == b.failure;
    }
};

/// What a transcription that is not finished has recognised of one track.
struct RecognisedTrack {
    /// Which recogniser heard these words in which state of the media.
    QString origin;
    QVector<QVector<Word>> utterances;
    /// As Batch::resumeAt.
    qint64 resumeAt = 0;
};

/// By track, counted from 0.
using Recognised = QHash<int, RecognisedTrack>;

/// What is read when a store is opened.
struct StoreContents {
    QVector<Speaker> speakers;
    QHash<QString, ClipState> clips;
    /// Clips that have a transcript, also while it is made again.
    QSet<QString> transcribed;
    QHash<QString, Recognised> recognised;
};

/// Why a store cannot be used.
struct StoreProblem {
    Error error;
    /// Whether to try again by itself: another process's lock, a full disk.
    bool passes = false;
};

} // namespace desk::speech
