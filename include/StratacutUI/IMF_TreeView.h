#pragma once

#include "StratacutUI/Export.h"

#include <QTreeView>

/// The tree of deliverables, IMPs and CPLs. What it asks for leaves it as signals; it changes names alone, and through
/// the model.
class STRATACUTUI_EXPORT IMF_TreeView : public QTreeView
{
    Q_OBJECT
public:
    explicit IMF_TreeView(QWidget* parent = nullptr);
    ~IMF_TreeView() override;

    /// Makes a row the current and only selected one.
    void select(const QModelIndex& index);

Q_SIGNALS:
    void notifyRemoveItem(const QModelIndex& index);
    /// For the host to emit; the tree never does.
    void notifyRefresh(const QModelIndex& index);

public Q_SLOTS:
    /// Shows what was dropped: selects the child `row` of `parent`, or, below a deliverable, the first child of it.
    void expandToCPL(const QModelIndex& parent, int row);
    /// Paints the cells that changed, not the whole viewport.
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles = {}) override;

protected:
    using QTreeView::edit;
    /// Refuses committed items.
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void showContextMenu(const QPoint& position);
    void useTableTextColor();
};
