#pragma once

#include "desk/base/Result.h"

#include <QString>

namespace desk::services
{

/// Whether a name can be that of a delivery's folder, on this system and where deliveries are carried to. Refused:
/// empty and longer than 255 bytes in UTF-8, ".", "..", control characters and any of / \ : * ? " < > |, a dot or a
/// blank at the end or a blank at the start, and the device names of other systems.
Status checkFolderName(const QString& name);

} // namespace desk::services
