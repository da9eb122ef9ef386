#include "desk/imf/mxf/TrackFileReader.h"

#include "desk/imf/j2k/Codestream.h"
#include "desk/imf/mxf/EssenceMap.h"
#include "desk/imf/mxf/PartitionReader.h"
#include "desk/imf/mxf/RegXml.h"
#include "desk/imf/mxf/TrackFacts.h"

namespace desk::imf
{

struct TrackFile::State {
    explicit State(const QString& path) : file(path) {}

    InputFile file;
    MetadataSets sets;
    HeaderFacts header;
    EssenceMap essence;
    /// The one element of a clip-wrapped sound track.
    KlvHead clip;

    /// Reads sets and header; gives the partitions that were found on the way.
    Result<QVector<FoundPartition>> readHeader();

    QByteArray descriptorXml() const { return toRegXml(*sets.find(header.descriptor), sets); }

    Status openClip();
    Result<KlvHead> frame(qint64 n);
};

namespace
{

constexpr std::uint8_t clipWrapped = 0x02;

Partition describe(const FoundPartition& found)
{
    static const Partition::Kind kinds[] = {Partition::Kind::Header, Partition::Kind::Body, Partition::Kind::Footer};
    const PartitionPack& pack = found.pack;
    return {kinds[found.key.kind - 2],
            found.offset,
            pack.headerByteCount,
            pack.indexByteCount,
            pack.indexSid,
            pack.bodySid,
            pack.bodyOffset};
}

/// One little-endian signed sample of 1 to 4 bytes.
std::int32_t sampleAt(const char* bytes, int size)
{
    std::uint32_t bits = 0;
    for (int i = 0; i < size; ++i)
        bits |= std::uint32_t(quint8(bytes[i])) << (8 * i);
    const int unused = 32 - 8 * size;
    return std::int32_t(bits << unused) >> unused;
}

} // namespace

Result<QVector<FoundPartition>> TrackFile::State::readHeader()
{
    if (const Status status = file.open(); !status)
        return status.error();
    auto partitions = findPartitions(file);
    if (!partitions)
        return partitions.error();
    auto read = readHeaderMetadata(file, *partitions);
    if (!read)
        return read.error();
    sets = *read;
    auto facts = interpretHeader(sets);
    if (!facts) {
        Error error = facts.error();
        error.file = file.path();
        return error;
    }
    header = *facts;
    return partitions;
}

Status TrackFile::State::openClip()
{
    const auto first = essence.firstElement(file);
    if (!first)
        return first.error();
    clip = *first;
    if (!isEssence(clip.key, 0x16) || clip.key.bytes[14] != clipWrapped)
        return file.damage(clip.offset, QStringLiteral("the sound is not clip-wrapped"));
    if (clip.size / header.blockAlign < header.facts.duration)
        return file.damage(clip.offset, QStringLiteral("the clip holds %1 of %2 samples")
                                            .arg(clip.size / header.blockAlign)
                                            .arg(header.facts.duration));
    return {};
}

Result<KlvHead> TrackFile::State::frame(qint64 n)
{
    if (header.facts.kind != TrackKind::Picture || n < 0 || n >= header.facts.duration)
        return file.damage(0, QStringLiteral("the track has no frame %1").arg(n));
    return essence.frame(file, n);
}

TrackFile::TrackFile(std::unique_ptr<State> state) : m_state(std::move(state)) {}

TrackFile::TrackFile(TrackFile&&) noexcept = default;
TrackFile& TrackFile::operator=(TrackFile&&) noexcept = default;
TrackFile::~TrackFile() = default;

const TrackFileFacts& TrackFile::facts() const
{
    return m_state->header.facts;
}

const MetadataSets& TrackFile::sets() const
{
    return m_state->sets;
}

QByteArray TrackFile::descriptorXml() const
{
    return m_state->descriptorXml();
}

Result<QByteArray> TrackFile::readFrame(qint64 n)
{
    const auto head = m_state->frame(n);
    if (!head)
        return head.error();
    return m_state->file.readValue(*head);
}

Result<CodestreamHeader> TrackFile::walkFrame(qint64 n)
{
    const auto head = m_state->frame(n);
    if (!head)
        return head.error();
    return walkCodestream(
        head->size, [&](qint64 offset, qint64 count) { return m_state->file.read(head->valueOffset + offset, count); });
}

Result<std::vector<std::int32_t>> TrackFile::readSamples(qint64 first, qint64 count)
{
    State& state = *m_state;
    if (facts().kind != TrackKind::Sound || first < 0 || count < 0 || first > facts().duration - count)
        return state.file.damage(0, QStringLiteral("the track has no %1 samples from %2 on").arg(count).arg(first));
    const qint64 align = state.header.blockAlign;
    const auto bytes = state.file.read(state.clip.valueOffset + first * align, count * align);
    if (!bytes)
        return bytes.error();
    const int size = int(align) / facts().sound.channels.size();
    std::vector<std::int32_t> samples;
    samples.reserve(std::size_t(bytes->size() / size));
    for (int at = 0; at < bytes->size(); at += size)
        samples.push_back(sampleAt(bytes->constData() + at, size));
    return samples;
}

Result<TrackFile> readTrackFile(const QString& path)
{
    auto state = std::make_unique<TrackFile::State>(path);
    const auto partitions = state->readHeader();
    if (!partitions)
        return partitions.error();
    for (const FoundPartition& found : *partitions)
        state->header.facts.partitions.append(describe(found));
    if (state->header.facts.kind == TrackKind::Other)
        return TrackFile(std::move(state));
    auto essence = EssenceMap::make(state->file, *partitions, state->header.bodySid, state->header.facts.duration);
    if (!essence)
        return essence.error();
    state->essence = *essence;
    if (state->header.facts.kind == TrackKind::Sound) {
        if (const Status status = state->openClip(); !status)
            return status.error();
    }
    return TrackFile(std::move(state));
}

Result<QByteArray> readTrackDescriptor(const QString& path)
{
    TrackFile::State state(path);
    if (const auto partitions = state.readHeader(); !partitions)
        return partitions.error();
    return state.descriptorXml();
}

} // namespace desk::imf
