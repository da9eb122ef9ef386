#include "TextBox.h"

#include "FamilyStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <QStyleOption>
#include <QTextBlock>
#include <QWheelEvent>

#include <algorithm>

namespace ViewDeckQt
{

namespace
{
constexpr int frame = 2;
// What the viewport needs beyond its lines so as not to scroll.
constexpr int slack = 2;
constexpr int fewestLines = 3;
constexpr int mostLines = 8;
} // namespace

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent)
{
    FamilyStyle::apply(this);
    FamilyStyle::apply(verticalScrollBar());
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setLineWidth(frame);
    // event() draws the frame and fills it, with its round corners.
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(Spacing::fieldPadding - frame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QPlainTextEdit::textChanged, this, &TextBox::fitHeight);
    fitHeight();
}

int TextBox::heightOf(int lines) const
{
    return lines * fontMetrics().lineSpacing() + int(2 * document()->documentMargin()) + 2 * frame + slack;
}

// At most one more than are ever shown: a long text is not laid out to its end.
int TextBox::lines() const
{
    int lines = 0;
    for (QTextBlock block = document()->begin(); block.isValid() && lines <= mostLines; block = block.next()) {
        document()->documentLayout()->blockBoundingRect(block); // a block has its lines once somebody asks for its size
        lines += std::max(block.layout()->lineCount(), 1);
    }
    return lines;
}

QSize TextBox::sizeHint() const
{
    return {200, heightOf(std::clamp(lines(), isReadOnly() ? 1 : fewestLines, mostLines))};
}

QSize TextBox::minimumSizeHint() const
{
    return {60, sizeHint().height()};
}

void TextBox::fitHeight()
{
    setVerticalScrollBarPolicy(lines() > mostLines ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    updateGeometry();
}

bool TextBox::event(QEvent* event)
{
    if (event->type() == QEvent::Paint) {
        QStyleOptionFrame option;
        option.initFrom(this);
        option.lineWidth = 1;
        option.state.setFlag(QStyle::State_ReadOnly, isReadOnly());
        option.state.setFlag(QStyle::State_HasFocus, hasFocus());
        QPainter painter(this);
        style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
        return true;
    }
    if (event->type() == QEvent::ReadOnlyChange)
        updateGeometry();
    return QPlainTextEdit::event(event);
}

void TextBox::focusInEvent(QFocusEvent* event)
{
    QPlainTextEdit::focusInEvent(event);
    update();
}

void TextBox::focusOutEvent(QFocusEvent* event)
{
    QPlainTextEdit::focusOutEvent(event);
    update();
}

void TextBox::resizeEvent(QResizeEvent* event)
{
    QPlainTextEdit::resizeEvent(event);
    // The layout that gives a new size here does not listen to wishes until it is done.
    if (event->oldSize().width() != event->size().width())
        QMetaObject::invokeMethod(this, &TextBox::fitHeight, Qt::QueuedConnection);
}

void TextBox::keyPressEvent(QKeyEvent* event)
{
    // It comes here only where no other widget takes the focus; it is no text even then.
    if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab)
        event->ignore();
    else
        QPlainTextEdit::keyPressEvent(event);
}

void TextBox::wheelEvent(QWheelEvent* event)
{
    // A page that scrolls below the pointer goes on scrolling.
    if (hasFocus())
        QPlainTextEdit::wheelEvent(event);
    else
        event->ignore();
}

} // namespace ViewDeckQt
