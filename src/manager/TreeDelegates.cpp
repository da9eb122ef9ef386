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

constexpr int rowPadding = 5;
constexpr int headerPadding = 6;
constexpr int signSide = 14;
constexpr int signMargin = 6;

QColor warningColor(const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Base).lightness() < 128;
    return dark ? QColor(244, 176, 64) : QColor(168, 92, 0);
}

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

/// An exclamation mark in a triangle.
void drawWarning(QPainter& painter, const QRectF& box, const QColor& sign, const QColor& mark)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(sign, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(sign);
    painter.drawPolygon(QPolygonF({{box.center().x(), box.top() + 1}, box.bottomRight(), box.bottomLeft()}));
    painter.setPen(QPen(mark, 1.6, Qt::SolidLine, Qt::RoundCap));
    const qreal middle = box.center().x();
    painter.drawLine(QPointF(middle, box.top() + box.height() * 0.40),
                     QPointF(middle, box.top() + box.height() * 0.66));
    painter.drawPoint(QPointF(middle, box.top() + box.height() * 0.88));
    painter.restore();
}

void drawBackground(QPainter* painter, const QStyleOptionViewItem& option)
{
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);
}
} // namespace

void IMF_TreeViewDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    drawBackground(painter, cell);
    const QStyle* style = cell.widget ? cell.widget->style() : QApplication::style();
    const QRect place = style->subElementRect(QStyle::SE_ItemViewItemDecoration, &cell, cell.widget);
    cell.icon.paint(painter, place, Qt::AlignCenter);
}

void IMF_TreeNameDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (isInvalid(index))
        option->palette.setColor(QPalette::Text, warningColor(option->palette));
}

void IMF_TreeNameDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (!isInvalid(index))
        return QStyledItemDelegate::paint(painter, option, index);
    drawBackground(painter, option);
    QStyleOptionViewItem text = option;
    const int taken = signSide + 2 * signMargin;
    text.rect.adjust(option.direction == Qt::RightToLeft ? taken : 0, 0,
                     option.direction == Qt::RightToLeft ? 0 : -taken, 0);
    QStyledItemDelegate::paint(painter, text, index);
    const QRect box = QStyle::alignedRect(option.direction, Qt::AlignRight | Qt::AlignVCenter, {signSide, signSide - 2},
                                          option.rect.adjusted(signMargin, 0, -signMargin, 0));
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QPalette& palette = option.palette;
    drawWarning(*painter, box, selected ? palette.color(QPalette::HighlightedText) : warningColor(palette),
                palette.color(selected ? QPalette::Highlight : QPalette::Base));
}

QSize IMF_TreeNameDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, rowPadding);
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

PlainHeader::PlainHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent)
{
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setHighlightSections(false);
}

void PlainHeader::paintSection(QPainter* painter, const QRect& rect, int section) const
{
    painter->fillRect(rect, palette().window());
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.2);
    painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), line);
    const QRect text = rect.adjusted(headerPadding, 0, -headerPadding, 0);
    painter->setPen(palette().color(QPalette::WindowText));
    const QString title = model()->headerData(section, Qt::Horizontal).toString();
    painter->drawText(text, int(defaultAlignment()), fontMetrics().elidedText(title, Qt::ElideRight, text.width()));
}

QSize PlainHeader::sectionSizeFromContents(int section) const
{
    const QString title = model()->headerData(section, Qt::Horizontal).toString();
    // The advance is rounded, and a text that is a fraction wider than its place is elided.
    return {fontMetrics().horizontalAdvance(title) + 1 + 2 * headerPadding, fontMetrics().height() + 2 * headerPadding};
}
