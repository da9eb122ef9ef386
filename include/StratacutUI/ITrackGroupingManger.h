#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>
#include <QStringList>

/// What an audio mapping may be made of: the tracks of one CPL's sequence, the groups over them and the mix modes.
/// A snapshot; it never follows later edits. The audio mapping widget owns it. Used on the user-interface thread;
/// nothing here fails. The order of the declarations is the binary interface.
class STRATACUTUI_EXPORT ITrackGroupingManger
{
public:
    /// Slot 0.
    virtual ~ITrackGroupingManger();
    /// Slot 1. The names of the sequence's active tracks, as the media engine reports them.
    virtual QStringList getAllActiveTracks() = 0;
    /// Slot 2. The entries offered as mapping sources, separators included; empty without a sequence.
    virtual QStringList getSourceList() = 0;
    /// Slot 3. The mix modes in the media engine's order; empty without a sequence.
    virtual QStringList getAudioMixList() = 0;
    /// Slot 4. The group profiles: objects with "Name", "Include Master Fader" and "Tracks".
    virtual QJsonArray getTrackGroups() = 0;
};
