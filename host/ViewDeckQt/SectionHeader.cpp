#include "SectionHeader.h"

#include "FamilyStyle.h"

#include "ViewDeckQt/NineSlice.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QTransform>

#include <algorithm>

namespace ViewDeckQt
{

namespace
{
constexpr int arrowSize = 16;
constexpr int padding = 4;
constexpr int radius = 3;
} // namespace

SectionHeader::SectionHeader(const QString& text, QWidget* parent) : QAbstractButton(parent)
{
    setText(text);
    setAccessibleName(text);
    setCheckable(true);
    setChecked(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QFont SectionHeader::boldFont() const
{
    QFont bold(font());
    bold.setBold(true);
    return bold;
}

QSize SectionHeader::sizeHint() const
{
    const QFontMetrics metrics(boldFont());
    return {arrowSize + 3 * padding + metrics.horizontalAdvance(text()), std::max(metrics.height(), arrowSize) + 8};
}

QSize SectionHeader::minimumSizeHint() const
{
    return {arrowSize + 3 * padding, sizeHint().height()};
}

QRect SectionHeader::textRect() const
{
    return QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(arrowSize + 2 * padding, 0, -padding, 0));
}

QPixmap SectionHeader::arrow() const
{
    const QString group = QStringLiteral("icons/Arrows");
    const QString name = isChecked() ? QStringLiteral("pane_collapse_arrow") : QStringLiteral("pane_expand_arrow");
    const QPixmap image = NineSlice::GetImage(group, name, devicePixelRatioF());
    // The images point along a line of text; the contents of an open section are below.
    QTransform turn;
    if (isChecked())
        turn.rotate(-90);
    else if (isRightToLeft())
        turn.scale(-1, 1);
    QPixmap turned = image.transformed(turn);
    turned.setDevicePixelRatio(image.devicePixelRatio());
    return turned;
}

bool SectionHeader::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && QFontMetrics(boldFont()).horizontalAdvance(text()) > textRect().width()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QAbstractButton::event(event);
}

void SectionHeader::keyPressEvent(QKeyEvent* event)
{
    const Qt::Key forward = isRightToLeft() ? Qt::Key_Left : Qt::Key_Right;
    const Qt::Key back = isRightToLeft() ? Qt::Key_Right : Qt::Key_Left;
    if (event->key() == forward || event->key() == Qt::Key_Plus)
        emit expandRequested();
    else if (event->key() == back || event->key() == Qt::Key_Minus)
        emit collapseRequested();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void SectionHeader::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect place = textRect();
    const QPalette& colors = palette();
    if (underMouse() && isEnabled()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Tone::mix(colors.color(QPalette::Window), colors.color(QPalette::WindowText), 0.08));
        painter.drawRoundedRect(rect(), radius, radius);
    }
    const QPixmap image = arrow();
    QRect imagePlace(padding, (height() - arrowSize) / 2, arrowSize, arrowSize);
    imagePlace = QStyle::visualRect(layoutDirection(), rect(), imagePlace);
    painter.drawPixmap(imagePlace.topLeft(), image);
    painter.setFont(boldFont());
    const QString shown = painter.fontMetrics().elidedText(text(), Qt::ElideRight, place.width());
    const Qt::Alignment alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    style()->drawItemText(&painter, place, int(alignment) | Qt::TextShowMnemonic, colors, isEnabled(), shown,
                          QPalette::WindowText);
    // A line carries the eye across to the end of the section.
    const int textWidth = painter.fontMetrics().horizontalAdvance(shown);
    QRect line(place.left() + textWidth + 8, height() / 2, place.width() - textWidth - 8, 1);
    if (isRightToLeft())
        line.moveLeft(place.left());
    if (line.width() > 0)
        painter.fillRect(line, Tone::divider(colors));
    if (!hasFocus())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Tone::focus(colors), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace ViewDeckQt
