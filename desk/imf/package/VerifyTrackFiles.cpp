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
};

/// By track file, in order of first use.
QVector<QPair<QUuid, QVector<Use>>> usesOf(const Scan& scan)
{
    QVector<QPair<QUuid, QVector<Use>>> result;
    QHash<QUuid, int> positions;
    for (const ScannedComposition& one : scan.compositions) {
        eachResource(one.composition, [&](const Sequence&, const Resource& resource) {
            if (resource.trackFileId.isNull())
                return;
            if (!positions.contains(resource.trackFileId)) {
                positions.insert(resource.trackFileId, result.size());
                result.append({resource.trackFileId, {}});
            }
            result[positions.value(resource.trackFileId)].second.append({&one, &resource});
        });
    }
    return result;
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

/// Name of the first property of the file that the composition has not or has otherwise. The reader leaves properties
/// out that its dictionary lacks, so what only the composition has is no fault.
QString firstDifference(const DescriptorProperties& file, const DescriptorProperties& composition)
{
    if (file.kind != composition.kind)
        return file.kind;
    for (auto it = file.values.cbegin(); it != file.values.cend(); ++it) {
        const auto other = composition.values.constFind(it.key());
        if (other == composition.values.cend() || *other != it.value())
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

void checkFile(const QUuid& asset, const QString& path, const QVector<Use>& uses, const Scan& scan, Report& report)
{
    const QString name = scan.files.value(asset, path);
    const Result<TrackFile> file = readTrackFile(path);
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
    QSet<QPair<const ScannedComposition*, QUuid>> compared;
    for (const Use& use : uses) {
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
        else if (!scan.map.find(one.first))
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
