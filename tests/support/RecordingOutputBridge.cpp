#include "support/RecordingOutputBridge.h"

#include "StratacutUI/IMF_Bridges.h"

#include <utility>

namespace support
{

RecordingOutputBridge& RecordingOutputBridge::installed()
{
    static RecordingOutputBridge bridge;
    IMF_IMFO_bridge::Initialize(&bridge);
    bridge.reset();
    return bridge;
}

void RecordingOutputBridge::reset()
{
    calls.clear();
    deliveries.clear();
    infos.clear();
    trackInfos.clear();
    chosenFolder = QStringLiteral("/out");
    keepsIdentifiers = false;
    commits.clear();
    appliedSettings.clear();
    appliedMetadata.clear();
    onCall = nullptr;
    m_failures.clear();
    m_created = 0;
}

bool RecordingOutputBridge::record(IMFO_Error_t& error, const QString& operation, const QStringList& arguments)
{
    const QString call = operation + '(' + arguments.join(QStringLiteral(", ")) + ')';
    calls += call;
    if (onCall)
        onCall(call);
    error = m_failures.contains(call) ? m_failures.value(call) : m_failures.value(operation);
    return !error.isError();
}

void RecordingOutputBridge::readDelivery(IMFO_Error_t& error, const QString& path,
                                         std::pair<QByteArray, QJsonObject>& result)
{
    const bool known = deliveries.contains(path);
    if (known)
        result = {deliveries.value(path).first, deliveries.value(path).second};
    if (record(error, QStringLiteral("readDelivery"), {path}) && !known)
        error = IMFO_Error_t(1, QStringLiteral("No deliverable in %1.").arg(path));
}

void RecordingOutputBridge::getDeliveryInfo(IMFO_Error_t& error, const QByteArray& componentId, QJsonObject& info,
                                            bool recursive)
{
    if (record(error, QStringLiteral("getDeliveryInfo"), {componentId, recursive ? "recursive" : "alone"}))
        info = infos.value(componentId);
}

void RecordingOutputBridge::createDelivery(IMFO_Error_t& error, const QString& name, QString& path, bool original,
                                           QString& componentId)
{
    const QStringList arguments{name, path, original ? "original" : "supplemental"};
    if (!record(error, QStringLiteral("createDelivery"), arguments))
        return;
    if (path.isEmpty())
        path = chosenFolder;
    componentId = QStringLiteral("%1#%2").arg(name).arg(++m_created);
}

void RecordingOutputBridge::removeItem(IMFO_Error_t& error, const QByteArray& componentId)
{
    record(error, QStringLiteral("removeItem"), {componentId});
}

void RecordingOutputBridge::commit(IMFO_Error_t& error, const IMFO_ItemInfo& item, CommitCallback onDone)
{
    if (record(error, QStringLiteral("commit"), {item.componentId}))
        commits.push_back({item, std::move(onDone)});
}

void RecordingOutputBridge::createIMP(IMFO_Error_t& error, const QByteArray& impComponentId, const QByteArray&)
{
    record(error, QStringLiteral("createIMP"), {impComponentId});
}

void RecordingOutputBridge::createCPL(IMFO_Error_t& error, const QByteArray& cplComponentId, const QByteArray& token,
                                      const QByteArray& reserved)
{
    QStringList arguments{cplComponentId, token};
    if (!reserved.isEmpty())
        arguments += reserved;
    record(error, QStringLiteral("createCPL"), arguments);
}

void RecordingOutputBridge::setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& path,
                                        QString& actualPath)
{
    if (record(error, QStringLiteral("setItemPath"), {item.componentId, path}))
        actualPath = path;
}

void RecordingOutputBridge::renameItem(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& name,
                                       QString& newComponentId)
{
    if (record(error, QStringLiteral("renameItem"), {item.componentId, name}) && !keepsIdentifiers)
        newComponentId = QStringLiteral("%1#%2").arg(name).arg(++m_created);
}

void RecordingOutputBridge::applyCommitSettings(IMFO_Error_t& error, const QString& commitSettingsJson,
                                                const IMFO_ItemInfo& item)
{
    if (record(error, QStringLiteral("applyCommitSettings"), {item.componentId}))
        appliedSettings[item.componentId] = commitSettingsJson;
}

void RecordingOutputBridge::applyDescriptiveMetadata(IMFO_Error_t& error, const QString& metadataJson,
                                                     const IMFO_ItemInfo& item)
{
    if (record(error, QStringLiteral("applyDescriptiveMetadata"), {item.componentId}))
        appliedMetadata[item.componentId] = metadataJson;
}

void RecordingOutputBridge::getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>& tracks,
                                            const QByteArray& cplId)
{
    if (record(error, QStringLiteral("getCPLTrackInfo"), {cplId}))
        tracks = trackInfos.value(cplId);
}

} // namespace support
