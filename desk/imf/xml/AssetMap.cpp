#include "desk/imf/xml/AssetMap.h"

#include "desk/imf/xml/XmlFields.h"

namespace desk::imf
{
namespace
{

const QLatin1String nameSpace(edition::assetMap);

Chunk readChunk(FieldReader& in, const XmlElement& element)
{
    Chunk chunk;
    chunk.path = in.text(element, "Path");
    chunk.volumeIndex = in.number(element, "VolumeIndex");
    chunk.offset = in.number(element, "Offset");
    chunk.length = in.number(element, "Length");
    return chunk;
}

/// xs:boolean.
bool readFlag(FieldReader& in, const XmlElement& parent, const char* name)
{
    const QString text = in.text(parent, name);
    return text == QLatin1String("true") || text == QLatin1String("1");
}

MappedAsset readAsset(FieldReader& in, const XmlElement& element)
{
    MappedAsset asset;
    asset.id = in.uuid(element, "Id");
    asset.annotation = in.userText(element, "AnnotationText");
    asset.packingList = readFlag(in, element, "PackingList");
    const auto chunks = in.list(element, "ChunkList", "Chunk", Need::Required);
    for (const XmlElement* one : chunks)
        asset.chunks.append(readChunk(in, *one));
    if (asset.chunks.isEmpty())
        in.fail(element, QStringLiteral("asset %1 has no file").arg(toUrn(asset.id)));
    asset.unknown = in.unknown(element, {"Id", "AnnotationText", "PackingList", "ChunkList"});
    return asset;
}

void writeOptional(FieldWriter& out, const char* name, const std::optional<qint64>& value)
{
    if (value)
        out.number(name, *value);
}

void writeAsset(FieldWriter& out, const MappedAsset& asset)
{
    out.start("Asset");
    out.uuid("Id", asset.id);
    out.optionalUserText("AnnotationText", asset.annotation);
    if (asset.packingList)
        out.text("PackingList", QStringLiteral("true"));
    out.start("ChunkList");
    for (const Chunk& chunk : asset.chunks) {
        out.start("Chunk");
        out.text("Path", chunk.path);
        writeOptional(out, "VolumeIndex", chunk.volumeIndex);
        writeOptional(out, "Offset", chunk.offset);
        writeOptional(out, "Length", chunk.length);
        out.end();
    }
    out.end();
    out.raw(asset.unknown);
    out.end();
}

QString pathFault(const QString& path)
{
    if (path.isEmpty())
        return QStringLiteral("the path is empty");
    if (path.size() > 100)
        return QStringLiteral("the path is longer than 100 characters");
    if (path.startsWith(QLatin1Char('/')))
        return QStringLiteral("the path is absolute");
    const QStringList segments = path.split(QLatin1Char('/'));
    if (segments.size() > 10)
        return QStringLiteral("the path has more than 10 segments");
    for (const QString& segment : segments) {
        if (segment == QLatin1String(".."))
            return QStringLiteral("the path leaves the delivery's folder");
        if (segment.isEmpty() || segment == QLatin1String("."))
            return QStringLiteral("a segment of the path is empty");
        for (const QChar c : segment) {
            const bool isLetterOrDigit = c.unicode() < 128 && c.isLetterOrNumber();
            if (!isLetterOrDigit && !QStringLiteral("._-").contains(c))
                return QStringLiteral("the path holds a character other than letters, digits, \".\", \"_\" and \"-\"");
        }
    }
    return {};
}

} // namespace

const MappedAsset* AssetMap::find(const QUuid& asset) const
{
    const auto found =
        std::find_if(assets.cbegin(), assets.cend(), [&](const MappedAsset& one) { return one.id == asset; });
    return found == assets.cend() ? nullptr : &*found;
}

Result<AssetMap> readAssetMap(const QByteArray& xml, const QString& fileName)
{
    const Result<XmlElement> root = parseDocument(xml, fileName, QStringLiteral("AssetMap"), {nameSpace});
    if (!root)
        return root.error();
    FieldReader in(fileName, nameSpace);
    AssetMap map;
    map.id = in.uuid(*root, "Id");
    map.annotation = in.userText(*root, "AnnotationText");
    map.creator = in.userText(*root, "Creator");
    map.volumeCount = in.number(*root, "VolumeCount").value_or(1);
    map.issueDate = in.date(*root, "IssueDate");
    map.issuer = in.userText(*root, "Issuer");
    const auto assets = in.list(*root, "AssetList", "Asset", Need::Required);
    for (const XmlElement* one : assets)
        map.assets.append(readAsset(in, *one));
    map.unknown =
        in.unknown(*root, {"Id", "AnnotationText", "Creator", "VolumeCount", "IssueDate", "Issuer", "AssetList"});
    if (in.failed())
        return in.error();
    return map;
}

QByteArray writeAssetMap(const AssetMap& map)
{
    FieldWriter out(nameSpace);
    out.start("AssetMap");
    out.uuid("Id", map.id);
    out.optionalUserText("AnnotationText", map.annotation);
    out.userText("Creator", map.creator);
    out.number("VolumeCount", map.volumeCount);
    out.date("IssueDate", map.issueDate);
    out.userText("Issuer", map.issuer);
    out.start("AssetList");
    for (const MappedAsset& asset : map.assets)
        writeAsset(out, asset);
    out.end();
    out.raw(map.unknown);
    return out.finish();
}

QByteArray writeVolumeIndex()
{
    FieldWriter out(nameSpace);
    out.start("VolumeIndex");
    out.number("Index", 1);
    return out.finish();
}

Status checkAssetPath(const QString& path, const QString& file)
{
    const QString fault = pathFault(path);
    if (fault.isEmpty())
        return {};
    return Error{file,
                 QStringLiteral("path \"%1\"").arg(path.left(120)),
                 {},
                 fault,
                 QStringLiteral("ask for a delivery whose paths follow the standard")};
}

} // namespace desk::imf
