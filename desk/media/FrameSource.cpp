#include "desk/media/FrameSource.h"

#include <algorithm>

namespace desk::media
{

namespace
{

/// Decoders that are held open: a timeline may name more files than can be.
constexpr std::size_t mostOpen = 4;
/// Cuts that are made ready, and how many frames before they come.
constexpr int mostAhead = 3;
constexpr qint64 framesAhead = 250;

/// The second cut shows what comes in the file after the first one.
bool goesOn(const Cut& cut, const Cut& next)
{
    return cut.media == next.media && next.mediaStart == cut.mediaAt(cut.end());
}

} // namespace

FrameSource::FrameSource(const Sequence& sequence, DecoderThreads threads)
    : m_cuts(pictureCuts(sequence)), m_threads(threads)
{
}

Status FrameSource::open()
{
    if (m_cuts.empty())
        return {};
    const Result<PictureDecoder*> first = decoderOf(m_cuts.front(), m_cuts.front().mediaStart);
    return first ? Status() : first.error();
}

Result<std::unique_ptr<PictureDecoder>> FrameSource::opened(const Cut& cut) const
{
    auto decoder = std::make_unique<PictureDecoder>(cut.media->path, *cut.media->index, m_threads);
    if (const Status status = decoder->open(); !status)
        return status.error();
    return decoder;
}

/// One that was made ready for the cut, one that comes by, or one of the file that was used longest ago.
Result<PictureDecoder*> FrameSource::decoderOf(const Cut& cut, qint64 mediaFrame)
{
    auto best = m_opened.end();
    for (auto open = m_opened.begin(); open != m_opened.end(); ++open) {
        if (open->media != cut.media)
            continue;
        best = open;
        if (open->heading == cut.start || open->decoder->leadsTo(mediaFrame))
            break;
    }
    if (best == m_opened.end()) {
        auto decoder = opened(cut);
        if (!decoder)
            return decoder.error();
        if (m_opened.size() >= mostOpen)
            m_opened.pop_back();
        best = m_opened.insert(m_opened.end(), {cut.media, std::move(*decoder)});
    }
    m_opened.splice(m_opened.begin(), m_opened, best);
    best->heading = nowhere;
    best->isReady = false;
    return best->decoder.get();
}

Result<SourceFrame> FrameSource::frame(qint64 number)
{
    const auto cut = cutFrom(m_cuts, number);
    if (cut == m_cuts.end() || cut->start > number)
        return SourceFrame();
    const Result<PictureDecoder*> decoder = decoderOf(*cut, cut->mediaAt(number));
    if (!decoder)
        return decoder.error();
    const Result<const AVFrame*> picture = (*decoder)->frame(cut->mediaAt(number));
    if (!picture)
        return picture.error();
    return SourceFrame{*picture, cut->media.get()};
}

Result<FrameSource::Step> FrameSource::approach(qint64 number)
{
    const auto cut = cutFrom(m_cuts, number);
    if (cut == m_cuts.end() || cut->start > number)
        return Step();
    const Result<PictureDecoder*> decoder = decoderOf(*cut, cut->mediaAt(number));
    if (!decoder)
        return decoder.error();
    const Result<qint64> left = (*decoder)->approach(cut->mediaAt(number));
    if (!left)
        return left.error();
    const AVFrame* picture = (*decoder)->picture();
    return Step{picture == nullptr ? 0 : *left, {picture, picture == nullptr ? nullptr : cut->media.get()}};
}

/// The one that heads for a cut, or one that is sent there because nothing before that cut needs it; not that in front,
/// which plays. The end where there is none.
FrameSource::Opened::iterator FrameSource::headFor(const Cut& cut)
{
    enum { Needed, NeededLater, Spare, SpareOfFile, HeadsThere };

    const auto rankOf = [&](const Open& open) {
        if (open.heading == nowhere)
            return open.media == cut.media ? SpareOfFile : Spare;
        return open.heading == cut.start ? HeadsThere : open.heading > cut.start ? NeededLater : Needed;
    };
    const bool isFull = m_opened.size() >= mostOpen;
    auto best = m_opened.end();
    auto rank = isFull ? Needed : Spare;
    for (auto open = std::next(m_opened.begin()); open != m_opened.end(); ++open) {
        if (rankOf(*open) > rank) {
            rank = rankOf(*open);
            best = open;
        }
    }
    if (rank == HeadsThere || (best == m_opened.end() && isFull))
        return best;
    if (rank != SpareOfFile) {
        auto decoder = opened(cut);
        if (!decoder)
            return m_opened.end();
        best = best == m_opened.end() ? m_opened.insert(best, Open()) : best;
        *best = {cut.media, std::move(*decoder)};
    }
    best->heading = cut.start;
    best->isReady = false;
    return best;
}

bool FrameSource::prepare(qint64 number)
{
    auto cut = cutFrom(m_cuts, number);
    if (cut != m_cuts.end() && cut->start <= number)
        ++cut;
    for (int i = 0; i < mostAhead && cut != m_cuts.end() && cut->start <= number + framesAhead; ++i, ++cut) {
        if (m_opened.empty() || (cut != m_cuts.begin() && goesOn(*std::prev(cut), *cut)))
            continue;
        const auto open = headFor(*cut);
        if (open == m_opened.end())
            return false;
        if (open->isReady)
            continue;
        const Result<qint64> left = open->decoder->approach(cut->mediaStart);
        open->isReady = !left || *left == 0;
        return true;
    }
    return false;
}

} // namespace desk::media
