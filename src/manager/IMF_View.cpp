#include "StratacutUI/IMF_View.h"

#include "PanePalette.h"
#include "PassiveHint.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_TreeView.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace
{
enum Page { TreePage, HintPage };

constexpr int hintPointSize = 10;
} // namespace

IMF_View::IMF_View(QAbstractItemModel* model, const QModelIndex& root, QWidget* parent)
    : QWidget(parent), m_root(root), m_treeView(new IMF_TreeView), m_stack(new QStackedWidget)
{
    createTree(model, root);
    m_stack->insertWidget(TreePage, m_treeView);
    m_stack->insertWidget(HintPage, createPassiveHint());
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
    setAcceptDrops(true);
    updatePalette();
    updateDisplay();
    if (!model)
        return;
    connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& inserted) {
        if (inserted == m_root)
            updateDisplay();
    });
}

IMF_View::~IMF_View() = default;

void IMF_View::createTree(QAbstractItemModel* model, const QModelIndex& root)
{
    m_treeView->setObjectName(QStringLiteral("m_treeView"));
    m_treeView->setAccessibleName(stx_func("Packages"));
    m_treeView->setFrameShape(QFrame::NoFrame);
    m_treeView->setModel(model);
    m_treeView->setRootIndex(root);
    m_treeView->setDragEnabled(true);
    QHeaderView* header = m_treeView->header();
    header->setStretchLastSection(false);
    // Only the rows in sight are measured, however many there are.
    header->setResizeContentsPrecision(0);
    if (header->count() > 1) {
        header->setSectionResizeMode(1, QHeaderView::ResizeToContents);
        header->setSectionResizeMode(0, QHeaderView::Stretch);
    }
    m_treeView->setAcceptDrops(true);
    m_treeView->setDropIndicatorShown(true);
}

QWidget* IMF_View::createPassiveHint()
{
    auto* hint = new PassiveHint(stx_func("Click Explore to link to an existing IMF"),
                                 stx_func("\n\nCreate a new deliverable by clicking New IMF"), hintPointSize);
    m_hint = hint;
    return PassiveHint::framed(hint);
}

void IMF_View::updateDisplay()
{
    const QAbstractItemModel* model = m_treeView->model();
    m_stack->setCurrentIndex(model && model->rowCount() != 0 ? TreePage : HintPage);
}

void IMF_View::updatePalette()
{
    // Only what is set here is the pane's own; the rest follows the skin.
    QPalette own;
    own.setColor(QPalette::Base, PanePalette::background(*this));
    setPalette(own);
    QPalette hint;
    hint.setColor(QPalette::Text, palette().color(QPalette::Text));
    m_hint->setPalette(hint);
}

bool IMF_View::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) {
        updatePalette();
        updateDisplay();
    }
    return QWidget::event(event);
}

/// While the hint stands in the place of the tree, it takes drops as the tree's empty part does.
bool IMF_View::takesDrop(const QDropEvent& event) const
{
    QAbstractItemModel* model = m_treeView->model();
    return model && m_stack->currentIndex() == HintPage &&
           model->canDropMimeData(event.mimeData(), event.dropAction(), -1, -1, m_root);
}

void IMF_View::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void IMF_View::dragMoveEvent(QDragMoveEvent* event)
{
    event->setAccepted(takesDrop(*event));
}

void IMF_View::dropEvent(QDropEvent* event)
{
    if (takesDrop(*event) && m_treeView->model()->dropMimeData(event->mimeData(), event->dropAction(), -1, -1, m_root))
        event->acceptProposedAction();
    else
        event->ignore();
}
