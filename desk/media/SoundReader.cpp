#include "desk/media/SoundReader.h"

#include "desk/media/EditList.h"
#include "desk/media/PictureIndex.h"
#include "desk/media/ResampledStream.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace desk::media
{

namespace
{

std::int32_t to24Bit(float value)
{
    // Without a call, which would take longer than reading. A value that is no number is silence.
    const float known = std::isnan(value) ? 0.0F : value;
    const float within = std::clamp(known * 8388608.0F, -8388608.0F, 8388607.0F);
    return std::int32_t(within + std::copysign(0.5F, within));
}

/// Tracks of a block that come from one place.
class SoundSource
{
public:
    virtual ~SoundSource() = default;
    virtual Status open() = 0;
    /// Appends to this source's tracks of the block.
    virtual Status read(qint64 first, qint64 count, SoundBlock& block) = 0;

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
    FileSound(const QString& path, int stream, double zero) : m_stream(path, stream, zero) {}

    Status open() override { return m_stream.open(); }

    Status read(qint64 first, qint64 count, SoundBlock& block) override;

private:
    ResampledStream m_stream;
};

Status FileSound::read(qint64 first, qint64 count, SoundBlock& block)
{
    Channels samples(std::size_t(m_stream.channels()));
    for (qint64 done = 0; done < count; done += soundPortion) {
        const qint64 now = std::min(soundPortion, count - done);
        for (auto& channel : samples)
            channel.clear();
        if (Status status = m_stream.read(first + done, now, samples); !status)
            return status;
        for (const auto& [channel, place] : tracks()) {
            auto& out = block.tracks[std::size_t(place)];
            const auto& in = samples[std::size_t(channel)];
            const std::size_t old = out.size();
            out.resize(old + in.size());
            std::transform(in.begin(), in.end(), out.begin() + std::ptrdiff_t(old), to24Bit);
        }
    }
    for (const auto& track : tracks())
        block.padded[std::size_t(track.second)] += count - m_stream.held(first, count);
    return {};
}

/// One audio track of a timeline.
class TimelineSound : public SoundSource
{
public:
    explicit TimelineSound(const Cuts& cuts) : m_cuts(cuts) {}

    Status open() override { return {}; }

    Status read(qint64 first, qint64 count, SoundBlock& block) override;

private:
    Status readCut(const Cut& cut, qint64 first, qint64 count, SoundBlock& block);
    void beSilent(qint64 count, SoundBlock& block) const;

    const Cuts& m_cuts;
    RecentlyUsed<SoundReader> m_readers;
};

void TimelineSound::beSilent(qint64 count, SoundBlock& block) const
{
    for (const auto& track : tracks()) {
        auto& out = block.tracks[std::size_t(track.second)];
        out.resize(out.size() + std::size_t(count), 0);
        block.padded[std::size_t(track.second)] += count;
    }
}

Status TimelineSound::readCut(const Cut& cut, qint64 first, qint64 count, SoundBlock& block)
{
    QVector<int> sounding;
    for (const auto& track : tracks()) {
        if (track.first < cut.media->audio.size())
            sounding += track.first;
    }
    const auto reader = m_readers.get(cut.media, [&] { return SoundReader::open(*cut.media, sounding); });
    if (!reader)
        return reader.error();
    const auto read = (*reader)->read(cut.mediaAt(first), count);
    if (!read)
        return read.error();
    for (const auto& [channel, place] : tracks()) {
        const int from = sounding.indexOf(channel);
        auto& out = block.tracks[std::size_t(place)];
        if (from >= 0)
            out.insert(out.end(), read->tracks[std::size_t(from)].begin(), read->tracks[std::size_t(from)].end());
        else
            out.resize(out.size() + std::size_t(count), 0);
        block.padded[std::size_t(place)] += from >= 0 ? read->padded[std::size_t(from)] : count;
    }
    return {};
}

Status TimelineSound::read(qint64 first, qint64 count, SoundBlock& block)
{
    const qint64 end = first + count;
    for (auto cut = cutFrom(m_cuts, first); first < end; ++cut) {
        const qint64 gapEnd = cut == m_cuts.end() ? end : std::clamp(cut->start, first, end);
        beSilent(gapEnd - first, block);
        first = gapEnd;
        if (first == end)
            break;
        const qint64 now = std::min(end, cut->end()) - first;
        if (const Status status = readCut(*cut, first, now, block); !status)
            return status;
        first += now;
    }
    return {};
}

std::unique_ptr<SoundSource> sourceFor(const Sequence& sequence, int stream)
{
    if (sequence.edits)
        return std::make_unique<TimelineSound>(sequence.edits->sound[std::size_t(stream)]);
    const PictureIndex* index = sequence.index.get();
    const double zero = index != nullptr ? double(index->first) * av_q2d(index->timeBase) : 0.0;
    return std::make_unique<FileSound>(sequence.path, stream, zero);
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
            source = sourceFor(sequence, track.stream);
            if (const Status status = source->open(); !status)
                return status.error();
        }
        source->addTrack(track.channel, place);
    }
    return std::unique_ptr<SoundReader>(new SoundReader(std::move(d)));
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
        if (const Status status = source.second->read(first, count, block); !status) {
            Error error = status.error();
            error.file = error.file.isEmpty() ? d->path : error.file;
            return error;
        }
    }
    return block;
}

} // namespace desk::media
