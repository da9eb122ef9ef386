#include "IMF_TrackGroupingManager.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"

#include <QAbstractItemModel>
#include <QJsonObject>

namespace
{
constexpr char separator[] = "----------";
}

IMF_TrackGroupingManager::IMF_TrackGroupingManager(QAbstractItemModel* trackModel, const QJsonArray& groups)
    : m_trackModel(trackModel), m_groups(groups)
{
}

bool IMF_TrackGroupingManager::hasSequence(const QAbstractItemModel* trackModel)
{
    return IMF_MXE_bridge::Instance()->isSequenceTrackModel(trackModel);
}

QString IMF_TrackGroupingManager::entryOf(const QAbstractItemModel& trackModel, int row)
{
    MXE_Bridge* engine = IMF_MXE_bridge::Instance();
    const MXE_TrackColumns columns = engine->trackColumns(&trackModel);
    const auto text = [&](int column) { return trackModel.index(row, column).data().toString(); };
    // Filled in one go: a name that holds "%2" stays what it is.
    return QStringLiteral("%1 %2 %3")
        .arg(text(columns.name), engine->trackLabel(&trackModel, row), text(columns.secondText));
}

QStringList IMF_TrackGroupingManager::getAllActiveTracks()
{
    return IMF_MXE_bridge::Instance()->activeTracks(m_trackModel);
}

QStringList IMF_TrackGroupingManager::getSourceList()
{
    if (!m_trackModel)
        return {};
    QStringList sources{stx_func("All Active Tracks"), QLatin1String(separator)};
    for (int row = 0; row < m_trackModel->rowCount(); ++row)
        sources << entryOf(*m_trackModel, row);
    sources << QLatin1String(separator);
    for (const QJsonValue& group : qAsConst(m_groups))
        sources << group.toObject().value(QLatin1String("Name")).toString();
    return sources;
}

QStringList IMF_TrackGroupingManager::getAudioMixList()
{
    if (!m_trackModel)
        return {};
    const IAudioMixDescription* mixes = IMF_MXE_bridge::Instance()->audioMixDescription(m_trackModel);
    return mixes ? mixes->list(QStringLiteral("Audio Mix")) : QStringList();
}

QJsonArray IMF_TrackGroupingManager::getTrackGroups()
{
    return m_groups;
}
