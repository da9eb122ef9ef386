#include "desk/media/SoundPackets.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <utility>

namespace desk::media
{

namespace
{

/// A packet in memory beside its samples.
constexpr qint64 packetBytes = 256;

/// Whether all samples of a MOV or MP4 file are told of by its one index: fragments bring their own along. What does
/// not look like such a file is not trusted.
bool hasOneIndex(const QString& path)
{
    constexpr int mostAtoms = 10000;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    qint64 at = 0;
    for (int i = 0; i < mostAtoms && file.seek(at); ++i) {
        const QByteArray head = file.read(16);
        if (head.size() < 8)
            return at == file.size();
        qint64 size = qFromBigEndian<quint32>(head.constData());
        if (size == 1 && head.size() == 16)
            size = qFromBigEndian<qint64>(head.constData() + 8);
        size = size == 0 ? file.size() - at : size;
        if (head.mid(4, 4) == "moof" || size < 8 || size > file.size() - at)
            return false;
        at += size;
    }
    return false;
}

qint64 bytesOf(const AVPacket& packet)
{
    return packet.size + packetBytes;
}

} // namespace

Status SoundPackets::start()
{
    Result<FormatPtr> file = openMediaFile(m_path, m_picture);
    if (!file)
        return file.error();
    if (!m_queues.empty() && unsigned(m_queues.rbegin()->first) >= (*file)->nb_streams)
        return Error{m_path,
                     QStringLiteral("sound"),
                     {},
                     QStringLiteral("the file has changed"),
                     QStringLiteral("open it again")};
    m_file = std::move(*file);
    m_isIndexed = QByteArray(m_file->iformat->name).startsWith("mov") && hasOneIndex(m_path);
    for (unsigned i = 0; i < m_file->nb_streams; ++i)
        m_file->streams[i]->discard = m_queues.count(int(i)) > 0 ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    begin();
    m_fromStart = true;
    return {};
}

bool SoundPackets::startAt(int stream, qint64 time)
{
    if (av_seek_frame(m_file.get(), stream, time, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    begin();
    m_fromStart = false;
    return true;
}

void SoundPackets::begin()
{
    for (auto& [stream, queue] : m_queues)
        queue = {};
    m_bytes = 0;
    m_failure = 0;
    ++m_pass;
}

Status SoundPackets::want(int stream)
{
    if (stream < 0 || unsigned(stream) >= m_file->nb_streams)
        return Error{m_path,
                     QStringLiteral("sound"),
                     {},
                     QStringLiteral("the file has changed"),
                     QStringLiteral("open it again")};
    m_file->streams[stream]->discard = AVDISCARD_DEFAULT;
    m_queues[stream];
    return {};
}

void SoundPackets::leave(int stream)
{
    const auto found = m_queues.find(stream);
    if (found == m_queues.end())
        return;
    for (const PacketPtr& packet : found->second.packets)
        m_bytes -= bytesOf(*packet);
    m_queues.erase(found);
    m_file->streams[stream]->discard = AVDISCARD_ALL;
}

/// As the index tells.
bool SoundPackets::hasMore(int stream, const Queue& queue) const
{
    AVStream& in = *m_file->streams[stream];
    return queue.lastTime == AV_NOPTS_VALUE
               ? avformat_index_get_entries_count(&in) > 0
               : avformat_index_get_entry_from_timestamp(&in, queue.lastTime + 1, AVSEEK_FLAG_ANY) != nullptr;
}

/// Spares reading to the end of the file for a stream that is shorter than others. Packets of other codecs may be parts
/// of what the index counts.
bool SoundPackets::isOver(int stream, const Queue& queue) const
{
    const AVCodecID codec = m_file->streams[stream]->codecpar->codec_id;
    return m_isIndexed && av_get_exact_bits_per_sample(codec) > 0 && !hasMore(stream, queue);
}

SoundPackets::Dealt SoundPackets::atFailure(int stream, const Queue& queue) const
{
    const bool isEnd = m_failure == AVERROR_EOF && !(m_isIndexed && hasMore(stream, queue));
    return isEnd || m_queues.size() == 1 ? Dealt::End : Dealt::Apart;
}

void SoundPackets::keep(Queue& queue, AVPacket& packet)
{
    PacketPtr kept(av_packet_alloc());
    av_packet_move_ref(kept.get(), &packet);
    m_bytes += bytesOf(*kept);
    queue.packets.push_back(std::move(kept));
}

SoundPackets::Dealt SoundPackets::next(int stream, AVPacket& packet)
{
    av_packet_unref(&packet);
    Queue& mine = m_queues[stream];
    if (!mine.packets.empty()) {
        m_bytes -= bytesOf(*mine.packets.front());
        av_packet_move_ref(&packet, mine.packets.front().get());
        mine.packets.pop_front();
        return Dealt::Packet;
    }
    if (isOver(stream, mine))
        return Dealt::End;
    while (m_bytes <= m_mostBytes) {
        m_failure = m_failure < 0 ? m_failure : std::min(0, av_read_frame(m_file.get(), &packet));
        if (m_failure < 0)
            return atFailure(stream, mine);
        const auto found = m_queues.find(packet.stream_index);
        if (found != m_queues.end()) {
            found->second.lastTime = packet.dts;
            if (packet.stream_index == stream)
                return Dealt::Packet;
            keep(found->second, packet);
        }
        av_packet_unref(&packet);
    }
    return Dealt::Apart;
}

} // namespace desk::media
