#pragma once

#include "desk/media/SoundPackets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
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

/// Where the samples of each channel go; null where they are not wanted.
template <class Value>
using Planes = std::vector<Value*>;

/// On the scale of 24 bits, but not limited to them: nobody knows yet at which level the sample will be used. A value
/// that is no number is silence.
inline std::int32_t toSample(float value)
{
    // The ends are those of 32 bits that a float holds. Without a call, which would take longer than reading.
    const float known = std::isnan(value) ? 0.0F : value;
    const float within = std::clamp(known * 8388608.0F, -2147483648.0F, 2147483520.0F);
    return std::int32_t(within + std::copysign(0.5F, within));
}

/// Decodes one sound stream and hands out its samples by number at the stream's own rate, sample 0 at the sequence's
/// time 0. One thread at a time.
class SoundStream
{
public:
    /// `zero` is the sequence's time 0 on the file's clock, in seconds. Streams that are read together share `packets`
    /// and are all open before the first one is read.
    SoundStream(std::shared_ptr<SoundPackets> packets, int stream, double zero);

    Status open();

    /// `count` samples from `first` on to each plane of `out`, one a channel; silence where the file holds none. As
    /// float they are -1 to 1 as far as the file keeps to it, as std::int32_t those of SoundBlock; what the file holds
    /// in up to 24 bits comes through exactly in both.
    template <class Value>
    Status read(qint64 first, qint64 count, const Planes<Value>& out);

    int channels() const { return m_channels; }

    int rate() const { return m_rate; }

    /// Whether floating-point samples were found among those read.
    bool hasFloats() const { return m_hasFloats; }

    /// Where the file was found to hold samples, among those read.
    const Stretches& held() const { return m_held; }

private:
    enum class Step { Decoded, End, Apart };

    Status openCodec();
    Status reach(qint64 first);
    Status follow(qint64 first);
    Status seek(qint64 first);
    bool findPlace(qint64 first);
    Status startAlone();
    Result<Step> decodeNext();
    bool takePacket();
    void keep();
    qint64 positionOf(const AVFrame& frame) const;
    template <class Value>
    qint64 copyOut(qint64 first, qint64 done, qint64 count, const Planes<Value>& out) const;

    qint64 end() const { return m_begin + m_kept; }

    std::shared_ptr<SoundPackets> m_packets;
    /// The one that is read in.
    int m_pass = 0;
    int m_stream;
    double m_zero;
    AVRational m_tick{1, 1};
    CodecPtr m_codec;
    /// The frame decoded last; it is what is buffered. Beside it the one that is decoded next.
    FramePtr m_frame;
    FramePtr m_decoded;
    PacketPtr m_packet;
    int m_channels = 0;
    int m_rate = 0;
    bool m_pcm = false;
    int m_packetFormat = AV_SAMPLE_FMT_NONE;
    bool m_hasFloats = false;
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
    /// Number of the first buffered sample, its place in the frame, and how many there are.
    qint64 m_begin = 0;
    int m_skipped = 0;
    int m_kept = 0;
    Stretches m_held;
};

} // namespace desk::media
