#pragma once

#include <QString>

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace desk::media
{

/// Owning pointers to what FFmpeg allocates.
struct FfDeleter {
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }

    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }

    void operator()(AVFrame* p) const { av_frame_free(&p); }

    void operator()(AVPacket* p) const { av_packet_free(&p); }

    void operator()(SwsContext* p) const { sws_freeContext(p); }

    void operator()(SwrContext* p) const { swr_free(&p); }
};

using FormatPtr = std::unique_ptr<AVFormatContext, FfDeleter>;
using CodecPtr = std::unique_ptr<AVCodecContext, FfDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FfDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, FfDeleter>;
using SwsPtr = std::unique_ptr<SwsContext, FfDeleter>;
using SwrPtr = std::unique_ptr<SwrContext, FfDeleter>;

/// FFmpeg's words for a return code.
inline QString ffText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

} // namespace desk::media
