#include "ViewDeckQt/StyledIconButton.h"

#include "FamilyStyle.h"

#include <QEvent>
#include <QStyleOption>
#include <QStylePainter>

namespace ViewDeckQt
{

namespace
{
constexpr int padding = 4;
}

StyledIconButton::StyledIconButton(QWidget* parent) : QToolButton(parent)
{
    FamilyStyle::apply(this);
    setAutoRaise(true);
    setFocusPolicy(Qt::StrongFocus);
}

StyledIconButton::StyledIconButton(const NineSlice::ResourceData& image, const QString& toolTip, QWidget* parent)
    : StyledIconButton(parent)
{
    setImage(image);
    setToolTip(toolTip);
}

void StyledIconButton::setImage(const NineSlice::ResourceData& image)
{
    m_image = image;
    m_group.clear();
    m_name.clear();
    updateGeometry();
    update();
}

void StyledIconButton::setImage(const QString& group, const QString& name)
{
    m_image = {};
    m_group = group;
    m_name = name;
    updateGeometry();
    update();
}

QPixmap StyledIconButton::image() const
{
    if (m_image.group)
        return NineSlice::GetImage(m_image, devicePixelRatioF());
    return m_name.isEmpty() ? QPixmap() : NineSlice::GetImage(m_group, m_name, devicePixelRatioF());
}

QSize StyledIconButton::sizeHint() const
{
    const QPixmap shown = image();
    const QSize size = shown.isNull() ? QSize(16, 16) : (QSizeF(shown.size()) / shown.devicePixelRatio()).toSize();
    return size + QSize(2 * padding, 2 * padding);
}

bool StyledIconButton::event(QEvent* event)
{
    // Only where nobody has given a name: assistive technology reads the tooltip of a button without text.
    if (event->type() == QEvent::ToolTipChange && accessibleName().isEmpty() && text().isEmpty())
        setAccessibleName(toolTip());
    return QToolButton::event(event);
}

void StyledIconButton::paintEvent(QPaintEvent*)
{
    QStyleOptionToolButton option;
    initStyleOption(&option);
    QStylePainter painter(this);
    painter.drawPrimitive(QStyle::PE_PanelButtonTool, option);
    const QPixmap shown = image();
    if (shown.isNull())
        return;
    QRectF place(QPointF(), QSizeF(shown.size()) / shown.devicePixelRatio());
    place.moveCenter(QRectF(rect()).center());
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    painter.drawPixmap(place.topLeft().toPoint(), shown);
}

} // namespace ViewDeckQt
