#include "desk/services/SoundExport.h"

#include "desk/base/Timecode.h"
#include "desk/imf/mxf/Labels.h"
#include "desk/services/SoundMixer.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <future>

namespace desk::services
{

namespace
{
/// Samples that are read and mixed at once.
constexpr qint64 piece = 4096;

QVector<int> tracksOf(const QVector<SoundPlan>& plans)
{
    QSet<int> tracks;
    for (const SoundPlan& plan : plans)
        tracks.unite(QSet<int>(plan.sources.begin(), plan.sources.end()));
    QVector<int> sorted(tracks.begin(), tracks.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

QString namesOf(const media::Sequence& sequence, const SoundPlan& plan, int channel)
{
    QStringList names;
    for (int i = 0; i < plan.sources.size(); ++i) {
        if (plan.gains[std::size_t(channel)][std::size_t(i)] != 0)
            names += sequence.audio[plan.sources[i]].name;
    }
    return names.join(QStringLiteral(", "));
}

/// The frame that is on at a sample.
qint64 frameAt(qint64 sample, Rational rate)
{
    const qint64 up = (sample + 1) * rate.num;
    const qint64 down = media::soundRate * rate.den;
    return (up + down - 1) / down - 1;
}

/// One track file on its way.
class TrackMix
{
public:
    TrackMix(const SoundPlan& plan, const QVector<int>& tracks) : m_plan(plan), m_mixer(plan, tracks) {}

    Status open(const QString& path, qint64 samples)
    {
        auto writer = imf::SoundTrackWriter::create({path, {}, samples}, m_plan.format);
        if (!writer)
            return writer.error();
        m_writer = std::move(*writer);
        return {};
    }

    Status append(const media::SoundBlock& block)
    {
        const auto& channels = m_mixer.mix(block);
        return m_mixer.overload() ? Status() : m_writer->append(channels, qint64(block.tracks.front().size()));
    }

    Result<imf::TrackFileInfo> finish() { return m_writer->finish(); }

    Status fitsItsRange(const media::Sequence& sequence) const
    {
        const auto& overload = m_mixer.overload();
        if (!overload)
            return {};
        const imf::McaChannel* channel = imf::findChannel(m_plan.format.channels[overload->channel].symbol);
        return Error{
            sequence.path,
            QStringLiteral("%1, channel %2, from %3")
                .arg(m_plan.name, QLatin1String(channel->name), namesOf(sequence, m_plan, overload->channel)),
            timecodeOf(frameAt(overload->sample, sequence.frameRate), sequence.frameRate, sequence.startTimecode),
            QStringLiteral("the mix would clip, from here on by up to %1 dB")
                .arg(20 * std::log10(overload->level), 0, 'f', 1),
            QStringLiteral("lower these tracks in the sequence or map fewer of them to one channel")};
    }

private:
    const SoundPlan& m_plan;
    SoundMixer m_mixer;
    std::unique_ptr<imf::SoundTrackWriter> m_writer;
};

/// The piece from `first` on, silence where the sequence has ended.
Result<media::SoundBlock> readPiece(const SoundOrder& order, media::SoundReader& reader, qint64 first)
{
    const qint64 count = std::min(piece, order.samples - first);
    auto block = reader.read(first, std::clamp<qint64>(order.sounding - first, 0, count));
    if (!block)
        return block;
    for (auto& track : block->tracks)
        track.resize(std::size_t(count), 0);
    return block;
}

/// One piece is read while the one before it is mixed and written.
Status writeAll(const SoundOrder& order, media::SoundReader& reader, std::vector<TrackMix>& mixes,
                const std::function<bool()>& stopped)
{
    const auto start = [&](qint64 first) {
        return std::async(std::launch::async, [&order, &reader, first] { return readPiece(order, reader, first); });
    };
    auto reading = start(0);
    for (qint64 first = 0; first < order.samples; first += piece) {
        if (stopped())
            return Error{order.sequence.path, {}, {}, QStringLiteral("the export was cancelled"), {}};
        auto block = reading.get();
        if (!block)
            return block.error();
        if (first + piece < order.samples)
            reading = start(first + piece);
        for (TrackMix& mix : mixes) {
            Status appended = mix.append(*block);
            if (!appended)
                return appended;
        }
    }
    return {};
}
} // namespace

Result<QVector<imf::TrackFileInfo>> writeSound(const SoundOrder& order, const std::function<bool()>& stopped)
{
    QVector<imf::TrackFileInfo> files;
    if (order.plans.isEmpty())
        return files;
    const QVector<int> tracks = tracksOf(order.plans);
    auto reader = media::SoundReader::open(order.sequence, tracks);
    if (!reader)
        return reader.error();
    std::vector<TrackMix> mixes;
    for (const SoundPlan& plan : order.plans) {
        mixes.emplace_back(plan, tracks);
        Status opened = mixes.back().open(order.paths[int(mixes.size()) - 1], order.samples);
        if (!opened)
            return opened.error();
    }
    Status written = writeAll(order, **reader, mixes, stopped);
    if (!written)
        return written.error();
    for (TrackMix& mix : mixes) {
        Status fits = mix.fitsItsRange(order.sequence);
        if (!fits)
            return fits.error();
        auto file = mix.finish();
        if (!file)
            return file.error();
        files += *file;
    }
    return files;
}

} // namespace desk::services
