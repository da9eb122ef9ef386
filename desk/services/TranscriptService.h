#pragma once

#include "desk/services/Profile.h"
#include "desk/services/SpokenRanges.h"
#include "desk/services/TranscriptSettings.h"
#include "desk/speech/Transcriber.h"
#include "desk/speech/formats/Import.h"
#include "desk/speech/store/TranscriptStore.h"

#include <QHash>
#include <QThreadPool>

namespace desk::services
{

/// The transcripts of a profile: its database, the recognition of its clips and its settings. Clips go by
/// media::Sequence::id. User-interface thread; no call blocks. Recognition runs on a thread of its own at lower
/// priority.
class TranscriptService : public QObject
{
    Q_OBJECT

public:
    enum class Outcome { Done, Failed, Cancelled };
    Q_ENUM(Outcome)

    explicit TranscriptService(const Profile& profile, QObject* parent = nullptr);
    /// Clips that are not done wait in the database until resume().
    ~TranscriptService() override;

    speech::TranscriptStore& store() { return *m_store; }

    /// Whether the database is or was read and is not damaged since; a passing lock of another process does not count.
    bool isReadable() const;

    /// Whether it is being opened.
    bool isOpening() const { return m_store->condition() == speech::TranscriptStore::Condition::Opening; }

    /// What is heard in a sequence, of the clips whose transcripts are read; the others follow, each with
    /// TranscriptStore::clipChanged().
    MappedTranscript transcriptOf(const std::vector<SpokenRange>& ranges);

    struct Clip {
        QString id;
        QString name;
        QString path;
    };

    static Clip clipOf(const media::Sequence& sequence) { return {sequence.id, sequence.name, sequence.path}; }

    /// Opens the file and recognises what is said in it, after the clips asked for before. Goes on where a former run
    /// stopped. Nothing for a clip that waits, runs or has a transcript.
    void transcribe(const Clip& clip);
    /// The same for a clip that has a transcript, which stays until the new one is complete. What the user did to
    /// speakers stays too.
    void transcribeAgain(const Clip& clip);
    void cancel(const QString& clip);

    /// Goes on with those clips that a former run left waiting: of what is heard in a sequence, or of the timeline in a
    /// file, which is opened beside the user-interface thread.
    void resume(const std::vector<SpokenRange>& ranges);
    void resume(const QString& timeline);

    /// Clips that wait or run.
    int active() const { return m_jobs.size(); }

    /// Remembers which speech tracks of a sequence are transcribed and shown; empty for all. A transcription of the
    /// clip that is under way begins anew.
    Status chooseTracks(const QString& sequence, const QVector<int>& tracks);

    /// As spokenRanges() takes them.
    QVector<int> chosenTracks(const QString& sequence) const { return m_settings.tracks.value(sequence); }

    enum class Heard { Yes, No, Unknown };

    /// Whether a clip's transcript, as far as it is read, has words of the tracks; empty for all. Where there is none,
    /// and of a timeline, there is nothing to say against it.
    Heard hasWordsOf(const media::Sequence& clip, const QVector<int>& tracks);

    /// Reads a transcript file for a clip beside the user-interface thread and puts it in place of the one that is
    /// there. Answers with imported() or importFailed().
    void importFile(const Clip& clip, const QString& file);

    /// Writes what is heard in a sequence beside the user-interface thread, as writeTranscript() does. Answers with
    /// exported() or exportFailed().
    void exportFiles(const media::Sequence& sequence, const QStringList& files);

    const TranscriptSettings& settings() const { return m_settings; }

    /// Keeps them. Where the recogniser changes, what is being recognised begins anew with it.
    Status change(const TranscriptSettings& settings);

Q_SIGNALS:
    void queued(const QString& clip, const QString& name);
    /// @param percent -1 while media and model are being opened.
    void progressed(const QString& clip, int percent);

    /// @param text how many words, or why it failed, one sentence.
    void ended(const QString& clip, desk::services::TranscriptService::Outcome outcome, const QString& text);
    void imported(const QString& clip, const QString& text);
    void importFailed(const QString& clip, const QString& sentence);
    /// @param note what must be told of it; mostly empty.
    void exported(const QStringList& files, const QString& note);
    void exportFailed(const QString& sentence);

private:
    void start(const Clip& clip);
    void begin(const Clip& clip, const Result<media::Sequence>& sequence);
    void report(const QString& clip);
    void fail(const QString& clip, const Error& error);

    QString m_settingsFile;
    TranscriptSettings m_settings;
    std::unique_ptr<speech::TranscriptStore> m_store;
    std::unique_ptr<speech::Transcriber> m_transcriber;
    bool m_wasRead = false;
    /// By identifier: what was asked for and has not ended.
    QHash<QString, Clip> m_jobs;
    /// One thread, so that clips are recognised in the order in which they were asked for.
    QThreadPool m_opening;
    QThreadPool m_pool;
};

} // namespace desk::services
