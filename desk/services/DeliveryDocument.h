#pragma once

#include "desk/imf/package/Delivery.h"

#include <QJsonObject>

namespace desk::services
{

/// A delivery on disk as the package manager's document with "Children": the delivery, its packages as IMPs, their
/// compositions as CPLs with the parameters that their descriptors state; those of sound come from the track files,
/// from the composition where a file is not there or not readable. Every item has "Mutable" false; "MissingAssets", an
/// array of identifiers, stands where a composition refers to an asset that nobody holds, and nowhere else.
QJsonObject documentOf(const imf::Delivery& delivery);

} // namespace desk::services
