#pragma once

#include "desk/services/MediaLibrary.h"

#include <QAbstractListModel>
#include <QStringList>

namespace desk::app
{

class Thumbnails;

/// The sequences of the bin by name, for views that drag them. Follows the library; nothing is ever dropped on it or
/// moved out of it.
class BinModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        IdRole = Qt::UserRole + 1, ///< QString: the sequence's identifier.
        FactsRole,                 ///< QStringList: lines with duration, rate, size and tracks.
        MissingRole                ///< bool: its file is not there.
    };

    /// Neither is owned; both must outlive the model.
    BinModel(services::MediaLibrary* library, Thumbnails* thumbnails, QObject* parent = nullptr);

    QModelIndex indexOf(const QString& id) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    /// The package manager takes moves alone. Nothing leaves the bin by one.
    Qt::DropActions supportedDragActions() const override;

private:
    void follow(const QString& id);
    void insert(const QString& id);
    QString textOf(const services::BinItem& item) const;

    services::MediaLibrary* m_library;
    Thumbnails* m_thumbnails;
    QStringList m_ids;
};

/// "0:06", "24 fps", "1920 x 1080", "8 audio tracks" in two lines.
QStringList factsOf(const services::BinItem& item);

} // namespace desk::app
