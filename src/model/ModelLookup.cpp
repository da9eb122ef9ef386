// How the item model finds items.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include <algorithm>

using namespace NodeAccess;

namespace
{
struct Folder {
    const IMF_Node* firstCommitted = nullptr;
    const IMF_Node* first = nullptr;
};

/// Looks through the deliverables once: a tree that loads its deliverables one by one asks for each.
Folder deliverablesIn(const IMF_Node& root, const QString& path)
{
    Folder found;
    for (const std::shared_ptr<IMF_Node>& node : root) {
        const IMF_Deliverable& payload = *deliverable(std::as_const(*node));
        const bool isCommitted = payload.status() == IMF_PackageMgr::Committed;
        if ((found.first && !isCommitted) || !(payload == path))
            continue;
        if (!found.first)
            found.first = node.get();
        if (isCommitted) {
            found.firstCommitted = node.get();
            break;
        }
    }
    return found;
}
} // namespace

QModelIndex IMF_PackageMgrQtModel::getDeliveryModelIndex(const QString& path) const
{
    const std::shared_ptr<IMF_Node> appended = m_justAppended.lock();
    if (appended && appended->getParent() == m_root && deliverable(std::as_const(*appended))->path() == path)
        return indexOf(appended.get());
    const Folder found = deliverablesIn(*m_root, path);
    return indexOf(found.firstCommitted ? found.firstCommitted : found.first);
}

QModelIndex IMF_PackageMgrQtModel::getCommittedDeliveryModelIndex(const QString& path) const
{
    return indexOf(deliverablesIn(*m_root, path).firstCommitted);
}

QModelIndex IMF_PackageMgrQtModel::getIMPModelIndex(const QModelIndex& delivery, const QString& name) const
{
    return childByName(delivery, name, IMF_PackageMgr::Delivery);
}

QModelIndex IMF_PackageMgrQtModel::getCPLModelIndex(const QModelIndex& imp, const QString& name) const
{
    return childByName(imp, name, IMF_PackageMgr::IMP);
}

QModelIndex IMF_PackageMgrQtModel::childByName(const QModelIndex& parent, const QString& name,
                                               IMF_PackageMgr::NodeType parentType) const
{
    if (!parent.isValid() || NodeTypeFromIndex(parent) != parentType)
        return {};
    const std::shared_ptr<IMF_Node> node = FromIndex(parent);
    const std::shared_ptr<IMF_Node> appended = m_justAppended.lock();
    if (appended && appended->getParent() == node && NodeAccess::name(*appended) == name)
        return indexOf(appended.get());
    const auto found = std::find_if(node->begin(), node->end(),
                                    [&name](const auto& child) { return NodeAccess::name(*child) == name; });
    return found == node->end() ? QModelIndex() : indexOf(found->get());
}

QModelIndex IMF_PackageMgrQtModel::mobToIndex(const QString& mobId) const
{
    for (const std::shared_ptr<IMF_Node>& delivery : *m_root) {
        for (const std::shared_ptr<IMF_Node>& imp : *delivery) {
            const auto found =
                std::find_if(imp->begin(), imp->end(), [&mobId](const auto& cpl) { return isMadeFrom(*cpl, mobId); });
            if (found != imp->end())
                return indexOf(found->get());
        }
    }
    return {};
}

QModelIndexList IMF_PackageMgrQtModel::getUnBurnedIndexes(const QModelIndex& parent) const
{
    QModelIndexList found;
    const std::shared_ptr<IMF_Node> node = FromIndex(parent);
    int row = 0;
    for (const std::shared_ptr<IMF_Node>& child : *node) {
        if (hasUncommitted(*child))
            found.append(createIndex(row, 0, ToInternalPointer(child.get())));
        ++row;
    }
    return found;
}

void IMF_PackageMgrQtModel::deliveriesVisitor(const std::function<void(const IMF_Deliverable&)>& visitor) const
{
    for (const std::shared_ptr<IMF_Node>& delivery : *m_root)
        visitor(*deliverable(std::as_const(*delivery)));
}

namespace
{
/// Searches from the back: where items share an identifier, the newest is meant.
/// @param rest the identifier behind the parent's. @param except is passed over with all that is below it.
std::shared_ptr<IMF_Node> byComponentId(const IMF_Node& parent, const QByteArray& rest, const IMF_Node* except)
{
    for (int row = parent.childCount() - 1; row >= 0; --row) {
        const std::shared_ptr<IMF_Node> child = parent.getChild(row);
        if (child.get() == except)
            continue;
        const IMF_Deliverable* top = deliverable(std::as_const(*child));
        const QByteArray own = top ? top->compID() : name(*child).toUtf8();
        if (own == rest)
            return child;
        if (!rest.startsWith(own + '/'))
            continue;
        if (std::shared_ptr<IMF_Node> found = byComponentId(*child, rest.mid(own.size() + 1), except))
            return found;
    }
    return nullptr;
}
} // namespace

std::shared_ptr<IMF_Node> IMF_PackageMgrQtModel::nodeByComponentId(const QByteArray& componentId,
                                                                   const IMF_Node* except) const
{
    return byComponentId(*m_root, componentId, except);
}

bool IMF_PackageMgrQtModel::isIdentifierShared(const std::shared_ptr<IMF_Node>& node) const
{
    return nodeByComponentId(getComponendID(node), node.get()) != nullptr;
}
