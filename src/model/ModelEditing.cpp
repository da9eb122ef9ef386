// What can be written through the item model's roles.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/ImfDict.h"

#include <QPair>

#include <algorithm>
#include <iterator>
#include <vector>

using namespace NodeAccess;

namespace
{
using KeyAndText = QPair<QString, QString>;

const char* keyOfRole(int role)
{
    switch (role) {
    case IMF_PackageMgrQtModel::IssuerRole:
        return ImfDict::Issuer;
    case IMF_PackageMgrQtModel::CreatorRole:
        return ImfDict::Creator;
    case IMF_PackageMgrQtModel::ContentTitleRole:
        return ImfDict::ContentTitle;
    default:
        return "";
    }
}

struct Property {
    QString key;
    QVariant value;
};

Property propertyOf(const QVariant& value, int role)
{
    if (value.userType() != qMetaTypeId<KeyAndText>())
        return {QString::fromLatin1(keyOfRole(role)), value};
    const KeyAndText pair = value.value<KeyAndText>();
    return {pair.first, pair.second};
}
} // namespace

bool IMF_PackageMgrQtModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid())
        return false;
    switch (role) {
    case Qt::EditRole:
        return setName(index, value);
    case PathRole:
        return setPath(index, value);
    case MetadataRole:
    case IssuerRole:
    case CreatorRole:
        setProperty(index, value, role);
        return true;
    case ContentTitleRole:
        setContentTitle(index, value);
        return true;
    case MultiMixRole:
        if (IMF_CPL* payload = cpl(*FromIndex(index)))
            payload->setProperty(ImfDict::MultipleAudioMix, value);
        return true;
    case TrackGroupsRole:
        addTrackGroups(getComponendID(index), value.toJsonArray());
        emit dataChanged(index, index, {TrackGroupsRole});
        return true;
    default:
        return true;
    }
}

bool IMF_PackageMgrQtModel::setName(const QModelIndex& index, const QVariant& value)
{
    const QString wanted = value.toString();
    if (index.column() != 0 || wanted.isEmpty() || wanted == index.data().toString())
        return false;
    const std::shared_ptr<IMF_Node> node = FromIndex(index);
    const QPersistentModelIndex row = index;
    if (IMF_Deliverable* payload = deliverable(*node)) {
        QString newId;
        if (!m_controller || !m_controller->onRename(index, wanted, newId) || !row.isValid())
            return false;
        keepTrackGroups(node, [payload, &wanted, &newId] {
            payload->setName(wanted);
            // A host that hands none back keeps the former one.
            if (!newId.isEmpty())
                payload->setComponentID(newId.toUtf8());
        });
    } else if (IMF_IMP* payload = imp(*node)) {
        keepTrackGroups(node, [payload, &wanted] { payload->setName(wanted); });
    } else {
        cpl(*node)->setName(wanted);
    }
    emit dataChanged(row, row, {Qt::DisplayRole, ComponentIdRole});
    return true;
}

bool IMF_PackageMgrQtModel::setPath(const QModelIndex& index, const QVariant& value)
{
    IMF_Deliverable* payload = deliverable(*FromIndex(index));
    if (!payload || !value.canConvert<QString>() || value.toString() == getIMFPath(index))
        return false;
    payload->setPath(value.toString());
    // The host keeps the identifier when only the folder changes.
    payload->setComponentID(QByteArray(payload->compID()));
    emit dataChanged(index, index, {PathRole, ComponentIdRole});
    return true;
}

void IMF_PackageMgrQtModel::setProperty(const QModelIndex& index, const QVariant& value, int role)
{
    const Property property = propertyOf(value, role);
    if (property.key.isEmpty())
        return;
    const std::shared_ptr<IMF_Node> node = FromIndex(index);
    bool accepted = false;
    const auto write = [&] { accepted = NodeAccess::setProperty(*node, property.key, property.value); };
    if (property.key == QLatin1String(ImfDict::Name))
        keepTrackGroups(node, write);
    else
        write();
    if (accepted)
        emitRowChanged(index, {role});
}

void IMF_PackageMgrQtModel::setContentTitle(const QModelIndex& index, const QVariant& value)
{
    const QString title = propertyOf(value, ContentTitleRole).value.toString();
    IMF_CPL* payload = cpl(*FromIndex(index));
    if (payload && title != payload->contentTitle() && payload->setContentTitle(title))
        emitRowChanged(index, {MetadataRole, Qt::DisplayRole});
}

void IMF_PackageMgrQtModel::emitRowChanged(const QModelIndex& index, const QVector<int>& roles)
{
    emit dataChanged(index, index.siblingAtColumn(columnCount() - 1), roles);
}

void IMF_PackageMgrQtModel::onMobStatusChanged(const QString& mobID)
{
    std::vector<std::shared_ptr<IMF_Node>> made;
    for (const std::shared_ptr<IMF_Node>& delivery : *m_root) {
        for (const std::shared_ptr<IMF_Node>& imp : *delivery) {
            std::copy_if(imp->begin(), imp->end(), std::back_inserter(made),
                         [&mobID](const auto& node) { return isMadeFrom(*node, mobID); });
        }
    }
    // Whoever hears of one may remove others.
    for (const std::shared_ptr<IMF_Node>& node : made) {
        cpl(*node)->validateParams();
        const QModelIndex index = indexOf(node.get());
        if (index.isValid())
            emitRowChanged(index, {});
    }
}
