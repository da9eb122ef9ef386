#pragma once

#include "StratacutUI/Export.h"

#include <QPersistentModelIndex>
#include <QWidget>

class IMF_TreeView;
class QAbstractItemModel;
class QStackedWidget;
class QTextEdit;

/// The package tree, and in its place a hint while there is no deliverable. Sequences can be dropped on either.
class STRATACUTUI_EXPORT IMF_View : public QWidget
{
    Q_OBJECT
public:
    /// @param model must outlive the view. @param root the index whose children are the deliverables.
    IMF_View(QAbstractItemModel* model, const QModelIndex& root, QWidget* parent = nullptr);
    ~IMF_View() override;

    IMF_TreeView* getSidebarView() const { return m_treeView; }

    bool event(QEvent* event) override;

protected:
    /// Shows the tree where the model has rows, else the hint.
    void updateDisplay();
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void createTree(QAbstractItemModel* model, const QModelIndex& root);
    QWidget* createPassiveHint();
    void updatePalette();
    bool takesDrop(const QDropEvent& event) const;

    QPersistentModelIndex m_root;
    IMF_TreeView* m_treeView;
    QStackedWidget* m_stack;
    QTextEdit* m_hint = nullptr;
};
