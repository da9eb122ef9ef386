#include "StratacutUI/IMF_TreeView.h"

#include "TreeDelegates.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "ViewDeckQt/NineSlice.h"

#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPersistentModelIndex>

namespace
{
using Model = IMF_PackageMgrQtModel;
constexpr int statusColumn = 1;
} // namespace

IMF_TreeView::IMF_TreeView(QWidget* parent) : QTreeView(parent)
{
    setTextElideMode(Qt::ElideMiddle);
    setContextMenuPolicy(Qt::CustomContextMenu);
    // Layout and changes stay cheap in a tree of any size.
    setUniformRowHeights(true);
    // A frame round the name alone would look like an open editor.
    setAllColumnsShowFocus(true);
    setHeader(new PlainHeader(this));
    setItemDelegate(new IMF_TreeNameDelegate(this));
    setItemDelegateForColumn(statusColumn, new IMF_TreeViewDelegate(this));
    connect(this, &QWidget::customContextMenuRequested, this, &IMF_TreeView::showContextMenu);
    useTableTextColor();
}

IMF_TreeView::~IMF_TreeView() = default;

void IMF_TreeView::useTableTextColor()
{
    const std::optional<NvRGBColor> color = NineSlice::GetRowColTextColorForTable();
    if (!color)
        return;
    // A palette of one entry: everything else keeps following the skin.
    QPalette text;
    text.setColor(QPalette::HighlightedText, *color);
    setPalette(text);
}

void IMF_TreeView::changeEvent(QEvent* event)
{
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        useTableTextColor();
}

void IMF_TreeView::select(const QModelIndex& index)
{
    if (!selectionModel())
        return;
    selectionModel()->clearSelection();
    // Whole rows: "Export" and the Delete key ask for selected rows.
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void IMF_TreeView::expandToCPL(const QModelIndex& parent, int row)
{
    if (!model())
        return;
    expand(parent);
    const QModelIndex child = model()->index(row, 0, parent);
    if (Model::NodeTypeFromIndex(parent) != IMF_PackageMgr::Delivery)
        return select(child);
    expand(child);
    // The child may have gone behind a message of the host: below an invalid index stand the deliverables.
    select(child.isValid() ? model()->index(0, 0, child) : child);
}

void IMF_TreeView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    if (!topLeft.isValid() || topLeft.row() != bottomRight.row())
        return QTreeView::dataChanged(topLeft, bottomRight, roles);
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column) {
        const QModelIndex cell = topLeft.siblingAtColumn(column);
        QTreeView::dataChanged(cell, cell, roles);
    }
}

void IMF_TreeView::showContextMenu(const QPoint& position)
{
    const QPersistentModelIndex index = indexAt(position);
    if (!index.isValid())
        return;
    QMenu menu;
    QAction* remove = menu.addAction(stx_func("Delete a reference"));
    remove->setEnabled(Model::StatusFromIndex(index) == IMF_PackageMgr::Uncommitted);
    connect(remove, &QAction::triggered, this, [this, index] {
        if (index.isValid())
            emit notifyRemoveItem(index);
    });
    menu.exec(viewport()->mapToGlobal(position));
}

void IMF_TreeView::keyPressEvent(QKeyEvent* event)
{
    QTreeView::keyPressEvent(event);
    if (event->key() != Qt::Key_Backspace && event->key() != Qt::Key_Delete)
        return;
    const QModelIndexList rows = selectionModel() ? selectionModel()->selectedRows() : QModelIndexList();
    if (rows.isEmpty())
        return;
    event->accept();
    emit notifyRemoveItem(rows.first());
}

void IMF_TreeView::mousePressEvent(QMouseEvent* event)
{
    if (indexAt(event->pos()).isValid())
        return QTreeView::mousePressEvent(event);
    if (!selectionModel())
        return;
    selectionModel()->clearSelection();
    selectionModel()->setCurrentIndex({}, QItemSelectionModel::Select);
}

bool IMF_TreeView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    if (Model::StatusFromIndex(index) == IMF_PackageMgr::Committed)
        return false;
    return QTreeView::edit(index, trigger, event);
}
