#include "desk/media/ResampledStream.h"

#include <algorithm>
#include <numeric>

namespace desk::media
{

namespace
{

qint64 floorDiv(qint64 a, qint64 b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}

} // namespace

Status ResampledStream::open()
{
    if (const Status status = m_stream.open(); !status)
        return status;
    const int common = std::gcd(m_stream.rate(), soundRate);
    m_in = m_stream.rate() / common;
    m_out = soundRate / common;
    m_ready.assign(std::size_t(m_stream.channels()), {});
    return {};
}

Status ResampledStream::read(qint64 first, qint64 count, const Planes<std::int32_t>& out)
{
    if (m_in == m_out)
        return m_stream.read(first, count, out);
    if (!m_resampler || first < m_position || first > m_position + soundPortion) {
        if (const Status status = restart(first); !status)
            return status;
    }
    for (qint64 done = 0; done < count; done += soundPortion) {
        if (const Status status = take(first + done, std::min(soundPortion, count - done), done, out); !status)
            return status;
    }
    return {};
}

qint64 ResampledStream::held(qint64 first, qint64 count) const
{
    const qint64 held = m_stream.held().within(floorDiv(first * m_in, m_out), floorDiv((first + count) * m_in, m_out));
    return std::min(count, held * m_out / m_in + (m_in == m_out || held == 0 ? 0 : 1));
}

Status ResampledStream::restart(qint64 first)
{
    // The filter needs some samples before the first one that counts.
    const qint64 block = floorDiv(first - 2048, m_out);
    AVChannelLayout layout;
    av_channel_layout_default(&layout, m_stream.channels());
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &layout, AV_SAMPLE_FMT_FLTP, soundRate, &layout, AV_SAMPLE_FMT_FLTP,
                        int(m_in * soundRate / m_out), 0, nullptr);
    m_resampler.reset(context);
    if (context == nullptr || swr_init(context) < 0)
        return Error{{},
                     {},
                     {},
                     QStringLiteral("the sound cannot be resampled to 48 kHz"),
                     QStringLiteral("convert the sound to 48 kHz")};
    m_source = block * m_in;
    m_position = block * m_out;
    for (auto& channel : m_ready)
        channel.clear();
    return {};
}

Status ResampledStream::refill()
{
    std::vector<std::vector<float>> in(m_ready.size(), std::vector<float>(soundPortion));
    Planes<float> planes;
    for (auto& channel : in)
        planes.push_back(channel.data());
    if (const Status status = m_stream.read(m_source, soundPortion, planes); !status)
        return status;
    m_source += soundPortion;
    const int room = swr_get_out_samples(m_resampler.get(), int(soundPortion));
    const std::size_t old = m_ready[0].size();
    std::vector<const uint8_t*> from;
    std::vector<uint8_t*> to;
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        m_ready[channel].resize(old + std::size_t(room));
        from.push_back(reinterpret_cast<const uint8_t*>(in[channel].data()));
        to.push_back(reinterpret_cast<uint8_t*>(m_ready[channel].data() + old));
    }
    const int made = swr_convert(m_resampler.get(), to.data(), room, from.data(), int(soundPortion));
    for (auto& channel : m_ready)
        channel.resize(old + std::size_t(std::max(0, made)));
    return {};
}

Status ResampledStream::take(qint64 first, qint64 count, qint64 at, const Planes<std::int32_t>& out)
{
    while (m_position + qint64(m_ready[0].size()) < first + count) {
        if (const Status status = refill(); !status)
            return status;
    }
    for (std::size_t channel = 0; channel < out.size(); ++channel) {
        std::vector<float>& ready = m_ready[channel];
        const auto from = ready.begin() + std::ptrdiff_t(first - m_position);
        const auto to = from + std::ptrdiff_t(count);
        if (out[channel] != nullptr)
            std::transform(from, to, out[channel] + at, toSample);
        ready.erase(ready.begin(), to);
    }
    m_position = first + count;
    return {};
}

} // namespace desk::media
