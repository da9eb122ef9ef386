#pragma once

#include "desk/base/Result.h"
#include "desk/media/FfHandles.h"

namespace desk::media
{

/// The absolute canonical path of a readable, non-empty file of this machine.
Result<QString> checkedMediaPath(const QString& path);

/// Opens a file that checkedMediaPath() let through and finds its streams. Opens this one file and nothing that it
/// refers to: playlists are refused, and so is every protocol but plain files.
Result<FormatPtr> openMediaFile(const QString& path);

/// Opens the decoder of one stream. `threadType` is FF_THREAD_FRAME and FF_THREAD_SLICE; `threads` 0 is one a core.
struct DecoderThreads {
    int type = 0;
    int threads = 1;
};

Result<CodecPtr> openDecoder(const AVFormatContext& file, int stream, DecoderThreads threads);

/// Packets of other streams are skipped while reading.
void keepOnlyStream(AVFormatContext& file, int stream);

} // namespace desk::media
