#include "desk/media/SoundStream.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace desk::media
{

namespace
{

template <class T>
float sampleValue(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return float(value);
    else if constexpr (std::is_same_v<T, uint8_t>)
        return float(int(value) - 128) / 128.0F;
    else
        return float(double(value) * (-1.0 / double(std::numeric_limits<T>::min())));
}

template <class T>
void appendSamples(const AVFrame& frame, int channel, int skip, std::vector<float>& out)
{
    const bool planar = av_sample_fmt_is_planar(AVSampleFormat(frame.format)) != 0;
    const int step = planar ? 1 : frame.ch_layout.nb_channels;
    const T* in = reinterpret_cast<const T*>(frame.extended_data[planar ? channel : 0]) + (planar ? 0 : channel);
    const std::size_t old = out.size();
    out.resize(old + std::size_t(frame.nb_samples - skip));
    float* to = out.data() + old;
    for (int i = skip; i < frame.nb_samples; ++i)
        *to++ = sampleValue(in[std::ptrdiff_t(i) * step]);
}

using Appender = void (*)(const AVFrame&, int, int, std::vector<float>&);

Appender appenderFor(AVSampleFormat format)
{
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return appendSamples<uint8_t>;
    case AV_SAMPLE_FMT_S16:
        return appendSamples<int16_t>;
    case AV_SAMPLE_FMT_S32:
        return appendSamples<int32_t>;
    case AV_SAMPLE_FMT_S64:
        return appendSamples<int64_t>;
    case AV_SAMPLE_FMT_DBL:
        return appendSamples<double>;
    default:
        return appendSamples<float>;
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

SoundStream::SoundStream(QString path, int stream, double zero)
    : m_path(std::move(path)), m_stream(stream), m_zero(zero), m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
}

Status SoundStream::open()
{
    Result<FormatPtr> file = openMediaFile(m_path);
    if (!file)
        return file.error();
    m_file = std::move(*file);
    if (unsigned(m_stream) >= m_file->nb_streams)
        return Error{m_path,
                     QStringLiteral("sound"),
                     {},
                     QStringLiteral("the file has changed"),
                     QStringLiteral("open it again")};
    keepOnlyStream(*m_file, m_stream);
    Result<CodecPtr> codec = openDecoder(*m_file, m_stream, {0, 1});
    if (!codec)
        return codec.error();
    m_codec = std::move(*codec);
    const AVStream& stream = *m_file->streams[m_stream];
    const AVCodecParameters& par = *stream.codecpar;
    m_channels = par.ch_layout.nb_channels;
    m_rate = par.sample_rate;
    if (m_channels <= 0 || m_rate <= 0)
        return Error{m_path,
                     QStringLiteral("sound, stream %1").arg(m_stream),
                     {},
                     QStringLiteral("the file does not tell its channels and its rate"),
                     QStringLiteral("convert the sound to 48 kHz PCM")};
    m_pcm = av_get_exact_bits_per_sample(par.codec_id) > 0;
    m_exactTimes = namesSamples(*m_file->iformat, stream.time_base, m_rate, m_pcm);
    m_draining = m_ended = false;
    m_unplaced = true;
    m_barrier = std::numeric_limits<qint64>::min();
    m_buffer.assign(std::size_t(m_channels), {});
    return {};
}

qint64 SoundStream::positionOf(const AVFrame& frame) const
{
    const AVRational tick = m_file->streams[m_stream]->time_base;
    const qint64 time = av_rescale_q(frame.pts, tick, {1, m_rate});
    return time - qint64(std::llround(m_zero * m_rate));
}

Status SoundStream::seek(qint64 first)
{
    // Codecs that look back are given half a second to settle.
    const qint64 from = first - m_rate / 2;
    const AVRational tick = m_file->streams[m_stream]->time_base;
    const qint64 time = av_rescale_q(from, {1, m_rate}, tick) + qint64(std::llround(m_zero / av_q2d(tick)));
    if (!m_exactTimes || from <= 0 || av_seek_frame(m_file.get(), m_stream, time, AVSEEK_FLAG_BACKWARD) < 0)
        return open();
    avcodec_flush_buffers(m_codec.get());
    m_draining = m_ended = false;
    m_unplaced = true;
    m_barrier = first - m_rate / 4;
    const Result<Step> step = decodeNext();
    return step && *step == Step::Decoded && m_begin <= m_barrier ? Status() : open();
}

/// The buffer becomes the frame from sample `skip` on.
void SoundStream::fill(const AVFrame& frame, int skip)
{
    const Appender appender = appenderFor(AVSampleFormat(frame.format));
    const int given = std::min(m_channels, frame.ch_layout.nb_channels);
    for (int channel = 0; channel < m_channels; ++channel) {
        std::vector<float>& samples = m_buffer[std::size_t(channel)];
        samples.clear();
        if (channel < given)
            appender(frame, channel, skip, samples);
        samples.resize(std::size_t(frame.nb_samples - skip));
    }
    m_held.add(std::max(m_begin, m_barrier), end());
}

/// Frames follow each other without a break. The time of a frame only counts where it clearly differs: a jump.
void SoundStream::keep(const AVFrame& frame)
{
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
    fill(frame, jump < -tolerance ? int(std::min<qint64>(-jump, frame.nb_samples)) : 0);
}

Result<SoundStream::Step> SoundStream::decodeNext()
{
    for (;;) {
        const int got = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (got == 0) {
            keep(*m_frame);
            return Step::Decoded;
        }
        if (got != AVERROR(EAGAIN) || m_draining)
            return Step::End;
        do {
            av_packet_unref(m_packet.get());
            m_draining = av_read_frame(m_file.get(), m_packet.get()) < 0;
        } while (!m_draining && m_packet->stream_index != m_stream);
        const int sent = avcodec_send_packet(m_codec.get(), m_draining ? nullptr : m_packet.get());
        if (sent < 0 && !m_unplaced && end() > m_barrier) {
            const double seconds = double(end()) / m_rate;
            return Error{m_path, QStringLiteral("sound, stream %1").arg(m_stream),
                         QStringLiteral("%1 s").arg(seconds, 0, 'f', 3),
                         QStringLiteral("the sound cannot be decoded (%1)").arg(ffText(sent)),
                         QStringLiteral("copy or render the file again")};
        }
    }
}

/// Sees to it that decoding goes on at or before `first`.
Status SoundStream::reach(qint64 first)
{
    const bool passed = !m_unplaced && first < m_silentFrom;
    const bool far = m_exactTimes && !m_ended && first - (m_unplaced ? 0 : end()) > 2 * qint64(m_rate);
    return passed || far ? seek(first) : Status();
}

void SoundStream::copyOut(qint64 first, qint64 count, Channels& out) const
{
    const qint64 from = std::max(first, m_begin);
    const qint64 stop = std::min(first + count, end());
    if (m_unplaced || from >= stop)
        return;
    for (std::size_t channel = 0; channel < m_buffer.size(); ++channel) {
        const auto start = m_buffer[channel].begin() + std::ptrdiff_t(from - m_begin);
        std::copy(start, start + std::ptrdiff_t(stop - from),
                  out[channel].end() - std::ptrdiff_t(first + count - from));
    }
}

Status SoundStream::read(qint64 first, qint64 count, Channels& out)
{
    if (const Status status = reach(first); !status)
        return status;
    for (auto& channel : out)
        channel.resize(channel.size() + std::size_t(count), 0.0F);
    copyOut(first, count, out);
    while (!m_ended && (m_unplaced || end() < first + count)) {
        const Result<Step> step = decodeNext();
        if (!step)
            return step.error();
        m_ended = *step == Step::End;
        if (!m_ended)
            copyOut(first, count, out);
    }
    return {};
}

} // namespace desk::media
