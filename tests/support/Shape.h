#pragma once

#include <QAbstractItemModel>
#include <QStringList>

namespace support
{

/// "Film(IMP(title,title)),Other" for the rows below an index.
inline QString shape(const QAbstractItemModel& model, const QModelIndex& parent = {}, int role = Qt::DisplayRole)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const QString below = shape(model, index, role);
        rows += index.data(role).toString() + (below.isEmpty() ? QString() : '(' + below + ')');
    }
    return rows.join(',');
}

} // namespace support
