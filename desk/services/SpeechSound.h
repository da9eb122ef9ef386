#pragma once

#include "desk/media/Sequence.h"
#include "desk/speech/recognition/RecognitionJob.h"

namespace desk::services
{

/// What to recognise of a media file: a sound of its own for each track that may be a single voice, one for all
/// channels of a stream whose channels have places (stereo, 5.1). The sounds read the file on the thread that opens
/// them, and fail where it is gone or not the one that was opened.
speech::RecognitionJob recognitionJob(const media::Sequence& clip);

/// How long a sequence is.
int lengthMs(const media::Sequence& sequence);

} // namespace desk::services
