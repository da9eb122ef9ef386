#pragma once

#include "desk/base/Result.h"
#include "desk/services/MediaLibrary.h"

#include <QJsonArray>
#include <QJsonObject>

namespace desk::services
{

/// The source that stands for every active track of the sequence.
inline constexpr char allActiveTracks[] = "All Active Tracks";

/// The "Multiple Audio Mix" of an uncommitted CPL's document as the flat list that JSON::FlattenMultiMix makes of it,
/// checked against the sequence first, for the flat list tells neither a group nor a track by its name: every source is
/// a group, a track or "All Active Tracks", and every track that it names is one of the sequence's. A row of all active
/// tracks of a sequence without sound makes nothing and is left out.
///
/// The error names the row or the group, and the next step.
Result<QJsonArray> flatAudioMapping(const QJsonObject& multiMix, const BinItem& sequence);

/// The same of a CPL's document; an empty list where it has no such mix. A mix that is none is an error.
Result<QJsonArray> flatAudioMappingOf(const QJsonObject& document, const BinItem& sequence);

/// The place in BinItem::audio of the track that an entry of a source list stands for; -1 for anything else.
int trackOfEntry(const BinItem& sequence, const QString& entry);

} // namespace desk::services
