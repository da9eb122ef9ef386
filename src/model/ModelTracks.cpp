// The group profiles of the CPLs, by identifier, and the track data models of their sequences.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"

#include <QApplication>
#include <QFont>

#include <vector>

using namespace NodeAccess;

namespace
{
template <typename Visitor>
void forEachNode(const std::shared_ptr<IMF_Node>& subtree, const Visitor& visit)
{
    visit(subtree);
    for (const std::shared_ptr<IMF_Node>& child : *subtree)
        forEachNode(child, visit);
}
} // namespace

void IMF_PackageMgrQtModel::addTrackGroups(const QByteArray& componentId, const QJsonArray& groups)
{
    m_trackGroups[componentId] = groups;
}

void IMF_PackageMgrQtModel::addTrackModel(const QByteArray& componentId, const QString& key)
{
    registerTrackModel(nodeByComponentId(componentId), key);
}

void IMF_PackageMgrQtModel::addTrackModel(const QModelIndex& cpl, const QString& key)
{
    registerTrackModel(FromIndex(cpl), key);
}

void IMF_PackageMgrQtModel::registerTrackModel(const std::shared_ptr<IMF_Node>& node, const QString& key)
{
    IMF_CPL* payload = node ? cpl(*node) : nullptr;
    if (!payload || key.isEmpty())
        return;
    releaseTrackModel(node);
    TrackModel& entry = m_trackModels[key];
    if (!entry.model)
        entry.model = IMF_MXE_bridge::Instance()->createTrackDataModel(this, QApplication::font());
    entry.users[node.get()] = node;
    m_trackKeys[node.get()] = key;
    payload->setAudioGroupingModel(entry.model);
}

void IMF_PackageMgrQtModel::unregisterTrackDataModel(const QString& key)
{
    const TrackModel entry = m_trackModels.take(key);
    for (const auto& [address, user] : entry.users) {
        m_trackKeys.erase(address);
        if (const std::shared_ptr<IMF_Node> node = user.lock())
            cpl(*node)->resetAudioGroupingModel();
    }
    // A view may be in the middle of using it.
    if (entry.model)
        entry.model->deleteLater();
}

void IMF_PackageMgrQtModel::releaseTrackModel(const std::shared_ptr<IMF_Node>& node)
{
    const auto found = m_trackKeys.find(node.get());
    if (found == m_trackKeys.end())
        return;
    const QString key = found->second;
    m_trackKeys.erase(found);
    cpl(*node)->resetAudioGroupingModel();
    TrackModel& entry = m_trackModels[key];
    entry.users.erase(node.get());
    if (entry.users.empty())
        unregisterTrackDataModel(key);
}

void IMF_PackageMgrQtModel::releaseTrackModels(const std::shared_ptr<IMF_Node>& subtree)
{
    if (!m_trackKeys.empty())
        forEachNode(subtree, [this](const std::shared_ptr<IMF_Node>& node) { releaseTrackModel(node); });
}

void IMF_PackageMgrQtModel::removeTracksData(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const std::shared_ptr<IMF_Node> subtree = FromIndex(index);
    releaseTrackModels(subtree);
    // A namesake that stays keeps the groups that both share.
    const bool hasNamesake = isIdentifierShared(subtree);
    forEachNode(subtree, [&](const std::shared_ptr<IMF_Node>& node) {
        const QByteArray id = getComponendID(node);
        if (type(*node) == IMF_PackageMgr::CPL && !(hasNamesake && nodeByComponentId(id, subtree.get())))
            m_trackGroups.remove(id);
    });
}

void IMF_PackageMgrQtModel::keepTrackGroups(const std::shared_ptr<IMF_Node>& subtree,
                                            const std::function<void()>& change)
{
    struct Entry {
        std::shared_ptr<IMF_Node> node;
        QByteArray formerId;
        QJsonArray groups;
    };

    std::vector<Entry> entries;
    forEachNode(subtree, [this, &entries](const std::shared_ptr<IMF_Node>& node) {
        const auto found = m_trackGroups.constFind(getComponendID(node));
        if (found != m_trackGroups.constEnd())
            entries.push_back({node, found.key(), *found});
    });
    change();
    for (const Entry& entry : entries) {
        if (getComponendID(entry.node) != entry.formerId && !nodeByComponentId(entry.formerId))
            m_trackGroups.remove(entry.formerId);
    }
    for (const Entry& entry : entries) {
        QJsonArray& groups = m_trackGroups[getComponendID(entry.node)];
        // Groups that a namesake has under the new identifier stay.
        if (groups.isEmpty())
            groups = entry.groups;
    }
}
