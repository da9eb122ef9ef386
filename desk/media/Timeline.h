#pragma once

#include "desk/media/Sequence.h"

namespace desk::media
{

/// Opens a timeline file and every file that it names, and conforms it: the picture of upper tracks covers that of
/// lower ones; each audio track has as many channels as its widest clip. `path` has passed checkedMediaPath().
Result<Sequence> openTimeline(const QString& path);

/// What a sequence of that file has without its contents: identifier, name, path, size and time.
Sequence describeFile(const QString& path);

} // namespace desk::media
