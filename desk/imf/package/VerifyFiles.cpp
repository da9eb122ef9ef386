#include "desk/imf/package/CommitFolder.h"
#include "desk/imf/package/Digest.h"
#include "desk/imf/package/Folder.h"
#include "desk/imf/package/Seal.h"
#include "desk/imf/package/VerifyScan.h"
#include "desk/imf/xml/ElementOrder.h"

#include <QDirIterator>
#include <QFileInfo>

namespace desk::imf
{
namespace
{

const QLatin1String mapName(fileName::assetMap);
const QLatin1String volumeName(fileName::volumeIndex);
const QLatin1String sha1Algorithm("http://www.w3.org/2000/09/xmldsig#sha1");

void checkSeal(const Scan& scan, Report& report)
{
    if (!scan.isOurs)
        return;
    const std::optional<DeliveryMark> mark = deliveryMark(scan.map);
    if (!mark) {
        report.error("seal-missing", mapName, {}, QStringLiteral("the seal in the asset map is damaged"));
        return;
    }
    if (sealHolds(scan.mapBytes, scan.volumeIndexBytes, *mark) || !scan.exists(volumeName))
        return;
    const bool mapIsSound = sealHolds(scan.mapBytes, writeVolumeIndex(), *mark);
    report.error("seal-broken", mapIsSound ? volumeName : mapName, {},
                 QStringLiteral("the file was changed after it was committed"));
}

void checkVolumeIndex(const Scan& scan, Report& report)
{
    if (!scan.exists(volumeName)) {
        if (scan.isOurs)
            report.error("file-missing", volumeName, {}, QStringLiteral("the file is not there"));
        return;
    }
    const Result<XmlElement> root = parseXml(scan.volumeIndexBytes, volumeName);
    const XmlElement* index = root ? root->child(QLatin1String(edition::assetMap), QStringLiteral("Index")) : nullptr;
    if (!index || index->content() != QLatin1String("1"))
        report.warning("volume-index-unreadable", volumeName, {}, QStringLiteral("the file is no index of one volume"));
}

void checkChunk(const MappedAsset& asset, const Scan& scan, Report& report)
{
    const Chunk& chunk = asset.chunks.first();
    if (asset.chunks.size() != 1 || chunk.offset.value_or(0) != 0)
        report.error("chunk-count", mapName, asset.id, QStringLiteral("the asset is not one whole file"));
    const QString file = scan.files.value(asset.id);
    if (file.isEmpty())
        return;
    if (!scan.exists(file))
        return report.error("file-missing", file, asset.id, QStringLiteral("the file is not there"));
    const qint64 size = QFileInfo(scan.absolute(file)).size();
    if (chunk.length && *chunk.length != size)
        report.error("length-mismatch", file, asset.id,
                     QStringLiteral("the file has %1 bytes, the asset map says %2").arg(size).arg(*chunk.length));
}

void checkMap(const Scan& scan, Report& report)
{
    if (!scan.map.issueDate.isValid())
        report.warning("date-invalid", mapName, {}, QStringLiteral("the issue date is none"));
    if (scan.map.volumeCount != 1)
        report.warning("volume-count", mapName, {}, QStringLiteral("the delivery spans several volumes"));
    QSet<QUuid> ids;
    QSet<QString> paths;
    bool hasList = false;
    for (const MappedAsset& asset : scan.map.assets) {
        if (ids.contains(asset.id))
            report.error("asset-duplicate", mapName, asset.id, QStringLiteral("the asset is mapped twice"));
        if (paths.contains(asset.chunks.first().path))
            report.error("path-shared", mapName, asset.id, QStringLiteral("two assets have one file"));
        ids.insert(asset.id);
        paths.insert(asset.chunks.first().path);
        hasList = hasList || asset.packingList;
        checkChunk(asset, scan, report);
    }
    if (!hasList)
        report.error("packing-list-none", mapName, {}, QStringLiteral("the asset map names no packing list"));
}

void checkPackedAsset(const ScannedList& list, const PackedAsset& asset, const Scan& scan, Report& report)
{
    if (!scan.map.find(asset.id))
        report.error("asset-unmapped", list.file, asset.id, QStringLiteral("the asset map does not name the asset"));
    if (asset.hash.isEmpty())
        report.error("hash-none", list.file, asset.id, QStringLiteral("the packing list has no hash of the asset"));
    if (!asset.hashAlgorithm.isEmpty() && asset.hashAlgorithm != sha1Algorithm)
        report.warning("hash-unknown", list.file, asset.id,
                       QStringLiteral("the hash is of an unknown kind and was not checked"));
    const QStringList known{QLatin1String(mediaType::composition), QLatin1String(mediaType::trackFile)};
    if (!known.contains(asset.type.section(QLatin1Char(';'), 0, 0)))
        report.warning("type-unknown", list.file, asset.id,
                       QStringLiteral("the asset's type is \"%1\"").arg(asset.type.left(80)));
}

void checkLists(const Scan& scan, Report& report)
{
    for (const ScannedList& list : scan.lists) {
        if (list.list.id != list.asset)
            report.error("id-mismatch", list.file, list.asset,
                         QStringLiteral("the document's identifier is not that of the asset map"));
        if (!list.list.issueDate.isValid())
            report.warning("date-invalid", list.file, list.asset, QStringLiteral("the issue date is none"));
        QSet<QUuid> ids;
        for (const PackedAsset& asset : list.list.assets) {
            if (ids.contains(asset.id))
                report.error("asset-duplicate", list.file, asset.id, QStringLiteral("the asset is packed twice"));
            ids.insert(asset.id);
            checkPackedAsset(list, asset, scan, report);
        }
    }
}

void checkOrderIn(const QByteArray& bytes, const QString& file, const QUuid& asset, Report& report)
{
    const Result<XmlElement> root = parseXml(bytes, file);
    const QStringList misplaced = root ? misplacedElements(*root) : QStringList();
    for (const QString& one : misplaced)
        report.error("element-order", file, asset, one);
}

/// The readers take elements in any order; programs that follow the schemas do not.
void checkOrder(const Scan& scan, Report& report)
{
    checkOrderIn(scan.mapBytes, mapName, {}, report);
    for (const ScannedList& list : scan.lists)
        checkOrderIn(list.bytes, list.file, list.asset, report);
    for (const ScannedComposition& one : scan.compositions) {
        const Result<QByteArray> bytes = readDocumentFile(scan.absolute(one.file));
        if (bytes)
            checkOrderIn(*bytes, one.file, one.asset, report);
    }
}

void checkUnpacked(const Scan& scan, Report& report)
{
    QSet<QUuid> packed;
    for (const ScannedList& list : scan.lists) {
        for (const PackedAsset& asset : list.list.assets)
            packed.insert(asset.id);
    }
    const bool isComplete = std::all_of(scan.map.assets.cbegin(), scan.map.assets.cend(), [&](const MappedAsset& one) {
        return !one.packingList || std::any_of(scan.lists.cbegin(), scan.lists.cend(),
                                               [&](const ScannedList& list) { return list.asset == one.id; });
    });
    for (const MappedAsset& asset : scan.map.assets) {
        if (isComplete && !asset.packingList && !packed.contains(asset.id))
            report.warning("asset-unpacked", scan.files.value(asset.id), asset.id,
                           QStringLiteral("no packing list names the asset"));
    }
}

void checkDigest(const QUuid& asset, const QString& file, const QByteArray& expected, const QByteArray& actual,
                 Report& report)
{
    if (expected != actual)
        report.error("hash-mismatch", file, asset,
                     QStringLiteral("the file does not match its hash: it was changed or damaged"));
}

void checkListDigests(const Scan& scan, Report& report)
{
    for (const ScannedList& list : scan.lists) {
        const std::optional<FileMark> mark = fileMark(*scan.map.find(list.asset));
        if (mark)
            checkDigest(list.asset, list.file, QByteArray::fromHex(mark->digest), sha1Of(list.bytes), report);
    }
}

/// Every file whose hash some document gives, hashed once.
class Hasher
{
public:
    Hasher(const Scan& scan, Report& report) : m_scan(scan), m_report(report)
    {
        const QSet<QUuid> assets = wanted();
        for (const QUuid& asset : assets)
            m_total += QFileInfo(scan.locate(asset)).size();
    }

    /// Empty where there is no file, or after a stop.
    QByteArray digest(const QUuid& asset)
    {
        if (m_digests.contains(asset))
            return m_digests.value(asset);
        const QString file = m_scan.locate(asset);
        if (file.isEmpty() || m_isStopped)
            return {};
        const Result<QByteArray> digest = sha1OfFile(file, [this](qint64 count) { return advance(count); });
        if (!digest)
            m_report.error("file-unreadable", m_scan.files.value(asset, file), asset, digest.error().what);
        m_digests.insert(asset, digest ? *digest : QByteArray());
        return m_digests.value(asset);
    }

private:
    QSet<QUuid> wanted() const
    {
        QSet<QUuid> assets;
        for (const ScannedList& list : m_scan.lists) {
            for (const PackedAsset& asset : list.list.assets)
                assets.insert(asset.id);
        }
        return assets;
    }

    bool advance(qint64 count)
    {
        m_done += count;
        m_isStopped = m_scan.options.progress && !m_scan.options.progress(m_done, m_total);
        return !m_isStopped;
    }

    const Scan& m_scan;
    Report& m_report;
    QHash<QUuid, QByteArray> m_digests;
    qint64 m_done = 0;
    qint64 m_total = 0;
    bool m_isStopped = false;
};

void checkPackedFile(const PackedAsset& asset, const Scan& scan, Hasher& hasher, Report& report)
{
    const QString file = scan.files.value(asset.id);
    if (file.isEmpty() || !scan.exists(file))
        return;
    const qint64 size = QFileInfo(scan.absolute(file)).size();
    if (size != asset.size)
        report.error("size-mismatch", file, asset.id,
                     QStringLiteral("the file has %1 bytes, the packing list says %2").arg(size).arg(asset.size));
    const bool isSha1 = asset.hashAlgorithm.isEmpty() || asset.hashAlgorithm == sha1Algorithm;
    const QByteArray digest = isSha1 && !asset.hash.isEmpty() ? hasher.digest(asset.id) : QByteArray();
    if (!digest.isEmpty())
        checkDigest(asset.id, file, asset.hash, digest, report);
}

void checkResourceHashes(const ScannedComposition& one, Hasher& hasher, Report& report)
{
    QSet<QUuid> blamed;
    eachResource(one.composition, [&](const Sequence&, const Resource& resource) {
        if (resource.hash.isEmpty() || blamed.contains(resource.trackFileId))
            return;
        if (resource.hash.size() != 20) {
            blamed.insert(resource.trackFileId);
            return report.warning("hash-unknown", one.file, resource.trackFileId,
                                  QStringLiteral("the hash is of an unknown kind and was not checked"));
        }
        const QByteArray digest = hasher.digest(resource.trackFileId);
        if (digest.isEmpty() || digest == resource.hash)
            return;
        blamed.insert(resource.trackFileId);
        report.error("resource-hash-mismatch", one.file, resource.trackFileId,
                     QStringLiteral("the track file does not match the hash that the composition gives"));
    });
}

void checkDigests(const Scan& scan, Report& report)
{
    Hasher hasher(scan, report);
    for (const ScannedList& list : scan.lists) {
        for (const PackedAsset& asset : list.list.assets)
            checkPackedFile(asset, scan, hasher, report);
    }
    for (const ScannedComposition& one : scan.compositions)
        checkResourceHashes(one, hasher, report);
}

void checkUnlisted(const Scan& scan, Report& report)
{
    QSet<QString> listed{mapName, volumeName};
    for (const QString& file : scan.files)
        listed.insert(file);
    QStringList unlisted;
    QStringList leftovers;
    QDirIterator files(scan.folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next().mid(scan.folder.size() + 1);
        const QString top = file.section(QLatin1Char('/'), 0, 0);
        if (isCommitFolderName(top))
            leftovers.append(top);
        else if (!listed.contains(file))
            unlisted.append(file);
    }
    leftovers.removeDuplicates();
    unlisted.sort();
    for (const QString& name : qAsConst(leftovers))
        report.warning("leftover", name, {}, QStringLiteral("a commit is under way or was broken off"));
    for (const QString& file : qAsConst(unlisted))
        report.add(Severity::Note, "file-unlisted", file, {}, QStringLiteral("the asset map does not name the file"));
}

} // namespace

QVector<Rule> fileRules()
{
    return {checkSeal,     checkVolumeIndex, checkMap,     checkLists,   checkOrder,
            checkUnpacked, checkListDigests, checkDigests, checkUnlisted};
}

} // namespace desk::imf
