#include "desk/app/window/PaneParts.h"

#include "ViewDeckQt/PaletteManager.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace desk::app
{

PaneLabel::PaneLabel(const QString& text, QWidget* parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
}

QSize PaneLabel::minimumSizeHint() const
{
    const QSize whole = QLabel::minimumSizeHint();
    const int least = fontMetrics().averageCharWidth() * 3;
    return wordWrap() ? whole : QSize(std::min(whole.width(), least), whole.height());
}

bool PaneLabel::isElided() const
{
    return !wordWrap() && fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

bool PaneLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() || !isElided())
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text().toHtmlEscaped(), this);
    return true;
}

void PaneLabel::paintEvent(QPaintEvent* event)
{
    if (wordWrap())
        return QLabel::paintEvent(event);
    // A label would put a name of the other direction at the far end.
    QPainter painter(this);
    const QRect place = contentsRect();
    const Qt::Alignment lines = QStyle::visualAlignment(layoutDirection(), alignment());
    const int reads = text().isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    style()->drawItemText(&painter, place, int(lines) | reads, palette(), isEnabled(),
                          fontMetrics().elidedText(text(), Qt::ElideRight, place.width()), foregroundRole());
}

QuietLabel::QuietLabel(const QString& text, QWidget* parent) : PaneLabel(text, parent)
{
    // Also where the background is that of a list.
    setForegroundRole(QPalette::WindowText);
    useQuietColor();
}

void QuietLabel::changeEvent(QEvent* event)
{
    PaneLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_changing)
        useQuietColor();
}

void QuietLabel::useQuietColor()
{
    m_changing = true;
    QPalette own;
    own.setColor(QPalette::WindowText, Palette::PaletteManager::Instance().color(QStringLiteral("QuietFontColor")));
    setPalette(own);
    m_changing = false;
}

QLabel* paneTitle(const QString& text)
{
    auto* label = new PaneLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* fieldTitle(const QString& text, QWidget* field)
{
    auto* label = new QLabel(text);
    label->setBuddy(field);
    field->setAccessibleName(QString(text).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    return label;
}

QLabel* invitation(const QString& text)
{
    auto* label = new QuietLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setMargin(spacing::margin);
    return label;
}

} // namespace desk::app
