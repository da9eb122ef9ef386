#include "SegmentTimeIndex.h"

#include "StratacutUI/ITranscriptWindowInfo.h"

#include <algorithm>
#include <limits>

namespace
{
int lastWord(const STT_TranscriptSegment& segment)
{
    return int(segment.wordStarts.size()) - 1;
}
} // namespace

SegmentTimeIndex::SegmentTimeIndex(ITranscriptWindowInfo& host) : m_host(host)
{
    clear();
}

void SegmentTimeIndex::clear()
{
    m_speaking.reset();
    m_lanes.clear();
    m_lanes.push_back(RangeArray::New());
}

void SegmentTimeIndex::add(const STT_TranscriptSegment& segment, int number)
{
    if (segment.wordStarts.empty() || segment.wordEnds.empty())
        return;
    const int start = segment.wordStarts.front();
    const int end = segment.wordEnds.back();
    if (start == end)
        return;
    m_speaking.reset();
    const auto free = std::find_if(m_lanes.begin(), m_lanes.end(),
                                   [start](const auto& lane) { return lane->GetRange(start) == RangeArray::Unset; });
    if (free == m_lanes.end()) {
        m_lanes.push_back(RangeArray::New());
        m_lanes.back()->SetRange(start, end, number);
    } else {
        (*free)->SetRange(start, end, number);
    }
}

int SegmentTimeIndex::segmentAt(int ms, int minSegment) const
{
    const std::vector<int>& speaking = speakingAt(ms);
    const auto found = std::lower_bound(speaking.begin(), speaking.end(), minSegment);
    if (found != speaking.end())
        return *found;
    if (minSegment > 0)
        return -1;
    return minSegment == 0 ? spokeLastBefore(ms) : 0;
}

const std::vector<int>& SegmentTimeIndex::speakingAt(int ms) const
{
    if (m_speaking && m_speaking->ms == ms)
        return m_speaking->segments;
    m_speaking = Speaking{ms};
    std::vector<int>& speaking = m_speaking->segments;
    for (const auto& lane : m_lanes) {
        const int segment = lane->GetRange(ms);
        if (segment != RangeArray::Unset)
            speaking.push_back(segment);
    }
    std::sort(speaking.begin(), speaking.end());
    return speaking;
}

/// For a time at which nobody speaks; 0 before the first segment.
int SegmentTimeIndex::spokeLastBefore(int ms) const
{
    int spokeLast = 0;
    qint64 latestEnd = std::numeric_limits<qint64>::min();
    for (const auto& lane : m_lanes) {
        const RangeArray::Range gap = lane->rangeAt(ms);
        if (gap.first <= 0)
            continue;
        const RangeArray::Range before = lane->rangeAt(gap.first - 1);
        if (before.value != RangeArray::Unset && before.end > latestEnd) {
            latestEnd = before.end;
            spokeLast = before.value;
        }
    }
    return spokeLast;
}

std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::wordAt(int frame, Bias bias, int minSegment) const
{
    const int ms = m_host.msFromFrame(frame, bias == Bias::Over);
    if (ms == -1 || minSegment >= int(segments().size()))
        return std::nullopt;
    const int segment = segmentAt(ms, minSegment);
    if (segment < 0)
        return std::nullopt;
    const std::optional<Word> started = wordStartedAt(ms, segment);
    if (!started || bias == Bias::Shown)
        return started ? shownWord(*started, ms) : started;
    const std::optional<Word> before = ms > endOf(*started) ? std::nullopt : directlyBefore(*started);
    return before ? before : started;
}

/// The last word that has started at the time; the very first one before that.
std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::wordStartedAt(int ms, int segment) const
{
    // The host's array may have shrunk since the lanes were filled.
    if (segment >= int(segments().size()) || segments()[std::size_t(segment)].wordStarts.empty())
        return std::nullopt;
    const STT_TranscriptSegment& spoken = segments()[std::size_t(segment)];
    const auto later = std::upper_bound(spoken.wordStarts.begin(), spoken.wordStarts.end(), ms);
    if (later == spoken.wordStarts.end())
        return Word{segment, lastWord(spoken)};
    const Word coming{segment, int(later - spoken.wordStarts.begin())};
    const std::optional<Word> before = directlyBefore(coming);
    return before ? before : coming;
}

/// Between two words that a frame straddles, the choice must not flicker: a word stays while the frame ends inside it,
/// and gives way as soon as the frame reaches the next one.
SegmentTimeIndex::Word SegmentTimeIndex::shownWord(const Word& word, int ms) const
{
    // In 64 bits: nobody has checked the transcript's times.
    const qint64 frameLength = m_host.msFromFrame(1, false);
    const qint64 frameEnd = ms + frameLength;
    const int end = endOf(word);
    if (startOf(word) <= ms && ms <= end && frameEnd < end)
        return word;
    const std::optional<Word> coming = nextStartingAfter(ms, word);
    if (!coming)
        return word;
    const int start = startOf(*coming);
    if (ms < end && frameEnd >= start)
        return *coming;
    return start - frameLength >= ms ? word : *coming;
}

std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::nextStartingAfter(int ms, const Word& word) const
{
    const std::vector<STT_TranscriptSegment>& all = segments();
    std::ptrdiff_t passed = word.index + 1;
    for (int segment = word.segment; segment < int(all.size()); ++segment) {
        const std::vector<int>& starts = all[std::size_t(segment)].wordStarts;
        if (starts.empty())
            break;
        const auto found = std::find_if(starts.begin() + passed, starts.end(), [ms](int start) { return start > ms; });
        if (found != starts.end())
            return Word{segment, int(found - starts.begin())};
        passed = 0;
    }
    return std::nullopt;
}

std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::next(const Word& word) const
{
    if (!exists(word))
        return std::nullopt;
    const std::vector<STT_TranscriptSegment>& all = segments();
    if (word.index < lastWord(all[std::size_t(word.segment)]))
        return Word{word.segment, word.index + 1};
    for (int segment = word.segment + 1; segment < int(all.size()); ++segment) {
        if (!all[std::size_t(segment)].wordStarts.empty())
            return Word{segment, 0};
    }
    return std::nullopt;
}

std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::previous(const Word& word) const
{
    if (!exists(word))
        return std::nullopt;
    if (word.index > 0)
        return Word{word.segment, word.index - 1};
    const std::vector<STT_TranscriptSegment>& all = segments();
    for (int segment = word.segment - 1; segment >= 0; --segment) {
        if (!all[std::size_t(segment)].wordStarts.empty())
            return Word{segment, lastWord(all[std::size_t(segment)])};
    }
    return std::nullopt;
}

/// In a look-up, a segment without words is an end like that of the transcript.
std::optional<SegmentTimeIndex::Word> SegmentTimeIndex::directlyBefore(const Word& word) const
{
    const std::optional<Word> before = previous(word);
    return before && before->segment >= word.segment - 1 ? before : std::nullopt;
}

int SegmentTimeIndex::startOf(const Word& word) const
{
    return segments()[std::size_t(word.segment)].wordStarts[std::size_t(word.index)];
}

int SegmentTimeIndex::endOf(const Word& word) const
{
    const STT_TranscriptSegment& segment = segments()[std::size_t(word.segment)];
    return word.index < int(segment.wordEnds.size()) ? segment.wordEnds[std::size_t(word.index)] : startOf(word);
}

const std::vector<STT_TranscriptSegment>& SegmentTimeIndex::segments() const
{
    return m_host.segments(0);
}

bool SegmentTimeIndex::exists(const Word& word) const
{
    const std::vector<STT_TranscriptSegment>& all = segments();
    return word.segment >= 0 && word.segment < int(all.size()) && word.index >= 0 &&
           word.index <= lastWord(all[std::size_t(word.segment)]);
}
