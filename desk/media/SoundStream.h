#pragma once

#include "desk/media/MediaFile.h"

#include <utility>
#include <vector>

namespace desk::media
{

/// Stretches of samples, ascending and apart.
class Stretches
{
public:
    void add(qint64 from, qint64 to);
    /// How many samples of from..to are in a stretch.
    qint64 within(qint64 from, qint64 to) const;

private:
    std::vector<std::pair<qint64, qint64>> m_parts;
};

/// One vector a channel, values -1 to 1 as far as the file keeps to it. 24-bit values come through exactly.
using Channels = std::vector<std::vector<float>>;

/// Decodes one sound stream and hands out its samples by number at the stream's own rate, sample 0 at the sequence's
/// time 0. One thread at a time.
class SoundStream
{
public:
    /// `zero` is the sequence's time 0 on the file's clock, in seconds.
    SoundStream(QString path, int stream, double zero);

    Status open();

    /// Appends `count` samples from `first` on to each vector of `out`, silence where the file holds none.
    Status read(qint64 first, qint64 count, Channels& out);

    int channels() const { return m_channels; }

    int rate() const { return m_rate; }

    /// Where the file was found to hold samples, among those read.
    const Stretches& held() const { return m_held; }

private:
    enum class Step { Decoded, End };

    Status reach(qint64 first);
    Status seek(qint64 first);
    Result<Step> decodeNext();
    void keep(const AVFrame& frame);
    qint64 positionOf(const AVFrame& frame) const;
    void fill(const AVFrame& frame, int skip);
    void copyOut(qint64 first, qint64 count, Channels& out) const;

    qint64 end() const { return m_begin + qint64(m_buffer.empty() ? 0 : m_buffer[0].size()); }

    QString m_path;
    int m_stream;
    double m_zero;
    FormatPtr m_file;
    CodecPtr m_codec;
    FramePtr m_frame;
    PacketPtr m_packet;
    int m_channels = 0;
    int m_rate = 0;
    bool m_pcm = false;
    /// Times name samples exactly, so that seeking keeps the numbers.
    bool m_exactTimes = false;
    bool m_draining = false;
    bool m_ended = false;
    /// The next frame places the buffer.
    bool m_unplaced = true;
    /// The file holds nothing from here to the buffer.
    qint64 m_silentFrom = 0;
    /// Samples before this number may be spoilt by what precedes the place that was sought.
    qint64 m_barrier = 0;
    /// Number of the first buffered sample; the buffer is the frame decoded last.
    qint64 m_begin = 0;
    Channels m_buffer;
    Stretches m_held;
};

} // namespace desk::media
