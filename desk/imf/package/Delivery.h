#pragma once

#include "desk/base/Result.h"
#include "desk/imf/xml/AssetMap.h"
#include "desk/imf/xml/Composition.h"
#include "desk/imf/xml/PackingList.h"

#include <QHash>
#include <QString>

#include <functional>

namespace desk::imf
{

enum class DeliveryVersion { Original, Supplemental };

/// Absolute path of the file that holds an asset of another delivery; empty when no loaded delivery holds it.
using AssetResolver = std::function<QString(const QUuid& asset)>;

/// A composition as a delivery holds it.
struct DeliveredComposition {
    /// Unique per folder, packing list and composition; the same on every reading.
    QByteArray componentId;
    QString name;
    /// Absolute path.
    QString file;
    Composition composition;
    /// Assets that it refers to and that neither this delivery nor the resolver has a file for; each once, in order.
    QVector<QUuid> missingAssets;
};

/// One packing list with what it packs: an interoperable master package.
struct DeliveredPackage {
    QByteArray componentId;
    QString name;
    QString file;
    PackingList packingList;
    QVector<DeliveredComposition> compositions;
};

/// A mapped file set on disk.
struct Delivery {
    /// Absolute path, without a slash at its end.
    QString folder;
    QByteArray componentId;
    QString name;
    DeliveryVersion version = DeliveryVersion::Original;
    UserText annotation;
    UserText issuer;
    UserText creator;
    AssetMap assetMap;
    /// In the order of the asset map.
    QVector<DeliveredPackage> packages;
    /// Absolute path of every mapped asset, also of those whose file is not there.
    QHash<QUuid, QString> files;

    /// Absolute path of an asset's file when it exists; else empty.
    QString existingFile(const QUuid& asset) const;
    bool hasMissingAssets() const;
};

/// Opens any delivery, also one that other tools have made. Reads the XML files alone, no track file. Fails, naming the
/// file and the next step, where the asset map, a packing list or a composition is not there, not safe or not sound; a
/// track file that is not there is a missing asset. Leftovers of a crashed commit are not looked at. Any thread.
Result<Delivery> openDelivery(const QString& folder, const AssetResolver& resolver = {});

/// Component identifiers: functions of the folder and of the documents' own identifiers.
QByteArray deliveryComponentId(const QString& folder);
QByteArray packageComponentId(const QString& folder, const QUuid& packingList);
QByteArray compositionComponentId(const QString& folder, const QUuid& packingList, const QUuid& composition);

/// Whether a packed file is worth opening as a composition: packing lists of others call it by several types.
bool mayBeComposition(const PackedAsset& asset, const QString& file);

/// True when the folder holds an asset map, whatever is in it.
bool isDelivery(const QString& folder);

} // namespace desk::imf
