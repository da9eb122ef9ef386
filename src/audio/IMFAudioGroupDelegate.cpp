#include "IMFAudioGroupDelegate.h"

#include "IMFTracksSortFilterModel.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"
#include "ViewDeckQt/NineSlice.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace
{
constexpr int padding = 6;

enum class Part { Check, Text, Other };

/// What one cell shows.
struct Cell {
    Part part = Part::Other;
    QString text;
    QSize indicator;
};

Cell cellOf(const QModelIndex& index)
{
    const QModelIndex source = IMFTracksSortFilterModel::sourceOf(index);
    MXE_Bridge* engine = IMF_MXE_bridge::Instance();
    const MXE_TrackColumns columns = engine->trackColumns(source.model());
    if (source.column() == columns.check)
        return {Part::Check, {}, columns.indicatorSize};
    const QString text = index.data().toString();
    if (source.column() == columns.name)
        return {Part::Text, text, {}};
    if (source.column() != columns.secondText)
        return {};
    const QString label =
        source.model() == index.model() ? QString() : engine->trackLabel(source.model(), source.row());
    return {Part::Text, label.isEmpty() ? text : label + QLatin1Char(' ') + text, {}};
}

const QStyle* styleOf(const QStyleOptionViewItem& item)
{
    return item.widget ? item.widget->style() : QApplication::style();
}

void drawCheck(QPainter* painter, const QStyleOptionViewItem& item, const QSize& size)
{
    QStyleOptionButton box;
    box.QStyleOption::operator=(item);
    box.rect = QStyle::alignedRect(item.direction, Qt::AlignCenter, size, item.rect);
    box.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    box.state |= item.state & QStyle::State_Selected ? QStyle::State_On : QStyle::State_Off;
    styleOf(item)->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, painter, item.widget);
}

QColor textColor(const QStyleOptionViewItem& item)
{
    const QPalette::ColorGroup group = item.state & QStyle::State_Enabled ? QPalette::Active : QPalette::Disabled;
    if (!(item.state & QStyle::State_Selected))
        return item.palette.color(group, QPalette::Text);
    const std::optional<NvRGBColor> color = NineSlice::GetRowColTextColorForTable();
    return color ? color->toQColor() : item.palette.color(group, QPalette::HighlightedText);
}

void drawText(QPainter* painter, const QStyleOptionViewItem& item, const QString& text)
{
    const QRect place = item.rect.adjusted(padding, 0, -padding, 0);
    painter->save();
    painter->setFont(item.font);
    painter->setPen(textColor(item));
    const Qt::Alignment alignment = QStyle::visualAlignment(item.direction, Qt::AlignLeft | Qt::AlignVCenter);
    painter->drawText(place, int(alignment) | Qt::TextSingleLine,
                      item.fontMetrics.elidedText(text, Qt::ElideRight, place.width()));
    painter->restore();
}
} // namespace

void IMFAudioGroupDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    if (item.state & QStyle::State_Selected) {
        // Some styles leave the row bare unless it is said that the whole of it is selected.
        item.showDecorationSelected = true;
        styleOf(item)->drawPrimitive(QStyle::PE_PanelItemViewRow, &item, painter, item.widget);
    }
    const Cell cell = cellOf(index);
    switch (cell.part) {
    case Part::Check:
        return drawCheck(painter, item, cell.indicator);
    case Part::Text:
        return drawText(painter, item, cell.text);
    case Part::Other:
        QStyledItemDelegate::paint(painter, option, index);
    }
}

QSize IMFAudioGroupDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const Cell cell = cellOf(index);
    if (cell.part == Part::Other)
        return QStyledItemDelegate::sizeHint(option, index);
    const int width =
        cell.part == Part::Check ? cell.indicator.width() : option.fontMetrics.horizontalAdvance(cell.text) + 1;
    return {width + 2 * padding, std::max(cell.indicator.height(), option.fontMetrics.height())};
}

bool IMFAudioGroupDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                                      const QModelIndex& index)
{
    const Cell cell = cellOf(index);
    if (event->type() != QEvent::ToolTip || cell.part != Part::Text ||
        sizeHint(option, index).width() <= option.rect.width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), cell.text, view);
    return true;
}
