#pragma once

#include "desk/services/MediaLibrary.h"
#include "desk/services/OutputFormat.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>

namespace desk::services
{

/// What planSound() writes of a sequence of which nothing is mapped, as the "Multiple Audio Mix" of a document: a row
/// for each track file, of all active tracks, of one track, or of a group that is named by its tracks ("A1-A6", or
/// "A1-A6.1" where `groups` has another one of that name) and made unless `groups` has it. None where there is nothing
/// to say: a sequence without sound, or tracks that are mixed down, which no row does in the same way.
std::optional<QJsonObject> defaultMapping(const BinItem& sequence, OutputFormat format, QJsonArray groups);

} // namespace desk::services
