#pragma once

#include "desk/media/MediaFile.h"

#include <deque>
#include <map>

namespace desk::media
{

/// Reads through a file once for all of its sound streams that are wanted, and keeps for each what was met on the way
/// to another's packets. One thread at a time.
class SoundPackets
{
public:
    /// What kept packets may take in memory, in bytes.
    static constexpr qint64 plenty = 128 << 20;

    explicit SoundPackets(QString path, qint64 mostBytes = plenty, const KnownPicture& picture = {})
        : m_path(std::move(path)), m_mostBytes(mostBytes), m_picture(picture)
    {
    }

    const QString& path() const { return m_path; }

    /// Opens the file anew and begins a pass at its start. Where that fails, what was open stays so.
    Status start();
    /// Begins a pass at or before a time of one stream, in its ticks. False where the file does not go there; then
    /// start() is called for.
    bool startAt(int stream, qint64 time);

    /// Counts the passes; 0 before the first. Who read in an earlier one finds its place anew.
    int pass() const { return m_pass; }

    bool isFromStart() const { return m_fromStart; }

    /// Of the current pass.
    AVFormatContext& file() const { return *m_file; }

    /// From the first packet of a pass on. Fails where the file has no such stream.
    Status want(int stream);
    void leave(int stream);

    enum class Dealt {
        Packet,
        /// The stream has no more packets.
        End,
        /// The stream has to be read without the others: its next packet lies so far behind theirs that these would not
        /// fit into memory, or one of theirs cannot be read.
        Apart
    };
    /// The next packet of a stream that is wanted.
    Dealt next(int stream, AVPacket& packet);

private:
    struct Queue {
        std::deque<PacketPtr> packets;
        /// Of the packet that was read last in this pass.
        qint64 lastTime = AV_NOPTS_VALUE;
    };

    void begin();
    void keep(Queue& queue, AVPacket& packet);
    bool hasMore(int stream, const Queue& queue) const;
    bool isOver(int stream, const Queue& queue) const;
    Dealt atFailure(int stream, const Queue& queue) const;

    QString m_path;
    qint64 m_mostBytes;
    KnownPicture m_picture;
    FormatPtr m_file;
    int m_pass = 0;
    bool m_fromStart = true;
    /// What ended the pass.
    int m_failure = 0;
    /// The index in memory tells of all packets of the file.
    bool m_isIndexed = false;
    std::map<int, Queue> m_queues;
    qint64 m_bytes = 0;
};

} // namespace desk::media
