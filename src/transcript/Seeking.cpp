// What the user does in the transcript window moves the monitor and its marks.

#include "SegmentTimeIndex.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <iterator>
#include <optional>

using Window = STT_TranscriptManagerWindow;
using Word = SegmentTimeIndex::Word;

namespace
{
/// Before the character at a point: the cursor for the second half of a character stands behind it, which may be
/// another word already.
QTextCursor beforeCharacterAt(const STT_TranscriptTextEdit& text, const QPoint& point)
{
    const QTextCursor nearest = text.cursorForPosition(point);
    QTextCursor character = nearest;
    if (nearest.atBlockStart() || !character.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor))
        return nearest;
    const QPointF inDocument(point.x(), point.y() + text.verticalScrollBar()->value());
    const bool isOnIt = text.getTranscriptRectForCursor(character).contains(inDocument);
    character.setPosition(character.position());
    return isOnIt ? character : nearest;
}
} // namespace

void Window::TranscriptTextClickedSlot(STT_TranscriptTextEdit* pTextEdit, const QPoint& position)
{
    TranscriptTextClicked(pTextEdit, position);
    // The click took away the selection that shows the marks.
    if (isGangActive())
        updateMarkSelection();
}

void Window::TranscriptTextDoubleClickedSlot(STT_TranscriptTextEdit*, const QPoint&)
{
    // The text has selected the word; its first click was one on the word.
    checkSelection();
}

void Window::TranscriptTextClicked(STT_TranscriptTextEdit* textEdit, const QPoint& position)
{
    const QTextCursor clicked = beforeCharacterAt(*textEdit, position);
    QTextCursor word = clicked;
    word.select(QTextCursor::WordUnderCursor);
    QTextCursor last = word;
    last.setPosition(std::max(word.selectionEnd() - 1, word.selectionStart()));
    last.setPosition(word.selectionEnd(), QTextCursor::KeepAnchor);
    const QRectF place = textEdit->getTranscriptRectForCursor(word) | textEdit->getTranscriptRectForCursor(last);
    const QPointF inDocument(position.x(), position.y() + textEdit->verticalScrollBar()->value());
    if (!word.hasSelection() || !place.contains(inDocument))
        return;
    Word found;
    if (!findWordIndexFromPosition(clicked.position(), found.segment, found.index) || !isGangActive())
        return;
    const std::vector<int>& starts = info->segments(0)[std::size_t(found.segment)].wordStarts;
    if (starts.empty())
        return;
    found.index = std::min(found.index, int(starts.size()) - 1);
    const int frame = info->frameFromMs(starts[std::size_t(found.index)]);
    if (frame < 0)
        return;
    stopPlayback();
    info->moveMonitor(frame);
}

/// The host reports where playback stopped; that is not where the user wants to be.
void Window::stopPlayback()
{
    const QScopedValueRollback<bool> suspended(m_isGangSuspended, true);
    info->stopPlayback();
}

void Window::ArrowKeyPressedSlot(bool isRightArrow)
{
    Word word;
    if (!isGangActive() || !findWordIndexFromPosition(m_boldedCursor.selectionStart(), word.segment, word.index))
        return;
    const std::vector<int>& starts = info->segments(0)[std::size_t(word.segment)].wordStarts;
    word.index = std::clamp(word.index, 0, std::max(int(starts.size()) - 1, 0));
    const auto neighbour = [&](const Word& from) {
        return isRightArrow ? m_index->next(from) : m_index->previous(from);
    };
    int start = -1;
    int end = -1;
    std::optional<Word> target = neighbour(word);
    // One that has no place in the text could never be left again.
    while (target && !findWordPosFromWordIndex(target->segment, target->index, &start, &end))
        target = neighbour(*target);
    if (!target)
        return;
    const int frame = info->frameFromMs(m_index->startOf(*target));
    if (frame < 0)
        return;
    stopPlayback();
    // Hearing of the stop, the host may have changed the transcript.
    if (findWordPosFromWordIndex(target->segment, target->index, &start, &end))
        moveBoldText(start, end, true);
    const QScopedValueRollback<bool> suspended(m_isGangSuspended, true);
    info->moveMonitor(frame);
}

void Window::SpacebarPressedSlot()
{
    if (!m_isEditing)
        info->togglePlayback();
}

void Window::SwitchEditModeSlot()
{
    m_isEditing = !m_isEditing;
}

NvUnit_t Window::currentFrame()
{
    return m_frame >= 0 ? m_frame : info->position();
}

void Window::MarkInSlot()
{
    info->setMarkIn(currentFrame());
    emit markInSignal();
}

void Window::MarkOutSlot()
{
    info->setMarks(info->markIn(), currentFrame());
    emit markOutSignal();
}

/// The frame with which a word's end is reached, so that a mark out there holds the word and no further one.
int Window::lastFrameOf(int ms)
{
    const int frame = info->frameFromMs(ms);
    if (frame < 0)
        return frame;
    return info->msFromFrame(frame + 1, true) <= ms ? frame + 1 : frame;
}

void Window::setMarksFromSelection()
{
    const QTextCursor selection = m_textEdit->textCursor();
    Word first;
    Word last;
    if (!selection.hasSelection() ||
        !findWordIndexFromPosition(selection.selectionStart(), first.segment, first.index) ||
        !findWordIndexFromPosition(selection.selectionEnd() - 1, last.segment, last.index))
        return;
    const std::vector<STT_TranscriptSegment>& segments = info->segments(0);
    const std::vector<int>& starts = segments[std::size_t(first.segment)].wordStarts;
    const std::vector<int>& ends = segments[std::size_t(last.segment)].wordEnds;
    if (first.index >= int(starts.size()) || last.index >= int(ends.size()))
        return;
    const int in = info->frameFromMs(starts[std::size_t(first.index)]);
    const int out = lastFrameOf(ends[std::size_t(last.index)]);
    if (in >= 0 && out >= in)
        info->setMarks(in, out);
}

bool Window::event(QEvent* event)
{
    if (event->type() == QEvent::FontChange)
        fitWindowFont();
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    return (isKey && handleKey(event)) || QWidget::event(event);
}

/// Keys that no widget of the window has taken. @return whether the key is one of the window's.
bool Window::handleKey(QEvent* event)
{
    struct Key {
        int key;
        Qt::KeyboardModifiers modifiers;
        void (*action)(Window&);
    };

    static const Key keys[] = {
        {Qt::Key_I, {}, [](Window& window) { window.MarkInSlot(); }},
        {Qt::Key_O, {}, [](Window& window) { window.MarkOutSlot(); }},
        {Qt::Key_I, Qt::ShiftModifier, [](Window& window) { window.info->goToMarkIn(); }},
        {Qt::Key_O, Qt::ShiftModifier, [](Window& window) { window.info->goToMarkOut(); }},
        {Qt::Key_X, {}, [](Window& window) { window.setMarksFromSelection(); }},
        {Qt::Key_X, Qt::AltModifier, [](Window& window) { window.info->setMarks(-1, -1); }},
        {Qt::Key_Space, {}, [](Window& window) { window.SpacebarPressedSlot(); }},
    };
    auto& key = static_cast<QKeyEvent&>(*event);
    const auto modifiers = key.modifiers() & ~Qt::KeypadModifier;
    const auto* found = std::find_if(std::begin(keys), std::end(keys), [&](const Key& own) {
        return own.key == key.key() && own.modifiers == modifiers;
    });
    if (found == std::end(keys) || m_isEditing)
        return false;
    event->accept();
    if (event->type() == QEvent::KeyPress && !key.isAutoRepeat())
        found->action(*this);
    return true;
}
