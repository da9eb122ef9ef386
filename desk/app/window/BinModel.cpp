#include "desk/app/window/BinModel.h"

#include "desk/app/ProgressText.h"
#include "desk/app/window/MediaLoader.h"
#include "desk/services/MediaEngine.h"

#include <QFileInfo>
#include <QLocale>
#include <QMimeData>

#include <algorithm>

namespace desk::app
{

namespace
{
QString separator()
{
    return QString::fromUtf8(" \xC2\xB7 ");
}

bool comesBefore(const services::BinItem& a, const services::BinItem& b)
{
    const int order = QString::localeAwareCompare(a.name, b.name);
    return order != 0 ? order < 0 : a.path < b.path;
}
} // namespace

QStringList factsOf(const services::BinItem& item)
{
    QStringList picture;
    if (item.frameRate.isValid()) {
        const QString rate = QLocale().toString(item.frameRate.toDouble(), 'g', 5);
        picture =
            QStringList{durationText(double(item.frames) / item.frameRate.toDouble()), rate + QStringLiteral(" fps")};
    }
    const QString size = item.width > 0 ? QString::fromUtf8("%1\xC3\x97%2").arg(item.width).arg(item.height)
                                        : QStringLiteral("no picture");
    const int tracks = item.audio.size();
    const QString sound = tracks == 0   ? QStringLiteral("no sound")
                          : tracks == 1 ? QStringLiteral("1 audio track")
                                        : QStringLiteral("%1 audio tracks").arg(tracks);
    if (media::isTimelineFile(item.path))
        picture.prepend(QStringLiteral("timeline"));
    return {(picture.isEmpty() ? QStringList{size} : picture).join(separator()),
            (picture.isEmpty() ? QStringList{sound} : QStringList{size, sound}).join(separator())};
}

BinModel::BinModel(services::MediaLibrary* library, Thumbnails* thumbnails, QObject* parent)
    : QAbstractListModel(parent), m_library(library), m_thumbnails(thumbnails)
{
    const QStringList ids = library->items().keys();
    for (const QString& id : ids)
        insert(id);
    connect(library, &services::MediaLibrary::changed, this, &BinModel::follow);
    connect(thumbnails, &Thumbnails::ready, this, [this](const QString& id) {
        const QModelIndex index = indexOf(id);
        if (index.isValid())
            emit dataChanged(index, index, {Qt::DecorationRole});
    });
}

QModelIndex BinModel::indexOf(const QString& id) const
{
    const int row = m_ids.indexOf(id);
    return row < 0 ? QModelIndex() : index(row);
}

void BinModel::insert(const QString& id)
{
    const auto item = m_library->find(id);
    const auto place = std::find_if(m_ids.constBegin(), m_ids.constEnd(), [&](const QString& other) {
        const auto standing = m_library->find(other);
        return standing && comesBefore(*item, *standing);
    });
    const int row = int(place - m_ids.constBegin());
    beginInsertRows({}, row, row);
    m_ids.insert(row, id);
    endInsertRows();
}

void BinModel::follow(const QString& id)
{
    m_thumbnails->forget(id);
    const QModelIndex standing = indexOf(id);
    if (!m_library->find(id)) {
        if (!standing.isValid())
            return;
        beginRemoveRows({}, standing.row(), standing.row());
        m_ids.removeAt(standing.row());
        endRemoveRows();
    } else if (standing.isValid()) {
        emit dataChanged(standing, standing);
    } else {
        insert(id);
    }
}

int BinModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_ids.size();
}

QString BinModel::textOf(const services::BinItem& item) const
{
    return item.name + QStringLiteral(", ") + factsOf(item).join(QStringLiteral(", "));
}

QVariant BinModel::data(const QModelIndex& index, int role) const
{
    const auto item = index.isValid() ? m_library->find(m_ids.value(index.row())) : std::nullopt;
    if (!item)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return item->name;
    case Qt::DecorationRole:
        return m_thumbnails->find(item->id, item->path);
    case Qt::ToolTipRole:
        return m_library->exists(item->id) ? item->path : item->path + QStringLiteral("\nThe file is not there.");
    case Qt::AccessibleTextRole:
        return textOf(*item);
    case IdRole:
        return item->id;
    case FactsRole:
        return m_library->exists(item->id) ? factsOf(*item) : QStringList{QStringLiteral("The file is not there.")};
    case MissingRole:
        return !m_library->exists(item->id);
    default:
        return {};
    }
}

Qt::ItemFlags BinModel::flags(const QModelIndex& index) const
{
    return QAbstractListModel::flags(index) | (index.isValid() ? Qt::ItemIsDragEnabled : Qt::NoItemFlags);
}

QStringList BinModel::mimeTypes() const
{
    return {QStringLiteral("application/x-dnditemdata")};
}

QMimeData* BinModel::mimeData(const QModelIndexList& indexes) const
{
    QModelIndexList ordered = indexes;
    std::sort(ordered.begin(), ordered.end());
    QStringList ids;
    for (const QModelIndex& index : qAsConst(ordered))
        ids += m_ids.value(index.row());
    return services::MediaEngine::mimeData(ids);
}

Qt::DropActions BinModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

} // namespace desk::app
