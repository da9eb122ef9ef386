#pragma once

#include "NvCore/RangeArray.h"

#include <memory>
#include <optional>
#include <vector>

class ITranscriptWindowInfo;
struct STT_TranscriptSegment;

/// Finds segments and words of the host's transcript by time and by frame.
///
/// Segments that overlap lie in different lanes, so that none hides another; the first lane holds the bulk.
class SegmentTimeIndex
{
public:
    struct Word {
        int segment = -1;
        int index = -1;
    };

    enum class Bias {
        /// The word that the frame shows.
        Shown,
        /// The last word that is over at the frame.
        Over,
    };

    /// @param host outlives the index; its segments are read at every look-up.
    explicit SegmentTimeIndex(ITranscriptWindowInfo& host);

    /// Empties the lanes.
    void clear();
    /// Segments are added in the order of their numbers.
    void add(const STT_TranscriptSegment& segment, int number);

    int laneCount() const { return int(m_lanes.size()); }

    /// -1 where minSegment is above 0 and no such segment is spoken at the time.
    int segmentAt(int ms, int minSegment) const;
    std::optional<Word> wordAt(int frame, Bias bias, int minSegment) const;

    /// The way from word to word; segments without words are passed over.
    std::optional<Word> next(const Word& word) const;
    std::optional<Word> previous(const Word& word) const;

    /// Milliseconds; a word without an end is as long as nothing.
    int startOf(const Word& word) const;
    int endOf(const Word& word) const;

private:
    /// What the last question was and who speaks then, in ascending order: a step of playback asks for one after the
    /// other.
    struct Speaking {
        int ms = -1;
        std::vector<int> segments{};
    };

    const std::vector<STT_TranscriptSegment>& segments() const;
    const std::vector<int>& speakingAt(int ms) const;
    int spokeLastBefore(int ms) const;
    bool exists(const Word& word) const;
    std::optional<Word> directlyBefore(const Word& word) const;
    std::optional<Word> wordStartedAt(int ms, int segment) const;
    std::optional<Word> nextStartingAfter(int ms, const Word& word) const;
    Word shownWord(const Word& word, int ms) const;

    ITranscriptWindowInfo& m_host;
    std::vector<std::unique_ptr<RangeArray>> m_lanes;
    mutable std::optional<Speaking> m_speaking;
};
