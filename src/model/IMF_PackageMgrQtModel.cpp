#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include "NvCore/Assert.h"
#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/ISettingsStorage.h"

#include <QEvent>

#include <limits>

namespace
{
constexpr int columns = 2;

Qt::ItemFlags extraFlags(IMF_PackageMgr::NodeType type)
{
    switch (type) {
    case IMF_PackageMgr::Delivery:
        return Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
    case IMF_PackageMgr::IMP:
        return Qt::ItemIsDropEnabled;
    case IMF_PackageMgr::CPL:
        return Qt::ItemIsDragEnabled;
    }
    return Qt::NoItemFlags;
}
} // namespace

IMF_PackageMgrQtModel::IMF_PackageMgrQtModel(QObject* parent)
    : QAbstractItemModel(parent), m_root(IMF_Node::Create()), m_parking(IMF_Node::Create())
{
    updateIcons();
}

IMF_PackageMgrQtModel::~IMF_PackageMgrQtModel()
{
    m_controller.reset();
}

void IMF_PackageMgrQtModel::initialize(IMFO_Bridge* bridge, std::unique_ptr<ISettingsStorage> settings)
{
    NV_ASSERT(bridge != nullptr);
    if (!bridge)
        return;
    const QPointer<IMF_PackageMgrQtModel> self(this);
    auto controller = std::make_unique<IMF_Controller>(this, bridge, std::move(settings), nullptr);
    if (self)
        m_controller = std::move(controller);
}

IMF_Controller* IMF_PackageMgrQtModel::getIMFController() const
{
    return m_controller.get();
}

QModelIndex IMF_PackageMgrQtModel::rootIndex() const
{
    return {};
}

int IMF_PackageMgrQtModel::columnCount(const QModelIndex& parent) const
{
    Q_UNUSED(parent);
    return columns;
}

int IMF_PackageMgrQtModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return m_root->childCount();
    return parent.column() == 0 ? FromInternalPointer(parent.internalPointer())->childCount() : 0;
}

QModelIndex IMF_PackageMgrQtModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const IMF_Node& node = parent.isValid() ? *FromInternalPointer(parent.internalPointer()) : *m_root;
    const std::shared_ptr<IMF_Node> child = node.getChild(row);
    return child ? createIndex(row, column, ToInternalPointer(child.get())) : QModelIndex();
}

QModelIndex IMF_PackageMgrQtModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return {};
    const std::shared_ptr<IMF_Node> node = FromInternalPointer(child.internalPointer())->getParent();
    if (!node || node == m_root)
        return {};
    // Parked indexes stand below a row that no announcement touches.
    const int row = node == m_parking ? std::numeric_limits<int>::max() : node->row();
    return createIndex(row, 0, ToInternalPointer(node.get()));
}

QVariant IMF_PackageMgrQtModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QAbstractItemModel::headerData(section, orientation, role);
    static const std::array<QString, columns> titles = {stx_func("Name"), stx_func("Status")};
    return section >= 0 && section < columns ? QVariant(titles[std::size_t(section)]) : QVariant();
}

Qt::ItemFlags IMF_PackageMgrQtModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags base = QAbstractItemModel::flags(index);
    return base | (index.isValid() ? extraFlags(NodeAccess::type(*FromInternalPointer(index.internalPointer())))
                                   : Qt::ItemFlags(Qt::ItemIsDropEnabled));
}

bool IMF_PackageMgrQtModel::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        updateIcons();
    return QAbstractItemModel::event(event);
}

bool IMF_PackageMgrQtModel::canDropMimeData(const QMimeData* mime, Qt::DropAction action, int row, int column,
                                            const QModelIndex& parent) const
{
    NV_ASSERT(mime != nullptr);
    const bool supported = isMimeTypeSupported(action, mime);
    const bool sequence = isDraggingSequence(mime);
    const bool committed = IsDroppingOnCommitedItem(row, column, parent);
    return supported && sequence && !committed;
}

void* IMF_PackageMgrQtModel::ToInternalPointer(IMF_Node* node)
{
    return node;
}

IMF_Node* IMF_PackageMgrQtModel::FromInternalPointer(void* pointer)
{
    return static_cast<IMF_Node*>(pointer);
}

std::shared_ptr<IMF_Node> IMF_PackageMgrQtModel::FromIndex(const QModelIndex& index) const
{
    const bool own = index.isValid() && index.model() == this;
    NV_ASSERT(own || !index.isValid());
    return own ? FromInternalPointer(index.internalPointer())->getNode() : m_root;
}

QModelIndex IMF_PackageMgrQtModel::indexOf(const IMF_Node* node, int column) const
{
    const IMF_Node* top = node;
    while (top && top != m_root.get())
        top = top->getParent().get();
    if (!top || node == m_root.get())
        return {};
    return createIndex(node->row(), column, const_cast<IMF_Node*>(node));
}

QByteArray IMF_PackageMgrQtModel::ComponentIDFromIndex(const QModelIndex& index)
{
    return index.data(ComponentIdRole).toByteArray();
}

QJsonObject IMF_PackageMgrQtModel::MetadataJsonFromIndex(const QModelIndex& index)
{
    return index.data(MetadataRole).toJsonObject();
}

QJsonObject IMF_PackageMgrQtModel::CommitSettingsJsonFromIndex(const QModelIndex& index)
{
    return index.data(CommitSettingsRole).toJsonObject();
}

IMF_PackageMgr::Status IMF_PackageMgrQtModel::StatusFromIndex(const QModelIndex& index)
{
    return static_cast<IMF_PackageMgr::Status>(index.data(StatusRole).toInt());
}

IMF_PackageMgr::NodeType IMF_PackageMgrQtModel::NodeTypeFromIndex(const QModelIndex& index)
{
    return static_cast<IMF_PackageMgr::NodeType>(index.data(NodeTypeRole).toInt());
}

IMF_PackageMgr::Version IMF_PackageMgrQtModel::VersionFromIndex(const QModelIndex& index)
{
    return static_cast<IMF_PackageMgr::Version>(index.data(VersionRole).toInt());
}
