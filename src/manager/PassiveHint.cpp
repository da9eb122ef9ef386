#include "PassiveHint.h"

#include <QAbstractTextDocumentLayout>
#include <QScopedValueRollback>
#include <QTextCursor>
#include <QTextFrame>
#include <QVBoxLayout>

#include <algorithm>

PassiveHint::PassiveHint(const QString& first, const QString& rest, int pointSize)
{
    QFont own = font();
    own.setPointSize(pointSize);
    setFont(own);
    setFrameShape(QFrame::NoFrame);
    setReadOnly(true);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setFocusPolicy(Qt::NoFocus);
    setContextMenuPolicy(Qt::NoContextMenu);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Drops go to the pane.
    setAcceptDrops(false);
    viewport()->setAcceptDrops(false);
    setPlainText(first);
    QTextCursor cursor(document());
    QTextBlockFormat centred;
    centred.setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    cursor.mergeBlockFormat(centred);
    cursor.movePosition(QTextCursor::End);
    cursor.mergeBlockFormat(centred);
    cursor.insertText(rest);
    setAccessibleName(toPlainText().simplified());
}

QWidget* PassiveHint::framed(PassiveHint* hint)
{
    auto* frame = new QWidget;
    auto* layout = new QVBoxLayout(frame);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(hint);
    return frame;
}

void PassiveHint::resizeEvent(QResizeEvent* event)
{
    QTextEdit::resizeEvent(event);
    centre();
}

void PassiveHint::changeEvent(QEvent* event)
{
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        centre();
}

/// A block's vertical alignment moves nothing in a document: the space above the text does it.
void PassiveHint::centre()
{
    QTextFrame* root = document()->rootFrame();
    QTextFrameFormat format = root->frameFormat();
    const qreal text = document()->size().height() - format.topMargin();
    const qreal margin = std::max<qreal>(document()->documentMargin(), (viewport()->height() - text) / 2);
    if (qFuzzyCompare(margin, format.topMargin()))
        return;
    format.setTopMargin(margin);
    root->setFrameFormat(format);
}
