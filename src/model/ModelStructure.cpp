// How rows come, go and are swapped in the item model. Nothing else changes the tree's structure.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "StratacutUI/IMF_Node.h"

/// Takes the persistent indexes of a subtree out of the reach of announcements that do not describe the change: an
/// index that is announced as moved and as removed at once would be lost, with a warning of Qt's.
class IMF_PackageMgrQtModel::ParkedIndexes
{
public:
    ParkedIndexes(IMF_PackageMgrQtModel& model, const IMF_Node& top) : m_model(model)
    {
        const std::shared_ptr<IMF_Node> place = model.m_parking->back();
        for (const QModelIndex& index : model.persistentIndexList()) {
            const IMF_Node* node = FromInternalPointer(index.internalPointer());
            if (!isBelow(*node, top))
                continue;
            m_original.append(index);
            m_isTop.append(node == &top);
            m_parked.append(model.createIndex(m_parked.size(), index.column(), place.get()));
        }
        model.changePersistentIndexList(m_original, m_parked);
    }

    /// Leads the indexes of the former row to the new one; those of rows below it end.
    void moveTo(const QModelIndex& row)
    {
        QModelIndexList target;
        for (int i = 0; i < m_parked.size(); ++i)
            target.append(m_isTop[i] ? row.siblingAtColumn(m_original[i].column()) : QModelIndex());
        m_model.changePersistentIndexList(m_parked, target);
    }

private:
    static bool isBelow(const IMF_Node& node, const IMF_Node& top)
    {
        if (&node == &top)
            return true;
        const std::shared_ptr<IMF_Node> parent = node.getParent();
        return parent && isBelow(*parent, top);
    }

    IMF_PackageMgrQtModel& m_model;
    QModelIndexList m_original;
    QModelIndexList m_parked;
    QVector<bool> m_isTop;
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
    ParkedIndexes parked(*this, *former);

    beginInsertRows(parent, row, row);
    beginRemoveRows(parent, row, row);
    parentNode->replace(row, node);
    endRemoveRows();
    endInsertRows();

    // What was announced says that the row went and another one came: views lay themselves out again from the tree.
    parked.moveTo(this->index(row, 0, parent));
    emit layoutAboutToBeChanged();
    emit layoutChanged();
    const QModelIndex statusColumn = this->index(row, 1, parent);
    emit dataChanged(statusColumn, statusColumn);
    return this->index(row, column, parent);
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
