#include "StratacutUI/STT_SpeakerTextEdit.h"

#include "LineParts.h"
#include "StratacutUI/STT_EntryWidget.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace
{
using LineParts::fieldMargin;

bool endsEditing(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
}
} // namespace

STT_SpeakerTextEdit::STT_SpeakerTextEdit(QWidget* line) : QTextEdit(line)
{
    setFrameShape(QFrame::NoFrame);
    setAcceptRichText(false);
    setLineWrapMode(QTextEdit::NoWrap);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    document()->setDocumentMargin(fieldMargin);
    document()->setUndoRedoEnabled(false);
    setReadOnly(true);
    connect(this, &QTextEdit::textChanged, this, &STT_SpeakerTextEdit::adjustSpeakerName);
}

QSize STT_SpeakerTextEdit::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 16, LineParts::fieldHeight(font())};
}

void STT_SpeakerTextEdit::showName(const QString& name)
{
    if ((isEditing() && !m_isCommitting) || name == toPlainText())
        return;
    // Half the price of a new text; a cursor outside an edit block would ask where it is at every move.
    QTextCursor all(document());
    all.beginEditBlock();
    all.select(QTextCursor::Document);
    all.insertText(name);
    all.endEditBlock();
}

void STT_SpeakerTextEdit::beginEditing()
{
    setReadOnly(false);
    selectAll();
    setFocus(Qt::OtherFocusReason);
}

void STT_SpeakerTextEdit::cancelEditing()
{
    if (!isEditing())
        return;
    setPlainText(m_nameBefore);
    endEditing();
}

void STT_SpeakerTextEdit::commit()
{
    if (!isEditing())
        return;
    const QString name = toPlainText().trimmed();
    setPlainText(name);
    const auto* line = qobject_cast<STT_EntryWidget*>(parentWidget());
    if (name == std::exchange(m_nameBefore, name) || !line)
        return;
    // What a speaker without a name is called is up to the window.
    const QScopedValueRollback<bool> committing(m_isCommitting, true);
    emit speakerNameChangedSignal(line->segment(), name);
}

void STT_SpeakerTextEdit::endEditing()
{
    QTextCursor cursor = textCursor();
    cursor.movePosition(QTextCursor::Start);
    setTextCursor(cursor);
    setExtraSelections({});
    horizontalScrollBar()->setValue(0);
    setReadOnly(true);
    emit editingEnded();
}

/// While it only shows a name, the field leaves the keyboard to the transcript: the space bar plays.
void STT_SpeakerTextEdit::editableChanged()
{
    if (isEditing())
        m_nameBefore = toPlainText();
    else if (hasFocus())
        clearFocus();
    setFocusPolicy(isEditing() ? Qt::StrongFocus : Qt::NoFocus);
    document()->setUndoRedoEnabled(isEditing());
    viewport()->setAutoFillBackground(isEditing());
    viewport()->setCursor(isEditing() ? Qt::IBeamCursor : Qt::ArrowCursor);
    adjustSpeakerName();
}

void STT_SpeakerTextEdit::adjustSpeakerName()
{
    const QString name = toPlainText();
    m_isElided = !isEditing() && fontMetrics().horizontalAdvance(name) > viewport()->width() - 2 * fieldMargin;
    setToolTip(m_isElided ? name.toHtmlEscaped() : QString());
    viewport()->update();
}

bool STT_SpeakerTextEdit::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ReadOnlyChange:
        editableChanged();
        break;
    case QEvent::ShortcutOverride:
        if (isEditing() && endsEditing(static_cast<QKeyEvent*>(event)->key())) {
            event->accept();
            return true;
        }
        break;
    case QEvent::FontChange:
    case QEvent::Resize:
        adjustSpeakerName();
        break;
    default:
        break;
    }
    return QTextEdit::event(event);
}

void STT_SpeakerTextEdit::keyPressEvent(QKeyEvent* event)
{
    if (!isEditing() || !endsEditing(event->key()))
        return QTextEdit::keyPressEvent(event);
    if (event->key() == Qt::Key_Escape)
        return cancelEditing();
    commit();
    endEditing();
}

void STT_SpeakerTextEdit::focusOutEvent(QFocusEvent* event)
{
    QTextEdit::focusOutEvent(event);
    // Its own menu, for a paste, takes the focus only as long as it is open.
    if (!isEditing() || event->reason() == Qt::PopupFocusReason)
        return;
    commit();
    endEditing();
}

void STT_SpeakerTextEdit::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (isEditing())
        QTextEdit::mouseDoubleClickEvent(event);
    else
        beginEditing();
}

void STT_SpeakerTextEdit::contextMenuEvent(QContextMenuEvent* event)
{
    if (isEditing())
        QTextEdit::contextMenuEvent(event);
    else
        event->ignore(); // the line opens the speaker menu
}

void STT_SpeakerTextEdit::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // the transcript scrolls
}

void STT_SpeakerTextEdit::insertFromMimeData(const QMimeData* source)
{
    static const QRegularExpression lineEnds(QStringLiteral("[\\r\\n\u2028\u2029]+"));
    if (source->hasText())
        textCursor().insertText(source->text().replace(lineEnds, QStringLiteral(" ")));
}

void STT_SpeakerTextEdit::paintEvent(QPaintEvent* event)
{
    if (!m_isElided)
        QTextEdit::paintEvent(event);
    QPainter painter(viewport());
    const QRect all = viewport()->rect();
    if (isEditing()) {
        painter.setPen(palette().color(QPalette::Link));
        painter.drawRect(all.adjusted(0, 0, -1, -1));
    } else if (m_isElided) {
        const QRect place = all.adjusted(fieldMargin, 0, -fieldMargin, 0);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(place, Qt::AlignVCenter,
                         fontMetrics().elidedText(toPlainText(), Qt::ElideRight, place.width()));
    }
}
