// What the transcript window shows: text, time index, lines of clips that have no transcript.

#include "EntryColumn.h"
#include "NvCore/NvText.h"
#include "SegmentTimeIndex.h"
#include "StatePage.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QTextBlock>

#include <algorithm>
#include <numeric>

using Window = STT_TranscriptManagerWindow;

namespace
{
constexpr int lineMargin = 5;

std::size_t bytesOf(const std::vector<STT_TranscriptSegment>& segments)
{
    const auto add = [](std::size_t sum, const STT_TranscriptSegment& segment) { return sum + segment.text.size(); };
    return std::accumulate(segments.begin(), segments.end(), std::size_t(0), add);
}

bool startsBefore(const STT_MissingTranscript& clip, const STT_TranscriptSegment& segment)
{
    return !segment.wordStarts.empty() && clip.startMs <= segment.wordStarts.front();
}
} // namespace

void Window::TranscriptInfoChangedSlot(bool saveScrollPos)
{
    refreshWindow(saveScrollPos);
}

void Window::refreshWindow(bool saveScrollPos)
{
    const STT_TranscriptTextEdit::View view = m_textEdit->view();
    info->refreshTranscript();
    UpdateTranscriptWindow();
    if (saveScrollPos)
        m_textEdit->restoreView(view);
}

void Window::UpdateTranscriptWindow()
{
    // Every edit of the document visits every cursor in it.
    m_boldedCursor = QTextCursor();
    m_otherBoldedCursors.clear();
    m_entryColumn->beginRebuild();
    m_isActive = info->isTranscriptLoaded();
    fillText();
    m_boldedCursor = QTextCursor(m_textEdit->document());
    m_entryColumn->endRebuild();
    m_entryColumn->sync();
    emit refreshDoneSignal();
    if (isGangActive() && canFollow())
        updateGangStatus();
}

void Window::fillText()
{
    m_index->clear();
    m_blocks.clear();
    m_missingBlocks.clear();
    const bool isReadable = info->isDatabaseOnline();
    const bool isLoaded = info->isMaterialLoaded();
    static const std::vector<STT_TranscriptSegment> none;
    const std::vector<STT_TranscriptSegment>& segments = isReadable && isLoaded ? info->segments(0) : none;
    const std::vector<STT_MissingTranscript> missing =
        isReadable && isLoaded ? info->missingTranscripts() : std::vector<STT_MissingTranscript>();

    STT_TranscriptTextEdit::Lines lines(getTranscriptFormat(0));
    lines.reserve(int(segments.size() + missing.size()), int(bytesOf(segments)));
    m_blocks.reserve(segments.size());
    auto clip = missing.begin();
    const auto addClip = [&] {
        m_missingBlocks.push_back(lines.count());
        lines.add({}, -1);
        ++clip;
    };
    if (segments.empty())
        lines.add(isReadable ? stx_func("Empty transcript") : stx_func("Database Offline"), -1);
    for (const STT_TranscriptSegment& segment : segments) {
        while (clip != missing.end() && startsBefore(*clip, segment))
            addClip();
        const int number = int(m_blocks.size());
        m_index->add(segment, number);
        m_blocks.push_back(lines.count());
        lines.add(QString::fromUtf8(segment.text.data(), int(segment.text.size())), number);
    }
    while (clip != missing.end())
        addClip();
    m_textEdit->setLines(lines);
    for (std::size_t index = 0; index < missing.size(); ++index)
        addMissingTranscript(missing[index], m_missingBlocks[index]);
    hideMissingLines();
    showState();
}

void Window::addMissingTranscript(const STT_MissingTranscript& clip, int block)
{
    QTextCursor cursor(m_textEdit->document()->findBlockByNumber(block));
    EntryColumn::layClipLine(cursor, clip, QString::fromStdString(info->timecodeText(clip.startMs)));
}

/// Clips that wait for their transcript say so themselves: no other line says that there is none.
void Window::hideMissingLines()
{
    const bool showsOnlyClips = m_visibilities.notTranscribed && m_blocks.empty() && !m_missingBlocks.empty();
    const std::vector<int> shown = showsOnlyClips ? std::vector<int>{0} : std::vector<int>();
    m_textEdit->setHiddenBlocks(m_visibilities.notTranscribed ? shown : m_missingBlocks);
}

void Window::showState()
{
    using State = StatePage::State;
    const bool hasLines = !m_blocks.empty() || (m_visibilities.notTranscribed && !m_missingBlocks.empty());
    State state = hasLines ? State::Text : State::EmptyTranscript;
    if (!info->isMaterialLoaded())
        state = State::NothingLoaded;
    if (!info->isDatabaseOnline())
        state = State::DatabaseOffline;
    m_statePage->showState(state);
}

void Window::showVisibilities()
{
    m_entryColumn->setVisibilities(m_visibilities);
    mergeBlockFormats();
    m_entryColumn->sync();
}

QString Window::speakerText(int segment)
{
    const std::vector<STT_TranscriptSegment>& segments = info->segments(0);
    if (segment < 0 || segment >= int(segments.size()))
        return {};
    return QString::fromStdString(info->speakerText(segments[std::size_t(segment)].speakerKey));
}

QString Window::timecodeText(int segment)
{
    const std::vector<STT_TranscriptSegment>& segments = info->segments(0);
    if (segment < 0 || segment >= int(segments.size()) || segments[std::size_t(segment)].wordStarts.empty())
        return {};
    return QString::fromStdString(info->timecodeText(segments[std::size_t(segment)].wordStarts.front()));
}

QTextBlockFormat Window::getTranscriptFormat(int) const
{
    QTextBlockFormat format;
    format.setLeftMargin(m_entryColumn->gutterWidth());
    format.setTopMargin(lineMargin);
    format.setBottomMargin(lineMargin);
    return format;
}

/// All lines have one format, so one merge does it.
void Window::mergeBlockFormats()
{
    m_textEdit->mergeBlockFormats(getTranscriptFormat(0));
}

void Window::DocumentSizeChangedSlot(const QSizeF&)
{
    m_entryColumn->sync();
}

int Window::getBlockNumberForSegment(int segment)
{
    return segment >= 0 && segment < int(m_blocks.size()) ? m_blocks[std::size_t(segment)] : -1;
}

std::vector<STT_SpeakerInfo> Window::getSpeakersInfo(bool withUnnamed)
{
    std::vector<STT_SpeakerInfo> speakers = info->speakers(withUnnamed);
    const auto isBefore = [](const STT_SpeakerInfo& a, const STT_SpeakerInfo& b) {
        return a.displayName() < b.displayName();
    };
    const auto isSame = [](const STT_SpeakerInfo& a, const STT_SpeakerInfo& b) {
        return a.displayName() == b.displayName();
    };
    std::stable_sort(speakers.begin(), speakers.end(), isBefore);
    speakers.erase(std::unique(speakers.begin(), speakers.end(), isSame), speakers.end());
    return speakers;
}
