#include "desk/imf/mxf/HeaderMetadata.h"
#include "desk/imf/mxf/IndexTable.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/Labels.h"
#include "desk/imf/mxf/PartitionWriter.h"
#include "desk/imf/mxf/RegXml.h"
#include "desk/imf/mxf/SoundLabels.h"
#include "desk/imf/mxf/TrackFileWriter.h"

#include <QtEndian>

#include <algorithm>

namespace desk::imf
{

namespace
{

constexpr qint64 samplesPerWrite = 1 << 16;
/// The clip's length always takes the long form.
constexpr qint64 clipHeadSize = 16 + 8;

QByteArray clipHead(qint64 size)
{
    QByteArray length(8, '\0');
    qToBigEndian(quint64(0x8700000000000000ULL | quint64(size)), length.data());
    return keys::pcmClip.toBytes() + length;
}

Error refusal(const QString& path, const QString& what, const QString& next)
{
    return {path, QStringLiteral("sound format"), {}, what, next};
}

Status checkFormat(const QString& path, const SoundFormat& format)
{
    if (format.bitsPerSample != 24 || (format.sampleRate != 48000 && format.sampleRate != 96000))
        return refusal(
            path, QStringLiteral("%1 bits at %2 Hz are not possible").arg(format.bitsPerSample).arg(format.sampleRate),
            QStringLiteral("choose 24 bits at 48000 or 96000 Hz"));
    if (findSoundfield(format.soundfield) == nullptr)
        return refusal(path, QStringLiteral("the soundfield \"%1\" is not known").arg(format.soundfield),
                       QStringLiteral("choose another soundfield"));
    if (format.channels.isEmpty() || format.channels.size() > 127)
        return refusal(path, QStringLiteral("%1 channels are not possible").arg(format.channels.size()),
                       QStringLiteral("choose 1 to 127 channels"));
    for (const ChannelLabel& channel : format.channels) {
        if (findChannel(channel.symbol) == nullptr)
            return refusal(path, QStringLiteral("the channel label \"%1\" is not known").arg(channel.symbol),
                           QStringLiteral("choose another channel label"));
    }
    if (!format.language.isEmpty() && !isLanguageTag(format.language))
        return refusal(path, QStringLiteral("\"%1\" is no language tag").arg(format.language),
                       QStringLiteral("write it like \"en-US\""));
    return {};
}

/// A format without channels has those of its soundfield.
SoundFormat completed(SoundFormat format)
{
    const McaSoundfield* soundfield = findSoundfield(format.soundfield);
    if (format.channels.isEmpty() && soundfield != nullptr) {
        const auto symbols = soundfield->channelSymbols();
        for (const QString& symbol : symbols)
            format.channels.append({symbol});
    }
    return format;
}

/// What pack() writes behind its samples.
constexpr int packOverhang = 2;

/// Two samples at a time, then one where their number is odd; the upper bytes come to lie under what is written next.
void pack(const std::vector<const std::int32_t*>& channels, qint64 count, char* out)
{
    const std::int32_t* const* const from = channels.data();
    const std::size_t size = channels.size();
    const std::size_t paired = size - size % 2;
    for (qint64 sample = 0; sample < count; ++sample) {
        for (std::size_t channel = 0; channel < paired; channel += 2, out += 6) {
            const quint64 low = quint32(from[channel][sample]) & 0xFFFFFFU;
            qToLittleEndian(low | quint64(quint32(from[channel + 1][sample])) << 24, out);
        }
        if (paired != size) {
            qToLittleEndian(from[paired][sample], out);
            out += 3;
        }
    }
}

} // namespace

struct SoundTrackWriter::State {
    TrackFileTarget target;
    SoundFormat format;
    std::unique_ptr<PartitionWriter> partitions;
    MetadataSets sets;
    QByteArray index;
    /// Samples on their way into the file.
    QByteArray packed;
    qint64 samples = 0;

    qint64 blockAlign() const { return format.channels.size() * 3; }

    Status start(std::unique_ptr<OutputFile> file);
    void makeIndex();
};

void SoundTrackWriter::State::makeIndex()
{
    IndexSegment segment;
    segment.editRate = Rational(format.sampleRate, 1);
    segment.duration = target.duration;
    segment.editUnitByteCount = quint32(blockAlign());
    segment.indexSid = indexSid;
    segment.bodySid = bodySid;
    index = segment.serialise();
}

Status SoundTrackWriter::State::start(std::unique_ptr<OutputFile> file)
{
    EssenceTrack track{target.id,          Rational(format.sampleRate, 1),
                       target.duration,    keys::soundTrack,
                       keys::pcmContainer, keys::pcmClip};
    sets = buildHeader(track, describeSound(format));
    makeIndex();
    const QByteArray metadata = serialiseHeader(sets);
    const qint64 clip = target.duration * blockAlign();
    const qint64 footer = 3 * partitionPackSize + metadata.size() + clipHeadSize + clip + index.size();
    partitions = std::make_unique<PartitionWriter>(std::move(file), keys::pcmContainer, footer);
    if (Status status = partitions->writeHeader(metadata); !status)
        return status;
    if (Status status = partitions->startBody(); !status)
        return status;
    return partitions->writeEssence(clipHead(clip));
}

SoundTrackWriter::SoundTrackWriter(std::unique_ptr<State> state) : m_state(std::move(state)) {}

SoundTrackWriter::~SoundTrackWriter() = default;

Result<std::unique_ptr<SoundTrackWriter>> SoundTrackWriter::create(const TrackFileTarget& target,
                                                                   const SoundFormat& format)
{
    auto state = std::make_unique<State>();
    state->target = target;
    state->format = completed(format);
    if (target.id.isNull())
        state->target.id = QUuid::createUuid();
    if (const Status status = checkFormat(target.path, state->format); !status)
        return status.error();
    if (target.duration < 1)
        return refusal(target.path, QStringLiteral("a track of %1 samples cannot be written").arg(target.duration),
                       QStringLiteral("give it at least one sample"));
    auto file = OutputFile::create(target.path, OutputFile::Hashing::WhileWriting);
    if (!file)
        return file.error();
    if (const Status status = state->start(std::move(*file)); !status)
        return status.error();
    return std::unique_ptr<SoundTrackWriter>(new SoundTrackWriter(std::move(state)));
}

Status SoundTrackWriter::append(const std::int32_t* interleaved, qint64 count)
{
    const qint64 channels = m_state->format.channels.size();
    QByteArray packed;
    for (qint64 done = 0; done < count; done += samplesPerWrite) {
        const qint64 words = std::min(samplesPerWrite, count - done) * channels;
        packed.resize(int(words * 3));
        char* out = packed.data();
        for (const std::int32_t* in = interleaved + done * channels; in != interleaved + done * channels + words;
             ++in) {
            const auto bits = quint32(*in);
            *out++ = char(bits);
            *out++ = char(bits >> 8);
            *out++ = char(bits >> 16);
        }
        if (Status status = appendPacked(packed); !status)
            return status;
    }
    return {};
}

Status SoundTrackWriter::append(const std::vector<const std::int32_t*>& channels, qint64 count)
{
    QByteArray& packed = m_state->packed;
    packed.resize(int(count * m_state->blockAlign() + packOverhang));
    pack(channels, count, packed.data());
    packed.chop(packOverhang);
    return appendPacked(packed);
}

Status SoundTrackWriter::appendPacked(const QByteArray& bytes)
{
    State& state = *m_state;
    const qint64 count = bytes.size() / state.blockAlign();
    if (bytes.size() % state.blockAlign() != 0 || state.samples + count > state.target.duration)
        return Error{state.target.path,
                     QStringLiteral("sample %1").arg(state.samples),
                     {},
                     QStringLiteral("the sound does not fit the track's %1 samples").arg(state.target.duration),
                     QStringLiteral("create it with the right duration")};
    state.samples += count;
    return state.partitions->writeEssence(bytes);
}

Result<TrackFileInfo> SoundTrackWriter::finish()
{
    State& state = *m_state;
    if (state.samples != state.target.duration)
        return Error{state.target.path,
                     QStringLiteral("sample %1").arg(state.samples),
                     {},
                     QStringLiteral("the track ends before its %1 samples").arg(state.target.duration),
                     QStringLiteral("write all samples")};
    if (const Status status = state.partitions->writeIndex(state.index); !status)
        return status.error();
    auto sha1 = state.partitions->finish();
    if (!sha1)
        return sha1.error();
    return TrackFileInfo{state.target.id,
                         state.partitions->file().position(),
                         *sha1,
                         state.samples,
                         Rational(state.format.sampleRate, 1),
                         toRegXml(*state.sets.first("SoundDescriptor"), state.sets)};
}

} // namespace desk::imf
