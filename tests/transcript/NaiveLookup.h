#pragma once

#include "StratacutUI/ITranscriptWindowInfo.h"

#include <vector>

/// The word that a frame shows, found by looking at every segment and every word. Expects segments in the order of
/// their starts.
class NaiveLookup
{
public:
    struct Word {
        int segment = -1;
        int index = -1;
        int start = 0;
        int end = 0;
    };

    explicit NaiveLookup(ITranscriptWindowInfo& host) : m_host(host)
    {
        for (const STT_TranscriptSegment& segment : host.segments(0)) {
            for (std::size_t word = 0; word < segment.wordStarts.size(); ++word)
                words.push_back({segment.number, int(word), segment.wordStarts[word], segment.wordEnds[word]});
        }
    }

    /// A segment without words parts its neighbours.
    bool areNeighbours(std::size_t word, std::size_t next) const
    {
        return next < words.size() && words[next].segment <= words[word].segment + 1;
    }

    int segmentAt(int ms, int minSegment) const
    {
        int last = minSegment == 0 ? 0 : -1;
        int latestEnd = 0;
        for (const STT_TranscriptSegment& segment : m_host.segments(0)) {
            if (segment.wordStarts.empty() || segment.wordStarts.front() == segment.wordEnds.back())
                continue;
            const int end = segment.wordEnds.back();
            if (segment.wordStarts.front() <= ms && ms < end && segment.number >= minSegment)
                return segment.number;
            if (minSegment == 0 && end <= ms && end > latestEnd) {
                latestEnd = end;
                last = segment.number;
            }
        }
        return last;
    }

    Word wordAt(int frame, bool previous, int minSegment) const
    {
        const int ms = m_host.msFromFrame(frame, previous);
        const int segment = segmentAt(ms, minSegment);
        // Where in the list of all words the segment's last word stands that has started.
        int at = -1;
        for (int word = 0; word < int(words.size()); ++word) {
            const bool isBefore = words[word].segment < segment;
            if (isBefore || (words[word].segment == segment && (words[word].start <= ms || at < 0)))
                at = word;
        }
        const bool exists =
            segment >= 0 && segment < int(m_host.segments(0).size()) && !m_host.segments(0)[segment].wordStarts.empty();
        if (!exists)
            return {};
        if (previous)
            return words[at - (ms <= words[at].end && at > 0 && areNeighbours(at - 1, at))];
        const int frameLength = m_host.msFromFrame(1, false);
        const Word& started = words[at];
        if (started.start <= ms && ms + frameLength < started.end)
            return started;
        for (std::size_t next = std::size_t(at) + 1; areNeighbours(next - 1, next); ++next) {
            const Word& coming = words[next];
            if (coming.start <= ms)
                continue;
            const bool isReached = ms < started.end && ms + frameLength >= coming.start;
            return isReached || coming.start - frameLength < ms ? coming : started;
        }
        return started;
    }

    std::vector<Word> words;

private:
    ITranscriptWindowInfo& m_host;
};
