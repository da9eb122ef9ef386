#pragma once

#include "desk/base/Result.h"
#include "desk/imf/xml/UserText.h"

#include <QByteArray>
#include <QDateTime>
#include <QUuid>
#include <QVector>

namespace desk::imf
{

namespace edition
{
inline constexpr char packingList[] = "http://www.smpte-ra.org/schemas/2067-2/2016/PKL";
} // namespace edition

namespace mediaType
{
inline constexpr char composition[] = "text/xml";
inline constexpr char trackFile[] = "application/mxf";
} // namespace mediaType

struct PackedAsset {
    QUuid id;
    UserText annotation;
    /// Raw digest, 20 bytes with SHA-1.
    QByteArray hash;
    /// URI of the digest; empty in documents of ST 429-8, which know only SHA-1.
    QString hashAlgorithm = QStringLiteral("http://www.w3.org/2000/09/xmldsig#sha1");
    qint64 size = 0;
    /// Media type: "text/xml", "application/mxf".
    QString type;
    UserText originalFileName;
    QVector<QByteArray> unknown;
};

/// A packing list, ST 2067-2:2016, 7.3, or one of ST 429-8:2007: the files of one interoperable master package.
struct PackingList {
    QString nameSpace = QLatin1String(edition::packingList);
    QUuid id;
    UserText annotation;
    QDateTime issueDate;
    UserText issuer;
    UserText creator;
    /// Null where the document has none.
    QUuid groupId;
    QVector<PackedAsset> assets;
    QVector<QByteArray> unknown;

    const PackedAsset* find(const QUuid& asset) const;
};

/// As readComposition().
Result<PackingList> readPackingList(const QByteArray& xml, const QString& fileName);
QByteArray writePackingList(const PackingList& list);

} // namespace desk::imf
