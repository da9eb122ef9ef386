#pragma once

#include "StratacutUI/ITrackGroupingManger.h"

class QAbstractItemModel;

/// What an audio mapping may choose from, for one CPL at one moment. Copies the groups; borrows the track model, which
/// has to outlive it. User-interface thread.
class IMF_TrackGroupingManager : public ITrackGroupingManger
{
public:
    /// @param trackModel the track data model of the CPL's sequence; null when it has none.
    /// @param groups group profiles: objects with "Name", "Include Master Fader" and "Tracks".
    IMF_TrackGroupingManager(QAbstractItemModel* trackModel, const QJsonArray& groups);

    QStringList getAllActiveTracks() override;
    QStringList getSourceList() override;
    QStringList getAudioMixList() override;
    QJsonArray getTrackGroups() override;

private:
    QAbstractItemModel* m_trackModel;
    QJsonArray m_groups;
};
