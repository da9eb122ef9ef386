#pragma once

#include "desk/imf/package/Delivery.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace desk::imf
{

/// What this program's asset maps say beyond the standard, in the annotation of the map:
/// `text [IMF Original "name" sha1:<40 digits>]`. The digest is of the whole document with its own digits as zeros, and
/// of the volume index after it.
struct DeliveryMark {
    QString text;
    DeliveryVersion version = DeliveryVersion::Original;
    QString name;
    /// 40 lower-case hexadecimal digits.
    QByteArray digest;
};

/// The same for a packing list, in the annotation of its asset: `name [sha1:<40 digits>]`.
struct FileMark {
    QString name;
    QByteArray digest;
};

std::optional<DeliveryMark> deliveryMark(const AssetMap& map);
std::optional<FileMark> fileMark(const MappedAsset& asset);

/// True where either mark stands, so that damage to one of them still shows whose the map is.
bool isOurs(const AssetMap& map);

/// True when the digest of the mark is that of the two documents.
bool sealHolds(const QByteArray& assetMapXml, const QByteArray& volumeIndexXml, const DeliveryMark& mark);

/// The document with the mark in its annotation; `mark.digest` is not looked at.
QByteArray writeSealed(AssetMap map, const QByteArray& volumeIndexXml, const DeliveryMark& mark);

/// Annotation of a packing list's asset.
QString markedText(const FileMark& mark);

} // namespace desk::imf
