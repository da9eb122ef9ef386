#pragma once

#include "desk/media/EditList.h"
#include "desk/media/PictureDecoder.h"

namespace desk::media
{

/// One frame of a sequence as its file holds it: neither converted nor turned.
struct SourceFrame {
    /// Owned by the source until its next call; null where the sequence is black.
    const AVFrame* picture = nullptr;
    /// The file that it comes from; null with the picture. Lives as long as the sequence's edit list or the source.
    const Sequence* media = nullptr;
};

/// The decoded pictures of a sequence by number, through its cuts. One thread at a time.
class FrameSource
{
public:
    FrameSource(const Sequence& sequence, DecoderThreads threads);

    /// Fails where the first cut's file cannot be decoded.
    Status open();

    /// `number` is at least 0; frames past the last cut are black.
    Result<SourceFrame> frame(qint64 number);

private:
    Result<PictureDecoder*> decoderOf(const Cut& cut);

    Cuts m_cuts;
    DecoderThreads m_threads;
    RecentlyUsed<PictureDecoder> m_decoders;
};

} // namespace desk::media
