#include "desk/app/window/BinPane.h"

#include "ViewDeckQt/StyledButton.h"
#include "desk/app/window/BinDelegate.h"
#include "desk/app/window/BinModel.h"
#include "desk/app/window/MediaLoader.h"
#include "desk/app/window/PaneParts.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QStackedWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace desk::app
{

namespace
{
enum Page { ListPage, InvitationPage };

QStringList filesOf(const QMimeData& data)
{
    QStringList files;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            files += url.toLocalFile();
    }
    return files;
}
} // namespace

BinView::BinView(QWidget* parent) : QListView(parent)
{
    setObjectName(QStringLiteral("m_binView"));
    setAccessibleName(QStringLiteral("Bin"));
    setFrameShape(QFrame::NoFrame);
    setItemDelegate(new BinDelegate(this));
    setSelectionMode(ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(DragOnly);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    connect(this, &QListView::doubleClicked, this, &BinView::openAsked);
}

QStringList BinView::selectedIds() const
{
    QStringList ids;
    QModelIndexList indexes = selectionModel() ? selectionModel()->selectedIndexes() : QModelIndexList();
    std::sort(indexes.begin(), indexes.end());
    for (const QModelIndex& index : qAsConst(indexes))
        ids += index.data(BinModel::IdRole).toString();
    return ids;
}

void BinView::startDrag(Qt::DropActions actions)
{
    // The base class would take moved rows away.
    const QModelIndexList indexes = selectedIndexes();
    if (indexes.isEmpty())
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(model()->mimeData(indexes));
    const QImage picture = indexes.first().data(Qt::DecorationRole).value<QImage>();
    if (!picture.isNull())
        drag->setPixmap(QPixmap::fromImage(picture.scaledToWidth(96, Qt::SmoothTransformation)));
    drag->exec(actions, Qt::MoveAction);
}

void BinView::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key == Qt::Key_Delete || key == Qt::Key_Backspace)
        emit removeAsked();
    else if (key == Qt::Key_Return || key == Qt::Key_Enter)
        emit openAsked();
    else
        QListView::keyPressEvent(event);
}

BinPane::BinPane(BinModel* model, MediaLoader* loader, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("m_bin"));
    setAcceptDrops(true);
    createWidgets(model);
    layOut();
    connectAll(model, loader);
    refresh();
}

void BinPane::createWidgets(BinModel* model)
{
    m_view = new BinView;
    m_view->setModel(model);
    m_stack = new QStackedWidget;
    m_add = new ViewDeckQt::StyledButton(QStringLiteral("Add Media"));
    m_add->setObjectName(QStringLiteral("m_addMedia"));
    m_add->setToolTip(QStringLiteral("Choose media files for the bin"));
    m_use = new ViewDeckQt::StyledButton(QStringLiteral("Add to Package"));
    m_use->setObjectName(QStringLiteral("m_addToPackage"));
    m_use->setToolTip(QStringLiteral("Make a composition of each selected sequence in the selected package"));
    m_remove = new ViewDeckQt::StyledButton(QStringLiteral("Remove"));
    m_remove->setObjectName(QStringLiteral("m_removeMedia"));
    m_remove->setToolTip(QStringLiteral("Take the selected sequences out of the bin; their files stay"));
    m_count = new QuietLabel;
    m_reading = new QuietLabel;
    m_stack->insertWidget(ListPage, m_view);
    m_stack->insertWidget(InvitationPage, createInvitation());
}

QWidget* BinPane::createInvitation()
{
    auto* page = new QFrame;
    page->setAutoFillBackground(true);
    page->setBackgroundRole(QPalette::Base);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(
        invitation(QStringLiteral("Drop media files here or click Add Media\n\n"
                                  "Then double-click a sequence to watch it, or drag it onto a package")));
    return page;
}

void BinPane::layOut()
{
    auto* top = new QHBoxLayout;
    top->addWidget(m_add);
    top->addStretch();
    top->addWidget(m_count);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_use);
    bottom->addStretch();
    bottom->addWidget(m_remove);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(spacing::margin, spacing::margin, spacing::margin, spacing::margin);
    layout->setSpacing(spacing::gap);
    layout->addLayout(top);
    layout->addWidget(m_stack);
    layout->addWidget(m_reading);
    layout->addLayout(bottom);
}

void BinPane::connectAll(BinModel* model, MediaLoader* loader)
{
    connect(m_add, &QPushButton::clicked, this, &BinPane::addAsked);
    connect(m_use, &QPushButton::clicked, this, &BinPane::addToPackageAsked);
    connect(m_remove, &QPushButton::clicked, this, &BinPane::removeAsked);
    connect(m_view, &BinView::removeAsked, this, &BinPane::removeAsked);
    connect(m_view, &BinView::openAsked, this, &BinPane::openAsked);
    connect(model, &QAbstractItemModel::rowsInserted, this, &BinPane::refresh);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &BinPane::refresh);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &BinPane::refresh);
    m_reading->hide();
    connect(loader, &MediaLoader::pendingChanged, this, [this](int files) {
        m_reading->setVisible(files > 0);
        m_reading->setText(files == 1 ? QStringLiteral("Reading a file...")
                                      : QStringLiteral("Reading %1 files...").arg(files));
    });
}

void BinPane::refresh()
{
    const int count = m_view->model()->rowCount();
    m_stack->setCurrentIndex(count == 0 ? InvitationPage : ListPage);
    m_count->setText(count == 0   ? QString()
                     : count == 1 ? QStringLiteral("1 sequence")
                                  : QStringLiteral("%1 sequences").arg(count));
    const bool selected = m_view->selectionModel()->hasSelection();
    m_use->setEnabled(selected);
    m_remove->setEnabled(selected);
}

void BinPane::dragEnterEvent(QDragEnterEvent* event)
{
    if (filesOf(*event->mimeData()).isEmpty())
        return event->ignore();
    // A copy, so that no file manager takes the files away.
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void BinPane::dropEvent(QDropEvent* event)
{
    const QStringList files = filesOf(*event->mimeData());
    if (files.isEmpty())
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit filesDropped(files);
}

} // namespace desk::app
