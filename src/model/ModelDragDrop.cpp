// Sequences dropped into the package tree, and CPLs dragged out of it.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/MXE_Bridge.h"
#include "StratacutUI/NewIMFDialog.h"

#include <QJsonDocument>
#include <QMimeData>
#include <QPersistentModelIndex>
#include <QPointer>

#include <algorithm>

namespace
{
const QString advertisedFormat = QStringLiteral("stratacut.IMF");
const QString droppedFormat = QStringLiteral("application/x-dnditemdata");
const QString draggedFormat = QStringLiteral("IMF_Tool/CPL");
} // namespace

QStringList IMF_PackageMgrQtModel::mimeTypes() const
{
    return {advertisedFormat, droppedFormat};
}

QMimeData* IMF_PackageMgrQtModel::mimeData(const QModelIndexList& indexes) const
{
    QJsonArray ids;
    for (const QModelIndex& index : indexes)
        ids.append(QString::fromUtf8(ComponentIDFromIndex(index)));
    auto* mime = new QMimeData;
    mime->setData(draggedFormat, QJsonDocument(ids).toJson(QJsonDocument::Compact));
    return mime;
}

Qt::DropActions IMF_PackageMgrQtModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

bool IMF_PackageMgrQtModel::isMimeTypeSupported(Qt::DropAction action, const QMimeData* mime) const
{
    const Qt::DropActions supported = supportedDropActions();
    if ((action & ~int(supported)) != 0 || (action == Qt::IgnoreAction && supported != Qt::IgnoreAction))
        return false;
    return mime && mime->hasFormat(droppedFormat);
}

bool IMF_PackageMgrQtModel::isDraggingSequence(const QMimeData* mime) const
{
    if (!mime)
        return false;
    MXE_Bridge* engine = IMF_MXE_bridge::Instance();
    const QStringList mobIds = engine->mobIdsFromMimeData(mime);
    return std::any_of(mobIds.begin(), mobIds.end(), [engine](const QString& id) { return engine->isSequence(id); });
}

bool IMF_PackageMgrQtModel::dropMimeData(const QMimeData* mime, Qt::DropAction action, int row, int column,
                                         const QModelIndex& parent)
{
    if (!mime || !canDropMimeData(mime, action, row, column, parent))
        return false;
    const QStringList mobIds = IMF_MXE_bridge::Instance()->mobIdsFromMimeData(mime);
    if (mobIds.isEmpty())
        return false;
    const QModelIndex found = dropTarget(parent);
    if (!found.isValid() || NodeTypeFromIndex(found) == IMF_PackageMgr::CPL)
        return false;
    const QPersistentModelIndex target = found;
    const int count = rowCount(target);
    insertDropped(mobIds, target, row >= 1 && row <= count ? row : count);
    if (target.isValid())
        emit sequenceDropped(target, count);
    return true;
}

/// The item that receives the drop; for a drop on no item the deliverable that is made for it, and an invalid index
/// when there is none.
QModelIndex IMF_PackageMgrQtModel::dropTarget(const QModelIndex& parent)
{
    if (parent.isValid())
        return parent.siblingAtColumn(0);
    const QPointer<IMF_PackageMgrQtModel> self = this;
    NewIMFDialog dialog;
    if (dialog.exec() == QDialog::Rejected || !self || !m_controller)
        return {};
    const int count = rowCount();
    m_controller->onNewIMFDelivery(dialog.name, dialog.version);
    return self ? index(count, 0) : QModelIndex();
}
