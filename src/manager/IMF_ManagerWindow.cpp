#include "StratacutUI/IMF_ManagerWindow.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/IMF_PackageParamsView.h"
#include "StratacutUI/IMF_TreeView.h"
#include "StratacutUI/IMF_View.h"
#include "StratacutUI/NewIMFDialog.h"
#include "ViewDeckQt/StyledButton.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFileDialog>
#include <QMenu>
#include <QSplitter>
#include <QVBoxLayout>

using ViewDeckQt::StyledButton;

namespace
{
using Model = IMF_PackageMgrQtModel;

constexpr int leastLeftWidth = 200;

/// Where "Explore" opens, for every window of the process.
QString& lastExplored()
{
    static QString folder;
    return folder;
}
} // namespace

IMF_ManagerWindow::IMF_ManagerWindow(QAbstractItemModel* model, const QModelIndex& root, QWidget* parent)
    : QWidget(parent), m_root(root)
{
    // For connections that are queued or made by name.
    qRegisterMetaType<QList<QModelIndex>>("QList<QModelIndex>");
    QWidget* left = createLeftPane(model, root);
    QWidget* right = createRightPane(model);
    layOut(left, right);
    connectAll();
    nameWidgets();
    auto* packages = qobject_cast<IMF_PackageMgrQtModel*>(model);
    if (packages && packages->getIMFController())
        connectToController(packages, packages->getIMFController());
}

IMF_ManagerWindow::~IMF_ManagerWindow()
{
    // A field that is being typed in reports once it loses the focus: while there is a whole window to hear of it.
    if (QWidget* field = focusWidget())
        field->clearFocus();
}

QWidget* IMF_ManagerWindow::createLeftPane(QAbstractItemModel* model, const QModelIndex& root)
{
    auto* pane = new QWidget;
    pane->setMinimumWidth(leastLeftWidth);
    m_explore = new StyledButton(stx_func("Explore"));
    m_newIMF = new StyledButton(stx_func("New IMF"));
    m_imfView = new IMF_View(model, root);
    m_burn = new StyledButton(stx_func("Export"));
    m_burn->setEnabled(false);

    auto* top = new QHBoxLayout;
    top->addWidget(m_explore);
    top->addWidget(m_newIMF);
    top->addSpacerItem(new QSpacerItem(0, 0, QSizePolicy::Expanding, QSizePolicy::Minimum));
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(m_burn);
    auto* layout = new QVBoxLayout(pane);
    layout->addLayout(top);
    layout->addWidget(m_imfView);
    layout->addLayout(bottom);
    return pane;
}

QWidget* IMF_ManagerWindow::createRightPane(QAbstractItemModel* model)
{
    auto* pane = new QWidget;
    m_paramsView = new IMF_PackageParamsView(model);
    auto* layout = new QHBoxLayout(pane);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_paramsView);
    return pane;
}

void IMF_ManagerWindow::layOut(QWidget* left, QWidget* right)
{
    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->addWidget(left);
    m_splitter->addWidget(right);
    m_splitter->setCollapsible(0, false);
    m_splitter->setFrameShape(QFrame::NoFrame);
    m_splitter->setSizes({360, 640});
    m_splitter->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetMinimumSize);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_splitter);
}

void IMF_ManagerWindow::nameWidgets()
{
    m_explore->setObjectName(QStringLiteral("m_explore"));
    m_newIMF->setObjectName(QStringLiteral("m_newIMF"));
    m_imfView->setObjectName(QStringLiteral("m_imfView"));
    m_burn->setObjectName(QStringLiteral("m_burn"));
    m_paramsView->setObjectName(QStringLiteral("m_paramsView"));
    m_splitter->setObjectName(QStringLiteral("m_splitter"));
}

void IMF_ManagerWindow::connectAll()
{
    if (QItemSelectionModel* selection = m_imfView->getSidebarView()->selectionModel()) {
        connect(selection, &QItemSelectionModel::selectionChanged, m_paramsView,
                &IMF_PackageParamsView::onSelectionChanged);
        connect(selection, &QItemSelectionModel::selectionChanged, this, &IMF_ManagerWindow::onSelectionChanged);
    }
    connect(m_explore, &QPushButton::clicked, this, &IMF_ManagerWindow::onExploreBtnClicked);
    connect(m_newIMF, &QPushButton::clicked, this, &IMF_ManagerWindow::onNewIMPBtnClicked);
    connect(m_burn, &QPushButton::clicked, this, &IMF_ManagerWindow::onBurnBtnClicked);
    connect(m_paramsView, &IMF_PackageParamsView::valueChanged, this, &IMF_ManagerWindow::onValueChanged);
}

void IMF_ManagerWindow::connectToController(IMF_PackageMgrQtModel* model, IMF_Controller* controller)
{
    m_controller = controller;
    IMF_TreeView* tree = m_imfView->getSidebarView();
    const Qt::ConnectionType once = Qt::UniqueConnection;
    connect(this, &IMF_ManagerWindow::newDeliveryAdded, controller, &IMF_Controller::onExploreNewDelivery, once);
    connect(this, &IMF_ManagerWindow::saveSettings, controller, &IMF_Controller::onSaveSettings, once);
    connect(this, &IMF_ManagerWindow::newOriginalIMF, this, &IMF_ManagerWindow::createOriginal, once);
    connect(this, &IMF_ManagerWindow::newSupplementalIMF, this, &IMF_ManagerWindow::createSupplemental, once);
    connect(this, &IMF_ManagerWindow::commitSelectedItems, controller, &IMF_Controller::onCommit, once);
    connect(tree, &IMF_TreeView::notifyRemoveItem, controller, &IMF_Controller::onRemoveIMFItem, once);
    connect(tree, &IMF_TreeView::notifyRefresh, controller, &IMF_Controller::onRefreshIMFItem, once);
    connect(m_paramsView, &IMF_PackageParamsView::setDeliverableDirPathClickedWithIndex, controller,
            &IMF_Controller::onSetPathButtonClicked, once);
    connect(model, &Model::sequenceDropped, tree, &IMF_TreeView::expandToCPL, once);
    connect(controller, &IMF_Controller::commitCompleted, this, &IMF_ManagerWindow::onCommitCompleted, once);
    connect(model, &QAbstractItemModel::layoutChanged, this, &IMF_ManagerWindow::refreshBurnButton, once);
}

bool IMF_ManagerWindow::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) {
        QCoreApplication::sendEvent(m_paramsView, event);
        if (QAbstractItemModel* model = m_imfView->getSidebarView()->model())
            QCoreApplication::sendEvent(model, event);
    }
    return QWidget::event(event);
}

void IMF_ManagerWindow::onExploreBtnClicked()
{
    const QPointer<IMF_ManagerWindow> self = this;
    const QString path = QFileDialog::getExistingDirectory(this, stx_func("Select Delivery Folder"), lastExplored(),
                                                           QFileDialog::ShowDirsOnly);
    if (path.isEmpty() || !self)
        return;
    lastExplored() = path;
    const int formerCount = deliveryCount();
    emit newDeliveryAdded(path);
    if (self)
        selectNewest(formerCount);
}

void IMF_ManagerWindow::onNewIMPBtnClicked()
{
    const QPointer<IMF_ManagerWindow> self = this;
    const int formerCount = deliveryCount();
    QMenu menu;
    connect(menu.addAction(stx_func("IMF Original")), &QAction::triggered, this, [this] { emit newOriginalIMF(); });
    connect(menu.addAction(stx_func("IMF Supplemental")), &QAction::triggered, this,
            [this] { emit newSupplementalIMF(); });
    menu.exec(m_newIMF->mapToGlobal(QPoint(0, 0)));
    if (self)
        selectNewest(formerCount);
}

void IMF_ManagerWindow::createOriginal()
{
    if (m_controller)
        m_controller->onNewIMFDelivery(NewIMFDialog::defaultName(IMF_PackageMgr::Original), IMF_PackageMgr::Original);
}

void IMF_ManagerWindow::createSupplemental()
{
    if (m_controller)
        m_controller->onNewIMFDelivery(NewIMFDialog::defaultName(IMF_PackageMgr::Supplemental),
                                       IMF_PackageMgr::Supplemental);
}

int IMF_ManagerWindow::deliveryCount() const
{
    const QAbstractItemModel* model = m_imfView->getSidebarView()->model();
    return model ? model->rowCount(m_root) : 0;
}

/// The user goes on with what was just made or opened.
void IMF_ManagerWindow::selectNewest(int formerCount)
{
    const int count = deliveryCount();
    IMF_TreeView* tree = m_imfView->getSidebarView();
    if (count <= formerCount)
        return;
    tree->select(tree->model()->index(count - 1, 0, m_root));
    tree->setFocus();
}

void IMF_ManagerWindow::onBurnBtnClicked()
{
    const QItemSelectionModel* selection = m_imfView->getSidebarView()->selectionModel();
    if (selection)
        emit commitSelectedItems(selection->selectedRows(0));
}

void IMF_ManagerWindow::onCommitCompleted()
{
    // What was committed with the item is below it.
    m_imfView->getSidebarView()->viewport()->update();
    m_paramsView->reload();
    refreshBurnButton();
}

void IMF_ManagerWindow::onValueChanged(const QModelIndex& index)
{
    updateBurnButton(index);
}

void IMF_ManagerWindow::onSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    Q_UNUSED(deselected);
    updateBurnButton(selected.size() == 1 ? QModelIndex(selected.first().topLeft()) : QModelIndex());
}

void IMF_ManagerWindow::refreshBurnButton()
{
    const QItemSelectionModel* selection = m_imfView->getSidebarView()->selectionModel();
    const QModelIndexList rows = selection ? selection->selectedRows(0) : QModelIndexList();
    updateBurnButton(rows.size() == 1 ? rows.first() : QModelIndex());
}

void IMF_ManagerWindow::updateBurnButton(const QModelIndex& index)
{
    m_burn->setEnabled(index.isValid() && index.data(Model::BurnableRole).toBool() &&
                       Model::NodeTypeFromIndex(index) == IMF_PackageMgr::Delivery);
}
