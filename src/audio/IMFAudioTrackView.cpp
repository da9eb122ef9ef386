#include "IMFAudioTrackView.h"

#include "IMFTracksSortFilterModel.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"

#include <QHeaderView>
#include <QPainter>
#include <QSet>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace
{
constexpr int rowPadding = 8;
}

IMFAudioTrackView::IMFAudioTrackView(QWidget* parent) : QTableView(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAutoFillBackground(true);
    horizontalHeader()->hide();
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setMinimumSectionSize(1);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + rowPadding);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setShowGrid(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::MultiSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setWordWrap(false);
    // The Tab key leaves the list.
    setTabKeyNavigation(false);
}

QString IMFAudioTrackView::nameOf(int row) const
{
    const QModelIndex source = IMFTracksSortFilterModel::sourceOf(model()->index(row, 0));
    const int column = IMF_MXE_bridge::Instance()->trackColumns(source.model()).name;
    return source.sibling(source.row(), column).data().toString();
}

QStringList IMFAudioTrackView::selectTracks(const QStringList& names)
{
    const QSet<QString> wanted(names.cbegin(), names.cend());
    QSet<QString> found;
    QItemSelection selection;
    const int lastColumn = model()->columnCount() - 1;
    for (int row = 0; row < model()->rowCount(); ++row) {
        const QString name = nameOf(row);
        if (!wanted.contains(name))
            continue;
        found += name;
        selection.select(model()->index(row, 0), model()->index(row, lastColumn));
    }
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    QStringList missing = names;
    missing.erase(
        std::remove_if(missing.begin(), missing.end(), [&found](const QString& name) { return found.contains(name); }),
        missing.end());
    return missing;
}

QStringList IMFAudioTrackView::selectedTracks() const
{
    QStringList names;
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (selectionModel()->isRowSelected(row, {}))
            names += nameOf(row);
    }
    return names;
}

QItemSelectionModel::SelectionFlags IMFAudioTrackView::selectionCommand(const QModelIndex& index,
                                                                        const QEvent* event) const
{
    // Finding a row by its first letters must not tick it.
    return event ? QTableView::selectionCommand(index, event) : QItemSelectionModel::NoUpdate;
}

void IMFAudioTrackView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    QPainter painter(viewport());
    const int rows = model() ? model()->rowCount() : 0;
    const QRect last = rows > 0 ? visualRect(model()->index(rows - 1, 0)) : QRect();
    const QRect below = viewport()->rect().adjusted(0, rows > 0 ? last.bottom() + 1 : 0, 0, 0);
    painter.fillRect(below, palette().base());
    if (rows == 0)
        style()->drawItemText(&painter, below, Qt::AlignCenter | Qt::TextWordWrap, palette(), false,
                              stx_func("No sound tracks"), QPalette::PlaceholderText);
    if (!hasFocus() || !currentIndex().isValid())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    const QRect current = visualRect(currentIndex());
    focus.rect = QRect(0, current.top(), viewport()->width(), current.height());
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}
