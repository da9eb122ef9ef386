#include "IMFTracksSortFilterModel.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"

QModelIndex IMFTracksSortFilterModel::sourceOf(const QModelIndex& index)
{
    const auto* proxy = qobject_cast<const IMFTracksSortFilterModel*>(index.model());
    return proxy ? proxy->mapToSource(index) : index;
}

bool IMFTracksSortFilterModel::filterAcceptsColumn(int column, const QModelIndex& parent) const
{
    Q_UNUSED(parent);
    return IMF_MXE_bridge::Instance()->isTrackColumnShown(sourceModel(), column);
}
