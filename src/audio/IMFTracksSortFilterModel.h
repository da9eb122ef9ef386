#pragma once

#include <QSortFilterProxyModel>

/// The tracks of a sequence without the columns that the media engine does not show.
class IMFTracksSortFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    /// The host's column behind a column of a track list, and the host's row behind a row; the index itself where the
    /// list is shown without this model in between.
    static QModelIndex sourceOf(const QModelIndex& index);

    QVariant data(const QModelIndex& index, int role) const override;

protected:
    bool filterAcceptsColumn(int column, const QModelIndex& parent) const override;
};
