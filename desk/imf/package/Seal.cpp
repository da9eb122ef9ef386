#include "desk/imf/package/Seal.h"

#include "desk/imf/package/Digest.h"

#include <QRegularExpression>

namespace desk::imf
{
namespace
{

/// What a digest reads as while it is computed.
QByteArray zeros()
{
    return QByteArray(40, '0');
}

QString versionWord(DeliveryVersion version)
{
    return version == DeliveryVersion::Original ? QStringLiteral("Original") : QStringLiteral("Supplemental");
}

QString markedText(const DeliveryMark& mark)
{
    const QString head = mark.text.isEmpty() ? QString() : mark.text + QLatin1Char(' ');
    return head + QStringLiteral("[IMF %1 \"%2\" sha1:%3]")
                      .arg(versionWord(mark.version), mark.name, QString::fromLatin1(mark.digest));
}

} // namespace

std::optional<DeliveryMark> deliveryMark(const AssetMap& map)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:(.*) )?\\[IMF (Original|Supplemental) \"(.*)\" sha1:([0-9a-f]{40})\\]\\z"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(map.annotation.text);
    if (!match.hasMatch())
        return {};
    const bool isOriginal = match.captured(2) == QLatin1String("Original");
    return DeliveryMark{match.captured(1), isOriginal ? DeliveryVersion::Original : DeliveryVersion::Supplemental,
                        match.captured(3), match.captured(4).toLatin1()};
}

std::optional<FileMark> fileMark(const MappedAsset& asset)
{
    static const QRegularExpression form(QStringLiteral("\\A(?:(.*) )?\\[sha1:([0-9a-f]{40})\\]\\z"),
                                         QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(asset.annotation.text);
    if (!match.hasMatch())
        return {};
    return FileMark{match.captured(1), match.captured(2).toLatin1()};
}

bool isOurs(const AssetMap& map)
{
    return deliveryMark(map) || std::any_of(map.assets.cbegin(), map.assets.cend(),
                                            [](const MappedAsset& one) { return fileMark(one).has_value(); });
}

bool sealHolds(const QByteArray& assetMapXml, const QByteArray& volumeIndexXml, const DeliveryMark& mark)
{
    QByteArray zeroed = assetMapXml;
    const int at = zeroed.indexOf("sha1:" + mark.digest);
    if (at < 0)
        return false;
    zeroed.replace(at + 5, zeros().size(), zeros());
    return sha1Of(zeroed + volumeIndexXml).toHex() == mark.digest;
}

QByteArray writeSealed(AssetMap map, const QByteArray& volumeIndexXml, const DeliveryMark& mark)
{
    DeliveryMark open = mark;
    open.digest = zeros();
    map.annotation.text = markedText(open);
    QByteArray xml = writeAssetMap(map);
    // The map's own annotation stands before every asset's, so the last mark in it is the one to fill.
    const int end = xml.indexOf("</AnnotationText>");
    const int at = xml.lastIndexOf("sha1:" + zeros(), end);
    return xml.replace(at + 5, zeros().size(), sha1Of(xml + volumeIndexXml).toHex());
}

QString markedText(const FileMark& mark)
{
    const QString head = mark.name.isEmpty() ? QString() : mark.name + QLatin1Char(' ');
    return head + QStringLiteral("[sha1:%1]").arg(QString::fromLatin1(mark.digest));
}

} // namespace desk::imf
