#include "StratacutUI/IMF_DataModelSerializer.h"

#include "NodeAccess.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/ManagedMessageBox.h"

#include <QJsonDocument>
#include <QPersistentModelIndex>

#include <algorithm>

namespace
{
/// Committed items that contain something uncommitted are left out: they are read from their folder.
QModelIndexList uncommittedChildren(const IMF_PackageMgrQtModel& model, const QModelIndex& parent)
{
    QModelIndexList found = model.getUnBurnedIndexes(parent);
    found.erase(std::remove_if(found.begin(), found.end(),
                               [](const QModelIndex& index) {
                                   return IMF_PackageMgrQtModel::StatusFromIndex(index) == IMF_PackageMgr::Committed;
                               }),
                found.end());
    return found;
}

QByteArray metadataText(const QJsonObject& element)
{
    const QJsonObject metadata = element.value(ImfDict::DescriptiveMetadata).toObject();
    return QJsonDocument(metadata).toJson(QJsonDocument::Compact);
}

/// What only saved state says about an item, and what would go stale in its document.
QJsonObject withoutSavedKeys(QJsonObject element)
{
    element.remove(ImfDict::NewDelivery);
    element.remove(ImfDict::CPLGroups);
    return element;
}
} // namespace

IMF_DataModelSerializer::IMF_DataModelSerializer(IMF_PackageMgrQtModel* model, IMFO_Bridge* bridge)
    : m_model(model), m_bridge(bridge)
{
}

QJsonArray IMF_DataModelSerializer::saveUnCommitedState() const
{
    QJsonArray state;
    const QModelIndexList deliveries = m_model->getUnBurnedIndexes(m_model->rootIndex());
    for (const QModelIndex& delivery : deliveries) {
        const QModelIndexList imps = uncommittedChildren(*m_model, delivery);
        if (imps.isEmpty())
            continue;
        QJsonArray children;
        for (const QModelIndex& imp : imps)
            children.append(impIndexToJson(imp));
        QJsonObject element = m_model->serializeIndexToJson(delivery);
        element[ImfDict::NewDelivery] = imps.size() == m_model->rowCount(delivery);
        element[ImfDict::Children] = children;
        state.append(element);
    }
    return state;
}

QJsonObject IMF_DataModelSerializer::impIndexToJson(const QModelIndex& imp) const
{
    QJsonArray children;
    const QModelIndexList cpls = uncommittedChildren(*m_model, imp);
    for (const QModelIndex& cpl : cpls)
        children.append(m_model->serializeIndexToJson(cpl));
    QJsonObject element = m_model->serializeIndexToJson(imp);
    element[ImfDict::Children] = children;
    return element;
}

void IMF_DataModelSerializer::loadUnCommitedState(const QJsonArray& array)
{
    for (const QJsonValue& value : array) {
        const QJsonObject element = value.toObject();
        const std::shared_ptr<IMF_Node> node =
            IMF_PackageDeliveryReader::deliveryFromJson(withoutSavedKeys(element), {});
        QModelIndex delivery;
        if (!isNew(element, *node)) {
            delivery = existingDelivery(element);
        } else {
            if (!loadNewDelivery(node))
                return;
            delivery = m_model->getDeliveryModelIndex(boost::get<IMF_Deliverable>(node->value()).path());
        }
        loadUnCommitedImps(delivery, node, element.value(ImfDict::Children).toArray());
    }
}

bool IMF_DataModelSerializer::isNew(const QJsonObject& element, const IMF_Node& node) const
{
    if (!element.value(ImfDict::NewDelivery).toBool())
        return false;
    // One that was committed without IMPs counts as new by its IMPs, but it was read from its folder.
    const bool isCommitted = boost::get<IMF_Deliverable>(node.value()).status() == IMF_PackageMgr::Committed;
    return !isCommitted || !existingDelivery(element).isValid();
}

bool IMF_DataModelSerializer::loadNewDelivery(const std::shared_ptr<IMF_Node>& node)
{
    auto& payload = boost::get<IMF_Deliverable>(node->value());
    IMFO_Bridge::IMFO_Error_t error;
    QString path = payload.path();
    QString componentId;
    m_bridge->createDelivery(error, payload.name(), path, payload.version() == IMF_PackageMgr::Original, componentId);
    if (error.isError()) {
        ViewDeckQt::ManagedMessageBox::messageBox(nullptr, QMessageBox::Warning, stx_func("Failed to restore state"),
                                                  error.message(), QMessageBox::Ok, QMessageBox::Ok);
        return false;
    }
    payload.setComponentID(componentId.toUtf8());
    if (!path.isEmpty() && path != payload.path())
        payload.setPath(path);
    m_model->push_back(m_model->rootIndex(), node);
    return true;
}

QModelIndex IMF_DataModelSerializer::existingDelivery(const QJsonObject& element) const
{
    const QString path = element.value(ImfDict::Path).toString();
    const QString name = element.value(ImfDict::Name).toString();
    QStringList folders{path};
    // Where one of its IMPs was committed before the deliverable itself, its own folder exists by now.
    if (element.value(ImfDict::Mutable).toBool())
        folders.prepend((path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/')) + name);
    for (const QString& folder : std::as_const(folders)) {
        const QModelIndex committed = m_model->getCommittedDeliveryModelIndex(folder);
        if (committed.isValid())
            return committed;
    }
    // Uncommitted deliverables can share a folder: the name tells which one is meant.
    const QModelIndex found = m_model->getDeliveryModelIndex(path);
    return found.data(IMF_PackageMgrQtModel::NameRole).toString() == name ? found : QModelIndex();
}

void IMF_DataModelSerializer::loadUnCommitedImps(const QModelIndex& delivery,
                                                 const std::shared_ptr<IMF_Node>& deliveryNode, const QJsonArray& imps)
{
    // A host may let events through while it registers an item: rows may go behind each call.
    const QPersistentModelIndex row = delivery;
    for (const QJsonValue& value : imps) {
        if (!row.isValid())
            return;
        const QJsonObject element = value.toObject();
        const std::shared_ptr<IMF_Node> node = IMF_PackageDeliveryReader::impFromJson(element, deliveryNode);
        m_model->push_back(row, node);
        const QPersistentModelIndex imp = m_model->getIMPModelIndex(row, NodeAccess::name(*node));
        IMFO_Bridge::IMFO_Error_t error;
        m_bridge->createIMP(error, IMF_PackageMgrQtModel::ComponentIDFromIndex(imp), metadataText(element));
        if (error.isError())
            m_model->removeIndex(imp);
        else
            loadUnCommitedCpls(imp, element.value(ImfDict::Children).toArray());
    }
}

void IMF_DataModelSerializer::loadUnCommitedCpls(const QModelIndex& imp, const QJsonArray& cpls)
{
    const QPersistentModelIndex row = imp;
    for (const QJsonValue& value : cpls) {
        if (row.isValid())
            loadUnCommitedCpl(row, value.toObject());
    }
}

void IMF_DataModelSerializer::loadUnCommitedCpl(const QModelIndex& imp, const QJsonObject& element)
{
    const std::shared_ptr<IMF_Node> node =
        IMF_PackageDeliveryReader::cplFromJson(withoutSavedKeys(element), m_model->FromIndex(imp));
    m_model->push_back(imp, node);
    const QPersistentModelIndex cpl = m_model->getCPLModelIndex(imp, NodeAccess::name(*node));
    const QByteArray componentId = IMF_PackageMgrQtModel::ComponentIDFromIndex(cpl);
    m_model->addTrackGroups(componentId, element.value(ImfDict::CPLGroups).toArray());
    m_model->addTrackModel(cpl, NodeAccess::property(*node, ImfDict::CPLMobID));
    IMFO_Bridge::IMFO_Error_t error;
    m_bridge->createCPL(error, componentId, QByteArray::fromStdString(NodeAccess::cpl(*node)->tokenInfo().token), {});
    if (error.isError()) {
        m_model->removeTracksData(cpl);
        m_model->removeIndex(cpl);
    }
}
