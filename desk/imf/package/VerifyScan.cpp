#include "desk/imf/package/VerifyScan.h"

#include "desk/imf/package/Folder.h"
#include "desk/imf/package/Seal.h"

#include <QFile>
#include <QFileInfo>

namespace desk::imf
{
namespace
{

QString reasonOf(const Error& error)
{
    const QString item = error.item.isEmpty() ? QString() : error.item + QLatin1String(": ");
    return item + error.what + (error.where.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error.where));
}

bool readMap(Scan& scan, Report& report)
{
    const QString name = QLatin1String(fileName::assetMap);
    const Result<QByteArray> bytes = readDocumentFile(scan.absolute(name));
    if (!bytes) {
        report.error("asset-map-unreadable", name, {}, reasonOf(bytes.error()));
        return false;
    }
    Result<AssetMap> map = readAssetMap(*bytes, name);
    if (!map) {
        report.error("asset-map-unreadable", name, {}, reasonOf(map.error()));
        return false;
    }
    scan.mapBytes = *bytes;
    scan.map = std::move(*map);
    scan.isOurs = isOurs(scan.map);
    const Result<QByteArray> index = readDocumentFile(scan.absolute(QLatin1String(fileName::volumeIndex)));
    scan.volumeIndexBytes = index ? *index : QByteArray();
    return true;
}

void locateFiles(Scan& scan, Report& report)
{
    for (const MappedAsset& asset : qAsConst(scan.map.assets)) {
        const QString path = asset.chunks.first().path;
        const Result<QString> file = mappedFile(scan.folder, path);
        if (!file)
            report.error("path-refused", QLatin1String(fileName::assetMap), asset.id, reasonOf(file.error()));
        else if (!scan.files.contains(asset.id))
            scan.files.insert(asset.id, path);
    }
}

void readList(const MappedAsset& asset, Scan& scan, Report& report)
{
    const QString file = scan.files.value(asset.id);
    if (file.isEmpty() || !scan.exists(file))
        return; // a rule of its own says so
    const Result<QByteArray> bytes = readDocumentFile(scan.absolute(file));
    Result<PackingList> list = bytes ? readPackingList(*bytes, file) : Result<PackingList>(bytes.error());
    if (list)
        scan.lists.append({asset.id, file, *bytes, std::move(*list)});
    else
        report.error("packing-list-unreadable", file, asset.id, reasonOf(list.error()));
}

void readCompositionFile(const PackedAsset& packed, Scan& scan, Report& report)
{
    const QString file = scan.files.value(packed.id);
    if (file.isEmpty() || !mayBeComposition(packed, file) || !scan.exists(file))
        return;
    const Result<QByteArray> bytes = readDocumentFile(scan.absolute(file));
    const Result<bool> isOne = bytes ? holdsComposition(*bytes, file) : Result<bool>(bytes.error());
    if (isOne && !*isOne)
        return;
    Result<Composition> composition = isOne ? readComposition(*bytes, file) : Result<Composition>(isOne.error());
    if (composition)
        scan.compositions.append({packed.id, file, std::move(*composition)});
    else
        report.error("composition-unreadable", file, packed.id, reasonOf(composition.error()));
}

} // namespace

bool Scan::exists(const QString& file) const
{
    return QFileInfo(absolute(file)).isFile();
}

QString Scan::locate(const QUuid& asset) const
{
    const QString file = files.value(asset);
    if (!file.isEmpty() && exists(file))
        return absolute(file);
    return options.resolver ? options.resolver(asset) : QString();
}

bool scanDelivery(Scan& scan, Report& report)
{
    if (!readMap(scan, report))
        return false;
    locateFiles(scan, report);
    for (const MappedAsset& asset : qAsConst(scan.map.assets)) {
        if (asset.packingList)
            readList(asset, scan, report);
    }
    QSet<QUuid> read;
    for (const ScannedList& list : qAsConst(scan.lists)) {
        for (const PackedAsset& packed : list.list.assets) {
            if (read.contains(packed.id))
                continue;
            read.insert(packed.id);
            readCompositionFile(packed, scan, report);
        }
    }
    return true;
}

void eachResource(const Composition& composition, const ResourceVisitor& visit)
{
    for (const Segment& segment : composition.segments) {
        for (const Sequence& sequence : segment.sequences) {
            for (const Resource& resource : sequence.resources)
                visit(sequence, resource);
        }
    }
}

} // namespace desk::imf
