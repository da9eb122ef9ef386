#pragma once

#include "desk/base/Result.h"
#include "desk/imf/mxf/MetadataSets.h"
#include "desk/imf/mxf/TrackFileReader.h"

#include <QUuid>

namespace desk::imf
{

/// What the header metadata of a track file says, before its partitions and essence are looked at.
struct HeaderFacts {
    TrackFileFacts facts;
    /// InstanceID of the essence descriptor.
    QUuid descriptor;
    quint32 bodySid = 0;
    /// Bytes of one sample of all channels; only for sound.
    int blockAlign = 0;
};

/// Fails where a file package, its descriptor or what a track cannot do without is missing; errors carry no file.
Result<HeaderFacts> interpretHeader(const MetadataSets& sets);

} // namespace desk::imf
