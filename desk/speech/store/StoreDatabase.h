#pragma once

#include "desk/base/Result.h"
#include "desk/speech/recognition/Recogniser.h"
#include "desk/speech/store/SpeakerMatch.h"
#include "desk/speech/store/Sql.h"
#include "desk/speech/store/StoreContents.h"

#include <atomic>
#include <memory>

namespace desk::speech
{

/// The file of a project's transcripts: tables and statements. Used by the store's thread alone. Statements run inside
/// the transaction of whoever calls; what fails shows in sql().
class StoreDatabase
{
public:
    /// Opens the file or, where there is none, makes it. A file that is damaged, of another program or of another
    /// version is refused without a change to it.
    static std::unique_ptr<StoreDatabase> open(const QString& path, StoreProblem& problem);

    Sql& sql() { return *m_sql; }

    StoreContents contents();
    QVector<Speaker> speakers();
    QVector<KeptSegment> segments(const QString& clip);
    /// Replaces a clip's transcript. Its speakers become the project's (matchSpeakers) and the clip's corrections are
    /// applied.
    /// @param nextSpeaker the identification of the next new speaker; counted up.
    void replaceTranscript(const QString& clip, const Transcript& transcript, std::atomic<int>& nextSpeaker);
    /// Forgets transcript, corrections and state of a clip.
    void removeClip(const QString& clip);
    void setState(const QString& clip, const ClipState& state);
    /// Adds a speaker, or renames it.
    void setSpeaker(const Speaker& speaker);
    /// Keeps the correction and applies it to the transcript that is there now.
    void correct(const QString& clip, const Correction& correction);
    void addRecognised(const QString& clip, int track, const QString& origin, const Batch& batch);
    void forgetRecognised(const QString& clip);

private:
    explicit StoreDatabase(std::unique_ptr<Sql> sql) : m_sql(std::move(sql)) {}

    qint64 clipId(const QString& clip);
    QVector<Correction> corrections(qint64 clip);
    void insertSegments(qint64 clip, const QVector<KeptSegment>& segments);
    void dropUnusedSpeakers();

    std::unique_ptr<Sql> m_sql;
};

} // namespace desk::speech
