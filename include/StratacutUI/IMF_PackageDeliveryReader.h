#pragma once

#include "StratacutUI/Export.h"

#include <QByteArray>
#include <QJsonObject>

#include <memory>

class IMF_Node;
class IMF_PackageMgrQtModel;
class QModelIndex;

/// Builds package nodes from documents whose "Children" hold the documents below them, and later brings an existing
/// subtree up to date from a newer document. A node keeps its document without "Children". Missing keys and values of
/// another type read as empty. Used on the user-interface thread.
class STRATACUTUI_EXPORT IMF_PackageDeliveryReader
{
public:
    IMF_PackageDeliveryReader() = delete;

    /// The deliverable with its IMPs and their CPLs, in document order.
    static std::shared_ptr<IMF_Node> getDeliveryNodeFromJson(const QJsonObject& delivery,
                                                             const QByteArray& componentID);
    /// The deliverable alone.
    static std::shared_ptr<IMF_Node> deliveryFromJson(const QJsonObject& json, const QByteArray& componentID);
    /// One IMP that names `parent` as its parent but is not appended to it. Committed unless "Mutable" is true.
    static std::shared_ptr<IMF_Node> impFromJson(const QJsonObject& json, const std::shared_ptr<IMF_Node>& parent);
    /// One CPL that names `parent` as its parent but is not appended to it. Committed unless "Mutable" is true.
    static std::shared_ptr<IMF_Node> cplFromJson(const QJsonObject& json, const std::shared_ptr<IMF_Node>& parent);
    /// Appends an IMP with its CPLs.
    static void loadIMPtoDelivery(const QJsonObject& imp, const std::shared_ptr<IMF_Node>& delivery);
    /// Appends one CPL.
    static void loadCPLsIntoIMP(const QJsonObject& cpl, const std::shared_ptr<IMF_Node>& imp);

    /// Refreshes a deliverable and what is below it, by position; everything becomes Committed. Announces nothing.
    /// @return the deliverable's node.
    static std::shared_ptr<IMF_Node> updateDeliveryNodeFromJson(IMF_PackageMgrQtModel* model,
                                                                const QModelIndex& delivery, const QJsonObject& json);
    /// Refreshes one IMP and its CPLs, by position.
    static void updateIMPtoDelivery(IMF_PackageMgrQtModel* model, const QModelIndex& imp, const QJsonObject& json);
    /// Refreshes one node's document and makes the node Committed.
    static void udpateNodeFromJson(std::shared_ptr<IMF_Node>& node, const QJsonObject& json);
};
