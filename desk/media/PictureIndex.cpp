#include "desk/media/PictureIndex.h"

#include "desk/media/PictureDecoder.h"

#include <QByteArray>

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace desk::media
{

namespace
{

/// The times of all pictures as one source tells them.
struct Times {
    std::vector<qint64> ascending;
    /// False where pictures carry no time or carry one that is known to be made up.
    bool reliable = true;
    /// Number of pictures whose bytes lie beyond the end of the file or arrived incomplete.
    qint64 cut = 0;
};

class Indexer
{
public:
    Indexer(const QString& path, AVFormatContext& file, int stream)
        : m_path(path), m_file(file), m_stream(*file.streams[stream])
    {
        m_index.stream = stream;
        m_index.known = knownPicture(m_stream);
        m_index.timeBase = m_stream.time_base;
    }

    Result<PictureIndex> run();

private:
    std::optional<Times> timesFromIndex() const;
    Times timesFromPackets();
    Status timesFromPictures(Times& times);
    Status findFirst();
    std::optional<qint64> framesBeforeCut(const Times& times, qint64 misfit);
    bool areOnGrid(const Times& times, qint64 from) const;
    Status adopt(const Times& times);
    Status checkEnd(qint64 cut);
    qint64 promised() const;
    std::vector<Rational> declaredRates() const;
    bool mayHidePictures() const;

    bool startsWith(const char* format) const { return QByteArray(m_file.iformat->name).startsWith(format); }

    Error cutError(qint64 promised, qint64 held) const;
    Error rateError(qint64 frame) const;

    QString m_path;
    AVFormatContext& m_file;
    AVStream& m_stream;
    PictureIndex m_index;
};

Error Indexer::cutError(qint64 promised, qint64 held) const
{
    const QString what =
        held == 0       ? QStringLiteral("the file is cut: of %1 frames it holds none").arg(promised)
        : promised == 0 ? QStringLiteral("the file is cut: the last good frame is frame %1").arg(held - 1)
                        : QStringLiteral("the file is cut: of %1 frames it holds %2, the last good one is frame %3")
                              .arg(promised)
                              .arg(held)
                              .arg(held - 1);
    return {m_path, QStringLiteral("picture"), {}, what, QStringLiteral("copy or render the file again")};
}

Error Indexer::rateError(qint64 frame) const
{
    return {m_path, QStringLiteral("picture"), QStringLiteral("frame %1").arg(frame),
            QStringLiteral("the frame rate varies"), QStringLiteral("convert the media to a constant frame rate")};
}

std::vector<Rational> Indexer::declaredRates() const
{
    std::vector<Rational> rates;
    for (const AVRational rate : {m_stream.avg_frame_rate, m_stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0)
            rates.emplace_back(rate.num, rate.den);
    }
    return rates;
}

/// Codecs and field orders where a packet need not be one picture.
bool Indexer::mayHidePictures() const
{
    const AVCodecParameters& par = *m_stream.codecpar;
    const bool fields = par.field_order != AV_FIELD_PROGRESSIVE && par.field_order != AV_FIELD_UNKNOWN;
    return fields || par.codec_id == AV_CODEC_ID_VP8 || par.codec_id == AV_CODEC_ID_VP9 ||
           par.codec_id == AV_CODEC_ID_AV1;
}

/// A MOV or MP4 file whose index is whole tells everything without being read.
std::optional<Times> Indexer::timesFromIndex() const
{
    const int count = avformat_index_get_entries_count(&m_stream);
    if (!startsWith("mov") || m_stream.nb_frames <= 0 || count == 0)
        return {};
    Times times;
    const qint64 size = avio_size(m_file.pb);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&m_stream, i);
        if ((entry.flags & AVINDEX_DISCARD_FRAME) != 0)
            continue;
        times.ascending.push_back(entry.timestamp);
        times.cut += entry.pos + entry.size > size ? 1 : 0;
    }
    std::sort(times.ascending.begin(), times.ascending.end());
    return times;
}

Times Indexer::timesFromPackets()
{
    Times times;
    keepOnlyStream(m_file, m_index.stream);
    const bool reorders = m_stream.codecpar->video_delay > 0;
    const PacketPtr packet(av_packet_alloc());
    for (; av_read_frame(&m_file, packet.get()) >= 0; av_packet_unref(packet.get())) {
        if (packet->stream_index != m_index.stream || (packet->flags & AV_PKT_FLAG_DISCARD) != 0)
            continue;
        const qint64 time = packet->pts != AV_NOPTS_VALUE || reorders ? packet->pts : packet->dts;
        times.reliable = times.reliable && time != AV_NOPTS_VALUE;
        times.cut += (packet->flags & AV_PKT_FLAG_CORRUPT) != 0 ? 1 : 0;
        times.ascending.push_back(time);
    }
    std::sort(times.ascending.begin(), times.ascending.end());
    return times;
}

/// The slow way, for files whose packets do not tell: every picture is decoded.
Status Indexer::timesFromPictures(Times& times)
{
    times = {};
    PictureDecoder decoder(m_path, m_index, {FF_THREAD_FRAME | FF_THREAD_SLICE, 0});
    if (const Status status = decoder.open(); !status)
        return status;
    for (;;) {
        Result<const AVFrame*> frame = decoder.next();
        if (!frame)
            return frame.error();
        if (*frame == nullptr)
            return {};
        const qint64 time = (*frame)->pts;
        times.reliable =
            times.reliable && time != AV_NOPTS_VALUE && (times.ascending.empty() || time > times.ascending.back());
        if (times.ascending.empty())
            m_index.first = time != AV_NOPTS_VALUE ? time : std::max<qint64>(m_stream.start_time, 0);
        times.ascending.push_back(time);
    }
}

/// The first picture that comes out whole. Pictures may precede it in the file that refer to others before the cut.
Status Indexer::findFirst()
{
    PictureDecoder decoder(m_path, m_index, {FF_THREAD_SLICE, 1});
    if (const Status status = decoder.open(); !status)
        return status;
    Result<const AVFrame*> frame = decoder.next();
    if (!frame)
        return frame.error();
    if (*frame == nullptr)
        return Error{m_path,
                     QStringLiteral("picture"),
                     {},
                     QStringLiteral("no frame can be decoded"),
                     QStringLiteral("copy or render the file again")};
    m_index.first = (*frame)->best_effort_timestamp;
    if (isWhole(**frame))
        m_index.shape = shapeOf(**frame);
    return {};
}

/// Pictures that are stored before others that are shown earlier leave gaps in front of a cut: how many pictures there
/// were before it, 0 where nothing tells; no number where there is no such cut. Takes the declared rate.
std::optional<qint64> Indexer::framesBeforeCut(const Times& times, qint64 misfit)
{
    constexpr qint64 deepest = 17; // pictures that the usual codecs reorder at most
    const auto held = qint64(times.ascending.size());
    const std::vector<Rational> declared = declaredRates();
    if (m_stream.codecpar->video_delay <= 0 || declared.empty() || misfit < held - deepest)
        return {};
    m_index.rate = declared.front();
    m_index.first = times.ascending.front();
    const qint64 told = promised();
    if (told > 0 || !startsWith("mpeg"))
        return told > held ? std::optional(told) : std::nullopt;
    return areOnGrid(times, misfit) ? std::optional(0) : std::nullopt;
}

bool Indexer::areOnGrid(const Times& times, qint64 from) const
{
    return std::all_of(times.ascending.begin() + from, times.ascending.end(),
                       [this](qint64 time) { return std::abs(m_index.timeOf(m_index.numberOf(time)) - time) <= 1; });
}

/// Takes rate and length from times that pictures are known to have.
Status Indexer::adopt(const Times& times)
{
    const RateFit fit = fitRate(times.ascending, m_index.timeBase, declaredRates());
    if (fit.firstMisfit >= 0) {
        const std::optional<qint64> whole = framesBeforeCut(times, fit.firstMisfit);
        return whole ? cutError(*whole, fit.firstMisfit) : rateError(fit.firstMisfit);
    }
    m_index.rate = fit.rate;
    m_index.frames = qint64(times.ascending.size());
    return {};
}

/// What the container's header says the number of pictures is; 0 where it says nothing.
qint64 Indexer::promised() const
{
    if (startsWith("mov"))
        return 0; // counts samples before the edit list; cut samples were found in the index
    if (startsWith("mxf") && m_stream.duration > 0)
        return av_rescale_q(m_stream.duration, m_stream.time_base, {int(m_index.rate.den), int(m_index.rate.num)});
    const AVDictionaryEntry* tag = av_dict_get(m_stream.metadata, "DURATION", nullptr, AV_DICT_IGNORE_SUFFIX);
    if (tag == nullptr)
        return m_stream.nb_frames;
    int hours = 0;
    int minutes = 0;
    double seconds = 0;
    if (sscanf(tag->value, "%d:%d:%lf", &hours, &minutes, &seconds) != 3)
        return 0;
    const double end = hours * 3600.0 + minutes * 60.0 + seconds;
    return qint64((end - double(m_index.first) * av_q2d(m_index.timeBase)) * m_index.rate.toDouble() + 0.1);
}

Status Indexer::checkEnd(qint64 cut)
{
    const qint64 most = std::max(promised(), m_index.frames);
    qint64 held = m_index.frames - cut;
    if (m_index.access == PictureIndex::Access::ByTime && cut == 0) {
        PictureDecoder decoder(m_path, m_index, {FF_THREAD_SLICE, 1});
        if (const Status status = decoder.open(); !status)
            return status;
        const Result<qint64> last = decoder.lastNumber();
        if (!last)
            return last.error();
        held = *last + 1;
    }
    if (held < most)
        return cutError(most, held);
    m_index.frames = held;
    return {};
}

Result<PictureIndex> Indexer::run()
{
    std::optional<Times> indexed = timesFromIndex();
    const bool whole = indexed && adopt(*indexed).ok();
    Times times = whole ? std::move(*indexed) : timesFromPackets();
    if (times.cut > 0 && whole && times.cut == m_index.frames)
        return cutError(m_index.frames, 0);
    if (whole || times.reliable) {
        if (const Status status = findFirst(); !status)
            return status.error();
    }
    // Undecodable pictures before the first whole one do not count.
    if (!whole && times.reliable)
        times.ascending.erase(times.ascending.begin(),
                              std::lower_bound(times.ascending.begin(), times.ascending.end(), m_index.first));

    Status adopted = times.reliable ? adopt(times) : Status();
    if (!times.reliable || (!adopted && mayHidePictures())) {
        const std::vector<Rational> declared = declaredRates();
        m_index.access = PictureIndex::Access::ByCount;
        if (const Status status = timesFromPictures(times); !status)
            return status.error();
        adopted = times.reliable ? adopt(times) : Status();
        m_index.frames = qint64(times.ascending.size());
        if (!times.reliable)
            m_index.rate = declared.empty() ? Rational() : declared.front();
    }
    if (!adopted)
        return adopted.error();
    if (m_index.frames == 0 || !m_index.rate.isValid())
        return Error{m_path,
                     QStringLiteral("picture"),
                     {},
                     QStringLiteral("no frame can be decoded"),
                     QStringLiteral("copy or render the file again")};
    const qint64 counted = m_index.frames;
    if (const Status status = checkEnd(times.cut); !status)
        return status.error();
    // A file's index tells decoding times: trimmed without encoding, it may lack pictures before its last one.
    if (whole && m_index.frames > counted)
        adopted = adopt(timesFromPackets());
    if (!adopted)
        return adopted.error();
    return m_index;
}

} // namespace

PictureIndex::Shape shapeOf(const AVFrame& frame)
{
    return {frame.width, frame.height, frame.interlaced_frame != 0};
}

Result<PictureIndex> indexPicture(const QString& path, AVFormatContext& file, int stream)
{
    return Indexer(path, file, stream).run();
}

} // namespace desk::media
