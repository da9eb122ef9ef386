#pragma once

#include "desk/base/Result.h"
#include "desk/services/CommitPlan.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QPair>

class IMF_PackageMgrQtModel;
class QModelIndex;

namespace desk::services
{
class MediaLibrary;
}

namespace desk::app
{

/// What the user's toggles say; unless they say otherwise, sound is mapped, and tracks have languages and kinds.
services::SoundChoice soundChoice();

/// Fails where sound is not mapped, so that groups and mappings would have no effect.
Status checkSoundIsMapped();

/// Whether the rows of a mapping have a language and a content kind.
bool hasTrackMetadata();

/// Gives compositions that are not written and have no audio mapping the one by which their sound would be written
/// anyway, so that a page which shows a mapping shows this one: those among the children of `parent` from `first` on up
/// to `last`, and all below these. Does nothing where sound is not mapped.
void mapUnmappedSound(IMF_PackageMgrQtModel& model, const services::MediaLibrary& library, const QModelIndex& parent,
                      int first, int last);

/// Tells a composition from others by its document: its sequence and its name.
using CompositionKey = QPair<QString, QString>;
CompositionKey compositionKey(const QJsonObject& document);

/// For each composition in saved documents, and in their children, whose audio mapping cannot be read and starts anew,
/// a sentence for the user. @param file where they are saved.
QMap<CompositionKey, QString> unreadableMappings(const QJsonArray& documents, const QString& file);

} // namespace desk::app
