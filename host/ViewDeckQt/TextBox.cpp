#include "TextBox.h"

#include "FamilyStyle.h"

#include <QPainter>
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
constexpr int verticalPadding = 3;
constexpr int fewestLines = 3;
constexpr int mostLines = 8;
} // namespace

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent)
{
    FamilyStyle::apply(this);
    FamilyStyle::apply(verticalScrollBar());
    setFrameShape(QFrame::NoFrame);
    setViewportMargins(frame, frame, frame, frame);
    // The frame is filled by event(), with its round corners.
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(Spacing::fieldPadding - frame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QPlainTextEdit::textChanged, this, &TextBox::fitHeight);
}

int TextBox::heightOf(int lines) const
{
    return lines * fontMetrics().lineSpacing() + int(2 * document()->documentMargin()) + 2 * frame;
}

QSize TextBox::sizeHint() const
{
    int lines = 0;
    for (QTextBlock block = document()->begin(); block.isValid() && lines < mostLines; block = block.next())
        lines += std::max(block.layout()->lineCount(), 1);
    const int fewest = isReadOnly() ? 1 : fewestLines;
    return {200, heightOf(std::min(std::max(lines, fewest), mostLines))};
}

QSize TextBox::minimumSizeHint() const
{
    return {60, sizeHint().height()};
}

void TextBox::fitHeight()
{
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
    fitHeight();
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
