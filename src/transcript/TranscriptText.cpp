// What the transcript window shows: text, time index, lines of clips that have no transcript.

#include "EntryColumn.h"
#include "NvCore/NvText.h"
#include "SegmentTimeIndex.h"
#include "StatePage.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QTextBlock>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

using Window = STT_TranscriptManagerWindow;

namespace
{
constexpr int lineMargin = 5;
// So many more lines are not waited for, since the first paint would cost more than it gains.
constexpr int quicklyAdded = 500;

std::size_t bytesOf(const std::vector<STT_TranscriptSegment>& segments)
{
    const auto add = [](std::size_t sum, const STT_TranscriptSegment& segment) { return sum + segment.text.size(); };
    return std::accumulate(segments.begin(), segments.end(), std::size_t(0), add);
}

std::string emptyText(bool isReadable)
{
    const QString text = isReadable ? stx_func("Empty transcript") : stx_func("Database Offline");
    return text.toStdString();
}

bool startsBefore(const STT_MissingTranscript& clip, const STT_TranscriptSegment& segment)
{
    return !segment.wordStarts.empty() && clip.startMs <= segment.wordStarts.front();
}

/// The blocks of the clips, each before the first segment that does not start before it.
std::vector<int> blocksOf(const std::vector<STT_MissingTranscript>& clips,
                          const std::vector<STT_TranscriptSegment>& segments)
{
    std::vector<int> blocks;
    auto segment = segments.begin();
    for (const STT_MissingTranscript& clip : clips) {
        segment = std::find_if(segment, segments.end(), [&](const auto& later) { return startsBefore(clip, later); });
        // Without a segment the first line says so.
        blocks.push_back(int(segment - segments.begin() + segments.empty()) + int(blocks.size()));
    }
    return blocks;
}

/// Of everything that decides on the text's lines and on the time index.
std::size_t fingerprintOf(const std::vector<STT_TranscriptSegment>& segments, const std::vector<int>& clipBlocks,
                          bool isReadable)
{
    constexpr std::size_t oddBits = 0x9e3779b97f4a7c15;
    std::size_t print = isReadable;
    // No value, not even nought, leaves a print as it is.
    const auto take = [&print](std::size_t value) { print = ((print ^ value) + oddBits) * oddBits + (print >> 29); };
    take(segments.size());
    take(clipBlocks.size());
    for (const STT_TranscriptSegment& segment : segments) {
        take(std::hash<std::string>()(segment.text));
        take(segment.wordStarts.empty() ? segments.size() : std::size_t(segment.wordStarts.front()));
        take(segment.wordEnds.empty() ? segments.size() : std::size_t(segment.wordEnds.back()));
    }
    for (const int block : clipBlocks)
        take(std::size_t(block));
    return print;
}
} // namespace

/// Whether the paint of the lines that will be in view may come before the rest of the text.
enum class Window::Showing { FirstLines, WholeText };

/// What the host has to show at the moment.
struct Window::Content {
    /// Asked for anything, the host may change the transcript and tell so: its segments are read last.
    explicit Content(Window& shown)
        : window(shown), reading(++shown.m_readings), isReadable(window.info->isDatabaseOnline())
    {
        ITranscriptWindowInfo& host = *window.info;
        if (!isReadable || !host.isMaterialLoaded())
            return;
        clips = host.missingTranscripts();
        for (const STT_MissingTranscript& clip : clips)
            timecodes.push_back(QString::fromStdString(host.timecodeText(clip.startMs)));
        if (window.isGangActive() && host.isTranscriptLoaded())
            followedMs = host.msFromFrame(int(host.position()), false);
        segments = &host.segments(0);
    }

    std::size_t fingerprint() const { return fingerprintOf(*segments, blocksOf(clips, *segments), isReadable); }

    /// Whether the window has read, and shown, what the host has to show once more since.
    bool isOutdated() const { return reading != window.m_readings; }

    static inline const std::vector<STT_TranscriptSegment> none{};
    const Window& window;
    std::size_t reading;
    bool isReadable;
    std::vector<STT_MissingTranscript> clips;
    /// Where the clips start.
    std::vector<QString> timecodes;
    int followedMs = -1;
    const std::vector<STT_TranscriptSegment>* segments = &none;
};

void Window::TranscriptInfoChangedSlot(bool saveScrollPos)
{
    refreshWindow(saveScrollPos);
}

void Window::refreshWindow(bool saveScrollPos)
{
    const STT_TranscriptTextEdit::View view = m_textEdit->view();
    // It may be other material.
    if (!saveScrollPos)
        m_frame = -1;
    info->refreshTranscript();
    const Content content(*this);
    if (content.isOutdated())
        return;
    // The progress of a transcription comes this way too.
    if (saveScrollPos && content.fingerprint() == m_fingerprint)
        refreshLines(content);
    else
        rebuild(content, saveScrollPos ? Showing::WholeText : Showing::FirstLines);
    if (saveScrollPos)
        m_textEdit->restoreView(view);
}

void Window::UpdateTranscriptWindow()
{
    rebuild(Content(*this), Showing::FirstLines);
}

void Window::rebuild(const Content& content, Showing first)
{
    if (content.isOutdated())
        return;
    // Every edit of the document visits every cursor in it.
    m_boldedCursor = QTextCursor();
    m_otherBoldedCursors.clear();
    m_entryColumn->beginRebuild();
    if (!fillText(content, first))
        return;
    m_boldedCursor = QTextCursor(m_textEdit->document());
    m_entryColumn->endRebuild();
    finishRefresh();
}

/// What stands beside the text is as wide as the window's font makes it, and the lines of clips as high.
void Window::fitWindowFont()
{
    if (m_blocks.empty() && m_missingBlocks.empty())
        return;
    const STT_TranscriptTextEdit::View view = m_textEdit->view();
    rebuild(Content(*this), Showing::WholeText);
    m_textEdit->restoreView(view);
}

/// What stands beside the text and on the lines of clips, while the text is the same.
void Window::refreshLines(const Content& content)
{
    for (std::size_t index = 0; index < content.clips.size(); ++index)
        EntryColumn::setClip(m_textEdit->document()->findBlockByNumber(m_missingBlocks[index]), content.clips[index],
                             content.timecodes[index]);
    m_entryColumn->refreshTexts();
    finishRefresh();
}

void Window::finishRefresh()
{
    showState();
    m_isActive = info->isTranscriptLoaded();
    m_entryColumn->sync();
    emit refreshDoneSignal();
    if (!m_isGangOn || !m_isActive)
        return;
    if (m_isGangSuspended)
        updateMarkSelection();
    else
        updateGangStatus();
}

/// @return false where the host changed the transcript meanwhile, which is shown then.
bool Window::fillText(const Content& content, Showing first)
{
    const std::vector<STT_TranscriptSegment>& segments = *content.segments;
    if (std::exchange(m_fingerprint, content.fingerprint()) != m_fingerprint)
        closeSpeakerMenu();
    // A name must not go to who speaks in that place now.
    m_entryColumn->endEditing([&](int segment) {
        const QTextBlock former = m_textEdit->document()->findBlockByNumber(getBlockNumberForSegment(segment));
        return segment < int(segments.size()) &&
               former.text() == QString::fromStdString(segments[std::size_t(segment)].text);
    });
    m_index->clear();
    m_blocks.clear();
    m_blocks.reserve(segments.size());
    m_missingBlocks = blocksOf(content.clips, segments);
    STT_TranscriptTextEdit::Lines lines(getTranscriptFormat(0));
    lines.reserve(int(segments.size() + content.clips.size()), int(bytesOf(segments)));
    const std::size_t shown = first == Showing::FirstLines ? linesToShowFirst(content) : 0;
    if (shown > 0) {
        addLines(lines, content, shown);
        m_textEdit->setLines(lines);
        paintFirstLines();
        if (content.isOutdated())
            return false;
        // By the time the rest is there, the monitor may be at another word.
        clearWordBolding();
        m_entryColumn->beginRebuild();
    }
    addLines(lines, content, segments.size());
    shown > 0 ? m_textEdit->addLines(lines) : m_textEdit->setLines(lines);
    for (std::size_t index = 0; index < content.clips.size(); ++index)
        addMissingTranscript(content.clips[index], content.timecodes[index], m_missingBlocks[index]);
    hideMissingLines();
    return true;
}

/// Takes the next segments, up to a number, and the clips between them into the lines and the index.
void Window::addLines(STT_TranscriptTextEdit::Lines& lines, const Content& content, std::size_t end)
{
    const auto addClips = [&] {
        while (std::binary_search(m_missingBlocks.begin(), m_missingBlocks.end(), lines.count()))
            lines.add({}, -1);
    };
    if (content.segments->empty())
        lines.add(emptyText(content.isReadable), -1);
    for (std::size_t number = m_blocks.size(); number < end; ++number) {
        addClips();
        const STT_TranscriptSegment& segment = (*content.segments)[number];
        m_index->add(segment, int(number));
        m_blocks.push_back(lines.count());
        lines.add(segment.text, int(number));
    }
    addClips();
}

/// How many segments reach past what will be in view; 0 where the rest is there too soon to be worth a paint before it.
std::size_t Window::linesToShowFirst(const Content& content) const
{
    const QWindow* shownIn = window()->windowHandle();
    if (!isVisible() || !shownIn || !shownIn->isExposed() || !content.clips.empty())
        return 0;
    const auto isComing = [ms = content.followedMs](const auto& segment) {
        return !segment.wordStarts.empty() && segment.wordStarts.front() > ms;
    };
    const std::vector<STT_TranscriptSegment>& segments = *content.segments;
    const auto coming = std::find_if(segments.begin(), segments.end(), isComing);
    const std::size_t shown = std::size_t(coming - segments.begin() + m_textEdit->mostLinesInView());
    return shown + quicklyAdded < segments.size() ? shown : 0;
}

void Window::paintFirstLines()
{
    m_boldedCursor = QTextCursor(m_textEdit->document());
    m_entryColumn->endRebuild();
    showState();
    if (isGangActive() && info->isTranscriptLoaded())
        followMonitor(info->position(), false);
    m_entryColumn->sync();
    m_textEdit->viewport()->repaint();
}

void Window::addMissingTranscript(const STT_MissingTranscript& clip, const QString& timecode, int block)
{
    QTextCursor cursor(m_textEdit->document()->findBlockByNumber(block));
    m_entryColumn->layClipLine(cursor);
    EntryColumn::setClip(cursor.block(), clip, timecode);
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
    State state = m_blocks.empty() ? State::EmptyTranscript : State::Text;
    if (m_blocks.empty() && !m_missingBlocks.empty())
        state = m_visibilities.notTranscribed ? State::Text : State::HiddenClips;
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
