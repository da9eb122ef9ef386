#pragma once

#include "StratacutUI/ITrackGroupingManger.h"

#include <QAbstractItemModel>
#include <QPointer>

/// What an audio mapping may choose from, for one CPL at one moment. Copies the groups; borrows the track model,
/// which counts as none once it has gone. User-interface thread.
class IMF_TrackGroupingManager : public ITrackGroupingManger
{
public:
    /// @param trackModel the track data model of the CPL's sequence; null when it has none.
    /// @param groups group profiles: objects with "Name", "Include Master Fader" and "Tracks".
    IMF_TrackGroupingManager(QAbstractItemModel* trackModel, const QJsonArray& groups);

    /// Whether there is a sequence behind the model, so that there is something to choose from. @param trackModel may
    /// be null.
    static bool hasSequence(const QAbstractItemModel* trackModel);

    /// A track as an entry among the sources: its name, its label and its second text.
    static QString entryOf(const QAbstractItemModel& trackModel, int row);

    QStringList getAllActiveTracks() override;
    QStringList getSourceList() override;
    QStringList getAudioMixList() override;
    QJsonArray getTrackGroups() override;

private:
    QPointer<QAbstractItemModel> m_trackModel;
    QJsonArray m_groups;
};
