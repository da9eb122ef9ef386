#include "desk/speech/store/TranscriptStore.h"

#include "desk/speech/store/StoreThread.h"

#include <QSet>

#include <algorithm>

namespace desk::speech
{

namespace
{

/// A transcript as it stands in the file.
struct Loaded {
    Transcript transcript;
    QVector<int> heard;
};

Loaded load(StoreDatabase& database, const QString& clip)
{
    Loaded loaded;
    const QVector<KeptSegment> segments = database.segments(clip);
    for (const KeptSegment& kept : segments) {
        loaded.transcript.segments.append(kept.segment);
        loaded.heard.append(kept.heard);
    }
    return loaded;
}

/// Lists the speakers whom the segments name.
void listSpeakers(Transcript& transcript, const QVector<Speaker>& known)
{
    QSet<int> named;
    for (const Segment& segment : qAsConst(transcript.segments))
        named.insert(segment.speaker);
    transcript.speakers.clear();
    std::copy_if(known.begin(), known.end(), std::back_inserter(transcript.speakers),
                 [&](const Speaker& speaker) { return named.contains(speaker.id); });
}

} // namespace

template <class Function>
void TranscriptStore::post(Function function)
{
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}

TranscriptStore::TranscriptStore(const QString& path, QObject* parent) : QObject(parent)
{
    StoreThread::Events events;
    events.opened = [this](const StoreContents& contents) {
        int last = 0;
        for (const Speaker& speaker : contents.speakers)
            last = std::max(last, speaker.id);
        m_nextSpeaker = std::max<int>(m_nextSpeaker, last + 1);
        post([this, contents] { takeContents(contents); });
    };
    events.problemChanged = [this](const std::optional<StoreProblem>& problem) {
        post([this, problem] { takeProblem(problem); });
    };
    m_thread = std::make_unique<StoreThread>(path, std::move(events));
}

TranscriptStore::~TranscriptStore() = default;

void TranscriptStore::retry()
{
    m_thread->retry();
}

int TranscriptStore::addSpeaker()
{
    if (!m_isRead)
        return 0;
    const Speaker speaker{m_nextSpeaker++, QString()};
    m_contents.speakers.append(speaker);
    writeSpeaker(speaker);
    Q_EMIT speakersChanged();
    return speaker.id;
}

void TranscriptStore::nameSpeaker(int id, const QString& name)
{
    QVector<Speaker> speakers = m_contents.speakers;
    const auto known = std::find_if(speakers.begin(), speakers.end(), [&](const Speaker& s) { return s.id == id; });
    if (known == speakers.end() || known->name == name)
        return;
    known->name = name;
    writeSpeaker(*known);
    takeSpeakers(speakers);
}

/// What the file says afterwards counts: a transcript that was queued before may have changed the speakers too.
void TranscriptStore::writeSpeaker(const Speaker& speaker)
{
    auto speakers = std::make_shared<QVector<Speaker>>();
    const auto run = [=](StoreDatabase& database) {
        database.setSpeaker(speaker);
        *speakers = database.speakers();
    };
    m_thread->add({Sql::Access::Write, run, [=] { post([=] { takeSpeakers(*speakers); }); }});
}

ClipState TranscriptStore::clipState(const QString& clip) const
{
    return m_contents.clips.value(clip);
}

QStringList TranscriptStore::clips(ClipState::Stage stage) const
{
    QStringList found;
    for (auto clip = m_contents.clips.cbegin(); clip != m_contents.clips.cend(); ++clip) {
        if (clip->stage == stage)
            found.append(clip.key());
    }
    found.sort();
    return found;
}

std::shared_ptr<const Transcript> TranscriptStore::transcript(const QString& clip)
{
    const auto known = m_transcripts.value(clip);
    if (known || !hasTranscript(clip) || m_loading.contains(clip))
        return known;
    m_loading.insert(clip);
    auto loaded = std::make_shared<Loaded>();
    m_thread->add({Sql::Access::Read, [=](StoreDatabase& database) { *loaded = load(database, clip); },
                   [=] {
                       post([=] {
                           m_loading.remove(clip);
                           // What was stored meanwhile is newer.
                           if (m_transcripts.contains(clip) || !hasTranscript(clip))
                               return;
                           m_heard[clip] = loaded->heard;
                           takeTranscript(clip, std::make_shared<Transcript>(loaded->transcript));
                       });
                   }});
    return nullptr;
}

void TranscriptStore::putTranscript(const QString& clip, const Transcript& transcript)
{
    struct Outcome {
        Loaded loaded;
        QVector<Speaker> speakers;
    };

    auto outcome = std::make_shared<Outcome>();
    const auto run = [=](StoreDatabase& database) {
        database.replaceTranscript(clip, transcript, m_nextSpeaker);
        *outcome = {load(database, clip), database.speakers()};
    };
    m_thread->add({Sql::Access::Write, run, [=] {
                       post([=] {
                           m_contents.clips[clip] = {ClipState::Stage::Done, 100, QString()};
                           m_contents.transcribed.insert(clip);
                           m_contents.recognised.remove(clip);
                           m_heard[clip] = outcome->loaded.heard;
                           takeSpeakers(outcome->speakers);
                           takeTranscript(clip, std::make_shared<Transcript>(outcome->loaded.transcript));
                       });
                   }});
}

void TranscriptStore::correctSpeaker(const QString& clip, int segment, int speaker)
{
    const auto known = m_transcripts.value(clip);
    if (!known || segment < 0 || segment >= known->segments.size() || known->segments[segment].speaker == speaker)
        return;
    auto changed = std::make_shared<Transcript>(*known);
    changed->segments[segment].speaker = speaker;
    const Segment& moved = changed->segments[segment];
    const Correction correction{{moved.startMs(), moved.endMs()}, m_heard[clip].value(segment, -1), speaker};
    auto loaded = std::make_shared<Loaded>();
    const auto run = [=](StoreDatabase& database) {
        database.correct(clip, correction);
        *loaded = load(database, clip);
    };
    const auto take = [=] {
        const auto cached = m_transcripts.value(clip);
        if (cached && cached->segments != loaded->transcript.segments)
            takeTranscript(clip, std::make_shared<Transcript>(loaded->transcript));
    };
    m_thread->add({Sql::Access::Write, run, [=] { post(take); }});
    takeTranscript(clip, std::move(changed));
}

void TranscriptStore::removeClip(const QString& clip)
{
    m_contents.clips.remove(clip);
    m_contents.transcribed.remove(clip);
    m_contents.recognised.remove(clip);
    m_transcripts.remove(clip);
    m_heard.remove(clip);
    m_thread->add({Sql::Access::Write, [=](StoreDatabase& database) { database.removeClip(clip); }, {}});
    Q_EMIT clipChanged(clip);
}

void TranscriptStore::setClipState(const QString& clip, const ClipState& wanted)
{
    const bool isOver = wanted.stage == ClipState::Stage::Missing || wanted.stage == ClipState::Stage::Failed;
    const ClipState state =
        isOver && hasTranscript(clip) ? ClipState{ClipState::Stage::Done, 100, wanted.failure} : wanted;
    if (clipState(clip) == state)
        return;
    m_contents.clips[clip] = state;
    m_thread->add({Sql::Access::Write, [=](StoreDatabase& database) { database.setState(clip, state); }, {}});
    Q_EMIT clipChanged(clip);
}

void TranscriptStore::addRecognised(const QString& clip, int track, const QString& origin, const Batch& batch)
{
    RecognisedTrack& known = m_contents.recognised[clip][track];
    if (known.origin != origin)
        known = {origin, {}, 0};
    known.utterances += batch.utterances;
    known.resumeAt = batch.resumeAt;
    m_thread->add(
        {Sql::Access::Write, [=](StoreDatabase& database) { database.addRecognised(clip, track, origin, batch); }, {}});
}

void TranscriptStore::forgetRecognised(const QString& clip)
{
    if (m_contents.recognised.remove(clip) > 0)
        m_thread->add({Sql::Access::Write, [=](StoreDatabase& database) { database.forgetRecognised(clip); }, {}});
}

bool TranscriptStore::waitUntilStored(int ms)
{
    return m_thread->waitUntilIdle(ms);
}

void TranscriptStore::takeContents(const StoreContents& contents)
{
    // What was changed before the file was read is queued behind it and stays.
    const StoreContents early = std::exchange(m_contents, contents);
    m_contents.speakers += early.speakers;
    for (auto clip = early.clips.cbegin(); clip != early.clips.cend(); ++clip)
        m_contents.clips[clip.key()] = clip.value();
    for (auto clip = early.recognised.cbegin(); clip != early.recognised.cend(); ++clip)
        m_contents.recognised[clip.key()] = clip.value();
    m_isRead = true;
    m_condition = Condition::Online;
    Q_EMIT conditionChanged();
}

void TranscriptStore::takeProblem(const std::optional<StoreProblem>& problem)
{
    m_problem = problem ? problem->error : Error();
    if (problem)
        m_condition = problem->passes ? Condition::Locked : Condition::Offline;
    else
        m_condition = Condition::Online;
    Q_EMIT conditionChanged();
}

void TranscriptStore::takeTranscript(const QString& clip, std::shared_ptr<Transcript> transcript)
{
    listSpeakers(*transcript, m_contents.speakers);
    m_transcripts[clip] = std::move(transcript);
    Q_EMIT clipChanged(clip);
}

void TranscriptStore::takeSpeakers(const QVector<Speaker>& speakers)
{
    if (speakers == m_contents.speakers)
        return;
    m_contents.speakers = speakers;
    for (auto& known : m_transcripts) {
        auto changed = std::make_shared<Transcript>(*known);
        listSpeakers(*changed, speakers);
        known = std::move(changed);
    }
    Q_EMIT speakersChanged();
}

} // namespace desk::speech
