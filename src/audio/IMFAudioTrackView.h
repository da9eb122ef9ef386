#pragma once

#include <QTableView>

/// The tracks of a sequence; the selected rows are those of the group that is being edited.
class IMFAudioTrackView : public QTableView
{
    Q_OBJECT

public:
    explicit IMFAudioTrackView(QWidget* parent);

    /// Selects the rows of these tracks and no others.
    /// @return the names that no row has, in their order.
    QStringList selectTracks(const QStringList& names);

    /// The names of the selected tracks, in the order of the rows.
    QStringList selectedTracks() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;

private:
    QString nameOf(int row) const;
};
