#pragma once

#include "desk/base/Result.h"
#include "desk/media/FfHandles.h"

namespace desk::media
{

/// The absolute canonical path of a readable, non-empty file of this machine.
Result<QString> checkedMediaPath(const QString& path);

/// What one opening has learned by decoding, so that the next ones of the same file need not decode for it. Only of
/// codecs without references between pictures: of others the library also counts how they are reordered.
struct KnownPicture {
    int stream = -1;
    AVCodecID codec = AV_CODEC_ID_NONE;
    int pixelFormat = AV_PIX_FMT_NONE;
};

/// Knows nothing where it cannot serve.
KnownPicture knownPicture(const AVStream& stream);

bool isIntraOnly(AVCodecID codec);

/// Opens a file that checkedMediaPath() let through and finds its streams. Opens this one file and nothing that it
/// refers to: playlists are refused, and so is every protocol but plain files.
Result<FormatPtr> openMediaFile(const QString& path, const KnownPicture& known = {});

/// Opens the decoder of one stream. `threadType` is FF_THREAD_FRAME and FF_THREAD_SLICE; `threads` 0 is one a core.
struct DecoderThreads {
    int type = 0;
    int threads = 1;
};

Result<CodecPtr> openDecoder(const AVFormatContext& file, int stream, DecoderThreads threads);

/// Packets of other streams are skipped while reading.
void keepOnlyStream(AVFormatContext& file, int stream);

} // namespace desk::media
