#include "desk/services/SpokenRanges.h"

#include "desk/media/EditList.h"
#include "desk/media/SoundReader.h"
#include "desk/services/SpeechSound.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace desk::services
{

namespace
{
constexpr qint64 samplesPerMs = media::soundRate / 1000;

bool startsEarlier(const SpokenRange& a, const SpokenRange& b)
{
    return a.start < b.start;
}

/// Makes one of ranges that overlap or touch; all have the clip at the same place.
void addUnited(std::vector<SpokenRange> ranges, std::vector<SpokenRange>& to)
{
    std::sort(ranges.begin(), ranges.end(), startsEarlier);
    for (const SpokenRange& range : ranges) {
        const bool joins = &range != &ranges.front() && range.start <= to.back().end;
        if (joins)
            to.back().end = std::max(to.back().end, range.end);
        else
            to.push_back(range);
    }
}

class Mapper
{
public:
    Mapper(const SpokenRange& range, const speech::Transcript& source, MappedTranscript& to)
        : m_range(range), m_source(source), m_to(to)
    {
    }

    void map()
    {
        int longest = 0;
        for (const speech::Segment& segment : m_source.segments)
            longest = std::max(longest, segment.endMs() - segment.startMs());
        const auto from = int(m_range.clipStart / samplesPerMs) - longest - 1;
        const auto first =
            std::lower_bound(m_source.segments.begin(), m_source.segments.end(), from,
                             [](const speech::Segment& segment, int ms) { return segment.startMs() < ms; });
        for (auto segment = first; segment != m_source.segments.end(); ++segment) {
            if (segment->startMs() * samplesPerMs >= clipEnd())
                break;
            mapSegment(*segment, int(segment - m_source.segments.begin()));
        }
    }

private:
    qint64 clipEnd() const { return m_range.clipStart + m_range.end - m_range.start; }

    void mapSegment(const speech::Segment& segment, int place)
    {
        if (!m_range.tracks.isEmpty() && segment.track >= 0 && !m_range.tracks.contains(segment.track))
            return;
        speech::Segment mapped;
        mapped.speaker = segment.speaker;
        mapped.track = segment.track;
        for (const speech::Word& word : segment.words) {
            const qint64 middle = (qint64(word.startMs) + word.endMs) * samplesPerMs / 2;
            if (middle < m_range.clipStart || middle >= clipEnd())
                continue;
            mapped.words += word;
            mapped.words.last().startMs = timeOf(word.startMs);
            mapped.words.last().endMs = timeOf(word.endMs);
        }
        if (mapped.words.isEmpty())
            return;
        m_to.transcript.segments += mapped;
        m_to.origins.push_back({m_range.clip->id, place});
    }

    /// In the sequence, to the nearest millisecond.
    int timeOf(int clipMs) const
    {
        const qint64 sample = clipMs * samplesPerMs - m_range.clipStart + m_range.start;
        return int((std::clamp(sample, m_range.start, m_range.end) + samplesPerMs / 2) / samplesPerMs);
    }

    const SpokenRange& m_range;
    const speech::Transcript& m_source;
    MappedTranscript& m_to;
};

void sortByTime(MappedTranscript& mapped)
{
    std::vector<int> order(mapped.origins.size());
    std::iota(order.begin(), order.end(), 0);
    const auto isEarlier = [&](int a, int b) {
        return mapped.transcript.segments[a].startMs() < mapped.transcript.segments[b].startMs();
    };
    if (std::is_sorted(order.begin(), order.end(), isEarlier))
        return;
    std::stable_sort(order.begin(), order.end(), isEarlier);
    MappedTranscript sorted;
    for (const int place : order) {
        sorted.transcript.segments += mapped.transcript.segments[place];
        sorted.origins.push_back(mapped.origins[std::size_t(place)]);
    }
    sorted.transcript.speakers = std::move(mapped.transcript.speakers);
    mapped = std::move(sorted);
}

void addSpeakers(const QVector<speech::Speaker>& speakers, QVector<speech::Speaker>& to)
{
    for (const speech::Speaker& speaker : speakers) {
        if (!to.contains(speaker))
            to += speaker;
    }
}
} // namespace

QVector<SpeechTrack> speechTracks(const media::Sequence& sequence)
{
    QVector<SpeechTrack> tracks;
    if (sequence.isTimeline()) {
        for (int number = 0; number < int(sequence.edits->sound.size()); ++number)
            tracks.append({number, QStringLiteral("Audio track %1").arg(number + 1)});
        return tracks;
    }
    for (const media::AudioTrackInfo& info : sequence.audio) {
        QStringList parts{info.name, info.label, info.title};
        parts.removeAll({});
        const QString language = info.language.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(info.language);
        tracks.append({tracks.size(), parts.join(QStringLiteral("  ")) + language});
    }
    return tracks;
}

std::vector<SpokenRange> spokenRanges(const media::Sequence& sequence, const QVector<int>& chosen)
{
    std::vector<SpokenRange> ranges;
    if (!sequence.isTimeline()) {
        if (!sequence.audio.isEmpty())
            ranges.push_back({std::make_shared<media::Sequence>(sequence), 0, lengthMs(sequence) * samplesPerMs, 0,
                              heardTogether(sequence, chosen)});
        return ranges;
    }
    std::map<std::pair<QString, qint64>, std::vector<SpokenRange>> alike;
    const auto& sound = sequence.edits->sound;
    for (int track = 0; track < int(sound.size()); ++track) {
        if (!chosen.isEmpty() && !chosen.contains(track))
            continue;
        for (const media::Cut& cut : sound[std::size_t(track)]) {
            if (!cut.media->audio.isEmpty())
                alike[{cut.media->id, cut.start - cut.mediaStart}].push_back(
                    {cut.media, cut.start, cut.end(), cut.mediaStart});
        }
    }
    for (const auto& [key, parts] : alike)
        addUnited(parts, ranges);
    std::stable_sort(ranges.begin(), ranges.end(), startsEarlier);
    return ranges;
}

MappedTranscript mapTranscript(const std::vector<SpokenRange>& ranges, const TranscriptFinder& find)
{
    MappedTranscript mapped;
    for (const SpokenRange& range : ranges) {
        const auto source = find(range.clip->id);
        if (!source)
            continue;
        Mapper(range, *source, mapped).map();
        addSpeakers(source->speakers, mapped.transcript.speakers);
    }
    sortByTime(mapped);
    return mapped;
}

} // namespace desk::services
