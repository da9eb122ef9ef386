#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>
#include <QJsonObject>

#include <memory>

class IMFO_Bridge;
class IMF_Node;
class IMF_PackageMgrQtModel;
class QModelIndex;

/// Turns the uncommitted items of the tree into a JSON array and back. Made on the stack for one save or one restore;
/// owns nothing. Used on the user-interface thread.
class STRATACUTUI_EXPORT IMF_DataModelSerializer
{
public:
    IMF_DataModelSerializer(IMF_PackageMgrQtModel* model, IMFO_Bridge* bridge);

    /// One element for each deliverable that holds an uncommitted IMP, in model order: its document with "NewDelivery"
    /// (no IMP of it is committed) and, under "Children", its uncommitted IMPs with their uncommitted CPLs.
    QJsonArray saveUnCommitedState() const;
    /// Rebuilds the saved items and registers them with the host. A new deliverable that the host refuses ends the
    /// restore with a warning; an IMP or CPL that it refuses is left out silently. Values of any shape are read as far
    /// as they make sense.
    void loadUnCommitedState(const QJsonArray& array);

private:
    QJsonObject impIndexToJson(const QModelIndex& imp) const;
    bool isNew(const QJsonObject& element, const IMF_Node& node) const;
    bool loadNewDelivery(const std::shared_ptr<IMF_Node>& node);
    QModelIndex existingDelivery(const QJsonObject& element) const;
    void loadUnCommitedImps(const QModelIndex& delivery, const std::shared_ptr<IMF_Node>& deliveryNode,
                            const QJsonArray& imps);
    void loadUnCommitedCpls(const QModelIndex& imp, const QJsonArray& cpls);
    void loadUnCommitedCpl(const QModelIndex& imp, const QJsonObject& element);

    IMF_PackageMgrQtModel* m_model;
    IMFO_Bridge* m_bridge;
};
