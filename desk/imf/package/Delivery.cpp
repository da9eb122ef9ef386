#include "desk/imf/package/Delivery.h"

#include "desk/imf/package/Folder.h"
#include "desk/imf/package/Seal.h"

#include <QFileInfo>
#include <QSet>

namespace desk::imf
{
namespace
{

QByteArray identifier(const QString& folder, const QVector<QUuid>& documents)
{
    static const QUuid space("{5d0b7f5e-8a3a-4b0b-9b0c-6c1f4d6a2e51}");
    QByteArray name = canonicalFolder(folder).toUtf8();
    for (const QUuid& one : documents)
        name += '\0' + one.toRfc4122();
    return QUuid::createUuidV5(space, name).toByteArray(QUuid::WithoutBraces);
}

QString firstOf(const QStringList& candidates)
{
    for (const QString& one : candidates) {
        if (!one.isEmpty())
            return one;
    }
    return {};
}

class Opener
{
public:
    Opener(const QString& folder, const AssetResolver& resolver) : m_resolver(resolver)
    {
        m_delivery.folder = canonicalFolder(folder);
        m_delivery.componentId = deliveryComponentId(folder);
    }

    Result<Delivery> open()
    {
        for (const auto step : {&Opener::readMap, &Opener::locateFiles, &Opener::readPackages}) {
            const Status done = (this->*step)();
            if (!done)
                return done.error();
        }
        findMissing();
        decideVersion();
        return std::move(m_delivery);
    }

private:
    Status readMap()
    {
        const QString& folder = m_delivery.folder;
        const Status there = checkFolder(folder);
        if (!there)
            return there;
        const QString file = folder + QLatin1Char('/') + QLatin1String(fileName::assetMap);
        if (!QFileInfo::exists(file))
            return Error{folder,
                         {},
                         {},
                         QStringLiteral("the folder holds no ASSETMAP.xml"),
                         QStringLiteral("choose the folder of an IMF delivery")};
        const Result<QByteArray> bytes = readDocumentFile(file);
        if (!bytes)
            return bytes.error();
        Result<AssetMap> map = readAssetMap(*bytes, file);
        if (!map)
            return map.error();
        m_delivery.assetMap = std::move(*map);
        describe();
        return {};
    }

    void describe()
    {
        const AssetMap& map = m_delivery.assetMap;
        const std::optional<DeliveryMark> mark = deliveryMark(map);
        m_delivery.name = firstOf({mark ? mark->name : QString(), QFileInfo(m_delivery.folder).fileName()});
        m_delivery.annotation = {mark ? mark->text : map.annotation.text, map.annotation.language};
        m_delivery.issuer = map.issuer;
        m_delivery.creator = map.creator;
    }

    Status locateFiles()
    {
        for (const MappedAsset& asset : qAsConst(m_delivery.assetMap.assets)) {
            for (const Chunk& chunk : asset.chunks) {
                const Result<QString> file = mappedFile(m_delivery.folder, chunk.path);
                if (!file)
                    return file.error();
                if (!m_delivery.files.contains(asset.id))
                    m_delivery.files.insert(asset.id, *file);
            }
        }
        return {};
    }

    Status readPackages()
    {
        for (const MappedAsset& asset : qAsConst(m_delivery.assetMap.assets)) {
            if (!asset.packingList)
                continue;
            const Status read = readPackage(asset);
            if (!read)
                return read;
        }
        return {};
    }

    Status readPackage(const MappedAsset& asset)
    {
        DeliveredPackage package;
        package.file = m_delivery.files.value(asset.id);
        const Result<QByteArray> bytes = readDocumentFile(package.file);
        if (!bytes)
            return bytes.error();
        Result<PackingList> list = readPackingList(*bytes, package.file);
        if (!list)
            return list.error();
        package.packingList = std::move(*list);
        package.componentId = packageComponentId(m_delivery.folder, asset.id);
        for (const PackedAsset& packed : qAsConst(package.packingList.assets)) {
            const Status read = readComposition(asset.id, packed, package);
            if (!read)
                return read;
        }
        namePackage(asset, package);
        m_delivery.packages.append(std::move(package));
        return {};
    }

    /// This program writes no other text/xml; others do.
    bool isMeantAsOne(const PackedAsset& packed) const
    {
        return packed.type == QLatin1String(mediaType::composition) && isOurs(m_delivery.assetMap);
    }

    Status readComposition(const QUuid& packingList, const PackedAsset& packed, DeliveredPackage& package)
    {
        const QString file = m_delivery.files.value(packed.id);
        if (file.isEmpty() || !mayBeComposition(packed, file))
            return {};
        const Result<QByteArray> bytes = readDocumentFile(file);
        if (!bytes)
            return bytes.error();
        const Result<bool> isComposition = holdsComposition(*bytes, file);
        if (!isComposition)
            return isComposition.error();
        if (!*isComposition && !isMeantAsOne(packed))
            return {};
        Result<Composition> read = imf::readComposition(*bytes, file);
        if (!read)
            return read.error();
        DeliveredComposition result;
        result.componentId = compositionComponentId(m_delivery.folder, packingList, packed.id);
        result.file = file;
        result.composition = std::move(*read);
        const MappedAsset* mapped = m_delivery.assetMap.find(packed.id);
        const bool isNamed = mapped && isOurs(m_delivery.assetMap);
        result.name = firstOf({isNamed ? mapped->annotation.text : QString(), result.composition.contentTitle.text,
                               packed.id.toString(QUuid::WithoutBraces)});
        package.compositions.append(std::move(result));
        return {};
    }

    static void namePackage(const MappedAsset& asset, DeliveredPackage& package)
    {
        const std::optional<FileMark> mark = fileMark(asset);
        const QString title =
            package.compositions.isEmpty() ? QString() : package.compositions.first().composition.contentTitle.text;
        package.name = firstOf({mark ? mark->name : QString(), package.packingList.annotation.text, title,
                                asset.id.toString(QUuid::WithoutBraces)});
    }

    bool isThere(const QUuid& asset) const
    {
        return !m_delivery.existingFile(asset).isEmpty() || (m_resolver && !m_resolver(asset).isEmpty());
    }

    void findMissing()
    {
        for (DeliveredPackage& package : m_delivery.packages) {
            for (DeliveredComposition& one : package.compositions) {
                const QVector<QUuid> assets = referredAssets(one.composition);
                for (const QUuid& asset : assets) {
                    if (!isThere(asset))
                        one.missingAssets.append(asset);
                }
            }
        }
    }

    void decideVersion()
    {
        if (const std::optional<DeliveryMark> mark = deliveryMark(m_delivery.assetMap)) {
            m_delivery.version = mark->version;
            return;
        }
        QSet<QUuid> packed;
        for (const DeliveredPackage& package : qAsConst(m_delivery.packages)) {
            for (const PackedAsset& asset : package.packingList.assets)
                packed.insert(asset.id);
        }
        for (const DeliveredPackage& package : qAsConst(m_delivery.packages)) {
            for (const DeliveredComposition& one : package.compositions) {
                const QVector<QUuid> assets = referredAssets(one.composition);
                for (const QUuid& asset : assets) {
                    if (!packed.contains(asset))
                        m_delivery.version = DeliveryVersion::Supplemental;
                }
            }
        }
    }

    AssetResolver m_resolver;
    Delivery m_delivery;
};

} // namespace

bool mayBeComposition(const PackedAsset& asset, const QString& file)
{
    return asset.type.startsWith(QLatin1String(mediaType::composition)) ||
           asset.type == QLatin1String("application/xml") || file.endsWith(QLatin1String(".xml"), Qt::CaseInsensitive);
}

QString Delivery::existingFile(const QUuid& asset) const
{
    const QString file = files.value(asset);
    return !file.isEmpty() && QFileInfo(file).isFile() ? file : QString();
}

bool Delivery::hasMissingAssets() const
{
    for (const DeliveredPackage& package : packages) {
        for (const DeliveredComposition& one : package.compositions) {
            if (!one.missingAssets.isEmpty())
                return true;
        }
    }
    return false;
}

Result<Delivery> openDelivery(const QString& folder, const AssetResolver& resolver)
{
    return Opener(folder, resolver).open();
}

QByteArray deliveryComponentId(const QString& folder)
{
    return identifier(folder, {});
}

QByteArray packageComponentId(const QString& folder, const QUuid& packingList)
{
    return identifier(folder, {packingList});
}

QByteArray compositionComponentId(const QString& folder, const QUuid& packingList, const QUuid& composition)
{
    return identifier(folder, {packingList, composition});
}

bool isDelivery(const QString& folder)
{
    return QFileInfo(folder + QLatin1Char('/') + QLatin1String(fileName::assetMap)).isFile();
}

} // namespace desk::imf
