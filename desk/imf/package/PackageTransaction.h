#pragma once

#include "desk/base/Result.h"
#include "desk/imf/package/Delivery.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

namespace desk::imf
{

/// How the delivery itself is to be described in its asset map.
struct DeliveryDescription {
    /// The delivery's name; not necessarily that of its folder.
    QString name;
    DeliveryVersion version = DeliveryVersion::Original;
    UserText annotation;
    UserText issuer;
    UserText creator;
};

/// A track file that was written to a path of newTrackFilePath(), closed and synced.
struct NewTrackFile {
    /// The asset: the UUID of the file package's UMID.
    QUuid id;
    /// As newTrackFilePath() gave it.
    QString temporaryPath;
    /// Final name in the folder; empty: "<id>.mxf".
    QString fileName;
    /// Bytes, and raw SHA-1 of all of them.
    qint64 size = 0;
    QByteArray sha1;
    UserText annotation;
};

/// One package (packing list) to add to the delivery.
struct NewPackage {
    QUuid id;
    /// A packing list of the delivery whose place the new one takes, null for none: all its assets are packed again and
    /// its own file goes. A changed document needs an `id` of its own.
    QUuid replaces;
    QString name;
    UserText annotation;
    UserText issuer;
    UserText creator;
};

/// Writes one package or several into a delivery folder, all of it or nothing.
///
/// Everything is written under temporary names first and synced; commit() renames track files, then compositions and
/// the packing list, and replaces the asset map last. Until that last rename the folder holds the former delivery (or
/// none), after it the new one, whenever the process ends. Own it where the work is done; any one thread. Destroying an
/// uncommitted transaction rolls it back.
class PackageTransaction
{
public:
    /// Creates the folder where it does not exist, first removes leftovers of crashed commits, and locks the folder
    /// against a second transaction. An existing asset map is kept and added to, whoever wrote it; one that cannot be
    /// read is an error, never overwritten.
    static Result<PackageTransaction> begin(const QString& folder, const DeliveryDescription& delivery);

    PackageTransaction(PackageTransaction&&) noexcept;
    PackageTransaction& operator=(PackageTransaction&&) noexcept;
    PackageTransaction(const PackageTransaction&) = delete;
    PackageTransaction& operator=(const PackageTransaction&) = delete;
    ~PackageTransaction();

    /// A new path in the target's file system; the file does not exist yet.
    QString newTrackFilePath();
    /// The file must be there and have the size given. It belongs to the transaction from here on.
    Status addTrackFile(const NewTrackFile& file);
    /// `name` is the composition's name for its users; "CPL_<id>.xml" its file.
    Status addComposition(const Composition& composition, const QString& name = {});
    /// Packs, beside the new files, assets that the delivery already holds.
    Status addExistingAsset(const QUuid& asset);
    void setPackage(const NewPackage& package);
    /// Closes the package: one packing list over what was added since the last one. What is added from here on belongs
    /// to another package, which setPackage() names. The delivery still changes as one, with commit().
    Status nextPackage();

    /// One packing list over all that was added. After a failure before the last rename everything that this
    /// transaction wrote is removed and the former delivery is as it was. May be called once.
    Status commit();
    /// Removes what this transaction has written, and the folder where it made it and it is empty. No-op after
    /// commit().
    void rollback();

private:
    struct State;
    explicit PackageTransaction(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

/// Removes what crashed commits have left in a folder and answers the removed names. Files of a transaction that is
/// under way, files of the committed delivery and files of strangers are left alone. An absent folder is none to mend.
Result<QStringList> recoverFolder(const QString& folder);

} // namespace desk::imf
