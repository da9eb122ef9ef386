#include "desk/imf/j2k/Codestream.h"
#include "desk/imf/mxf/HeaderMetadata.h"
#include "desk/imf/mxf/IndexTable.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/PartitionWriter.h"
#include "desk/imf/mxf/RegXml.h"
#include "desk/imf/mxf/TrackFileWriter.h"

#include <algorithm>

namespace desk::imf
{

namespace
{

/// Body and index partitions alternate so often, in seconds.
constexpr int partitionSeconds = 60;

qint64 framesPerPartition(Rational rate)
{
    return (partitionSeconds * rate.num + rate.den - 1) / rate.den;
}

IndexSegment indexPrototype(Rational rate, qint64 start)
{
    IndexSegment segment;
    segment.editRate = rate;
    segment.start = start;
    segment.indexSid = indexSid;
    segment.bodySid = bodySid;
    return segment;
}

/// Where the footer will stand when every codestream's size is known.
qint64 footerOffset(qint64 headerBytes, const QVector<qint64>& sizes, Rational rate)
{
    qint64 offset = partitionPackSize + headerBytes;
    const int step = int(framesPerPartition(rate));
    for (int first = 0; first < sizes.size(); first += step) {
        const int count = std::min(step, sizes.size() - first);
        offset += 2 * partitionPackSize + serialiseIndex(indexPrototype(rate, first), QVector<qint64>(count)).size();
        for (int i = first; i < first + count; ++i)
            offset += klvHeadSize(sizes[i]) + sizes[i];
    }
    return offset;
}

} // namespace

struct PictureTrackWriter::State {
    TrackFileTarget target;
    PictureFormat format;
    J2kProfile profile;
    QVector<qint64> sizes;
    /// Taken by the partition writer with the first frame, whose coding parameters the header needs.
    std::unique_ptr<OutputFile> file;
    std::unique_ptr<PartitionWriter> partitions;
    CodestreamHeader first;
    MetadataSets sets;
    qint64 frames = 0;
    /// Of the frames that no index partition holds yet.
    QVector<qint64> offsets;

    Error failure(const QString& what, const QString& next) const
    {
        return {target.path, QStringLiteral("frame %1").arg(frames), {}, what, next};
    }

    Status check(const CodestreamHeader& header, qint64 size) const;
    Status start(const CodestreamHeader& header);
    Status write(const QByteArray& codestream);
    Status writeIndex();
};

Status PictureTrackWriter::State::check(const CodestreamHeader& header, qint64 size) const
{
    const QString again = QStringLiteral("encode all frames of a track in the same way");
    if (frames >= target.duration)
        return failure(QStringLiteral("the track has all its %1 frames already").arg(target.duration),
                       QStringLiteral("create it with the right duration"));
    if (header.rsiz != profile.rsiz)
        return failure(QStringLiteral("the codestream has profile word 0x%1 instead of 0x%2")
                           .arg(header.rsiz, 4, 16, QLatin1Char('0'))
                           .arg(profile.rsiz, 4, 16, QLatin1Char('0')),
                       again);
    if (header.xsiz != quint32(format.width) || header.ysiz != quint32(format.height) || header.components.size() != 3)
        return failure(QStringLiteral("the codestream is no picture of %1x%2").arg(format.width).arg(format.height),
                       again);
    if (frames > 0 && !sameCoding(header, first))
        return failure(QStringLiteral("the codestream's coding parameters differ from the first frame's"), again);
    if (!sizes.isEmpty() && sizes[int(frames)] != size)
        return failure(
            QStringLiteral("the codestream has %1 bytes instead of the announced %2").arg(size).arg(sizes[int(frames)]),
            QStringLiteral("announce the sizes of the codestreams that follow"));
    return {};
}

Status PictureTrackWriter::State::start(const CodestreamHeader& header)
{
    first = header;
    EssenceTrack track{target.id,          format.frameRate,   target.duration,
                       keys::pictureTrack, keys::j2kContainer, keys::j2kFrame};
    sets = buildHeader(track, describePicture(format, header, profile.pictureCoding));
    const QByteArray metadata = serialiseHeader(sets);
    const qint64 footer = sizes.isEmpty() ? 0 : footerOffset(metadata.size(), sizes, format.frameRate);
    partitions = std::make_unique<PartitionWriter>(std::move(file), keys::j2kContainer, footer);
    return partitions->writeHeader(metadata);
}

Status PictureTrackWriter::State::write(const QByteArray& codestream)
{
    if (offsets.isEmpty()) {
        if (Status status = partitions->startBody(); !status)
            return status;
    }
    offsets.append(partitions->essenceBytes());
    ++frames;
    if (Status status = partitions->writeEssence(keys::j2kFrame.toBytes() + berLength(codestream.size())); !status)
        return status;
    if (Status status = partitions->writeEssence(codestream); !status)
        return status;
    const bool full = offsets.size() >= framesPerPartition(format.frameRate) || frames == target.duration;
    return full ? writeIndex() : Status();
}

Status PictureTrackWriter::State::writeIndex()
{
    const QByteArray segments = serialiseIndex(indexPrototype(format.frameRate, frames - offsets.size()), offsets);
    offsets.clear();
    return partitions->writeIndex(segments);
}

PictureTrackWriter::PictureTrackWriter(std::unique_ptr<State> state) : m_state(std::move(state)) {}

PictureTrackWriter::~PictureTrackWriter() = default;

Result<std::unique_ptr<PictureTrackWriter>> PictureTrackWriter::create(const TrackFileTarget& target,
                                                                       const PictureFormat& format,
                                                                       const J2kProfile& profile,
                                                                       const QVector<qint64>& codestreamSizes)
{
    const bool sized = !codestreamSizes.isEmpty();
    if (target.duration < 1 || (sized && codestreamSizes.size() != target.duration))
        return Error{target.path,
                     {},
                     {},
                     QStringLiteral("a picture track of %1 frames cannot be written").arg(target.duration),
                     QStringLiteral("give it at least one frame")};
    auto file =
        OutputFile::create(target.path, sized ? OutputFile::Hashing::WhileWriting : OutputFile::Hashing::Afterwards);
    if (!file)
        return file.error();
    auto state = std::make_unique<State>();
    state->target = target;
    if (target.id.isNull())
        state->target.id = QUuid::createUuid();
    state->format = format;
    state->profile = profile;
    state->sizes = codestreamSizes;
    state->file = std::move(*file);
    return std::unique_ptr<PictureTrackWriter>(new PictureTrackWriter(std::move(state)));
}

Status PictureTrackWriter::append(const QByteArray& codestream)
{
    const auto header = parseCodestreamHeader(codestream);
    if (!header)
        return m_state->failure(header.error().what, header.error().next);
    if (Status status = m_state->check(*header, codestream.size()); !status)
        return status;
    if (m_state->frames == 0) {
        if (Status status = m_state->start(*header); !status)
            return status;
    }
    return m_state->write(codestream);
}

Result<TrackFileInfo> PictureTrackWriter::finish()
{
    State& state = *m_state;
    if (state.frames != state.target.duration)
        return state.failure(QStringLiteral("the track ends before its %1 frames").arg(state.target.duration),
                             QStringLiteral("write all frames"));
    auto sha1 = state.partitions->finish();
    if (!sha1)
        return sha1.error();
    return TrackFileInfo{state.target.id,
                         state.partitions->file().position(),
                         *sha1,
                         state.frames,
                         state.format.frameRate,
                         toRegXml(*state.sets.first("PictureDescriptor"), state.sets)};
}

} // namespace desk::imf
