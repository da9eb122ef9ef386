#include "desk/media/PictureDecoder.h"

#include <algorithm>

namespace desk::media
{

namespace
{

/// Decoding this many frames on costs less than seeking.
constexpr qint64 nearby = 24;
/// Groups of pictures are no longer than this, or it is better to seek anyway.
constexpr qint64 longestGroup = 300;

} // namespace

bool isWhole(const AVFrame& frame)
{
    return frame.decode_error_flags == 0 && (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0;
}

PictureDecoder::PictureDecoder(QString path, const PictureIndex& index, DecoderThreads threads)
    : m_path(std::move(path)),
      m_index(index),
      m_threads(threads),
      m_frame(av_frame_alloc()),
      m_packet(av_packet_alloc())
{
}

Error PictureDecoder::failure(qint64 number, const QString& what) const
{
    return {m_path, QStringLiteral("picture"), QStringLiteral("frame %1").arg(number), what,
            QStringLiteral("copy or render the file again")};
}

Status PictureDecoder::open()
{
    Result<FormatPtr> file = openMediaFile(m_path, m_index.known);
    if (!file)
        return file.error();
    if (m_index.stream < 0 || unsigned(m_index.stream) >= (*file)->nb_streams)
        return Error{m_path,
                     QStringLiteral("picture"),
                     {},
                     QStringLiteral("the file has changed"),
                     QStringLiteral("open it again")};
    keepOnlyStream(**file, m_index.stream);
    Result<CodecPtr> codec = openDecoder(**file, m_index.stream, m_threads);
    if (!codec)
        return codec.error();
    // Only now: what was open before stays so where the file is another by now.
    m_file = std::move(*file);
    m_codec = std::move(*codec);
    m_intra = isIntraOnly(m_codec->codec_id);
    m_number = -1;
    m_count = 0;
    m_barrier = m_sought = -1;
    m_awaitKey = m_draining = false;
    m_fromStart = true;
    return {};
}

Status PictureDecoder::rewind()
{
    return open();
}

/// The packet's picture is shown before the one that is looked for.
bool PictureDecoder::isLate(const AVPacket& packet) const
{
    return m_wantedFrom != AV_NOPTS_VALUE && packet.pts != AV_NOPTS_VALUE && packet.pts < m_wantedFrom;
}

/// Reads the next packet of the stream that may be decoded; false at the end of the file.
bool PictureDecoder::takePacket()
{
    for (;;) {
        av_packet_unref(m_packet.get());
        if (av_read_frame(m_file.get(), m_packet.get()) < 0)
            return false;
        if (m_packet->stream_index != m_index.stream)
            continue;
        if (!m_awaitKey && m_intra && isLate(*m_packet))
            continue;
        if (!m_awaitKey)
            return true;
        if ((m_packet->flags & AV_PKT_FLAG_KEY) == 0 || m_packet->pts == AV_NOPTS_VALUE)
            continue;
        m_awaitKey = false;
        m_barrier = m_index.numberOf(m_packet->pts);
        return true;
    }
}

/// Gives the decoder one packet, or the end of the stream; false when it already has that.
bool PictureDecoder::feed()
{
    if (m_draining)
        return false;
    m_draining = !takePacket();
    m_codec->skip_frame = !m_draining && isLate(*m_packet) ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    // A packet that the decoder refuses yields no picture, which is noticed by the gap it leaves.
    avcodec_send_packet(m_codec.get(), m_draining ? nullptr : m_packet.get());
    return true;
}

qint64 PictureDecoder::numberOf(const AVFrame& frame)
{
    const qint64 counted = m_count++;
    if (m_index.access == PictureIndex::Access::ByCount || frame.best_effort_timestamp == AV_NOPTS_VALUE)
        return counted;
    return m_index.numberOf(frame.best_effort_timestamp);
}

Result<const AVFrame*> PictureDecoder::next()
{
    for (;;) {
        const int code = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (code == AVERROR_EOF || (code == AVERROR(EAGAIN) && !feed()))
            return nullptr;
        if (code < 0)
            continue;
        const qint64 number = numberOf(*m_frame);
        if (number < m_barrier)
            continue;
        m_number = number;
        return m_frame.get();
    }
}

Status PictureDecoder::seek(qint64 time)
{
    if (m_index.access == PictureIndex::Access::ByCount ||
        av_seek_frame(m_file.get(), m_index.stream, time, AVSEEK_FLAG_BACKWARD) < 0)
        return rewind();
    avcodec_flush_buffers(m_codec.get());
    m_number = -1;
    m_barrier = m_sought = -1;
    m_awaitKey = true;
    m_draining = m_fromStart = false;
    return {};
}

/// Decodes on to `number`: the frame, or null where it does not come.
Result<const AVFrame*> PictureDecoder::search(qint64 number)
{
    for (;;) {
        Result<const AVFrame*> frame = next();
        if (!frame || *frame == nullptr || m_number == number)
            return frame;
        if (m_number > number)
            return nullptr;
    }
}

/// Pictures on the way that no other refers to need not be decoded. Trusts what packets say of their times.
void PictureDecoder::aimAt(qint64 number)
{
    if (m_index.access != PictureIndex::Access::ByTime)
        return;
    // The second field of the picture before may come as a packet of its own.
    const qint64 time = m_index.timeOf(number);
    m_wantedFrom = time - (time - m_index.timeOf(number - 1)) / 4;
}

/// As search(), by the shortest way.
Result<const AVFrame*> PictureDecoder::hurry(qint64 number)
{
    aimAt(number);
    Result<const AVFrame*> found = search(number);
    m_wantedFrom = AV_NOPTS_VALUE;
    return found;
}

/// The index has no random access point between here and there, so that a seek would lead back.
bool PictureDecoder::isGroupOf(qint64 number) const
{
    const QByteArray format = m_file->iformat->name;
    if (m_number < 0 || number > m_number + longestGroup ||
        !(format.startsWith("mov") || format.startsWith("matroska")))
        return false;
    AVStream* stream = m_file->streams[m_index.stream];
    const AVIndexEntry* entry =
        avformat_index_get_entry_from_timestamp(stream, m_index.timeOf(number), AVSEEK_FLAG_BACKWARD);
    return entry != nullptr && m_index.numberOf(entry->timestamp) <= m_number;
}

bool PictureDecoder::leadsTo(qint64 number) const
{
    return m_number == number ||
           (m_number < number && (number <= m_number + nearby || number == m_sought ||
                                  m_index.access == PictureIndex::Access::ByCount || isGroupOf(number)));
}

Result<qint64> PictureDecoder::approach(qint64 number)
{
    if (m_number == number || m_index.access == PictureIndex::Access::ByCount)
        return 0;
    if (!leadsTo(number)) {
        if (const Status status = seek(m_index.timeOf(number)); !status)
            return status.error();
        m_sought = number;
    }
    aimAt(number);
    const Result<const AVFrame*> decoded = next();
    m_wantedFrom = AV_NOPTS_VALUE;
    if (!decoded)
        return decoded.error();
    return *decoded == nullptr ? 0 : std::max<qint64>(0, number - m_number);
}

Result<const AVFrame*> PictureDecoder::frame(qint64 number)
{
    const bool going = m_number != number && leadsTo(number);
    if (m_number == number && m_frame->buf[0] != nullptr)
        return isWhole(*m_frame) ? Result<const AVFrame*>(m_frame.get())
                                 : failure(number, QStringLiteral("the frame is damaged"));
    const qint64 second = std::max<qint64>(1, av_rescale_q(1, {1, 1}, m_index.timeBase));
    const qint64 begin = going ? -1 : 0;
    int misses = 0;
    for (qint64 back = begin;; back = back <= 0 ? back + 1 : back * 2) {
        const qint64 sought = m_index.timeOf(number) - back * second;
        const qint64 time = misses > 0 ? std::min(sought, m_index.timeOf(m_barrier) - 1) : sought;
        const Status status = back < 0                                        ? Status()
                              : back > 0 && time < m_index.first - 8 * second ? rewind()
                                                                              : seek(time);
        if (!status)
            return status.error();
        Result<const AVFrame*> found = back == begin ? hurry(number) : search(number);
        if (!found)
            return found;
        if (*found != nullptr)
            return isWhole(**found) ? found : failure(number, QStringLiteral("the frame is damaged"));
        // Two random access points before it that do not lead to it: there is no use in reading from the file's start.
        misses += back != begin && m_barrier >= 0 && m_barrier <= number ? 1 : 0;
        if (m_fromStart || misses >= (m_intra ? 1 : 2))
            return failure(number, QStringLiteral("the frame cannot be decoded"));
    }
}

Result<qint64> PictureDecoder::lastNumber()
{
    if (const Status status = seek(m_index.timeOf(m_index.frames - 1)); !status)
        return status.error();
    for (;;) {
        qint64 last = -1;
        Result<const AVFrame*> picture = next();
        for (; picture && *picture != nullptr; picture = next())
            last = isWhole(**picture) ? m_number : last;
        if (!picture)
            return picture.error();
        if (last >= 0 || m_fromStart)
            return last;
        if (const Status status = rewind(); !status)
            return status.error();
    }
}

} // namespace desk::media
