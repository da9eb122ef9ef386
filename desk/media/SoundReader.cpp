#include "desk/media/SoundReader.h"

#include "desk/media/PictureIndex.h"
#include "desk/media/SoundStream.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace desk::media
{

namespace
{

/// Samples fetched at a time.
constexpr qint64 portion = 16384;

qint64 floorDiv(qint64 a, qint64 b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}

/// A sound stream at soundRate. Resampling always starts at the same phase, so that a sample does not depend on where
/// reading began.
class ResampledStream
{
public:
    ResampledStream(const QString& path, int stream, double zero) : m_stream(path, stream, zero) {}

    Status open()
    {
        if (const Status status = m_stream.open(); !status)
            return status;
        const int common = std::gcd(m_stream.rate(), soundRate);
        m_in = m_stream.rate() / common;
        m_out = soundRate / common;
        m_ready.assign(std::size_t(m_stream.channels()), {});
        return {};
    }

    Status read(qint64 first, qint64 count, Channels& out)
    {
        if (m_in == m_out)
            return m_stream.read(first, count, out);
        if (!m_resampler || first < m_position || first > m_position + portion) {
            if (const Status status = restart(first); !status)
                return status;
        }
        return take(first, count, out);
    }

    /// Samples of the stretch that the file holds.
    qint64 held(qint64 first, qint64 count) const
    {
        const qint64 held =
            m_stream.held().within(floorDiv(first * m_in, m_out), floorDiv((first + count) * m_in, m_out));
        return std::min(count, held * m_out / m_in + (m_in == m_out ? 0 : 1));
    }

    int channels() const { return m_stream.channels(); }

private:
    Status restart(qint64 first);
    Status take(qint64 first, qint64 count, Channels& out);
    Status refill();

    SoundStream m_stream;
    qint64 m_in = 1;
    qint64 m_out = 1;
    SwrPtr m_resampler;
    /// Next sample of the stream to go into the resampler, and of the output at the front of m_ready.
    qint64 m_source = 0;
    qint64 m_position = 0;
    Channels m_ready;
};

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
    Channels in(m_ready.size());
    if (const Status status = m_stream.read(m_source, portion, in); !status)
        return status;
    m_source += portion;
    const int room = swr_get_out_samples(m_resampler.get(), int(portion));
    const std::size_t old = m_ready[0].size();
    std::vector<const uint8_t*> from;
    std::vector<uint8_t*> to;
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        m_ready[channel].resize(old + std::size_t(room));
        from.push_back(reinterpret_cast<const uint8_t*>(in[channel].data()));
        to.push_back(reinterpret_cast<uint8_t*>(m_ready[channel].data() + old));
    }
    const int made = swr_convert(m_resampler.get(), to.data(), room, from.data(), int(portion));
    for (auto& channel : m_ready)
        channel.resize(old + std::size_t(std::max(0, made)));
    return {};
}

Status ResampledStream::take(qint64 first, qint64 count, Channels& out)
{
    while (m_position + qint64(m_ready[0].size()) < first + count) {
        if (const Status status = refill(); !status)
            return status;
    }
    for (std::size_t channel = 0; channel < out.size(); ++channel) {
        std::vector<float>& ready = m_ready[channel];
        const auto from = ready.begin() + std::ptrdiff_t(first - m_position);
        out[channel].insert(out[channel].end(), from, from + std::ptrdiff_t(count));
        ready.erase(ready.begin(), from + std::ptrdiff_t(count));
    }
    m_position = first + count;
    return {};
}

std::int32_t to24Bit(float value)
{
    // A value that is no number is silence.
    return std::isnan(value) ? 0 : std::int32_t(std::lrint(std::clamp(value * 8388608.0F, -8388608.0F, 8388607.0F)));
}

} // namespace

class SoundReader::Private
{
public:
    struct Source {
        ResampledStream stream;
        /// Channel of the stream and place in the block.
        std::vector<std::pair<int, int>> tracks;
    };

    Status read(Source& source, qint64 first, qint64 count, SoundBlock& block);

    QString path;
    std::vector<std::unique_ptr<Source>> sources;
    int tracks = 0;
};

SoundReader::SoundReader(std::unique_ptr<Private> p) : d(std::move(p)) {}

SoundReader::~SoundReader() = default;

Result<std::unique_ptr<SoundReader>> SoundReader::open(const Sequence& sequence, const QVector<int>& tracks)
{
    const auto refuse = [&](const QString& what, const QString& next) {
        return Error{sequence.path, QStringLiteral("sound"), {}, what, next};
    };
    const QFileInfo info(sequence.path);
    if (info.size() != sequence.bytes || info.lastModified().toMSecsSinceEpoch() != sequence.modified)
        return refuse(QStringLiteral("the file has changed since it was opened"), QStringLiteral("open it again"));
    const PictureIndex* index = sequence.index.get();
    const double zero = index != nullptr ? double(index->first) * av_q2d(index->timeBase) : 0.0;
    auto d = std::make_unique<Private>();
    d->path = sequence.path;
    d->tracks = tracks.size();
    std::map<int, Private::Source*> byStream;
    for (int place = 0; place < tracks.size(); ++place) {
        if (tracks[place] < 0 || tracks[place] >= sequence.audio.size())
            return refuse(QStringLiteral("there is no track %1").arg(tracks[place]),
                          QStringLiteral("choose another track"));
        const AudioTrackInfo& track = sequence.audio[tracks[place]];
        Private::Source*& source = byStream[track.stream];
        if (source == nullptr) {
            d->sources.emplace_back(new Private::Source{ResampledStream(sequence.path, track.stream, zero), {}});
            source = d->sources.back().get();
            if (const Status status = source->stream.open(); !status)
                return status.error();
        }
        source->tracks.emplace_back(track.channel, place);
    }
    return std::unique_ptr<SoundReader>(new SoundReader(std::move(d)));
}

Status SoundReader::Private::read(Source& source, qint64 first, qint64 count, SoundBlock& block)
{
    Channels samples(std::size_t(source.stream.channels()));
    for (qint64 done = 0; done < count; done += portion) {
        const qint64 now = std::min(portion, count - done);
        for (auto& channel : samples)
            channel.clear();
        if (Status status = source.stream.read(first + done, now, samples); !status)
            return status;
        for (const auto& [channel, place] : source.tracks) {
            auto& out = block.tracks[std::size_t(place)];
            const auto& in = samples[std::size_t(channel)];
            std::transform(in.begin(), in.end(), std::back_inserter(out), to24Bit);
        }
    }
    for (const auto& track : source.tracks)
        block.padded[std::size_t(track.second)] = count - source.stream.held(first, count);
    return {};
}

Result<SoundBlock> SoundReader::read(qint64 first, qint64 count)
{
    if (first < 0 || count < 0)
        return Error{d->path,
                     QStringLiteral("sound"),
                     {},
                     QStringLiteral("there are no samples before the start"),
                     QStringLiteral("ask for later ones")};
    SoundBlock block;
    block.tracks.resize(std::size_t(d->tracks));
    block.padded.resize(std::size_t(d->tracks));
    for (const auto& source : d->sources) {
        if (const Status status = d->read(*source, first, count, block); !status) {
            Error error = status.error();
            error.file = d->path;
            return error;
        }
    }
    return block;
}

} // namespace desk::media
