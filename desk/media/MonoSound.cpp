#include "desk/media/MonoSound.h"

#include "desk/media/FfHandles.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace desk::media
{

namespace
{
constexpr qint64 portion = soundRate / 2;
/// Samples at soundRate that the resampling filter may need before the first one that counts.
constexpr qint64 lead = 4096;
constexpr float fullScale = 8388608.0F;
} // namespace

class MonoSound::Private
{
public:
    Private(std::unique_ptr<SoundReader> reader, int rate, qint64 length)
        : m_reader(std::move(reader)),
          m_in(soundRate / std::gcd(soundRate, rate)),
          m_out(rate / std::gcd(soundRate, rate)),
          m_length(length * m_out / m_in)
    {
    }

    qint64 length() const { return m_length; }

    Result<QVector<qint16>> read(qint64 first, qint64 count)
    {
        count = std::clamp<qint64>(m_length - first, 0, count);
        if (!m_resampler || first < m_position || first > m_position + m_ready.size() + portion) {
            if (const Status status = restart(first); !status)
                return status.error();
        }
        while (m_position + m_ready.size() < first + count) {
            if (const Status status = refill(); !status)
                return status.error();
        }
        m_ready.remove(0, int(first - m_position));
        m_position = first + count;
        const QVector<qint16> samples = m_ready.mid(0, int(count));
        m_ready.remove(0, int(count));
        return samples;
    }

private:
    Status restart(qint64 first)
    {
        // Whole periods, so that the filter stands at the same phase wherever reading begins.
        const qint64 period = first / m_out - lead / m_in - 1;
        m_position = period * m_out;
        m_source = period * m_in;
        m_ready.clear();
        AVChannelLayout mono;
        av_channel_layout_default(&mono, 1);
        SwrContext* context = nullptr;
        swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_S16, int(soundRate * m_out / m_in), &mono, AV_SAMPLE_FMT_FLT,
                            soundRate, 0, nullptr);
        m_resampler.reset(context);
        if (context != nullptr && swr_init(context) >= 0)
            return {};
        return Error{{},
                     {},
                     {},
                     QStringLiteral("the sound cannot be resampled for recognition"),
                     QStringLiteral("convert the sound to 48 kHz")};
    }

    /// What lies before the start is silent.
    Result<std::vector<float>> mixed(qint64 first)
    {
        std::vector<float> mix(std::size_t(portion), 0.0F);
        const qint64 from = std::max<qint64>(first, 0);
        const qint64 skipped = std::min(from - first, portion);
        if (skipped == portion)
            return mix;
        const auto block = m_reader->read(from, portion - skipped);
        if (!block)
            return block.error();
        // Between the sum, which clips where tracks are alike, and the mean, in which a single voice drowns.
        const float gain = 1.0F / (fullScale * std::sqrt(float(block->tracks.size())));
        for (const auto& track : block->tracks) {
            for (std::size_t i = 0; i < track.size(); ++i)
                mix[std::size_t(skipped) + i] += float(track[i]) * gain;
        }
        return mix;
    }

    Status refill()
    {
        const auto mix = mixed(m_source);
        if (!mix)
            return mix.error();
        m_source += portion;
        const int room = swr_get_out_samples(m_resampler.get(), int(portion));
        const int old = m_ready.size();
        m_ready.resize(old + room);
        const auto* from = reinterpret_cast<const uint8_t*>(mix->data());
        auto* to = reinterpret_cast<uint8_t*>(m_ready.data() + old);
        const int made = swr_convert(m_resampler.get(), &to, room, &from, int(portion));
        m_ready.resize(old + std::max(0, made));
        return {};
    }

    std::unique_ptr<SoundReader> m_reader;
    /// Lowest terms of the rates.
    qint64 m_in;
    qint64 m_out;
    qint64 m_length;
    SwrPtr m_resampler;
    /// Next sample at soundRate to be read, and number of the first one in m_ready.
    qint64 m_source = 0;
    qint64 m_position = 0;
    QVector<qint16> m_ready;
};

MonoSound::MonoSound(std::unique_ptr<Private> own) : d(std::move(own)) {}

MonoSound::~MonoSound() = default;

Result<std::unique_ptr<MonoSound>> MonoSound::open(const Sequence& sequence, const QVector<int>& tracks, int rate)
{
    auto reader = SoundReader::open(sequence, tracks);
    if (!reader)
        return reader.error();
    auto own = std::make_unique<Private>(std::move(*reader), rate, sequence.soundSamples);
    return std::unique_ptr<MonoSound>(new MonoSound(std::move(own)));
}

qint64 MonoSound::length() const
{
    return d->length();
}

Result<QVector<qint16>> MonoSound::read(qint64 first, qint64 count)
{
    return d->read(first, count);
}

} // namespace desk::media
