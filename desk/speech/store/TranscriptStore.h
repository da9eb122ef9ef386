#pragma once

#include "desk/speech/recognition/Recogniser.h"
#include "desk/speech/store/StoreContents.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <optional>

namespace desk::speech
{

class StoreThread;

/// The transcripts of one project: a SQLite file with a write-ahead log. Clips go by an identifier that the caller
/// chooses.
///
/// Lives on the user-interface thread and never waits for the file: answers come from memory, changes show at once and
/// are written by a thread of the store's own, in their order. What cannot be written now, because another process has
/// locked the file or the disk is full, stays queued and is tried again. Speakers belong to the project; what the user
/// did to them (names, segments moved to another speaker) survives a repeated recognition or import of the clip.
class TranscriptStore : public QObject
{
    Q_OBJECT

public:
    enum class Condition {
        /// Not read yet.
        Opening,
        Online,
        /// Another process holds the lock, or the disk is full; the store tries again by itself.
        Locked,
        /// The file cannot be used, and is left as it is, until retry() finds it better.
        Offline,
    };

    /// Starts to open the file, or to make it where there is none.
    explicit TranscriptStore(const QString& path, QObject* parent = nullptr);
    /// Waits until what is queued is written, at most one lock's timeout where it cannot be.
    ~TranscriptStore() override;

    Condition condition() const { return m_condition; }

    /// Why it is locked or offline, and what to do.
    const Error& problem() const { return m_problem; }

    void retry();

    /// Every speaker of the project, by identification.
    const QVector<Speaker>& speakers() const { return m_contents.speakers; }

    /// Adds a speaker without a name. @return its identification; 0 while the file is not read.
    int addSpeaker();
    /// An empty name takes the name away.
    void nameSpeaker(int id, const QString& name);

    ClipState clipState(const QString& clip) const;
    /// The clips in a state, sorted; those that a former process left unfinished are waiting.
    QStringList clips(ClipState::Stage stage) const;

    /// Whether a clip has a transcript in the file, also while it is made again.
    bool hasTranscript(const QString& clip) const { return m_contents.transcribed.contains(clip); }

    /// A clip's transcript; null where it has none, and also until it is read: then clipChanged() comes.
    std::shared_ptr<const Transcript> transcript(const QString& clip);
    /// Stores a transcript; the clip is done once it is in the file. Speakers' identifications need only be unique in
    /// it.
    void putTranscript(const QString& clip, const Transcript& transcript);
    /// Moves a segment, by its place in the transcript, to another speaker. Nothing where the transcript is not read.
    void correctSpeaker(const QString& clip, int segment, int speaker);
    /// Forgets everything of a clip.
    void removeClip(const QString& clip);

    /// Says how a transcription goes; ClipState::Stage::Done is putTranscript()'s to say. A clip that has a transcript
    /// keeps it until the new one is there: cancelled or failed, it is done as before.
    void setClipState(const QString& clip, const ClipState& state);

    /// What an unfinished transcription has so far, also of a process that crashed.
    Recognised recognised(const QString& clip) const { return m_contents.recognised.value(clip); }

    /// Adds to it; words of another origin for the same track are dropped.
    void addRecognised(const QString& clip, int track, const QString& origin, const Batch& batch);
    void forgetRecognised(const QString& clip);

    /// Waits, for command lines and tests, until everything is in the file. @return whether it is.
    bool waitUntilStored(int ms);

Q_SIGNALS:
    void conditionChanged();
    void speakersChanged();
    /// State or transcript of a clip changed.
    void clipChanged(const QString& clip);

private:
    void writeSpeaker(const Speaker& speaker);
    void takeContents(const StoreContents& contents);
    void takeProblem(const std::optional<StoreProblem>& problem);
    void takeTranscript(const QString& clip, std::shared_ptr<Transcript> transcript);
    void takeSpeakers(const QVector<Speaker>& speakers);
    /// Runs a function on the thread that the store lives on; safe from any thread.
    template <class Function>
    void post(Function function);

    Condition m_condition = Condition::Opening;
    bool m_isRead = false;
    Error m_problem;
    StoreContents m_contents;
    QHash<QString, std::shared_ptr<const Transcript>> m_transcripts;
    /// The heard speakers of a loaded transcript's segments, for corrections.
    QHash<QString, QVector<int>> m_heard;
    QSet<QString> m_loading;
    std::atomic<int> m_nextSpeaker{1};
    std::unique_ptr<StoreThread> m_thread;
};

} // namespace desk::speech
