#pragma once

#include "desk/imf/mxf/TrackFileWriter.h"
#include "desk/media/Sequence.h"
#include "desk/services/SoundPlan.h"

#include <QStringList>

#include <functional>

namespace desk::services
{

/// What is to be written of a composition's sound.
struct SoundOrder {
    const media::Sequence& sequence;
    const QVector<SoundPlan>& plans;
    /// One a plan.
    QStringList paths;
    /// Samples of each track file, and how many of them the sequence fills; the rest is silence.
    qint64 samples = 0;
    qint64 sounding = 0;
};

struct WrittenSound {
    QVector<imf::TrackFileInfo> files;
    /// What the user should know all the same: a sentence for each source that is above full scale and was limited.
    QStringList notes;
};

/// Writes one sound track file a plan, several at once where there are processors for it. Not for the user-interface
/// thread.
///
/// Where a mix is too loud for its samples the media are read to their end, so that the error can say where it first
/// happens (timecode of the sequence) and by how much at most; the files are then of no use. Ends with an error of its
/// own kind when `stopped` says so, asked often and on the calling thread. Each of `paths` may be left behind after a
/// failure.
Result<WrittenSound> writeSound(const SoundOrder& order, const std::function<bool()>& stopped);

} // namespace desk::services
