#pragma once

#include "desk/media/MediaFile.h"
#include "desk/media/PictureIndex.h"

namespace desk::media
{

/// Demultiplexes and decodes one picture stream and finds frames by number. One thread at a time.
class PictureDecoder
{
public:
    /// The index may still lack its frame count.
    PictureDecoder(QString path, const PictureIndex& index, DecoderThreads threads);

    Status open();

    /// Frame `number`, owned by the decoder until the next call. Fails when the file has no such frame or the frame is
    /// damaged.
    Result<const AVFrame*> frame(qint64 number);

    /// Decodes one picture on the way to frame `number`, for frame() to go on from there. The frames that are left; 0
    /// where it is up to frame().
    Result<qint64> approach(qint64 number);

    /// Whether going on to frame `number` costs less than seeking, as far as is known.
    bool leadsTo(qint64 number) const;

    /// The one decoded last; null before the first and after a seek.
    const AVFrame* picture() const { return m_number >= 0 && m_frame->buf[0] != nullptr ? m_frame.get() : nullptr; }

    /// The next picture in order of presentation, null at the end of the file.
    Result<const AVFrame*> next();

    /// Goes to the last random access point and decodes to the end. The number of the last whole frame, -1 for none.
    Result<qint64> lastNumber();

    /// Starts again with the first frame.
    Status rewind();

    const AVCodecContext& codec() const { return *m_codec; }

private:
    Status seek(qint64 time);
    void aimAt(qint64 number);
    bool isGroupOf(qint64 number) const;
    Result<const AVFrame*> search(qint64 number);
    Result<const AVFrame*> hurry(qint64 number);
    bool feed();
    bool takePacket();
    bool isLate(const AVPacket& packet) const;
    qint64 numberOf(const AVFrame& frame);
    Error failure(qint64 number, const QString& what) const;

    QString m_path;
    PictureIndex m_index;
    DecoderThreads m_threads;
    FormatPtr m_file;
    CodecPtr m_codec;
    FramePtr m_frame;
    PacketPtr m_packet;
    /// Number of the frame in m_frame, -1 before the first.
    qint64 m_number = -1;
    qint64 m_count = 0;
    /// Pictures before this number may lack what they refer to: they are shown before the point where reading began.
    qint64 m_barrier = -1;
    /// The frame that the last seek was for, -1 where it was for none or the reading began at the start.
    qint64 m_sought = -1;
    /// Pictures shown before this time (ticks) are on the way to another one and need not be decoded.
    qint64 m_wantedFrom = AV_NOPTS_VALUE;
    /// Each packet is a picture that refers to no other.
    bool m_intra = false;
    bool m_awaitKey = false;
    bool m_fromStart = true;
    bool m_draining = false;
};

/// The picture was decoded without errors and without parts made up.
bool isWhole(const AVFrame& frame);

} // namespace desk::media
