#include "desk/services/ExportJob.h"

#include "StratacutUI/ImfDict.h"
#include "desk/imf/j2k/J2kEncoderPool.h"
#include "desk/imf/mxf/TrackFileWriter.h"
#include "desk/media/PictureReader.h"
#include "desk/media/Playing.h"
#include "desk/media/SoundReader.h"
#include "desk/services/CompositionBuilder.h"
#include "desk/services/SoundExport.h"

#include <future>
#include <numeric>

namespace desk::services
{

namespace
{
Error cancelledError(const QString& media)
{
    return {media, {}, {}, QStringLiteral("the export was cancelled"), QStringLiteral("start it again when you wish")};
}

imf::Picture black(const imf::PictureFormat& format)
{
    const std::size_t luma = std::size_t(format.width) * std::size_t(format.height);
    const std::size_t chroma = std::size_t((format.width + 1) / 2) * std::size_t(format.height);
    const auto level = [&format](int eightBit) { return std::uint16_t(eightBit << (format.bitDepth - 8)); };
    imf::Picture picture;
    picture.planes[0].assign(luma, level(16));
    picture.planes[1].assign(chroma, level(128));
    picture.planes[2].assign(chroma, level(128));
    return picture;
}

imf::J2kEncoderPool::Pace besidePlayback()
{
    using Pace = imf::J2kEncoderPool::Pace;
    using media::Playing;
    return !Playing::isGoingOn() ? Pace::Full : Playing::isBehind() ? Pace::Pause : Pace::Spare;
}

/// Frames of the output, of which each shows the frame of the sequence that is on at its start.
class PictureSource
{
public:
    PictureSource(const media::Sequence& sequence, const imf::PictureFormat& format)
        : m_sequence(sequence),
          m_format(format),
          m_frames(outputFrames(sequence.frames, sequence.frameRate, format.frameRate))
    {
    }

    Status open()
    {
        media::PictureTarget target;
        target.width = m_format.width;
        target.height = m_format.height;
        target.bitDepth = m_format.bitDepth;
        auto reader = media::PictureReader::open(m_sequence, target);
        if (!reader)
            return reader.error();
        m_reader = std::move(*reader);
        return {};
    }

    Result<imf::Picture> read(qint64 number)
    {
        if (number >= m_frames)
            return black(m_format);
        const Rational in = m_sequence.frameRate;
        const Rational out = m_format.frameRate;
        const qint64 wanted = in == out ? number : number * out.den * in.num / (out.num * in.den);
        if (wanted != m_lastNumber) {
            auto frame = m_reader->read(wanted);
            if (!frame)
                return frame.error();
            m_last.planes = std::move(frame->planes);
            m_lastNumber = wanted;
        }
        if (in == out)
            return std::move(m_last);
        return m_last;
    }

private:
    const media::Sequence& m_sequence;
    imf::PictureFormat m_format;
    qint64 m_frames;
    std::unique_ptr<media::PictureReader> m_reader;
    imf::Picture m_last;
    qint64 m_lastNumber = -1;
};
} // namespace

qint64 outputFrames(qint64 frames, Rational source, Rational output)
{
    if (!source.isValid() || source == output)
        return frames;
    // The frames that start before the sequence ends.
    const qint64 up = frames * output.num * source.den;
    const qint64 down = output.den * source.num;
    return (up + down - 1) / down;
}

qint64 frameMultiple(Rational rate)
{
    return rate.num / std::gcd(rate.num, qint64(media::soundRate) * rate.den);
}

Result<qint64> compositionFrames(qint64 frames, Rational rate, Padding padding, const QString& media)
{
    const qint64 multiple = frameMultiple(rate);
    const qint64 over = frames % multiple;
    if (over == 0)
        return frames;
    if (padding == Padding::BlackAndSilence)
        return frames + multiple - over;
    QString next = QStringLiteral("have %1 frames of black and silence added (--pad)").arg(multiple - over);
    if (frames > over)
        next = QStringLiteral("trim it to %1 frames, or %2").arg(frames - over).arg(next);
    return Error{
        media,
        {},
        QStringLiteral("ST 2067-2:2020, 6.3"),
        QStringLiteral("it lasts %1 frames, and at %2 frames a second a composition must last a multiple of %3")
            .arg(frames)
            .arg(words::frameRate(rate))
            .arg(multiple),
        next};
}

/// The state of one run: what the three threads share.
struct ExportJob::Work {
    const CompositionOrder& order;
    const std::atomic<bool>& cancelled;
    const FrameWritten& frameWritten;
    imf::PackageTransaction& transaction;
    media::Sequence sequence;
    imf::PictureFormat format;
    imf::J2kProfile profile;
    QVector<SoundPlan> sounds;
    QStringList notes;
    /// Of the composition, padding included, and of the sequence's picture in it.
    qint64 frames = 0;
    qint64 shownFrames = 0;
    /// One half has failed: the other stops.
    std::atomic<bool> abandoned{false};

    bool stopped() const { return cancelled || abandoned; }

    Status prepare();
    Status feed(imf::J2kEncoderPool& pool);
    Status drain(imf::J2kEncoderPool& pool, imf::PictureTrackWriter& writer);
    Result<imf::TrackFileInfo> writePicture(const QString& path);
    Result<WrittenSound> writeSounds(const QStringList& paths);
    Status writeAll();
    Status hand(const WrittenTracks& tracks, const QStringList& paths);
};

namespace
{
/// Readers convert the matrix alone.
bool hasWidePrimaries(const media::PictureTrackInfo& picture)
{
    static const QStringList wide{"bt2020", "smpte431", "smpte432"};
    return wide.contains(picture.primaries);
}
} // namespace

Status ExportJob::Work::prepare()
{
    auto opened = media::openSequence(order.mediaPath);
    if (!opened)
        return opened.error();
    sequence = std::move(*opened);
    const auto fail = [this](const QString& what, const QString& next) {
        return Error{order.mediaPath, {}, {}, what, next};
    };
    if (!sequence.picture)
        return fail(QStringLiteral("it has no picture, and a composition needs one"),
                    QStringLiteral("choose a file with a picture"));
    if (sequence.picture->isHighDynamicRange())
        return fail(QStringLiteral("its picture is of high dynamic range (%1), and the output writes BT.709 only")
                        .arg(sequence.picture->transfer),
                    QStringLiteral("convert it to BT.709 first"));
    if (hasWidePrimaries(*sequence.picture))
        notes += fail(QStringLiteral("its primaries (%1) are written as BT.709's, so that colours look pale")
                          .arg(sequence.picture->primaries),
                      QStringLiteral("convert it to BT.709 first"))
                     .sentence();
    format = order.format.picture();
    auto chosen = imf::chooseProfile(format, order.format.j2k());
    if (!chosen)
        return chosen.error();
    profile = *chosen;
    auto planned = planSound(binItem(sequence), order.format);
    if (!planned)
        return planned.error();
    sounds = *planned;
    for (SoundPlan& sound : sounds)
        sound.format.title = contentTitleOf(order.document);
    shownFrames = outputFrames(sequence.frames, sequence.frameRate, format.frameRate);
    auto length = compositionFrames(shownFrames, format.frameRate, order.padding, order.mediaPath);
    if (!length)
        return length.error();
    frames = *length;
    return {};
}

Status ExportJob::Work::feed(imf::J2kEncoderPool& pool)
{
    PictureSource source(sequence, format);
    Status opened = source.open();
    if (!opened)
        return opened;
    for (qint64 n = 0; n < frames && !stopped(); ++n) {
        auto picture = source.read(n);
        if (!picture)
            return picture.error();
        Status pushed = pool.push(std::move(*picture));
        if (!pushed)
            return pushed;
    }
    pool.endOfInput();
    return {};
}

Status ExportJob::Work::drain(imf::J2kEncoderPool& pool, imf::PictureTrackWriter& writer)
{
    for (qint64 n = 0; n < frames; ++n) {
        if (stopped())
            return cancelledError(order.mediaPath);
        auto codestream = pool.take();
        if (!codestream)
            return codestream.error();
        if (!*codestream)
            return cancelledError(order.mediaPath);
        Status written = writer.append(**codestream);
        if (!written)
            return written;
        frameWritten((*codestream)->size());
    }
    return {};
}

Result<imf::TrackFileInfo> ExportJob::Work::writePicture(const QString& path)
{
    auto writer = imf::PictureTrackWriter::create({path, {}, frames}, format, profile);
    if (!writer)
        return writer.error();
    imf::J2kEncoderPool pool(format, profile, 0, besidePlayback);
    auto feeding = std::async(std::launch::async, [this, &pool] {
        Status fed = feed(pool);
        if (!fed)
            pool.cancel();
        return fed;
    });
    const Status drained = drain(pool, **writer);
    if (!drained) {
        abandoned = true;
        pool.cancel();
    }
    const Status fed = feeding.get();
    if (cancelled)
        return cancelledError(order.mediaPath);
    // A frame that cannot be decoded cancels the pool: its error is the one to tell, unless the writer failed first.
    if (!drained)
        return !fed && !fed.error().file.isEmpty() ? fed.error() : drained.error();
    return (*writer)->finish();
}

Result<WrittenSound> ExportJob::Work::writeSounds(const QStringList& paths)
{
    const qint64 total = firstSampleOfFrame(frames, format.frameRate, media::soundRate);
    const qint64 sounding = firstSampleOfFrame(shownFrames, format.frameRate, media::soundRate);
    auto written = writeSound({sequence, sounds, paths, total, sounding}, [this] { return stopped(); });
    if (!written)
        abandoned = true;
    return written;
}

Status ExportJob::Work::hand(const WrittenTracks& tracks, const QStringList& paths)
{
    QVector<imf::TrackFileInfo> files = tracks.sounds;
    files.prepend(tracks.picture);
    for (int i = 0; i < files.size(); ++i) {
        imf::NewTrackFile file;
        file.id = files[i].id;
        file.temporaryPath = paths[i];
        file.size = files[i].size;
        file.sha1 = files[i].sha1;
        Status added = transaction.addTrackFile(file);
        if (!added)
            return added;
    }
    return transaction.addComposition(buildComposition(tracks, order.document),
                                      order.document[QLatin1String(ImfDict::Name)].toString());
}

Status ExportJob::Work::writeAll()
{
    QStringList paths;
    for (int i = 0; i <= sounds.size(); ++i)
        paths += transaction.newTrackFilePath();
    auto sounding = std::async(std::launch::async, [this, &paths] { return writeSounds(paths.mid(1)); });
    auto picture = writePicture(paths.first());
    if (!picture)
        abandoned = true;
    auto sound = sounding.get();
    if (cancelled)
        return cancelledError(order.mediaPath);
    if (!sound && (picture || picture.error().what == cancelledError({}).what))
        return sound.error();
    if (!picture)
        return picture.error();
    QStringList languages;
    for (const SoundPlan& sound : qAsConst(sounds))
        languages += sound.format.language;
    for (const SoundPlan& plan : qAsConst(sounds)) {
        if (!plan.remark.isEmpty())
            notes += plan.remark;
    }
    notes += sound->notes;
    return hand({*picture, sound->files, languages, sequence.startTimecode, sequence.frameRate}, paths);
}

ExportJob::ExportJob(const CompositionOrder& order, const std::atomic<bool>& cancelled, FrameWritten frameWritten)
    : m_order(order), m_cancelled(cancelled), m_frameWritten(std::move(frameWritten))
{
}

Status ExportJob::run(imf::PackageTransaction& transaction)
{
    Work work{m_order, m_cancelled, m_frameWritten, transaction, {}, {}, {}, {}, {}, 0, 0, {}};
    Status done = work.prepare();
    if (done)
        done = work.writeAll();
    m_notes = work.notes;
    return done;
}

} // namespace desk::services
