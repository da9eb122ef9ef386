#include "IMFTracksSortFilterModel.h"

#include "IMF_TrackGroupingManager.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"

QModelIndex IMFTracksSortFilterModel::sourceOf(const QModelIndex& index)
{
    const auto* proxy = qobject_cast<const IMFTracksSortFilterModel*>(index.model());
    return proxy ? proxy->mapToSource(index) : index;
}

QVariant IMFTracksSortFilterModel::data(const QModelIndex& index, int role) const
{
    // A screen reader reads a single cell, and that of the check box has no text.
    if (role == Qt::AccessibleTextRole && index.isValid())
        return IMF_TrackGroupingManager::entryOf(*sourceModel(), mapToSource(index).row());
    return QSortFilterProxyModel::data(index, role);
}

bool IMFTracksSortFilterModel::filterAcceptsColumn(int column, const QModelIndex& parent) const
{
    Q_UNUSED(parent);
    return IMF_MXE_bridge::Instance()->isTrackColumnShown(sourceModel(), column);
}
