// The transcript window's lookups between frames, words and positions in the document.

#include "SegmentTimeIndex.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QTextBlock>

#include <algorithm>
#include <optional>

using Window = STT_TranscriptManagerWindow;
using Word = SegmentTimeIndex::Word;

namespace
{
template <class Value>
void write(Value* out, Value value)
{
    if (out)
        *out = value;
}

bool holds(const std::vector<int>& values, int index)
{
    return index >= 0 && index < int(values.size());
}

const STT_TranscriptSegment* segmentOf(ITranscriptWindowInfo& host, int number)
{
    const std::vector<STT_TranscriptSegment>& segments = host.segments(0);
    return number >= 0 && number < int(segments.size()) ? &segments[std::size_t(number)] : nullptr;
}
} // namespace

int Window::findSegmentFromMS(int ms, int minSegment)
{
    return m_index->segmentAt(ms, minSegment);
}

bool Window::findWordIndexFromFrame(int frame, bool previous, int minSegment, int& segment, int& word)
{
    const auto bias = previous ? SegmentTimeIndex::Bias::Over : SegmentTimeIndex::Bias::Shown;
    const std::optional<Word> found = m_index->wordAt(frame, bias, minSegment);
    if (!found)
        return false;
    segment = found->segment;
    word = found->index;
    return true;
}

void Window::findWordPosFromFrame(int frame, bool previous, int minSegment, int* start, int* end, int* segment)
{
    for (int* out : {start, end, segment})
        write(out, -1);
    Word found;
    if (frame < 0 || !findWordIndexFromFrame(frame, previous, minSegment, found.segment, found.index))
        return;
    write(segment, found.segment);
    findWordPosFromWordIndex(found.segment, found.index, start, end);
}

bool Window::findWordPosFromWordIndex(int segment, int word, int* start, int* end)
{
    write(start, -1);
    write(end, -1);
    const STT_TranscriptSegment* spoken = segmentOf(*info, segment);
    if (!spoken || !holds(spoken->wordStartOffsets, word) || !holds(spoken->wordEndOffsets, word))
        return false;
    const QTextBlock block = m_textEdit->document()->findBlockByNumber(getBlockNumberForSegment(segment));
    const int first = spoken->wordStartOffsets[std::size_t(word)];
    const int past = spoken->wordEndOffsets[std::size_t(word)];
    if (!block.isValid() || first < 0 || past < first || past >= block.length())
        return false;
    write(start, block.position() + first);
    write(end, block.position() + past);
    return true;
}

bool Window::findWordIndexFromPosition(int position, int& segment, int& word)
{
    const QTextBlock block = m_textEdit->document()->findBlock(position);
    if (!block.isValid())
        return false;
    const STT_TranscriptSegment* spoken = segmentOf(*info, block.userState());
    if (!spoken || spoken->wordStartOffsets.empty())
        return false;
    const std::vector<int>& offsets = spoken->wordStartOffsets;
    const auto later = std::upper_bound(offsets.begin(), offsets.end(), position - block.position());
    segment = block.userState();
    word = std::max(int(later - offsets.begin()) - 1, 0);
    return true;
}

bool Window::getNextWordInfo(int segment, int word, int* nextSegment, int* nextWord, int* nextStartMs)
{
    const STT_TranscriptSegment* spoken = segmentOf(*info, segment);
    if (!spoken || !holds(spoken->wordStarts, word))
        return false;
    if (!holds(spoken->wordStarts, ++word)) {
        spoken = segmentOf(*info, ++segment);
        word = 0;
    }
    if (!spoken || !holds(spoken->wordStarts, word))
        return false;
    write(nextSegment, segment);
    write(nextWord, word);
    write(nextStartMs, spoken->wordStarts[std::size_t(word)]);
    return true;
}

bool Window::getPrevWordInfo(int segment, int word, int* prevSegment, int* prevWord, int* prevEndMs)
{
    const STT_TranscriptSegment* spoken = segmentOf(*info, segment);
    if (!spoken || !holds(spoken->wordEnds, word))
        return false;
    if (--word < 0) {
        spoken = segmentOf(*info, --segment);
        word = spoken ? int(spoken->wordEnds.size()) - 1 : -1;
    }
    if (word < 0)
        return false;
    write(prevSegment, segment);
    write(prevWord, word);
    write(prevEndMs, spoken->wordEnds[std::size_t(word)]);
    return true;
}
