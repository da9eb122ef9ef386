#include "ViewDeckQt/QFFLineEditQt.h"

#include "FamilyStyle.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>
#include <QToolTip>

#include <algorithm>

namespace ViewDeckQt
{

namespace
{
// What QLineEdit leaves free beside its text.
constexpr int innerMargin = 2;
} // namespace

QFFLineEditQt::QFFLineEditQt(QWidget* parent) : QFFLineEditQt(QString(), parent) {}

QFFLineEditQt::QFFLineEditQt(const QString& text, QWidget* parent) : QLineEdit(text, parent), m_settled(text)
{
    FamilyStyle::apply(this);
    setCursorPosition(0);
    connect(this, &QLineEdit::editingFinished, this, &QFFLineEditQt::commit);
}

void QFFLineEditQt::showText(const QString& shown)
{
    if (isUnfinished() && shown == m_settled)
        return;
    if (shown != text()) {
        const int cursor = hasFocus() ? cursorPosition() : 0;
        setText(shown);
        setCursorPosition(std::min(cursor, shown.size()));
    }
    settle();
}

void QFFLineEditQt::setElideMode(Qt::TextElideMode mode)
{
    m_elideMode = mode;
    update();
}

void QFFLineEditQt::settle()
{
    m_settled = text();
}

void QFFLineEditQt::revert()
{
    if (isUnfinished())
        setText(m_settled);
}

void QFFLineEditQt::commit()
{
    if (!isUnfinished())
        return;
    settle();
    emit textCommitted(text());
}

QRect QFFLineEditQt::textRect() const
{
    QStyleOptionFrame option;
    initStyleOption(&option);
    return style()
        ->subElementRect(QStyle::SE_LineEditContents, &option, this)
        .marginsRemoved(textMargins())
        .adjusted(innerMargin, 0, -innerMargin, 0);
}

bool QFFLineEditQt::isElided() const
{
    return fontMetrics().horizontalAdvance(displayText()) > textRect().width();
}

bool QFFLineEditQt::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && isElided()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), displayText(), this);
        return true;
    }
    return QLineEdit::event(event);
}

void QFFLineEditQt::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && isUnfinished()) {
        revert();
        return event->accept();
    }
    QLineEdit::keyPressEvent(event);
}

void QFFLineEditQt::paintEvent(QPaintEvent* event)
{
    if (hasFocus() || !isElided())
        return QLineEdit::paintEvent(event);
    QStyleOptionFrame option;
    initStyleOption(&option);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
    const QRect place = textRect();
    const QString shown = fontMetrics().elidedText(displayText(), m_elideMode, place.width());
    // Where QLineEdit puts a text, so that it does not jump when the focus comes.
    const Qt::Alignment side = displayText().isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
    const Qt::Alignment lines = side | Qt::AlignVCenter;
    style()->drawItemText(&painter, place, int(lines), palette(), isEnabled(), shown, QPalette::Text);
}

} // namespace ViewDeckQt
