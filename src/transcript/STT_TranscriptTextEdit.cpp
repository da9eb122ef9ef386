#include "StratacutUI/STT_TranscriptTextEdit.h"

#include "TranscriptLayout.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
// Each round measures what the one before brought into view.
constexpr int mostSettlingRounds = 8;
constexpr int documentMargin = 6;

/// Written out, so that a word that was bold and is not any more becomes one with the text beside it again.
QTextCharFormat plainWords()
{
    QTextCharFormat format;
    format.setFontWeight(QFont::Normal);
    format.setForeground(QBrush(Qt::NoBrush));
    return format;
}

bool endsBlock(QChar character)
{
    // The last two stand for the borders of frames in Qt's documents.
    return character == '\n' || character == '\r' || character == QChar::ParagraphSeparator ||
           character == QChar::LineSeparator || character == QChar(0xfdd0) || character == QChar(0xfdd1);
}

bool isOwnKey(const QKeyEvent& event)
{
    return !(event.modifiers() & ~Qt::KeypadModifier) &&
           (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right || event.key() == Qt::Key_Space);
}
} // namespace

void STT_TranscriptTextEdit::Lines::reserve(int lines, int characters)
{
    m_states.reserve(std::size_t(lines));
    m_text.reserve(lines + characters);
}

void STT_TranscriptTextEdit::Lines::add(const std::string& line, int state)
{
    if (!m_states.empty())
        m_text += QChar::ParagraphSeparator;
    m_states.push_back(state);
    const auto isPlain = [](char character) { return static_cast<signed char>(character) >= ' '; };
    if (std::all_of(line.begin(), line.end(), isPlain)) {
        m_text += QLatin1String(line.data(), int(line.size()));
        return;
    }
    const int start = m_text.size();
    m_text += QString::fromUtf8(line.data(), int(line.size()));
    std::replace_if(m_text.begin() + start, m_text.end(), endsBlock, QChar(' '));
}

STT_TranscriptTextEdit::Estimates::Estimates(const STT_TranscriptTextEdit& edit)
    : m_layout(edit.transcriptLayout()), m_former(m_layout.setEstimating(true))
{
}

STT_TranscriptTextEdit::Estimates::~Estimates()
{
    m_layout.setEstimating(m_former);
}

STT_TranscriptTextEdit::STT_TranscriptTextEdit(QWidget* parent) : QTextEdit(parent)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAcceptRichText(false);
    document()->setUndoRedoEnabled(false);
    document()->setDocumentMargin(documentMargin);
    m_layout = new TranscriptLayout(document());
    m_layout->setPaintDevice(viewport());
    document()->setDocumentLayout(m_layout);
    setCursorWidth(1);
    connect(m_layout, &QAbstractTextDocumentLayout::documentSizeChanged, this, [this] {
        if (!m_settling)
            emit visibleLinesChanged();
    });
}

STT_TranscriptTextEdit::~STT_TranscriptTextEdit() = default;

void STT_TranscriptTextEdit::setLines(const Lines& lines)
{
    emit aboutToBeReplaced();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        m_layout->beginReplacement();
        m_hidden.clear();
        clear();
        QTextCursor cursor(document());
        cursor.beginEditBlock();
        cursor.setBlockFormat(lines.m_format);
        cursor.setBlockCharFormat(plainWords());
        cursor.insertText(lines.m_text, plainWords());
        setStates(lines, document()->begin());
        cursor.endEditBlock();
        verticalScrollBar()->setValue(0);
        m_layout->endReplacement();
    }
    settle({});
}

void STT_TranscriptTextEdit::addLines(const Lines& lines)
{
    const Anchor anchor = anchorInView();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        const QTextBlock last = document()->lastBlock();
        QTextCursor cursor(document());
        cursor.movePosition(QTextCursor::End);
        cursor.beginEditBlock();
        cursor.insertText(lines.m_text.mid(cursor.position()), plainWords());
        setStates(lines, last);
        cursor.endEditBlock();
    }
    settle(anchor);
}

void STT_TranscriptTextEdit::setStates(const Lines& lines, QTextBlock from)
{
    for (auto state = lines.m_states.begin() + from.blockNumber(); from.isValid() && state != lines.m_states.end();
         from = from.next())
        from.setUserState(*state++);
}

int STT_TranscriptTextEdit::mostLinesInView() const
{
    return viewport()->height() / std::max(QFontMetrics(document()->defaultFont()).height(), 1) + 1;
}

void STT_TranscriptTextEdit::mergeBlockFormats(const QTextBlockFormat& format)
{
    const Anchor anchor = anchorInView();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        QTextCursor all(document());
        all.select(QTextCursor::Document);
        all.mergeBlockFormat(format);
        m_layout->forgetHeights();
        m_layout->publishSize();
    }
    settle(anchor);
    viewport()->update();
}

void STT_TranscriptTextEdit::mergeWordFormat(QTextCursor& word, const QTextCharFormat& format)
{
    m_layout->expectFormat(word.selectionStart(), word.selectionEnd());
    word.mergeCharFormat(format);
}

STT_TranscriptTextEdit::View STT_TranscriptTextEdit::view() const
{
    const int block = m_layout->blockAt(verticalScrollBar()->value());
    return {block, int(m_layout->topOf(block)) - verticalScrollBar()->value()};
}

void STT_TranscriptTextEdit::restoreView(const View& view)
{
    const QTextBlock block = document()->findBlockByNumber(std::min(view.block, document()->blockCount() - 1));
    m_layout->measure(block);
    settle({block.position(), view.top + topOf(block.position()) - m_layout->topOf(block.blockNumber())});
}

void STT_TranscriptTextEdit::setHiddenBlocks(const std::vector<int>& blocks)
{
    if (blocks == m_hidden)
        return;
    const Anchor anchor = anchorInView();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        for (const int number : m_hidden)
            document()->findBlockByNumber(number).setVisible(true);
        for (const int number : blocks)
            document()->findBlockByNumber(number).setVisible(false);
        m_hidden = blocks;
        m_layout->setHiddenBlocks(blocks);
    }
    settle(anchor);
}

void STT_TranscriptTextEdit::setTranscriptFont(const QFont& font)
{
    const Anchor anchor = anchorInView();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        document()->setDefaultFont(font);
    }
    settle(anchor);
}

STT_TranscriptTextEdit::BlockRange STT_TranscriptTextEdit::visibleBlocks() const
{
    const int top = verticalScrollBar()->value();
    const BlockRange range{m_layout->blockAt(top), m_layout->blockAt(top + viewport()->height() - 1)};
    const bool isNoneInView = m_layout->isHidden(range.first) && m_layout->isHidden(range.last);
    return isNoneInView ? BlockRange() : range;
}

QRect STT_TranscriptTextEdit::blockRect(const QTextBlock& block) const
{
    const QRectF text = m_layout->blockBoundingRect(block);
    return {0, qRound(text.top()) - verticalScrollBar()->value(), viewport()->width(), qRound(text.height())};
}

QRectF STT_TranscriptTextEdit::getTranscriptRectForCursor(const QTextCursor& cursor) const
{
    return m_layout->placeOf(cursor.selectionStart(), cursor.selectionEnd());
}

bool STT_TranscriptTextEdit::isInView(const QRectF& place) const
{
    const int top = verticalScrollBar()->value();
    return place.top() >= top && place.bottom() <= top + viewport()->height();
}

void STT_TranscriptTextEdit::scrollToMiddle(const QTextCursor& cursor)
{
    const int middle = height() / 2;
    settle({cursor.selectionStart(), qreal(middle)});
}

void STT_TranscriptTextEdit::selectInPlace(const QTextCursor& cursor)
{
    // Setting a cursor scrolls to it; unheard, the scroll bar moves nothing.
    QScrollBar* bar = verticalScrollBar();
    const QSignalBlocker blocker(bar);
    const int value = bar->value();
    setTextCursor(cursor);
    bar->setValue(value);
}

STT_TranscriptTextEdit::Anchor STT_TranscriptTextEdit::anchorInView() const
{
    const int top = verticalScrollBar()->value();
    if (top == 0)
        return {};
    if (top == verticalScrollBar()->maximum())
        return {Anchor::End, 0};
    const int position = m_layout->hitTest(QPointF(0, top), Qt::FuzzyHit);
    const int start = m_layout->placeOf(position, position).isNull() ? 0 : position;
    return {start, topOf(start) - top};
}

qreal STT_TranscriptTextEdit::topOf(int position) const
{
    return m_layout->placeOf(position, position).top();
}

/// Measures what is in view. Heights above the anchor may turn out different: the view moves with it.
void STT_TranscriptTextEdit::settle(const Anchor& anchor)
{
    if (m_settling)
        return;
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        QScrollBar* bar = verticalScrollBar();
        const bool isAtTop = anchor.position == 0 && anchor.top == 0;
        const auto wanted = [&] {
            if (anchor.position == Anchor::End)
                return bar->maximum();
            return isAtTop ? 0 : qRound(topOf(anchor.position) - anchor.top);
        };
        for (int round = 0; round < mostSettlingRounds; ++round) {
            bar->setValue(wanted());
            m_layout->measureBetween(bar->value(), bar->value() + viewport()->height());
            m_layout->publishSize();
            if (bar->value() == qBound(bar->minimum(), wanted(), bar->maximum()))
                break;
        }
    }
    emit visibleLinesChanged();
}

bool STT_TranscriptTextEdit::event(QEvent* event)
{
    // A host may have shortcuts on these keys.
    if (event->type() == QEvent::ShortcutOverride && isOwnKey(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QTextEdit::event(event);
}

/// The transcript has a font of its own: a text edit would give it the window's.
void STT_TranscriptTextEdit::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange)
        QAbstractScrollArea::changeEvent(event); // NOLINT(*-parent-virtual-call) clazy:exclude=skipped-base-method
    else
        QTextEdit::changeEvent(event);
}

void STT_TranscriptTextEdit::keyPressEvent(QKeyEvent* event)
{
    if (!isOwnKey(*event)) {
        QTextEdit::keyPressEvent(event);
        return;
    }
    event->accept();
    if (event->key() == Qt::Key_Space)
        emit spacebarPressed();
    else
        emit arrowKeyPressed(event->key() == Qt::Key_Right);
}

void STT_TranscriptTextEdit::mousePressEvent(QMouseEvent* event)
{
    m_pressed.reset();
    if (event->button() == Qt::LeftButton && !event->modifiers())
        m_pressed = event->pos();
    QTextEdit::mousePressEvent(event);
}

void STT_TranscriptTextEdit::mouseReleaseEvent(QMouseEvent* event)
{
    QTextEdit::mouseReleaseEvent(event);
    const std::optional<QPoint> pressed = std::exchange(m_pressed, std::nullopt);
    if (event->button() == Qt::LeftButton && pressed && !textCursor().hasSelection() &&
        (event->pos() - *pressed).manhattanLength() < QApplication::startDragDistance())
        emit clicked(this, *pressed);
}

void STT_TranscriptTextEdit::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_pressed.reset();
    QTextEdit::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton)
        emit doubleClicked(this, event->pos());
}

void STT_TranscriptTextEdit::resizeEvent(QResizeEvent* event)
{
    const Anchor anchor = anchorInView();
    {
        const QScopedValueRollback<bool> settling(m_settling, true);
        QTextEdit::resizeEvent(event);
    }
    settle(anchor);
}

void STT_TranscriptTextEdit::showEvent(QShowEvent* event)
{
    QTextEdit::showEvent(event);
    settle(anchorInView());
}

void STT_TranscriptTextEdit::scrollContentsBy(int dx, int dy)
{
    QTextEdit::scrollContentsBy(dx, dy);
    if (!m_settling)
        settle(anchorInView());
}
