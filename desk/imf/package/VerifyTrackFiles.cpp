#include "desk/imf/j2k/Codestream.h"
#include "desk/imf/mxf/SetDictionary.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "desk/imf/package/Seal.h"
#include "desk/imf/package/VerifyScan.h"
#include "desk/imf/xml/DescriptorProperties.h"

#include <optional>

namespace desk::imf
{
namespace
{

/// One use of a track file by a composition.
struct Use {
    const ScannedComposition* composition;
    const Resource* resource;
    SequenceKind kind;
};

/// By track file, in order of first use; packed track files that no composition uses come last.
QVector<QPair<QUuid, QVector<Use>>> usesOf(const Scan& scan)
{
    QVector<QPair<QUuid, QVector<Use>>> result;
    QHash<QUuid, int> positions;
    for (const ScannedComposition& one : scan.compositions) {
        eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
            if (resource.trackFileId.isNull())
                return;
            if (!positions.contains(resource.trackFileId)) {
                positions.insert(resource.trackFileId, result.size());
                result.append({resource.trackFileId, {}});
            }
            result[positions.value(resource.trackFileId)].second.append({&one, &resource, sequence.kind});
        });
    }
    for (const ScannedList& list : scan.lists) {
        for (const PackedAsset& asset : list.list.assets) {
            if (asset.type != QLatin1String(mediaType::trackFile) || positions.contains(asset.id))
                continue;
            positions.insert(asset.id, result.size());
            result.append({asset.id, {}});
        }
    }
    return result;
}

void checkKind(const TrackFileFacts& facts, const Use& use, Report& report)
{
    const bool isPicture = use.kind == SequenceKind::MainImage;
    const TrackKind expected = isPicture ? TrackKind::Picture : TrackKind::Sound;
    if ((isPicture || use.kind == SequenceKind::MainAudio) && facts.kind != expected)
        report.error("kind-of-file", use.composition->file, use.resource->id,
                     isPicture ? QStringLiteral("the picture's track file holds no picture")
                               : QStringLiteral("the sound's track file holds no sound"));
}

void checkDuration(const TrackFileFacts& facts, const Use& use, Report& report)
{
    const Rational rate = use.composition->composition.rateOf(*use.resource);
    if (rate != facts.editRate)
        report.error("edit-rate-of-file", use.composition->file, use.resource->id,
                     QStringLiteral("the track file has %1/%2 edit units a second, the resource %3/%4")
                         .arg(facts.editRate.num)
                         .arg(facts.editRate.den)
                         .arg(rate.num)
                         .arg(rate.den));
    else if (use.resource->intrinsicDuration != facts.duration)
        report.error("duration-of-file", use.composition->file, use.resource->id,
                     QStringLiteral("the track file has %1 edit units, the resource says %2")
                         .arg(facts.duration)
                         .arg(use.resource->intrinsicDuration));
}

/// Whether the reader would have told the property. It leaves those out that its dictionary lacks.
bool isReadable(const QString& kind, const QString& path)
{
    const SetInfo* owner = findSet(kind.toLatin1());
    const QStringList steps = path.split(QLatin1Char('/'));
    for (const QString& step : steps) {
        const QByteArray name = step.section(QLatin1Char('#'), 0, 0).toLatin1();
        if (const SetInfo* inner = findSet(name)) {
            owner = inner;
            continue;
        }
        const ItemInfo* item = owner ? findItem(owner, name) : nullptr;
        if (!item || item->type == ItemType::Opaque)
            return false;
        if (item->type != ItemType::StrongRef && item->type != ItemType::StrongRefBatch)
            return true;
    }
    return false;
}

/// Name of the first property that file and composition do not have alike.
QString firstDifference(const DescriptorProperties& file, const DescriptorProperties& composition)
{
    if (file.kind != composition.kind)
        return file.kind;
    for (auto it = file.values.cbegin(); it != file.values.cend(); ++it) {
        const auto other = composition.values.constFind(it.key());
        if (other == composition.values.cend() || *other != it.value())
            return it.key();
    }
    for (auto it = composition.values.cbegin(); it != composition.values.cend(); ++it) {
        if (!file.values.contains(it.key()) && isReadable(file.kind, it.key()))
            return it.key();
    }
    return {};
}

void checkDescriptor(const TrackFile& file, const Use& use, Report& report)
{
    const Composition& composition = use.composition->composition;
    const auto found =
        std::find_if(composition.essenceDescriptors.cbegin(), composition.essenceDescriptors.cend(),
                     [&](const EssenceDescriptor& one) { return one.id == use.resource->sourceEncoding; });
    if (found == composition.essenceDescriptors.cend())
        return; // a rule of its own says so
    const QString difference =
        firstDifference(descriptorProperties(file.descriptorXml()), descriptorProperties(found->regXml));
    if (!difference.isEmpty())
        report.error("descriptor-of-file", use.composition->file, use.resource->trackFileId,
                     QStringLiteral("the descriptor differs from that of the track file in %1").arg(difference));
}

void checkFrameSize(const CodestreamHeader& header, const PictureFormat& picture, const QString& name,
                    const QUuid& asset, Report& report)
{
    const qint64 width = qint64(header.xsiz) - header.xOsiz;
    const qint64 height = qint64(header.ysiz) - header.yOsiz;
    if (width != picture.width || height != picture.height)
        report.error("frame-size", name, asset,
                     QStringLiteral("frame 0 has %1 x %2 pixels, the descriptor says %3 x %4")
                         .arg(width)
                         .arg(height)
                         .arg(picture.width)
                         .arg(picture.height));
}

/// Up to the first frame that is damaged or none of the track.
void checkCodestreams(TrackFile& file, const QString& name, const QUuid& asset, Report& report)
{
    std::optional<CodestreamHeader> first;
    for (qint64 frame = 0; frame < file.facts().duration; ++frame) {
        const Result<CodestreamHeader> header = file.walkFrame(frame);
        if (!header)
            return report.error("frame-unreadable", name, asset,
                                QStringLiteral("frame %1: %2").arg(frame).arg(header.error().what));
        if (!first)
            checkFrameSize(*header, file.facts().picture, name, asset, report);
        else if (!sameSize(*first, *header))
            return report.error("frame-varies", name, asset,
                                QStringLiteral("frame %1 is of another size or profile than frame 0").arg(frame));
        first = first ? first : *header;
    }
}

void checkFile(const QUuid& asset, const QString& path, const QVector<Use>& uses, const Scan& scan, Report& report)
{
    const QString name = scan.files.value(asset, path);
    Result<TrackFile> file = readTrackFile(path);
    if (!file) {
        const Error& error = file.error();
        report.error("track-file-unreadable", name, asset,
                     error.what + (error.where.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error.where)));
        return;
    }
    if (file->facts().id != asset)
        report.error("id-mismatch", name, asset,
                     QStringLiteral("the track file's own identifier is %1")
                         .arg(file->facts().id.toString(QUuid::WithoutBraces)));
    const bool isJ2k = file->facts().j2k.rsiz != 0 || file->facts().j2k.coding != J2kFacts::Coding::Unknown;
    if (isJ2k)
        checkCodestreams(*file, name, asset, report);
    QSet<QPair<const ScannedComposition*, QUuid>> compared;
    for (const Use& use : uses) {
        checkKind(file->facts(), use, report);
        checkDuration(file->facts(), use, report);
        const QPair<const ScannedComposition*, QUuid> pair{use.composition, use.resource->sourceEncoding};
        if (!compared.contains(pair))
            checkDescriptor(*file, use, report);
        compared.insert(pair);
    }
}

void checkTrackFiles(const Scan& scan, Report& report)
{
    const std::optional<DeliveryMark> mark = deliveryMark(scan.map);
    const bool mustHold = mark && mark->version == DeliveryVersion::Original;
    const auto uses = usesOf(scan);
    for (const auto& one : uses) {
        const QString path = scan.locate(one.first);
        if (!path.isEmpty())
            checkFile(one.first, path, one.second, scan, report);
        else if (!one.second.isEmpty() && !scan.map.find(one.first))
            report.add(mustHold ? Severity::Error : Severity::Warning, "asset-missing",
                       one.second.first().composition->file, one.first,
                       QStringLiteral("no loaded delivery holds the track file"));
    }
}

} // namespace

QVector<Rule> trackFileRules()
{
    return {checkTrackFiles};
}

} // namespace desk::imf
