#include "desk/media/PictureReader.h"

#include "desk/media/FrameSource.h"
#include "desk/media/PictureConverter.h"
#include "desk/media/PictureTurn.h"

#include <optional>

namespace desk::media
{

class PictureReader::Private
{
public:
    Private(const Sequence& sequence, const PictureTarget& wanted, DecoderThreads threads)
        : path(sequence.path), frames(sequence.frames), target(wanted), source(sequence, threads)
    {
    }

    Status convert(const SourceFrame& from, Frame& to);

    QString path;
    qint64 frames;
    PictureTarget target;
    FrameSource source;
    /// For the pictures of `media`, which is turned by `rotation`.
    std::optional<PictureConverter> converter;
    const Sequence* media = nullptr;
    int rotation = 0;
};

Status PictureReader::Private::convert(const SourceFrame& from, Frame& to)
{
    if (from.picture == nullptr) {
        blacken(target, to);
        return {};
    }
    if (from.media != media) {
        media = from.media;
        rotation = media->picture->rotation;
        converter.emplace(rotation == 0 ? target : targetBeforeTurn(target, rotation), media->picture->pixelAspect);
    }
    if (const Status status = converter->convert(*from.picture, to); !status) {
        Error error = status.error();
        error.file = media->path;
        error.item = QStringLiteral("picture");
        return error;
    }
    if (rotation != 0)
        to = turned(to, target, rotation);
    return {};
}

namespace
{

Status checkRequest(const Sequence& sequence, const PictureTarget& target)
{
    const auto refuse = [&](const QString& what, const QString& next) {
        return Error{sequence.path, QStringLiteral("picture"), {}, what, next};
    };
    if (!sequence.picture)
        return refuse(QStringLiteral("the sequence has no picture"), QStringLiteral("choose media with a picture"));
    if (target.width < 2 || target.height < 1 || target.bitDepth < 8 || target.bitDepth > 16)
        return refuse(QStringLiteral("%1 x %2 at %3 bits cannot be made")
                          .arg(target.width)
                          .arg(target.height)
                          .arg(target.bitDepth),
                      QStringLiteral("choose another picture format"));
    return checkUnchanged(sequence, QStringLiteral("picture"));
}

} // namespace

PictureReader::PictureReader(std::unique_ptr<Private> p) : d(std::move(p)) {}

PictureReader::~PictureReader() = default;

Result<std::unique_ptr<PictureReader>> PictureReader::open(const Sequence& sequence, const PictureTarget& target,
                                                           const PictureReaderOptions& options)
{
    if (const Status status = checkRequest(sequence, target); !status)
        return status.error();
    const bool through = options.access == PictureReaderOptions::Access::Through;
    const DecoderThreads threads{through ? FF_THREAD_FRAME | FF_THREAD_SLICE : FF_THREAD_SLICE, options.threads};
    auto d = std::make_unique<Private>(sequence, target, threads);
    if (const Status status = d->source.open(); !status)
        return status.error();
    return std::unique_ptr<PictureReader>(new PictureReader(std::move(d)));
}

Result<Frame> PictureReader::read(qint64 number)
{
    if (number < 0 || number >= d->frames)
        return Error{d->path, QStringLiteral("picture"), QStringLiteral("frame %1").arg(number),
                     QStringLiteral("the sequence has %1 frames").arg(d->frames),
                     QStringLiteral("ask for one of these")};
    const Result<SourceFrame> picture = d->source.frame(number);
    if (!picture)
        return picture.error();
    Frame frame;
    frame.number = number;
    if (const Status status = d->convert(*picture, frame); !status)
        return status.error();
    return frame;
}

} // namespace desk::media
