// How rows come, go and are swapped in the item model. Nothing else changes the tree's structure.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "StratacutUI/IMF_Node.h"

/// Takes the persistent indexes round a row out of the reach of announcements that do not describe the change: an index
/// that is announced as moved and as removed at once would be lost, with a warning of Qt's. Until they return, the
/// indexes stand elsewhere in the same rows and columns, so that the ranges of a selection hold together.
class IMF_PackageMgrQtModel::ParkedIndexes
{
public:
    ParkedIndexes(IMF_PackageMgrQtModel& model, const std::shared_ptr<IMF_Node>& replaced)
        : ParkedIndexes(model, replaced->getParent(), replaced)
    {
    }

    /// @param siblings the node whose children's indexes are parked. @param replaced the child that goes, if one does.
    ParkedIndexes(IMF_PackageMgrQtModel& model, std::shared_ptr<IMF_Node> siblings,
                  const std::shared_ptr<IMF_Node>& replaced)
        : m_model(model), m_siblings(std::move(siblings))
    {
        const QModelIndexList persistent = model.persistentIndexList();
        for (const QModelIndex& index : persistent) {
            const std::shared_ptr<IMF_Node> parent = model.FromIndex(index)->getParent();
            if (parent != m_siblings && !(replaced && isBelow(parent, replaced)))
                continue;
            m_original.append(index);
            m_isSibling.append(parent == m_siblings);
            m_parked.append(model.createIndex(index.row(), index.column(), placeFor(parent.get())));
        }
        model.changePersistentIndexList(m_original, m_parked);
    }

    ~ParkedIndexes()
    {
        while (m_model.m_parking->childCount() > 0)
            m_model.m_parking->removeChild(m_model.m_parking->childCount() - 1);
    }

    ParkedIndexes(const ParkedIndexes&) = delete;
    ParkedIndexes& operator=(const ParkedIndexes&) = delete;

    /// Brings the indexes of the row and its siblings back; those of what was below the row end.
    void release(const QModelIndex& parent)
    {
        QModelIndexList target;
        for (int i = 0; i < m_parked.size(); ++i)
            target.append(m_isSibling[i] ? m_model.index(m_parked[i].row(), m_parked[i].column(), parent)
                                         : QModelIndex());
        m_model.changePersistentIndexList(m_parked, target);
    }

private:
    static bool isBelow(const std::shared_ptr<IMF_Node>& node, const std::shared_ptr<IMF_Node>& top)
    {
        return node && (node == top || isBelow(node->getParent(), top));
    }

    /// One place for each list of children: rows alone do not tell indexes of different parents apart.
    IMF_Node* placeFor(const IMF_Node* parent)
    {
        IMF_Node*& place = m_places[parent];
        if (!place) {
            m_model.m_parking->push_back(IMF_Node::Create());
            place = m_model.m_parking->back().get();
        }
        return place;
    }

    IMF_PackageMgrQtModel& m_model;
    std::shared_ptr<IMF_Node> m_siblings;
    std::unordered_map<const IMF_Node*, IMF_Node*> m_places;
    QModelIndexList m_original;
    QModelIndexList m_parked;
    QVector<bool> m_isSibling;
};

void IMF_PackageMgrQtModel::push_back(const QModelIndex& parent, const std::shared_ptr<IMF_Node>& node)
{
    const QModelIndex row = parent.siblingAtColumn(0);
    const std::shared_ptr<IMF_Node> parentNode = FromIndex(row);
    const int position = parentNode->childCount();
    beginInsertRows(row, position, position);
    parentNode->push_back(node);
    m_justAppended = node;
    endInsertRows();
    if (row.isValid())
        emit dataChanged(row.siblingAtColumn(1), row.siblingAtColumn(1));
}

QModelIndex IMF_PackageMgrQtModel::replace(const QModelIndex& index, const std::shared_ptr<IMF_Node>& node)
{
    if (!index.isValid())
        return {};
    const QModelIndex parent = index.parent();
    const std::shared_ptr<IMF_Node> parentNode = FromIndex(parent);
    const std::shared_ptr<IMF_Node> former = FromIndex(index);
    const int row = index.row();
    const int column = index.column();
    releaseTrackModels(former);
    m_justAppended.reset();
    ParkedIndexes parked(*this, former);

    beginInsertRows(parent, row, row);
    beginRemoveRows(parent, row, row);
    parentNode->replace(row, node);
    endRemoveRows();
    endInsertRows();

    // What was announced says that the row went and another one came: views lay themselves out again from the tree.
    parked.release(parent);
    emit layoutAboutToBeChanged();
    emit layoutChanged();
    const QModelIndex statusColumn = this->index(row, 1, parent);
    emit dataChanged(statusColumn, statusColumn);
    return this->index(row, column, parent);
}

void IMF_PackageMgrQtModel::insertDropped(const QStringList& mobIds, const QModelIndex& target, int row)
{
    m_dropAnnouncements = std::make_unique<Announcements>();
    {
        ParkedIndexes parked(*this, FromIndex(target), nullptr);
        beginInsertRows(target, row, row);
        createCPLFromMobs(mobIds, target);
        endInsertRows();
        parked.release(target);
    }
    const std::unique_ptr<Announcements> announcements = std::move(m_dropAnnouncements);

    // One row was announced, wherever the drop pointed; views lay themselves out again from the tree.
    emit layoutAboutToBeChanged();
    emit layoutChanged();
    // The host's refusals are shown to the user: items or the model may go behind a message.
    const QPointer<IMF_PackageMgrQtModel> self(this);
    for (const auto& [item, announcement] : *announcements) {
        const std::shared_ptr<IMF_Node> node = self ? item.lock() : nullptr;
        if (node)
            announcement(getComponendID(node));
    }
}

bool IMF_PackageMgrQtModel::removeIndex(const QModelIndex& index)
{
    if (!index.isValid())
        return false;
    const QModelIndex parent = index.parent();
    const std::shared_ptr<IMF_Node> parentNode = FromIndex(parent);
    // Views may still look at the row while they are told.
    const std::shared_ptr<IMF_Node> node = FromIndex(index);
    const int row = index.row();
    m_justAppended.reset();
    releaseTrackModels(node);
    beginRemoveRows(parent, row, row);
    parentNode->removeChild(row);
    endRemoveRows();
    return true;
}
