#include "desk/services/TranscriptWindowInfo.h"

#include "desk/media/Timecode.h"
#include "desk/services/FrameTime.h"

#include <QFont>
#include <QScopedValueRollback>
#include <QSet>

#include <algorithm>
#include <limits>

namespace desk::services
{

using speech::ClipState;
using Stage = speech::ClipState::Stage;

namespace
{
STT_TranscriptSegment segmentFor(const speech::Segment& source, int number)
{
    STT_TranscriptSegment segment;
    speech::BlockText block = speech::blockText(source.words);
    segment.number = number;
    segment.text = block.text.toStdString();
    segment.speakerKey = source.speaker;
    segment.wordStartOffsets = std::move(block.starts);
    segment.wordEndOffsets = std::move(block.ends);
    for (const speech::Word& word : source.words) {
        segment.wordStarts.push_back(word.startMs);
        segment.wordEnds.push_back(word.endMs);
    }
    return segment;
}

STT_SpeakerInfo infoOf(const speech::Speaker& speaker)
{
    return {std::to_string(speaker.id), {}, speaker.name.toStdString()};
}

STT_Transcription windowState(Stage stage)
{
    switch (stage) {
    case Stage::Waiting:
        return STT_Transcription::Waiting;
    case Stage::Running:
        return STT_Transcription::Running;
    case Stage::Failed:
        return STT_Transcription::Failed;
    case Stage::Missing:
    case Stage::Done:
        break;
    }
    return STT_Transcription::Missing;
}

bool canBeAsked(Stage stage)
{
    return stage == Stage::Missing || stage == Stage::Failed;
}
} // namespace

TranscriptWindowInfo::TranscriptWindowInfo(TranscriptService& service, media::Player& source, media::Player& record)
    : m_service(service), m_source(&source), m_record(&record), m_player(&source)
{
    const auto report = [this] {
        if (!m_isAsked)
            emit changed();
    };
    connect(&service.store(), &speech::TranscriptStore::conditionChanged, this, &TranscriptWindowInfo::resume);
    connect(&service.store(), &speech::TranscriptStore::conditionChanged, this, report);
    connect(&service.store(), &speech::TranscriptStore::speakersChanged, this, report);
    connect(&service.store(), &speech::TranscriptStore::clipChanged, this, [this, report](const QString& clip) {
        if (holds(clip))
            report();
    });
    for (media::Player* player : {m_source, m_record}) {
        connect(player, &media::Player::loaded, this, [this, player] {
            if (m_service.store().condition() == speech::TranscriptStore::Condition::Offline)
                m_service.store().retry();
            resume();
            if (player == m_player)
                emit materialChanged();
        });
    }
}

bool TranscriptWindowInfo::holds(const QString& clip) const
{
    return std::any_of(m_ranges.begin(), m_ranges.end(),
                       [&](const SpokenRange& range) { return range.clip->id == clip; });
}

QString TranscriptWindowInfo::chooseTracks(const QVector<int>& tracks)
{
    const auto& sequence = m_player->sequence();
    if (!sequence)
        return {};
    if (const Status kept = m_service.chooseTracks(sequence->id, tracks); !kept)
        emit refused(kept.error().sentence());
    emit changed();
    switch (m_service.hasWordsOf(*sequence, tracks)) {
    case TranscriptService::Heard::No:
        return QStringLiteral(
            "The transcript has no words of these tracks: Transcribe Selected Clip Again listens to them");
    case TranscriptService::Heard::Unknown:
        return QStringLiteral("This transcript does not say which track its words are from: all are shown");
    case TranscriptService::Heard::Yes:
        break;
    }
    return {};
}

void TranscriptWindowInfo::forget()
{
    m_isLoaded = false;
    m_segments.clear();
    m_mapped = {};
    m_ranges.clear();
    if (m_player->sequence())
        m_ranges = spokenRanges(*m_player->sequence(), m_service.chosenTracks(m_player->sequence()->id));
}

/// Clips of a timeline need not be in any bin: here is who knows where they are.
void TranscriptWindowInfo::resume()
{
    for (const media::Player* player : {m_source, m_record}) {
        if (player->sequence())
            m_service.resume(spokenRanges(*player->sequence()));
    }
}

void TranscriptWindowInfo::load()
{
    if (m_isLoaded)
        return;
    m_isLoaded = true;
    m_hasTranscript = false;
    m_awaits = false;
    for (const SpokenRange& range : m_ranges) {
        const bool isRead = m_service.store().transcript(range.clip->id) != nullptr;
        m_hasTranscript = m_hasTranscript || isRead;
        m_awaits = m_awaits || (m_service.store().hasTranscript(range.clip->id) && !isRead);
    }
    m_mapped = m_service.transcriptOf(m_ranges);
    m_segments.clear();
    m_segments.reserve(m_mapped.origins.size());
    for (const speech::Segment& segment : qAsConst(m_mapped.transcript.segments))
        m_segments.push_back(segmentFor(segment, int(m_segments.size())));
}

const std::vector<STT_TranscriptSegment>& TranscriptWindowInfo::segments(int)
{
    load();
    return m_segments;
}

void TranscriptWindowInfo::prepareTranscript()
{
    forget();
    load();
}

void TranscriptWindowInfo::refreshTranscript()
{
    forget();
}

STT_SpeakerInfo TranscriptWindowInfo::speakerOfSegment(int segment)
{
    if (segment < 0 || segment >= int(segments(0).size()))
        return {};
    const int key = m_segments[std::size_t(segment)].speakerKey;
    for (const speech::Speaker& speaker : m_service.store().speakers()) {
        if (speaker.id == key)
            return infoOf(speaker);
    }
    return {std::to_string(key), {}, {}};
}

bool TranscriptWindowInfo::isTranscriptLoaded()
{
    load();
    return m_hasTranscript;
}

long TranscriptWindowInfo::markIn()
{
    return long(m_player->markIn());
}

long TranscriptWindowInfo::markOut()
{
    return long(m_player->markOut());
}

NvUnit_t TranscriptWindowInfo::position()
{
    return m_player->position();
}

void TranscriptWindowInfo::goToMarkIn()
{
    m_player->goToMarkIn();
}

void TranscriptWindowInfo::goToMarkOut()
{
    m_player->goToMarkOut();
}

void TranscriptWindowInfo::moveMonitor(NvUnit_t frame)
{
    m_player->seek(frame);
}

void TranscriptWindowInfo::togglePlayback()
{
    m_player->togglePlay();
}

void TranscriptWindowInfo::stopPlayback()
{
    m_player->stop();
}

void TranscriptWindowInfo::setMarkIn(NvUnit_t frame)
{
    m_player->setMarks(frame, m_player->markOut());
}

void TranscriptWindowInfo::setMarks(NvUnit_t in, NvUnit_t out)
{
    m_player->setMarks(in, out);
}

int TranscriptWindowInfo::msFromFrame(int frame, bool previous)
{
    if (frame < 0 || !m_player->sequence())
        return -1;
    const qint64 ms = msOfFrame(frame, m_player->rate(), previous ? FrameRounding::Down : FrameRounding::Up);
    return ms > std::numeric_limits<int>::max() ? -1 : int(ms);
}

int TranscriptWindowInfo::frameFromMs(int ms)
{
    return ms < 0 || !m_player->sequence() ? -1 : int(frameOfMs(ms, m_player->rate()));
}

std::string TranscriptWindowInfo::timecodeText(int ms)
{
    const QString start = m_player->sequence() ? m_player->sequence()->startTimecode : QString();
    return media::Timecode::startingAt(start, m_player->rate()).text(std::max(0, frameFromMs(ms))).toStdString();
}

void TranscriptWindowInfo::correctSpeaker(int segment, const STT_SpeakerInfo& speaker)
{
    if (segment < 0 || segment >= int(segments(0).size()))
        return;
    const int id = QString::fromStdString(speaker.id).toInt();
    const MappedTranscript::Origin origin = m_mapped.origins[std::size_t(segment)];
    const QScopedValueRollback<bool> asked(m_isAsked, true);
    m_service.store().correctSpeaker(origin.clip, origin.segment, id);
    // A timeline may use the same words more than once.
    for (std::size_t other = 0; other < m_segments.size(); ++other) {
        const MappedTranscript::Origin& place = m_mapped.origins[other];
        if (place.clip == origin.clip && place.segment == origin.segment)
            m_segments[other].speakerKey = id;
    }
}

void TranscriptWindowInfo::storeSpeakerName(const STT_SpeakerInfo& speaker, const std::string& newName)
{
    const QScopedValueRollback<bool> asked(m_isAsked, true);
    m_service.store().nameSpeaker(QString::fromStdString(speaker.id).toInt(), QString::fromStdString(newName));
}

int TranscriptWindowInfo::addSpeaker()
{
    const QScopedValueRollback<bool> asked(m_isAsked, true);
    return m_service.store().addSpeaker();
}

/// Names of the whole project can be given; of the others only who speaks here is of interest.
std::vector<STT_SpeakerInfo> TranscriptWindowInfo::speakers(bool withUnnamed)
{
    QSet<int> heard;
    for (const STT_TranscriptSegment& segment : segments(0))
        heard.insert(segment.speakerKey);
    std::vector<STT_SpeakerInfo> found;
    for (const speech::Speaker& speaker : m_service.store().speakers()) {
        if (!speaker.name.isEmpty() || (withUnnamed && heard.contains(speaker.id)))
            found.push_back(infoOf(speaker));
    }
    return found;
}

bool TranscriptWindowInfo::isDatabaseOnline()
{
    load();
    const bool isLocked = m_service.store().condition() == speech::TranscriptStore::Condition::Locked;
    return (m_service.isReadable() && !(m_awaits && isLocked)) || m_service.isOpening();
}

std::vector<TranscriptWindowInfo::MissingClip> TranscriptWindowInfo::missingClips() const
{
    std::vector<MissingClip> missing;
    QSet<QString> seen;
    for (const SpokenRange& range : m_ranges) {
        const ClipState state = m_service.store().clipState(range.clip->id);
        if (state.stage != Stage::Done && !seen.contains(range.clip->id))
            missing.push_back({&range, state});
        seen.insert(range.clip->id);
    }
    return missing;
}

std::vector<STT_MissingTranscript> TranscriptWindowInfo::missingTranscripts()
{
    constexpr qint64 samplesPerMs = 48;
    std::vector<STT_MissingTranscript> missing;
    const std::vector<MissingClip> clips = missingClips();
    for (const MissingClip& clip : clips)
        missing.push_back({clip.first->clip->id.toStdString(), clip.first->clip->name.toStdString(),
                           int(clip.first->start / samplesPerMs), windowState(clip.state.stage), clip.state.percent,
                           clip.state.failure.toStdString()});
    return missing;
}

std::string TranscriptWindowInfo::speakerText(int key)
{
    for (const speech::Speaker& speaker : m_service.store().speakers()) {
        if (speaker.id == key)
            return infoOf(speaker).displayName().toStdString();
    }
    return {};
}

void TranscriptWindowInfo::transcribe(const std::string& mediaGuid)
{
    const QString wanted = QString::fromStdString(mediaGuid);
    // The window reads everything anew when this returns.
    const QScopedValueRollback<bool> asked(m_isAsked, true);
    const std::vector<MissingClip> clips = missingClips();
    for (const MissingClip& clip : clips) {
        const bool isMeant = mediaGuid == "ALL" || clip.first->clip->id == wanted;
        if (isMeant && canBeAsked(clip.state.stage))
            m_service.transcribe(TranscriptService::clipOf(*clip.first->clip));
    }
}

void TranscriptWindowInfo::changeSettings(const TranscriptSettings& settings)
{
    if (const Status kept = m_service.change(settings); !kept)
        emit refused(kept.error().sentence());
}

void TranscriptWindowInfo::storeFont(const QFont& font)
{
    TranscriptSettings settings = m_service.settings();
    settings.font = font.toString();
    changeSettings(settings);
}

bool TranscriptWindowInfo::storedFont(QFont& font)
{
    const QString& text = m_service.settings().font;
    return !text.isEmpty() && font.fromString(text);
}

void TranscriptWindowInfo::storeSpeakerVisibility(bool visible)
{
    TranscriptSettings settings = m_service.settings();
    settings.visibilities.speaker = visible;
    changeSettings(settings);
}

void TranscriptWindowInfo::storeTimecodeVisibility(bool visible)
{
    TranscriptSettings settings = m_service.settings();
    settings.visibilities.timecode = visible;
    changeSettings(settings);
}

void TranscriptWindowInfo::storeNotTranscribedVisibility(bool visible)
{
    TranscriptSettings settings = m_service.settings();
    settings.visibilities.notTranscribed = visible;
    changeSettings(settings);
}

STT_Visibilities TranscriptWindowInfo::storedVisibilities()
{
    return m_service.settings().visibilities;
}

void TranscriptWindowInfo::exportSubcaptions()
{
    emit wished(Wish::ExportSubcaptions);
}

void TranscriptWindowInfo::createSubcaptions()
{
    emit wished(Wish::CreateSubcaptions);
}

void TranscriptWindowInfo::exportTranscript()
{
    emit wished(Wish::ExportTranscript);
}

void TranscriptWindowInfo::createScriptFromClip()
{
    emit wished(Wish::CreateScript);
}

void TranscriptWindowInfo::showMonitor(bool record)
{
    m_player = record ? m_record : m_source;
    forget();
}

bool TranscriptWindowInfo::isMaterialLoaded()
{
    load();
    return m_player->sequence() && !m_service.isOpening() && !(m_awaits && m_segments.empty());
}

int TranscriptWindowInfo::countOfRemainingClips()
{
    const std::vector<MissingClip> clips = missingClips();
    return int(std::count_if(clips.begin(), clips.end(),
                             [](const MissingClip& clip) { return canBeAsked(clip.state.stage); }));
}

} // namespace desk::services
