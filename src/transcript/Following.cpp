// The transcript window follows the monitor: the word that is spoken is bold, the words between the marks are selected.

#include "EntryColumn.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QScopedValueRollback>
#include <QTextDocument>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

using Window = STT_TranscriptManagerWindow;

/// All words that change at a step are one edit of the document.
class Window::Bolding
{
public:
    // Qt reports every edit as a change of the selection.
    explicit Bolding(Window& window) : m_bolding(window.m_isBolding, true), m_edit(window.m_textEdit->document())
    {
        m_edit.beginEditBlock();
    }

    ~Bolding() { m_edit.endEditBlock(); }

    Bolding(const Bolding&) = delete;
    Bolding& operator=(const Bolding&) = delete;

private:
    QScopedValueRollback<bool> m_bolding;
    QTextCursor m_edit;
};

bool Window::canFollow() const
{
    return isVisible() && m_isActive;
}

void Window::AboutToPlaySlot(long frame)
{
    m_frame = frame;
    if (canFollow() && isGangActive())
        followMonitor(frame, false);
}

void Window::NowPlayingSlot(long frame)
{
    m_frame = frame;
    if (canFollow() && isGangActive())
        followMonitor(frame, true);
}

void Window::DonePlayingSlot(long frame)
{
    m_frame = frame;
    if (canFollow() && isGangActive())
        m_stoppedAt = frame;
}

void Window::MonPosChangedSlot(NvUnit_t monPosFrame)
{
    m_frame = monPosFrame;
    if (!canFollow())
        return;
    const long stoppedAt = std::exchange(m_stoppedAt, -1);
    if (!m_isGangOn)
        clearWordBolding();
    else if (!m_isGangSuspended)
        followMonitor(monPosFrame, monPosFrame == stoppedAt);
}

void Window::followMonitor(NvUnit_t frame, bool keepView)
{
    if (m_blocks.empty())
        return;
    int start = -1;
    int end = -1;
    int segment = -1;
    findWordPosFromFrame(int(frame), false, 0, &start, &end, &segment);
    if (start < 0)
        return;
    const bool isLeftByTheUser = keepView && m_boldedCursor.hasSelection() &&
                                 !m_textEdit->isInView(m_textEdit->getTranscriptRectForCursor(m_boldedCursor));
    std::vector<std::pair<int, int>> others;
    for (int asked = segment + 1;; asked = segment + 1) {
        int otherStart = -1;
        int otherEnd = -1;
        findWordPosFromFrame(int(frame), false, asked, &otherStart, &otherEnd, &segment);
        if (segment < asked)
            break;
        others.emplace_back(otherStart, otherEnd);
    }
    if (!isLeftByTheUser && !bringIntoView(start, end))
        return;
    const Bolding bolding(*this);
    moveBoldText(start, end, false);
    for (const auto& [otherStart, otherEnd] : others) {
        QTextCursor word(m_textEdit->document());
        if (!selectWord(word, otherStart, otherEnd))
            continue;
        setWordBolding(word, true);
        m_otherBoldedCursors.append(word);
    }
}

/// @return false, with the cursor as it was, for positions that the document does not have.
bool Window::selectWord(QTextCursor& cursor, int start, int end) const
{
    if (start < 0 || end < start || end >= m_textEdit->document()->characterCount())
        return false;
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    return true;
}

/// @return false where the host, asked for the texts beside the lines that come into view, has changed the transcript:
/// the positions are void, and the window follows already.
bool Window::bringIntoView(int start, int end)
{
    const std::size_t reading = m_readings;
    QTextCursor word(m_textEdit->document());
    if (!selectWord(word, start, end))
        return true;
    word.setPosition(start);
    if (!m_textEdit->isInView(m_textEdit->getTranscriptRectForCursor(word)))
        m_textEdit->scrollToMiddle(word);
    return reading == m_readings;
}

void Window::moveBoldText(int start, int end, bool follow)
{
    if (follow && !bringIntoView(start, end))
        return;
    const Bolding bolding(*this);
    QTextCursor word(m_textEdit->document());
    if (!selectWord(word, start, end))
        return;
    clearWordBolding();
    selectWord(m_boldedCursor, start, end);
    setWordBolding(m_boldedCursor, true);
}

void Window::clearWordBolding()
{
    const Bolding bolding(*this);
    setWordBolding(m_boldedCursor, false);
    for (QTextCursor& cursor : m_otherBoldedCursors)
        setWordBolding(cursor, false);
    m_otherBoldedCursors.clear();
}

void Window::setWordBolding(QTextCursor& cursor, bool on)
{
    if (!cursor.hasSelection())
        return;
    QTextCharFormat format;
    format.setFontWeight(on ? QFont::Bold : QFont::Normal);
    if (!on)
        format.setForeground(QBrush(Qt::NoBrush));
    else if (isGangActive())
        format.setForeground(colorOfWord(cursor));
    const Bolding bolding(*this);
    m_textEdit->mergeWordFormat(cursor, format);
}

/// Black on the highlight, so that it can be read there.
QColor Window::colorOfWord(const QTextCursor& cursor) const
{
    return isInSelection(cursor) ? QColor(Qt::black) : GetBoldColor();
}

bool Window::isInSelection(const QTextCursor& cursor) const
{
    const QTextCursor selected = m_textEdit->textCursor();
    return selected.hasSelection() && selected.selectionStart() <= cursor.selectionStart() &&
           cursor.selectionEnd() <= selected.selectionEnd();
}

void Window::refreshSlot()
{
    checkSelection();
}

void Window::checkSelection()
{
    if (!isGangActive() || m_isBolding)
        return;
    const auto colorAnew = [this](QTextCursor& cursor) {
        if (cursor.charFormat().foreground() != QBrush(colorOfWord(cursor)))
            setWordBolding(cursor, true);
    };
    colorAnew(m_boldedCursor);
    // A word that gets higher brings other lines into view, and the host is asked about them.
    QList<QTextCursor> others = m_otherBoldedCursors;
    for (QTextCursor& cursor : others)
        colorAnew(cursor);
}

void Window::GangButtonClickedSlot()
{
    setGang(!m_isGangOn);
}

void Window::SwitchGangModeSlot()
{
    setGang(!m_isGangOn);
}

void Window::setGang(bool on)
{
    m_isGangOn = on;
    showGangImage();
    if (on)
        updateGangStatus();
    else
        clearWordBolding();
}

void Window::updateGangStatus()
{
    if (m_isGangOn) {
        m_frame = info->position();
        followMonitor(m_frame, false);
    }
    m_markIn = info->markIn();
    m_markOut = info->markOut();
    updateMarkSelection();
}

void Window::MarkInChangedSlot(long markInPosFrame)
{
    if (!isGangActive())
        return;
    m_markIn = markInPosFrame;
    updateMarkSelection();
}

void Window::MarkOutChangedSlot(long markOutPosFrame)
{
    if (!isGangActive())
        return;
    m_markOut = markOutPosFrame;
    updateMarkSelection();
}

void Window::updateMarkSelection()
{
    QTextCursor selection = m_textEdit->textCursor();
    int start = -1;
    int end = -1;
    if (m_markIn >= 0 && m_markOut >= m_markIn) {
        // A host may mark to the end of time.
        constexpr long lastFrame = std::numeric_limits<int>::max() - 1;
        findWordPosFromFrame(int(std::min(m_markIn, lastFrame)), false, 0, &start, nullptr, nullptr);
        findWordPosFromFrame(int(std::min(m_markOut, lastFrame)) + 1, true, 0, nullptr, &end, nullptr);
    }
    if (start < 0 || !selectWord(selection, start, end))
        selection.clearSelection();
    if (selection != m_textEdit->textCursor() || selection.anchor() != m_textEdit->textCursor().anchor())
        m_textEdit->selectInPlace(selection);
}
