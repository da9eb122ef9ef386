#include "desk/imf/xml/PackingList.h"

#include "desk/imf/xml/XmlFields.h"

namespace desk::imf
{
namespace
{

/// The edition without digest algorithms.
const QLatin1String oldNameSpace("http://www.smpte-ra.org/schemas/429-8/2007/PKL");

PackedAsset readAsset(FieldReader& in, const XmlElement& element)
{
    PackedAsset asset;
    asset.id = in.uuid(element, "Id");
    asset.annotation = in.userText(element, "AnnotationText");
    asset.hash = in.base64(element, "Hash");
    asset.size = in.number(element, "Size", Need::Required).value_or(0);
    asset.type = in.text(element, "Type");
    asset.originalFileName = in.userText(element, "OriginalFileName");
    const XmlElement* algorithm = element.child(in.nameSpace(), QStringLiteral("HashAlgorithm"));
    asset.hashAlgorithm = algorithm ? algorithm->attribute(QStringLiteral("Algorithm")) : QString();
    asset.unknown =
        in.unknown(element, {"Id", "AnnotationText", "Hash", "Size", "Type", "OriginalFileName", "HashAlgorithm"});
    return asset;
}

void writeAsset(FieldWriter& out, const PackedAsset& asset)
{
    out.start("Asset");
    out.uuid("Id", asset.id);
    out.optionalUserText("AnnotationText", asset.annotation);
    out.text("Hash", QString::fromLatin1(asset.hash.toBase64()));
    out.number("Size", asset.size);
    out.text("Type", asset.type);
    out.optionalUserText("OriginalFileName", asset.originalFileName);
    if (!asset.hashAlgorithm.isEmpty()) {
        out.start("HashAlgorithm");
        out.attribute("Algorithm", asset.hashAlgorithm);
        out.end();
    }
    out.raw(asset.unknown);
    out.end();
}

} // namespace

const PackedAsset* PackingList::find(const QUuid& asset) const
{
    const auto found =
        std::find_if(assets.cbegin(), assets.cend(), [&](const PackedAsset& one) { return one.id == asset; });
    return found == assets.cend() ? nullptr : &*found;
}

Result<PackingList> readPackingList(const QByteArray& xml, const QString& fileName)
{
    const QStringList editions{QLatin1String(edition::packingList), oldNameSpace};
    const Result<XmlElement> root = parseDocument(xml, fileName, QStringLiteral("PackingList"), editions);
    if (!root)
        return root.error();
    FieldReader in(fileName, root->nameSpace);
    PackingList list;
    list.nameSpace = root->nameSpace;
    list.id = in.uuid(*root, "Id");
    list.annotation = in.userText(*root, "AnnotationText");
    list.issueDate = in.date(*root, "IssueDate");
    list.issuer = in.userText(*root, "Issuer");
    list.creator = in.userText(*root, "Creator");
    list.groupId = in.uuid(*root, "GroupId", Need::Optional);
    const auto assets = in.list(*root, "AssetList", "Asset", Need::Required);
    for (const XmlElement* one : assets)
        list.assets.append(readAsset(in, *one));
    list.unknown = in.unknown(
        *root, {"Id", "AnnotationText", "IconId", "IssueDate", "Issuer", "Creator", "GroupId", "AssetList", "Signer"});
    if (in.failed())
        return in.error();
    return list;
}

QByteArray writePackingList(const PackingList& list)
{
    FieldWriter out(list.nameSpace);
    out.start("PackingList");
    out.uuid("Id", list.id);
    out.optionalUserText("AnnotationText", list.annotation);
    out.date("IssueDate", list.issueDate);
    out.userText("Issuer", list.issuer);
    out.userText("Creator", list.creator);
    if (!list.groupId.isNull())
        out.uuid("GroupId", list.groupId);
    out.start("AssetList");
    for (const PackedAsset& asset : list.assets)
        writeAsset(out, asset);
    out.end();
    out.raw(list.unknown);
    return out.finish();
}

} // namespace desk::imf
