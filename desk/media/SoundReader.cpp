#include "desk/media/SoundReader.h"

#include "desk/media/EditList.h"
#include "desk/media/PictureIndex.h"
#include "desk/media/ResampledStream.h"

#include <algorithm>
#include <map>

namespace desk::media
{

namespace
{

/// What is wanted of a block.
struct Stretch {
    qint64 first;
    qint64 count;
    /// Its place in the block.
    qint64 at = 0;
};

/// Tracks of a block that come from one place.
class SoundSource
{
public:
    virtual ~SoundSource() = default;
    virtual Status open() = 0;
    /// Writes this stretch of this source's tracks of the block, which have their length already.
    virtual Status read(const Stretch& stretch, SoundBlock& block) = 0;

    void addTrack(int channel, int place) { m_tracks.emplace_back(channel, place); }

protected:
    using Tracks = std::vector<std::pair<int, int>>;

    /// Channel of the source and place in the block.
    const Tracks& tracks() const { return m_tracks; }

private:
    Tracks m_tracks;
};

/// One stream of a file.
class FileSound : public SoundSource
{
public:
    FileSound(std::shared_ptr<SoundPackets> packets, int stream, double zero)
        : m_stream(std::move(packets), stream, zero)
    {
    }

    Status open() override { return m_stream.open(); }

    Status read(const Stretch& stretch, SoundBlock& block) override;

private:
    ResampledStream m_stream;
};

Status FileSound::read(const Stretch& stretch, SoundBlock& block)
{
    Planes<std::int32_t> planes(std::size_t(m_stream.channels()), nullptr);
    for (const auto& [channel, place] : tracks())
        planes[std::size_t(channel)] = block.tracks[std::size_t(place)].data() + stretch.at;
    if (Status status = m_stream.read(stretch.first, stretch.count, planes); !status)
        return status;
    for (const auto& track : tracks())
        block.padded[std::size_t(track.second)] += stretch.count - m_stream.held(stretch.first, stretch.count);
    block.mayExceed = block.mayExceed || m_stream.mayExceed();
    return {};
}

/// One audio track of a timeline.
class TimelineSound : public SoundSource
{
public:
    explicit TimelineSound(const Cuts& cuts) : m_cuts(cuts) {}

    Status open() override { return {}; }

    Status read(const Stretch& stretch, SoundBlock& block) override;

private:
    Status readCut(const Cut& cut, const Stretch& stretch, SoundBlock& block);
    void beSilent(const Stretch& stretch, SoundBlock& block) const;

    const Cuts& m_cuts;
    RecentlyUsed<SoundReader> m_readers;
    SoundBlock m_read;
};

void TimelineSound::beSilent(const Stretch& stretch, SoundBlock& block) const
{
    for (const auto& track : tracks()) {
        const auto out = block.tracks[std::size_t(track.second)].begin() + std::ptrdiff_t(stretch.at);
        std::fill(out, out + std::ptrdiff_t(stretch.count), 0);
        block.padded[std::size_t(track.second)] += stretch.count;
    }
}

Status TimelineSound::readCut(const Cut& cut, const Stretch& stretch, SoundBlock& block)
{
    QVector<int> sounding;
    for (const auto& track : tracks()) {
        if (track.first < cut.media->audio.size())
            sounding += track.first;
    }
    const auto reader = m_readers.get(cut.media, [&] { return SoundReader::open(*cut.media, sounding); });
    if (!reader)
        return reader.error();
    if (Status status = (*reader)->read(cut.mediaAt(stretch.first), stretch.count, m_read); !status)
        return status;
    beSilent(stretch, block);
    block.mayExceed = block.mayExceed || m_read.mayExceed;
    for (const auto& [channel, place] : tracks()) {
        const int from = sounding.indexOf(channel);
        if (from < 0)
            continue;
        const auto& read = m_read.tracks[std::size_t(from)];
        std::copy(read.begin(), read.end(), block.tracks[std::size_t(place)].begin() + std::ptrdiff_t(stretch.at));
        block.padded[std::size_t(place)] += m_read.padded[std::size_t(from)] - stretch.count;
    }
    return {};
}

Status TimelineSound::read(const Stretch& stretch, SoundBlock& block)
{
    qint64 first = stretch.first;
    const qint64 end = first + stretch.count;
    const auto until = [&](qint64 to) { return Stretch{first, to - first, stretch.at + first - stretch.first}; };
    for (auto cut = cutFrom(m_cuts, first); first < end; ++cut) {
        const qint64 gapEnd = cut == m_cuts.end() ? end : std::clamp(cut->start, first, end);
        beSilent(until(gapEnd), block);
        first = gapEnd;
        if (first == end)
            break;
        const qint64 cutEnd = std::min(end, cut->end());
        if (const Status status = readCut(*cut, until(cutEnd), block); !status)
            return status;
        first = cutEnd;
    }
    return {};
}

/// `packets` are those of the sequence's file.
std::unique_ptr<SoundSource> sourceFor(const Sequence& sequence, int stream,
                                       const std::shared_ptr<SoundPackets>& packets)
{
    if (sequence.edits)
        return std::make_unique<TimelineSound>(sequence.edits->sound[std::size_t(stream)]);
    const PictureIndex* index = sequence.index.get();
    const double zero = index != nullptr ? double(index->first) * av_q2d(index->timeBase) : 0.0;
    return std::make_unique<FileSound>(packets, stream, zero);
}

} // namespace

class SoundReader::Private
{
public:
    QString path;
    int tracks = 0;
    /// Keeps the cuts that the sources read.
    std::shared_ptr<const EditList> edits;
    std::map<int, std::unique_ptr<SoundSource>> sources;
};

SoundReader::SoundReader(std::unique_ptr<Private> p) : d(std::move(p)) {}

SoundReader::~SoundReader() = default;

Result<std::unique_ptr<SoundReader>> SoundReader::open(const Sequence& sequence, const QVector<int>& tracks)
{
    if (const Status status = checkUnchanged(sequence, QStringLiteral("sound")); !status)
        return status.error();
    auto d = std::make_unique<Private>();
    d->path = sequence.path;
    d->tracks = tracks.size();
    d->edits = sequence.edits;
    const KnownPicture picture = sequence.index ? sequence.index->known : KnownPicture();
    const auto packets = std::make_shared<SoundPackets>(sequence.path, SoundPackets::plenty, picture);
    for (int place = 0; place < tracks.size(); ++place) {
        if (tracks[place] < 0 || tracks[place] >= sequence.audio.size())
            return Error{sequence.path,
                         QStringLiteral("sound"),
                         {},
                         QStringLiteral("there is no track %1").arg(tracks[place]),
                         QStringLiteral("choose another track")};
        const AudioTrackInfo& track = sequence.audio[tracks[place]];
        auto& source = d->sources[track.stream];
        if (!source) {
            source = sourceFor(sequence, track.stream, packets);
            if (const Status status = source->open(); !status)
                return status.error();
        }
        source->addTrack(track.channel, place);
    }
    return std::unique_ptr<SoundReader>(new SoundReader(std::move(d)));
}

Result<SoundBlock> SoundReader::read(qint64 first, qint64 count)
{
    SoundBlock block;
    const Status status = read(first, count, block);
    return status ? Result<SoundBlock>(std::move(block)) : status.error();
}

Status SoundReader::read(qint64 first, qint64 count, SoundBlock& block)
{
    if (first < 0 || count < 0)
        return Error{d->path,
                     QStringLiteral("sound"),
                     {},
                     QStringLiteral("there are no samples before the start"),
                     QStringLiteral("ask for later ones")};
    block.tracks.resize(std::size_t(d->tracks));
    for (auto& track : block.tracks)
        track.resize(std::size_t(count));
    block.padded.assign(std::size_t(d->tracks), 0);
    block.mayExceed = false;
    // In portions, since what is met of one stream on the way through another's is kept in memory.
    for (qint64 done = 0; done < count; done += soundPortion) {
        const Stretch stretch{first + done, std::min(soundPortion, count - done), done};
        for (const auto& source : d->sources) {
            if (const Status status = source.second->read(stretch, block); !status) {
                Error error = status.error();
                error.file = error.file.isEmpty() ? d->path : error.file;
                return error;
            }
        }
    }
    return {};
}

} // namespace desk::media
