#include "TreeDelegates.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace
{
using Model = IMF_PackageMgrQtModel;

constexpr QColor warningOnDark(244, 176, 64);
constexpr QColor warningOnLight(168, 92, 0);

bool isInvalid(const QModelIndex& index)
{
    const QVariant valid = index.data(Model::ValidRole);
    return valid.isValid() && !valid.toBool();
}

QString whatIsMissing(const QModelIndex& index)
{
    switch (Model::NodeTypeFromIndex(index)) {
    case IMF_PackageMgr::Delivery:
        return stx_func("This deliverable needs a name and a folder");
    case IMF_PackageMgr::IMP:
        return stx_func("This package needs a name");
    case IMF_PackageMgr::CPL:
        return stx_func("The sequence of this composition is not available");
    }
    return {};
}

/// The icon with a warning sign in its lower right corner.
QIcon withWarning(const QIcon& icon, const QSize& size, QIcon::State state, const QColor& color)
{
    QPixmap pixmap = icon.pixmap(size, QIcon::Normal, state);
    if (pixmap.isNull())
        return icon;
    const qreal side = size.height() * 0.65;
    const QRectF box(size.width() - side, size.height() - side, side, side);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(QPolygonF({{box.center().x(), box.top()}, box.bottomRight(), box.bottomLeft()}));
    painter.setBrush(Qt::black);
    const qreal stroke = side * 0.14;
    painter.drawRect(QRectF(box.center().x() - stroke / 2, box.top() + side * 0.36, stroke, side * 0.32));
    painter.drawRect(QRectF(box.center().x() - stroke / 2, box.top() + side * 0.76, stroke, stroke));
    return QIcon(pixmap);
}
} // namespace

void IMF_TreeNameDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!isInvalid(index))
        return;
    const bool dark = option->palette.color(QPalette::Base).lightness() < 128;
    const QColor color = dark ? warningOnDark : warningOnLight;
    option->palette.setColor(QPalette::Text, color);
    const QIcon::State state = option->state.testFlag(QStyle::State_Open) ? QIcon::On : QIcon::Off;
    option->icon = withWarning(option->icon, option->decorationSize, state, color);
}

bool IMF_TreeNameDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                                     const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStringList lines;
    if (sizeHint(option, index).width() > view->visualRect(index).width())
        lines += index.data().toString().toHtmlEscaped();
    if (isInvalid(index))
        lines += whatIsMissing(index).toHtmlEscaped();
    QToolTip::showText(event->globalPos(), lines.isEmpty() ? QString() : "<p>" + lines.join("<br>") + "</p>", view);
    return true;
}
