#include "desk/media/SoundStream.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace desk::media
{

namespace
{

/// A little-endian sample as a packet holds it; there is always more behind it, which load() may touch.
struct Packed24 {
    std::int32_t value;
};

/// The format of a frame that is a packet of Packed24.
constexpr int packed24Format = AV_SAMPLE_FMT_NB;

template <class T>
constexpr std::ptrdiff_t sizeInFrame = std::is_same_v<T, Packed24> ? 3 : std::ptrdiff_t(sizeof(T));

template <class T>
T load(const uint8_t* from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    if constexpr (std::is_same_v<T, Packed24>)
        value.value = std::int32_t(std::uint32_t(value.value) << 8) >> 8;
    return value;
}

template <class T>
float sampleValue(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return float(value);
    else if constexpr (std::is_same_v<T, Packed24>)
        return float(value.value) / 8388608.0F;
    else if constexpr (std::is_same_v<T, uint8_t>)
        return float(int(value) - 128) / 128.0F;
    else
        return float(double(value) * (-1.0 / double(std::numeric_limits<T>::min())));
}

/// Whole numbers of up to 24 bits take no way through a float.
template <class T, bool upTo24Bits>
void put(T value, std::int32_t& out)
{
    if constexpr (upTo24Bits && std::is_same_v<T, uint8_t>)
        out = (int(value) - 128) * (1 << 16);
    else if constexpr (upTo24Bits && std::is_same_v<T, int16_t>)
        out = int(value) * (1 << 8);
    else if constexpr (upTo24Bits && std::is_same_v<T, int32_t>)
        out = value >> 8;
    else if constexpr (std::is_same_v<T, Packed24>)
        out = value.value;
    else if constexpr (std::is_integral_v<T>)
        // The highest ones would be rounded beyond the range.
        out = std::min(toSample(sampleValue(value)), 8388607);
    else
        out = toSample(sampleValue(value));
}

template <class T, bool>
void put(T value, float& out)
{
    out = sampleValue(value);
}

/// Samples of a frame that is buffered.
struct Part {
    const AVFrame& frame;
    int first;
    int count;
};

template <class T, class Value, bool upTo24Bits = sizeof(T) <= 2>
void convert(const Part& part, int channel, Value* out)
{
    const AVFrame& frame = part.frame;
    const bool planar = av_sample_fmt_is_planar(AVSampleFormat(frame.format)) != 0;
    const std::ptrdiff_t step = sizeInFrame<T> * (planar ? 1 : frame.ch_layout.nb_channels);
    const uint8_t* in = planar ? frame.extended_data[channel] : frame.data[0] + channel * sizeInFrame<T>;
    in += part.first * step;
    for (int i = 0; i < part.count; ++i, in += step)
        put<T, upTo24Bits>(load<T>(in), out[i]);
}

template <class Value>
using Converter = void (*)(const Part&, int, Value*);

template <class Value>
Converter<Value> converterFor(int format, int bits)
{
    if (format == packed24Format)
        return convert<Packed24, Value>;
    switch (av_get_packed_sample_fmt(AVSampleFormat(format))) {
    case AV_SAMPLE_FMT_U8:
        return convert<uint8_t, Value>;
    case AV_SAMPLE_FMT_S16:
        return convert<int16_t, Value>;
    case AV_SAMPLE_FMT_S32:
        return bits > 0 && bits <= 24 ? convert<int32_t, Value, true> : convert<int32_t, Value, false>;
    case AV_SAMPLE_FMT_S64:
        return convert<int64_t, Value>;
    case AV_SAMPLE_FMT_DBL:
        return convert<double, Value>;
    default:
        return convert<float, Value>;
    }
}

/// Any format but those of whole numbers.
bool isFloat(int format)
{
    static constexpr std::array whole{AV_SAMPLE_FMT_U8, AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S32, AV_SAMPLE_FMT_S64};
    return format != packed24Format &&
           std::find(whole.begin(), whole.end(), av_get_packed_sample_fmt(AVSampleFormat(format))) == whole.end();
}

template <class Value>
void beSilent(qint64 from, qint64 to, const Planes<Value>& out)
{
    for (Value* plane : out) {
        if (plane != nullptr)
            std::fill(plane + from, plane + to, Value(0));
    }
}

/// The format of a packet's samples where they lie as in a frame; the decoder would only copy them.
int formatInPacket(AVCodecID codec)
{
    if constexpr (Q_BYTE_ORDER == Q_BIG_ENDIAN)
        return AV_SAMPLE_FMT_NONE;
    switch (codec) {
    case AV_CODEC_ID_PCM_S16LE:
        return AV_SAMPLE_FMT_S16;
    case AV_CODEC_ID_PCM_S24LE:
        return packed24Format;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

/// Whether the time of a frame after seeking tells the number of its first sample.
bool namesSamples(const AVInputFormat& format, AVRational tick, int rate, bool pcm)
{
    const QByteArray name = QByteArray(format.name).split(',').first();
    // MXF counts edit units, each a whole number of samples or part of a cadence.
    if (name == "mxf")
        return pcm && qint64(tick.num) * rate % tick.den == 0;
    // The others work out the time from a bit rate, or round it.
    static const QSet<QByteArray> exact{"mov", "wav", "w64", "aiff", "caf", "au", "mpegts", "flac"};
    return qint64(tick.num) * rate <= tick.den && exact.contains(name);
}

} // namespace

void Stretches::add(qint64 from, qint64 to)
{
    if (from >= to)
        return;
    auto at = std::lower_bound(m_parts.begin(), m_parts.end(), from,
                               [](const auto& part, qint64 v) { return part.second < v; });
    auto last = at;
    for (; last != m_parts.end() && last->first <= to; ++last) {
        from = std::min(from, last->first);
        to = std::max(to, last->second);
    }
    at = m_parts.erase(at, last);
    m_parts.insert(at, {from, to});
}

qint64 Stretches::within(qint64 from, qint64 to) const
{
    qint64 sum = 0;
    for (const auto& [begin, end] : m_parts)
        sum += std::max<qint64>(0, std::min(end, to) - std::max(begin, from));
    return sum;
}

SoundStream::SoundStream(std::shared_ptr<SoundPackets> packets, int stream, double zero)
    : m_packets(std::move(packets)),
      m_stream(stream),
      m_zero(zero),
      m_frame(av_frame_alloc()),
      m_decoded(av_frame_alloc()),
      m_packet(av_packet_alloc())
{
}

Status SoundStream::open()
{
    Status status = m_packets->pass() > 0 ? Status() : m_packets->start();
    if (status)
        status = m_packets->want(m_stream);
    return status ? openCodec() : status;
}

/// The stream from the start of a pass that begins at the file's start.
Status SoundStream::openCodec()
{
    const AVStream& stream = *m_packets->file().streams[m_stream];
    const AVCodecParameters& par = *stream.codecpar;
    const auto refuse = [this](const QString& what, const QString& next) {
        return Error{m_packets->path(), QStringLiteral("sound, stream %1").arg(m_stream), {}, what, next};
    };
    if (m_channels > 0 && (par.ch_layout.nb_channels != m_channels || par.sample_rate != m_rate))
        return refuse(QStringLiteral("the file has changed"), QStringLiteral("open it again"));
    Result<CodecPtr> codec = openDecoder(m_packets->file(), m_stream, {0, 1});
    if (!codec)
        return codec.error();
    m_codec = std::move(*codec);
    m_channels = par.ch_layout.nb_channels;
    m_rate = par.sample_rate;
    if (m_channels <= 0 || m_rate <= 0)
        return refuse(QStringLiteral("the file does not tell its channels and its rate"),
                      QStringLiteral("convert the sound to 48 kHz PCM"));
    m_tick = stream.time_base;
    m_pcm = av_get_exact_bits_per_sample(par.codec_id) > 0;
    m_exactTimes = namesSamples(*m_packets->file().iformat, m_tick, m_rate, m_pcm);
    m_packetFormat = formatInPacket(par.codec_id);
    m_pass = m_packets->pass();
    m_draining = m_ended = false;
    m_unplaced = true;
    m_barrier = std::numeric_limits<qint64>::min();
    m_kept = 0;
    return {};
}

qint64 SoundStream::positionOf(const AVFrame& frame) const
{
    return av_rescale_q(frame.pts, m_tick, {1, m_rate}) - qint64(std::llround(m_zero * m_rate));
}

Status SoundStream::seek(qint64 first)
{
    // Codecs that look back are given half a second to settle.
    const qint64 from = first - m_rate / 2;
    const qint64 time = av_rescale_q(from, {1, m_rate}, m_tick) + qint64(std::llround(m_zero / av_q2d(m_tick)));
    if (m_exactTimes && from > 0 && m_packets->startAt(m_stream, time))
        return findPlace(first) ? Status() : startAlone();
    const Status status = m_packets->start();
    return status ? openCodec() : status;
}

/// In a pass that does not begin at the file's start.
bool SoundStream::findPlace(qint64 first)
{
    avcodec_flush_buffers(m_codec.get());
    m_pass = m_packets->pass();
    m_draining = m_ended = false;
    m_unplaced = true;
    m_barrier = first - m_rate / 4;
    const Result<Step> step = decodeNext();
    return step && *step == Step::Decoded && m_begin <= m_barrier;
}

/// From the file's start, without the others.
Status SoundStream::startAlone()
{
    auto alone = std::make_shared<SoundPackets>(m_packets->path());
    Status status = alone->start();
    status = status ? alone->want(m_stream) : status;
    if (!status)
        return status;
    m_packets->leave(m_stream);
    m_packets = std::move(alone);
    return openCodec();
}

/// In the pass that another stream has begun.
Status SoundStream::follow(qint64 first)
{
    if (m_packets->isFromStart())
        return openCodec();
    if (m_exactTimes && findPlace(first))
        return {};
    const Status status = startAlone();
    return status ? reach(first) : status;
}

/// Frames follow each other without a break. The time of a frame only counts where it clearly differs: a jump.
void SoundStream::keep()
{
    const AVFrame& frame = *m_decoded;
    const qint64 expected = m_unplaced ? 0 : end();
    const qint64 position = frame.pts == AV_NOPTS_VALUE ? expected : positionOf(frame);
    const qint64 tolerance = m_pcm && m_exactTimes ? 1 : m_rate / 50;
    const qint64 jump = m_unplaced ? 0 : position - expected;
    // What a file holds before its first sample is silence; before a place that was sought it is not known.
    if (m_unplaced)
        m_silentFrom = m_barrier == std::numeric_limits<qint64>::min() ? m_barrier : position;
    else
        m_silentFrom = expected;
    m_begin = m_unplaced || jump > tolerance ? position : expected;
    m_unplaced = false;
    m_skipped = jump < -tolerance ? int(std::min<qint64>(-jump, frame.nb_samples)) : 0;
    m_kept = frame.nb_samples - m_skipped;
    m_frame.swap(m_decoded);
    m_hasFloats = m_hasFloats || isFloat(m_frame->format);
    m_held.add(std::max(m_begin, m_barrier), end());
}

/// The packet becomes the decoded frame, unless there is something to it that the decoder sees to.
bool SoundStream::takePacket()
{
    const AVPacket& packet = *m_packet;
    const int size = m_channels * (m_packetFormat == packed24Format ? 3 : 2);
    const bool isPlain = m_packetFormat != AV_SAMPLE_FMT_NONE && packet.buf != nullptr && packet.side_data_elems == 0 &&
                         (packet.flags & (AV_PKT_FLAG_DISCARD | AV_PKT_FLAG_CORRUPT)) == 0;
    if (!isPlain || packet.size == 0 || packet.size % size != 0)
        return false;
    AVFrame& frame = *m_decoded;
    frame.buf[0] = av_buffer_ref(packet.buf);
    frame.data[0] = packet.data;
    frame.format = m_packetFormat;
    frame.nb_samples = packet.size / size;
    frame.ch_layout.nb_channels = m_channels;
    frame.pts = packet.pts;
    return true;
}

Result<SoundStream::Step> SoundStream::decodeNext()
{
    for (;;) {
        const int got = avcodec_receive_frame(m_codec.get(), m_decoded.get());
        if (got == 0) {
            keep();
            return Step::Decoded;
        }
        if (got != AVERROR(EAGAIN) || m_draining)
            return Step::End;
        const SoundPackets::Dealt dealt = m_packets->next(m_stream, *m_packet);
        if (dealt == SoundPackets::Dealt::Apart)
            return Step::Apart;
        m_draining = dealt == SoundPackets::Dealt::End;
        // A disk that fails looks like the end of the file.
        const AVIOContext* io = m_packets->file().pb;
        const int broken = io != nullptr ? io->error : 0;
        if (m_draining && broken < 0 && broken != AVERROR_EOF)
            return Error{m_packets->path(),
                         QStringLiteral("sound, stream %1").arg(m_stream),
                         {},
                         QStringLiteral("the file cannot be read any further (%1)").arg(ffText(broken)),
                         QStringLiteral("check its drive, and copy the file again")};
        if (!m_draining && takePacket()) {
            keep();
            return Step::Decoded;
        }
        const int sent = avcodec_send_packet(m_codec.get(), m_draining ? nullptr : m_packet.get());
        if (sent < 0 && !m_unplaced && end() > m_barrier) {
            const double seconds = double(end()) / m_rate;
            return Error{m_packets->path(), QStringLiteral("sound, stream %1").arg(m_stream),
                         QStringLiteral("%1 s").arg(seconds, 0, 'f', 3),
                         QStringLiteral("the sound cannot be decoded (%1)").arg(ffText(sent)),
                         QStringLiteral("copy or render the file again")};
        }
    }
}

/// Sees to it that decoding goes on at or before `first`.
Status SoundStream::reach(qint64 first)
{
    if (m_pass != m_packets->pass())
        return follow(first);
    const bool passed = !m_unplaced && first < m_silentFrom;
    const bool far = m_exactTimes && !m_ended && first - (m_unplaced ? 0 : end()) > 2 * qint64(m_rate);
    return passed || far ? seek(first) : Status();
}

/// What is buffered of the samples that are asked for from `done` on; the first one after them.
template <class Value>
qint64 SoundStream::copyOut(qint64 first, qint64 done, qint64 count, const Planes<Value>& out) const
{
    const qint64 from = std::max(done, m_begin);
    const qint64 stop = std::min(first + count, end());
    if (m_unplaced || from >= stop)
        return done;
    beSilent(done - first, from - first, out);
    const Part part{*m_frame, m_skipped + int(from - m_begin), int(stop - from)};
    const auto converter = converterFor<Value>(m_frame->format, m_codec->bits_per_raw_sample);
    for (int channel = 0; channel < m_channels; ++channel) {
        Value* plane = out[std::size_t(channel)];
        if (plane == nullptr)
            continue;
        if (channel < m_frame->ch_layout.nb_channels)
            converter(part, channel, plane + (from - first));
        else
            std::fill(plane + (from - first), plane + (stop - first), Value(0));
    }
    return stop;
}

template <class Value>
Status SoundStream::read(qint64 first, qint64 count, const Planes<Value>& out)
{
    if (const Status status = reach(first); !status)
        return status;
    qint64 done = copyOut(first, first, count, out);
    while (!m_ended && (m_unplaced || end() < first + count)) {
        const Result<Step> step = decodeNext();
        if (!step)
            return step.error();
        m_ended = *step == Step::End;
        if (*step == Step::Apart) {
            Status status = startAlone();
            status = status ? reach(done) : status;
            if (!status)
                return status;
        }
        done = copyOut(first, done, count, out);
    }
    beSilent(done - first, count, out);
    return {};
}

template Status SoundStream::read(qint64 first, qint64 count, const Planes<float>& out);
template Status SoundStream::read(qint64 first, qint64 count, const Planes<std::int32_t>& out);

} // namespace desk::media
