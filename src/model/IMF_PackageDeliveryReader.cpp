#include "StratacutUI/IMF_PackageDeliveryReader.h"

#include "NvCore/Assert.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"

#include <algorithm>

namespace
{
/// The documents of the children live in the children: a copy in the parent's would go stale.
QJsonObject withoutChildren(QJsonObject json)
{
    json.remove(ImfDict::Children);
    return json;
}

IMF_PackageMgr::Status statusOf(const QJsonObject& json)
{
    return json.value(ImfDict::Mutable).toBool() ? IMF_PackageMgr::Uncommitted : IMF_PackageMgr::Committed;
}

QJsonArray childrenOf(const QJsonObject& json)
{
    return json.value(ImfDict::Children).toArray();
}

/// Neighbours mostly have the same parameters: equal sections are kept once.
QJsonObject sharingSections(QJsonObject json, const IMF_Node& parent)
{
    const IMF_CPL* neighbour = parent.childCount() > 0 ? boost::get<IMF_CPL>(&parent.back()->value()) : nullptr;
    if (!neighbour)
        return json;
    for (const char* section : {ImfDict::Video, ImfDict::Audio}) {
        const QJsonValue theirs = neighbour->jsonObject().value(QLatin1String(section));
        if (theirs.isObject() && theirs == json.value(QLatin1String(section)))
            json[QLatin1String(section)] = theirs;
    }
    return json;
}
} // namespace

std::shared_ptr<IMF_Node> IMF_PackageDeliveryReader::getDeliveryNodeFromJson(const QJsonObject& delivery,
                                                                             const QByteArray& componentID)
{
    const std::shared_ptr<IMF_Node> node = deliveryFromJson(delivery, componentID);
    const QJsonArray imps = childrenOf(delivery);
    for (const QJsonValue& imp : imps)
        loadIMPtoDelivery(imp.toObject(), node);
    return node;
}

std::shared_ptr<IMF_Node> IMF_PackageDeliveryReader::deliveryFromJson(const QJsonObject& json,
                                                                      const QByteArray& componentID)
{
    const std::shared_ptr<IMF_Node> node = IMF_Node::Create();
    node->setValue(IMF_Deliverable(node, json.value(ImfDict::Path).toString(), json.value(ImfDict::Name).toString(),
                                   componentID, withoutChildren(json)));
    return node;
}

std::shared_ptr<IMF_Node> IMF_PackageDeliveryReader::impFromJson(const QJsonObject& json,
                                                                 const std::shared_ptr<IMF_Node>& parent)
{
    const std::shared_ptr<IMF_Node> node = IMF_Node::Create(parent);
    node->setValue(IMF_IMP(node, withoutChildren(json), statusOf(json)));
    return node;
}

std::shared_ptr<IMF_Node> IMF_PackageDeliveryReader::cplFromJson(const QJsonObject& json,
                                                                 const std::shared_ptr<IMF_Node>& parent)
{
    const std::shared_ptr<IMF_Node> node = IMF_Node::Create(parent);
    const QJsonObject document = withoutChildren(json);
    node->setValue(IMF_CPL(node, parent ? sharingSections(document, *parent) : document, statusOf(json)));
    return node;
}

void IMF_PackageDeliveryReader::loadIMPtoDelivery(const QJsonObject& imp, const std::shared_ptr<IMF_Node>& delivery)
{
    delivery->push_back(impFromJson(imp, delivery));
    const QJsonArray cpls = childrenOf(imp);
    for (const QJsonValue& cpl : cpls)
        loadCPLsIntoIMP(cpl.toObject(), delivery->back());
}

void IMF_PackageDeliveryReader::loadCPLsIntoIMP(const QJsonObject& cpl, const std::shared_ptr<IMF_Node>& imp)
{
    imp->push_back(cplFromJson(cpl, imp));
}

std::shared_ptr<IMF_Node> IMF_PackageDeliveryReader::updateDeliveryNodeFromJson(IMF_PackageMgrQtModel* model,
                                                                                const QModelIndex& index,
                                                                                const QJsonObject& json)
{
    std::shared_ptr<IMF_Node> node = model->FromIndex(index);
    udpateNodeFromJson(node, json);
    const QJsonArray imps = childrenOf(json);
    NV_ASSERT(imps.count() == model->rowCount(index));
    const int count = std::min(imps.count(), model->rowCount(index));
    for (int row = 0; row < count; ++row)
        updateIMPtoDelivery(model, model->index(row, 0, index), imps[row].toObject());
    return node;
}

void IMF_PackageDeliveryReader::updateIMPtoDelivery(IMF_PackageMgrQtModel* model, const QModelIndex& imp,
                                                    const QJsonObject& json)
{
    std::shared_ptr<IMF_Node> impNode = model->FromIndex(imp);
    udpateNodeFromJson(impNode, json);
    const QJsonArray cpls = childrenOf(json);
    NV_ASSERT(cpls.size() == impNode->childCount());
    const int count = std::min(cpls.size(), impNode->childCount());
    for (int row = 0; row < count; ++row) {
        std::shared_ptr<IMF_Node> cpl = impNode->getChild(row);
        udpateNodeFromJson(cpl, cpls[row].toObject());
    }
}

void IMF_PackageDeliveryReader::udpateNodeFromJson(std::shared_ptr<IMF_Node>& node, const QJsonObject& json)
{
    const QJsonObject document = withoutChildren(json);
    boost::apply_visitor([&document](auto& payload) { payload.updateCommittedJsonObject(document); }, node->value());
}
