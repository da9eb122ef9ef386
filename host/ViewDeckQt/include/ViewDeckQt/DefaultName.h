#pragma once

#include "ViewDeckQt/Export.h"

#include <QStringList>

namespace ViewDeckQt
{

/// Makes a default name unique: where `name` is taken, a point and the lowest free number from 1 on are appended
/// ("Untitled IMP", "Untitled IMP.1", "Untitled IMP.2"). Names are compared as they stand, case included.
VIEWDECK_EXPORT void generateDefaultName(QString& name, const QStringList& taken);

} // namespace ViewDeckQt
