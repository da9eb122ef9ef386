#include "desk/media/FrameSource.h"

namespace desk::media
{

FrameSource::FrameSource(const Sequence& sequence, DecoderThreads threads)
    : m_cuts(pictureCuts(sequence)), m_threads(threads)
{
}

Status FrameSource::open()
{
    if (m_cuts.empty())
        return {};
    const Result<PictureDecoder*> first = decoderOf(m_cuts.front());
    return first ? Status() : first.error();
}

Result<PictureDecoder*> FrameSource::decoderOf(const Cut& cut)
{
    return m_decoders.get(cut.media, [&]() -> Result<std::unique_ptr<PictureDecoder>> {
        auto decoder = std::make_unique<PictureDecoder>(cut.media->path, *cut.media->index, m_threads);
        if (const Status status = decoder->open(); !status)
            return status.error();
        return decoder;
    });
}

Result<SourceFrame> FrameSource::frame(qint64 number)
{
    const auto cut = cutFrom(m_cuts, number);
    if (cut == m_cuts.end() || cut->start > number)
        return SourceFrame();
    const Result<PictureDecoder*> decoder = decoderOf(*cut);
    if (!decoder)
        return decoder.error();
    const Result<const AVFrame*> picture = (*decoder)->frame(cut->mediaAt(number));
    if (!picture)
        return picture.error();
    return SourceFrame{*picture, cut->media.get()};
}

} // namespace desk::media
