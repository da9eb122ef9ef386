#pragma once

#include "desk/services/ExportJob.h"

#include <QStringList>

namespace desk::app
{

/// "59 of 144 frames", "1.3 frames/s", "44 MiB", "1:03 left".
QStringList progressFacts(const services::ExportProgress& progress);

/// "0:06", "1:02:03": whole seconds.
QString durationText(double seconds);

} // namespace desk::app
