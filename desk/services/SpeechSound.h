#pragma once

#include "desk/media/Sequence.h"
#include "desk/speech/recognition/RecognitionJob.h"

namespace desk::services
{

/// What to recognise of a media file: a sound of its own for each track that may be a single voice, one for all
/// channels of a stream whose channels have places (stereo, 5.1). The sounds read the file on the thread that opens
/// them, and fail where it is gone or not the one that was opened.
/// @param chosen the tracks to listen to, by their places in Sequence::audio; empty for all.
speech::RecognitionJob recognitionJob(const media::Sequence& clip, const QVector<int>& chosen = {});

/// Whether a media file is there; the failure is that of a transcription.
Status checkThere(const QString& path);

/// The tracks given and those that are one sound with them: what Segment::track says of their words is one of these.
QVector<int> heardTogether(const media::Sequence& clip, const QVector<int>& tracks);

/// How long a sequence is.
int lengthMs(const media::Sequence& sequence);

} // namespace desk::services
