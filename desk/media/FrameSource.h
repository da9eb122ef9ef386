#pragma once

#include "desk/media/EditList.h"
#include "desk/media/PictureDecoder.h"

#include <list>

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

    /// A step towards a frame.
    struct Step {
        /// Frames that are left to be decoded; 0 where it is up to frame().
        qint64 left = 0;
        /// The one decoded last.
        SourceFrame reached;
    };

    /// Decodes one picture on the way to frame `number`, for frame() to go on from there.
    Result<Step> approach(qint64 number);

    /// Decodes one picture on the way to the first frame of a cut that comes soon after `number`, so that it is there
    /// when it is asked for. False when there is nothing left to do.
    bool prepare(qint64 number);

private:
    static constexpr qint64 nowhere = -1;

    struct Open {
        std::shared_ptr<const Sequence> media;
        std::unique_ptr<PictureDecoder> decoder;
        /// The start of the cut that it is made ready for.
        qint64 heading = nowhere;
        bool isReady = false;
    };

    using Opened = std::list<Open>;

    Result<PictureDecoder*> decoderOf(const Cut& cut, qint64 mediaFrame);
    Result<std::unique_ptr<PictureDecoder>> opened(const Cut& cut) const;
    Opened::iterator headFor(const Cut& cut);

    Cuts m_cuts;
    DecoderThreads m_threads;
    /// The one that was asked last is in front.
    Opened m_opened;
};

} // namespace desk::media
