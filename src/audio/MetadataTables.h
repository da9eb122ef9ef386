#pragma once

#include <QJsonObject>

/// The tables of the multi-channel audio metadata, compiled into the library. A table that cannot be read is empty.
namespace MetadataTables
{

/// Language code to an object: that code to the language's name, and region or script codes to theirs. Loaded once.
const QJsonObject& languages();

/// Content kind code to name. Loaded once.
const QJsonObject& contentKinds();

} // namespace MetadataTables
