#include "desk/services/TranscriptService.h"

#include "desk/base/LowPriority.h"
#include "desk/services/SpeechSound.h"
#include "desk/services/TranscriptExport.h"

#include <QDir>
#include <QSet>

#include <algorithm>

namespace desk::services
{

using speech::ClipState;
using speech::TranscriptStore;

namespace
{
QString countText(int words)
{
    return words == 1 ? QStringLiteral("1 word") : QStringLiteral("%L1 words").arg(words);
}

speech::Transcriber::RecogniserMaker makerOf(const speech::RecogniserSettings& settings)
{
    return [settings] {
        // The maker is called on the recogniser's thread, whose priority is its own.
        lowerPriority(10);
        return speech::makeRecogniser(settings);
    };
}
} // namespace

TranscriptService::TranscriptService(const Profile& profile, QObject* parent)
    : QObject(parent),
      m_settingsFile(profile.transcriptSettingsFile()),
      m_settings(TranscriptSettings::load(m_settingsFile))
{
    m_opening.setMaxThreadCount(1);
    QDir().mkpath(profile.folder());
    m_store = std::make_unique<TranscriptStore>(profile.transcriptFile());
    connect(m_store.get(), &TranscriptStore::conditionChanged, this,
            [this] { m_wasRead = m_wasRead || m_store->condition() == TranscriptStore::Condition::Online; });
    connect(m_store.get(), &TranscriptStore::clipChanged, this, &TranscriptService::report);
    m_transcriber = std::make_unique<speech::Transcriber>(*m_store, makerOf(m_settings.recogniser));
    connect(m_transcriber.get(), &speech::Transcriber::failed, this, &TranscriptService::fail);
}

TranscriptService::~TranscriptService()
{
    m_opening.waitForDone();
    m_pool.waitForDone();
    m_transcriber.reset();
    m_store->disconnect(this);
}

bool TranscriptService::isReadable() const
{
    return m_wasRead && m_store->condition() != TranscriptStore::Condition::Offline;
}

MappedTranscript TranscriptService::transcriptOf(const std::vector<SpokenRange>& ranges)
{
    return mapTranscript(ranges, [this](const QString& clip) { return m_store->transcript(clip); });
}

void TranscriptService::transcribe(const Clip& clip)
{
    if (m_store->clipState(clip.id).stage != ClipState::Stage::Done)
        start(clip);
}

void TranscriptService::transcribeAgain(const Clip& clip)
{
    start(clip);
}

void TranscriptService::start(const Clip& clip)
{
    if (m_jobs.contains(clip.id))
        return;
    const bool isNext = m_jobs.isEmpty();
    m_jobs[clip.id] = clip;
    emit queued(clip.id, clip.name);
    m_store->setClipState(clip.id, isNext ? ClipState::preparing() : ClipState{ClipState::Stage::Waiting, 0, {}});
    m_opening.start([this, clip] {
        const Status there = checkThere(clip.path);
        auto sequence = there ? media::openSequence(clip.path) : there.error();
        QMetaObject::invokeMethod(
            this, [this, clip, sequence = std::move(sequence)] { begin(clip, sequence); }, Qt::QueuedConnection);
    });
}

void TranscriptService::resume(const std::vector<SpokenRange>& ranges)
{
    for (const SpokenRange& range : ranges) {
        if (m_store->clipState(range.clip->id).stage == ClipState::Stage::Waiting)
            transcribe(clipOf(*range.clip));
    }
}

void TranscriptService::resume(const QString& timeline)
{
    m_pool.start([this, timeline] {
        const auto sequence = media::openSequence(timeline);
        if (!sequence)
            return;
        QMetaObject::invokeMethod(
            this, [this, ranges = spokenRanges(*sequence)] { resume(ranges); }, Qt::QueuedConnection);
    });
}

void TranscriptService::begin(const Clip& clip, const Result<media::Sequence>& sequence)
{
    if (!m_jobs.contains(clip.id))
        return;
    if (sequence)
        m_transcriber->add(clip.id, recognitionJob(*sequence, chosenTracks(clip.id)));
    else
        fail(clip.id, sequence.error());
}

void TranscriptService::fail(const QString& clip, const Error& error)
{
    m_store->setClipState(clip, {ClipState::Stage::Failed, 0, error.sentence()});
    report(clip);
}

void TranscriptService::cancel(const QString& clip)
{
    if (m_jobs.remove(clip) == 0)
        return;
    m_transcriber->cancel(clip);
    m_store->setClipState(clip, {});
    emit ended(clip, Outcome::Cancelled, {});
}

void TranscriptService::report(const QString& clip)
{
    if (!m_jobs.contains(clip))
        return;
    const ClipState state = m_store->clipState(clip);
    if (state.stage == ClipState::Stage::Waiting)
        return;
    if (state.stage == ClipState::Stage::Running)
        return emit progressed(clip, state.percent);
    m_jobs.remove(clip);
    if (!state.failure.isEmpty())
        return emit ended(clip, Outcome::Failed, state.failure);
    const auto transcript = m_store->transcript(clip);
    emit ended(clip, Outcome::Done, transcript ? countText(transcript->countOfWords()) : QString());
}

Status TranscriptService::chooseTracks(const QString& sequence, const QVector<int>& tracks)
{
    if (tracks == chosenTracks(sequence))
        return {};
    if (tracks.isEmpty())
        m_settings.tracks.remove(sequence);
    else
        m_settings.tracks[sequence] = tracks;
    const bool isAtWork = m_jobs.contains(sequence);
    const Clip clip = m_jobs.value(sequence);
    cancel(sequence);
    m_store->forgetRecognised(sequence);
    if (isAtWork)
        start(clip);
    return m_settings.save(m_settingsFile);
}

TranscriptService::Heard TranscriptService::hasWordsOf(const media::Sequence& clip, const QVector<int>& tracks)
{
    const auto transcript = m_store->transcript(clip.id);
    if (!transcript || clip.isTimeline() || tracks.isEmpty())
        return Heard::Yes;
    QSet<int> heard;
    for (const speech::Segment& segment : transcript->segments)
        heard.insert(segment.track);
    if (heard == QSet<int>{-1})
        return Heard::Unknown;
    const QVector<int> shown = heardTogether(clip, tracks);
    const bool isHeard = std::any_of(shown.begin(), shown.end(), [&](int track) { return heard.contains(track); });
    return shown.isEmpty() || isHeard ? Heard::Yes : Heard::No;
}

void TranscriptService::importFile(const Clip& clip, const QString& file)
{
    m_pool.start([this, clip, file] {
        const auto sequence = media::openSequence(clip.path);
        auto read = speech::importTranscriptFile(file, sequence ? lengthMs(*sequence) : 0);
        const auto take = [this, clip, read = std::move(read)] {
            if (!read)
                return emit importFailed(clip.id, read.error().sentence());
            cancel(clip.id);
            m_store->putTranscript(clip.id, read->transcript);
            const int repaired = read->repairs.total();
            emit imported(clip.id,
                          countText(read->transcript.countOfWords()) +
                              (repaired > 0 ? QStringLiteral(", times repaired: %1").arg(repaired) : QString()));
        };
        QMetaObject::invokeMethod(this, take, Qt::QueuedConnection);
    });
}

void TranscriptService::exportFiles(const media::Sequence& sequence, const QStringList& files)
{
    const std::vector<SpokenRange> ranges = spokenRanges(sequence, chosenTracks(sequence.id));
    QHash<QString, std::shared_ptr<const speech::Transcript>> sources;
    for (const SpokenRange& range : ranges)
        sources[range.clip->id] = m_store->transcript(range.clip->id);
    m_pool.start([this, sequence, files, ranges, sources] {
        const auto find = [&sources](const QString& clip) { return sources[clip]; };
        const auto written = writeTranscript(mapTranscript(ranges, find).transcript, sequence, files);
        const auto report = [this, files, written] {
            if (written)
                emit exported(files, *written);
            else
                emit exportFailed(written.error().sentence());
        };
        QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
    });
}

Status TranscriptService::change(const TranscriptSettings& settings)
{
    const bool isSame = settings.recogniser == m_settings.recogniser;
    m_settings = settings;
    if (!isSame) {
        const QHash<QString, Clip> former = std::exchange(m_jobs, {});
        m_transcriber->use(makerOf(settings.recogniser));
        for (const Clip& clip : former)
            start(clip);
    }
    return m_settings.save(m_settingsFile);
}

} // namespace desk::services
