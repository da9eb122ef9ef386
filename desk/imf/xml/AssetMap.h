#pragma once

#include "desk/base/Result.h"
#include "desk/imf/xml/UserText.h"

#include <QByteArray>
#include <QDateTime>
#include <QUuid>
#include <QVector>

#include <optional>

namespace desk::imf
{

namespace edition
{
inline constexpr char assetMap[] = "http://www.smpte-ra.org/schemas/429-9/2007/AM";
} // namespace edition

/// Where a part of an asset lies, ST 429-9:2007, 7.
struct Chunk {
    /// Relative to the folder of the asset map, "/" between its segments.
    QString path;
    std::optional<qint64> volumeIndex;
    std::optional<qint64> offset;
    /// Bytes.
    std::optional<qint64> length;
};

struct MappedAsset {
    QUuid id;
    UserText annotation;
    bool packingList = false;
    QVector<Chunk> chunks;
    QVector<QByteArray> unknown;
};

/// The table of a mapped file set, ST 429-9:2007, 5.
struct AssetMap {
    QUuid id;
    UserText annotation;
    UserText creator;
    qint64 volumeCount = 1;
    QDateTime issueDate;
    UserText issuer;
    QVector<MappedAsset> assets;
    QVector<QByteArray> unknown;

    const MappedAsset* find(const QUuid& asset) const;
};

/// As readComposition(). Paths are not judged here; checkAssetPath() does.
Result<AssetMap> readAssetMap(const QByteArray& xml, const QString& fileName);
QByteArray writeAssetMap(const AssetMap& map);

/// The number of the only volume: always these bytes.
QByteArray writeVolumeIndex();

/// ST 429-9:2007, A.2, and ST 2067-2:2016, 7.2: relative, at most 10 segments of [A-Za-z0-9._-], 100 characters in all,
/// none of them "." or "..". The error names `file`, the asset map that holds the path.
Status checkAssetPath(const QString& path, const QString& file);

} // namespace desk::imf
