#include "desk/services/SoundExport.h"

#include "desk/base/Timecode.h"
#include "desk/imf/mxf/Labels.h"
#include "desk/services/SoundMixer.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <thread>

namespace desk::services
{

namespace
{
/// Samples that are read and mixed at once: few enough for the cache, or enough to be worth starting a thread.
constexpr qint64 smallPiece = 2048;
constexpr qint64 largePiece = 16384;
/// More only keep each other from the disk.
constexpr int mostThreads = 4;

/// The plans that one thread sees to.
struct Share {
    int first;
    int end;
};

QVector<int> tracksOf(const QVector<SoundPlan>& plans, const Share& share)
{
    QSet<int> tracks;
    for (int plan = share.first; plan < share.end; ++plan)
        tracks.unite(QSet<int>(plans[plan].sources.begin(), plans[plan].sources.end()));
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

QString inDecibels(double level)
{
    // What is above full scale is so by something that can be read.
    return QString::number(std::max(0.1, 20 * std::log10(level)), 'f', 1);
}

QString timecodeAt(const media::Sequence& sequence, qint64 sample)
{
    return timecodeOf(frameAt(sample, sequence.frameRate), sequence.frameRate, sequence.startTimecode);
}

QString noteOf(const media::Sequence& sequence, int source, const Excess& excess)
{
    const media::AudioTrackInfo& track = sequence.audio[source];
    return Error{sequence.path, QStringLiteral("track %1, %2").arg(track.name, track.label),
                 timecodeAt(sequence, excess.sample),
                 QStringLiteral("the sound, here at its loudest, is %1 dB above full scale and was limited to it")
                     .arg(inDecibels(excess.level)),
                 QStringLiteral("lower the track in the sequence to keep its peaks")}
        .sentence();
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

    const Excesses& excesses() const { return m_mixer.excesses(); }

    Status fitsItsRange(const media::Sequence& sequence) const
    {
        const auto& overload = m_mixer.overload();
        if (!overload)
            return {};
        const imf::McaChannel* channel = imf::findChannel(m_plan.format.channels[overload->channel].symbol);
        return Error{sequence.path,
                     QStringLiteral("%1, channel %2, from %3")
                         .arg(m_plan.name, QLatin1String(channel->name), namesOf(sequence, m_plan, overload->channel)),
                     timecodeAt(sequence, overload->sample),
                     QStringLiteral("the mix would clip, from here on by up to %1 dB").arg(inDecibels(overload->level)),
                     QStringLiteral("lower these tracks in the sequence or map fewer of them to one channel")};
    }

private:
    const SoundPlan& m_plan;
    SoundMixer m_mixer;
    std::unique_ptr<imf::SoundTrackWriter> m_writer;
};

/// Some of the files on their way, with a reader of their own: threads that handed blocks to each other would wait for
/// each other more than they work when the machine is busy.
class ShareMix
{
public:
    /// Reading runs beside mixing where it has a processor to itself.
    ShareMix(const SoundOrder& order, const Share& share, std::launch reading)
        : m_order(order),
          m_share(share),
          m_reading(reading),
          m_piece(reading == std::launch::async ? largePiece : smallPiece)
    {
    }

    /// Ends early, without an error, when `isOver` says so.
    Status write(const std::function<bool()>& isOver);
    Status fitsItsRange() const;
    void collect(Excesses& excesses) const;
    /// When written.
    Status finish(QVector<imf::TrackFileInfo>& files);

private:
    Status open();
    Status readPiece(qint64 first, media::SoundBlock& block);
    Status append(const media::SoundBlock& block);

    const SoundOrder& m_order;
    Share m_share;
    std::launch m_reading;
    qint64 m_piece;
    std::unique_ptr<media::SoundReader> m_reader;
    std::vector<TrackMix> m_mixes;
};

Status ShareMix::open()
{
    const QVector<int> tracks = tracksOf(m_order.plans, m_share);
    auto reader = media::SoundReader::open(m_order.sequence, tracks);
    if (!reader)
        return reader.error();
    m_reader = std::move(*reader);
    for (int plan = m_share.first; plan < m_share.end; ++plan) {
        m_mixes.emplace_back(m_order.plans[plan], tracks);
        if (Status opened = m_mixes.back().open(m_order.paths[plan], m_order.samples); !opened)
            return opened;
    }
    return {};
}

/// The piece from `first` on, silence where the sequence has ended.
Status ShareMix::readPiece(qint64 first, media::SoundBlock& block)
{
    const qint64 count = std::min(m_piece, m_order.samples - first);
    const qint64 sounding = std::clamp<qint64>(m_order.sounding - first, 0, count);
    if (Status status = m_reader->read(first, sounding, block); !status)
        return status;
    for (auto& track : block.tracks)
        track.resize(std::size_t(count), 0);
    return {};
}

Status ShareMix::append(const media::SoundBlock& block)
{
    for (TrackMix& mix : m_mixes) {
        if (Status appended = mix.append(block); !appended)
            return appended;
    }
    return {};
}

Status ShareMix::write(const std::function<bool()>& isOver)
{
    if (Status opened = open(); !opened)
        return opened;
    std::array<media::SoundBlock, 2> blocks;
    const auto blockAt = [&](qint64 first) -> media::SoundBlock& {
        // Deferred reading only starts when the piece before it has been written, and finds its memory in the cache.
        return blocks[m_reading == std::launch::async && first / m_piece % 2 != 0 ? 1 : 0];
    };
    const auto start = [&](qint64 first) {
        return std::async(m_reading, [&, first] { return readPiece(first, blockAt(first)); });
    };
    auto reading = start(0);
    for (qint64 first = 0; first < m_order.samples; first += m_piece) {
        if (isOver())
            return {};
        if (Status read = reading.get(); !read)
            return read;
        if (first + m_piece < m_order.samples)
            reading = start(first + m_piece);
        if (Status appended = append(blockAt(first)); !appended)
            return appended;
    }
    return {};
}

Status ShareMix::fitsItsRange() const
{
    for (const TrackMix& mix : m_mixes) {
        if (Status fits = mix.fitsItsRange(m_order.sequence); !fits)
            return fits;
    }
    return {};
}

void ShareMix::collect(Excesses& excesses) const
{
    for (const TrackMix& mix : m_mixes) {
        for (const auto& [source, excess] : mix.excesses())
            keepLoudest(source, excess, excesses);
    }
}

Status ShareMix::finish(QVector<imf::TrackFileInfo>& files)
{
    for (TrackMix& mix : m_mixes) {
        auto file = mix.finish();
        if (!file)
            return file.error();
        files += *file;
    }
    return {};
}

std::vector<ShareMix> sharesOf(const SoundOrder& order)
{
    const int plans = order.plans.size();
    const int count = std::clamp(int(std::thread::hardware_concurrency()), 1, std::min(plans, mostThreads));
    std::vector<ShareMix> shares;
    for (int i = 0; i < count; ++i) {
        const Share share{plans * i / count, plans * (i + 1) / count};
        shares.emplace_back(order, share, count == 1 ? std::launch::async : std::launch::deferred);
    }
    return shares;
}

/// The first one here, where `stopped` is asked, the others beside it; when one fails all end.
Status writeAll(std::vector<ShareMix>& shares, const std::function<bool()>& stopped)
{
    std::atomic<bool> over = false;
    const auto write = [&over](ShareMix& share, const std::function<bool()>& isOver) {
        Status written = share.write(isOver);
        if (!written)
            over = true;
        return written;
    };
    std::vector<std::future<Status>> others;
    for (auto share = shares.begin() + 1; share != shares.end(); ++share)
        others.push_back(std::async(std::launch::async, write, std::ref(*share), [&over] { return over.load(); }));
    const auto isOver = [&]() -> bool {
        if (stopped())
            over = true;
        return over;
    };
    Status outcome = write(shares.front(), isOver);
    for (auto& other : others) {
        while (other.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready)
            isOver();
        const Status written = other.get();
        outcome = outcome ? written : outcome;
    }
    return outcome;
}

/// The files of all shares and the notes of all sources, in order.
Result<WrittenSound> finishAll(const SoundOrder& order, std::vector<ShareMix>& shares)
{
    WrittenSound sound;
    Excesses excesses;
    for (ShareMix& share : shares) {
        if (Status finished = share.finish(sound.files); !finished)
            return finished.error();
        share.collect(excesses);
    }
    for (const auto& [source, excess] : excesses)
        sound.notes += noteOf(order.sequence, source, excess);
    return sound;
}
} // namespace

Result<WrittenSound> writeSound(const SoundOrder& order, const std::function<bool()>& stopped)
{
    if (order.plans.isEmpty())
        return WrittenSound();
    std::vector<ShareMix> shares = sharesOf(order);
    if (Status written = writeAll(shares, stopped); !written)
        return written.error();
    if (stopped())
        return Error{order.sequence.path, {}, {}, QStringLiteral("the export was cancelled"), {}};
    for (const ShareMix& share : shares) {
        if (Status fits = share.fitsItsRange(); !fits)
            return fits.error();
    }
    return finishAll(order, shares);
}

} // namespace desk::services
