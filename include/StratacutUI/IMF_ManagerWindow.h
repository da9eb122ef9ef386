#pragma once

#include "StratacutUI/Export.h"

#include <QModelIndexList>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QWidget>

class IMF_Controller;
class IMF_PackageMgrQtModel;
class IMF_PackageParamsView;
class IMF_View;
class QAbstractItemModel;
class QItemSelection;
class QPushButton;
class QSplitter;

/// The package manager: the package tree with its buttons on the left, the parameters of the selected item on the
/// right. It changes no package data by itself; what the user does leaves it as signals.
///
/// Over a package item model that has its controller already, the window connects itself to both. Over any other model,
/// the host connects the signals. User-interface thread only; a widget like any other, owned by its parent or the host.
class STRATACUTUI_EXPORT IMF_ManagerWindow : public QWidget
{
    Q_OBJECT
public:
    /// @param model must outlive the window. @param root the index whose children are the deliverables; the invalid one
    ///        for a package item model.
    IMF_ManagerWindow(QAbstractItemModel* model, const QModelIndex& root, QWidget* parent = nullptr);
    ~IMF_ManagerWindow() override;

    bool event(QEvent* event) override;

Q_SIGNALS:
    /// A folder was chosen after "Explore".
    void newDeliveryAdded(const QString& path);
    /// For the host to emit: the package state is to be saved now. The window never does.
    void saveSettings();
    void newOriginalIMF();
    /// "Export" was pressed. @param rows the selected rows, column 0.
    void commitSelectedItems(const QList<QModelIndex>& rows);
    /// For the host's use; the window never emits it.
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void newSupplementalIMF();
    /// For the host's use; the window never emits it.
    void saveCurrentSelected(const QModelIndex& index);

private Q_SLOTS:
    void onExploreBtnClicked();
    void onNewIMPBtnClicked();
    void onBurnBtnClicked();
    void onValueChanged(const QModelIndex& index);
    void onSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void updateBurnButton(const QModelIndex& index);

private:
    QWidget* createLeftPane(QAbstractItemModel* model, const QModelIndex& root);
    QWidget* createRightPane(QAbstractItemModel* model);
    void layOut(QWidget* left, QWidget* right);
    void nameWidgets();
    void connectAll();
    void connectToController(IMF_PackageMgrQtModel* model, IMF_Controller* controller);
    void onCommitCompleted();
    void createOriginal();
    void createSupplemental();
    void refreshBurnButton();
    int deliveryCount() const;
    void selectNewest(int formerCount);

    QPushButton* m_explore;
    QPushButton* m_newIMF;
    IMF_View* m_imfView;
    QPushButton* m_burn;
    IMF_PackageParamsView* m_paramsView;
    QSplitter* m_splitter;
    QPersistentModelIndex m_root;
    QPointer<IMF_Controller> m_controller;
};
