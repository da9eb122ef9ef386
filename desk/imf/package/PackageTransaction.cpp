#include "desk/imf/package/PackageTransaction.h"

#include "desk/imf/package/CommitFolder.h"
#include "desk/imf/package/Digest.h"
#include "desk/imf/package/DurableFile.h"
#include "desk/imf/package/Folder.h"
#include "desk/imf/package/Seal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <climits>
#include <optional>

namespace desk::imf
{
namespace
{

const QLatin1String product("Stratacut Desk");

/// A file that stands in the commit's folder and gets its name in the delivery.
struct PreparedFile {
    QString prepared;
    QString name;
};

UserText orProduct(const UserText& creator)
{
    return creator.isEmpty() ? UserText(product) : creator;
}

QByteArray bytesOf(const QString& path)
{
    const Result<QByteArray> bytes = readDocumentFile(path);
    return bytes ? *bytes : QByteArray();
}

MappedAsset mapped(const QUuid& id, const QString& name, qint64 size)
{
    MappedAsset asset;
    asset.id = id;
    Chunk chunk;
    chunk.path = name;
    chunk.volumeIndex = 1;
    chunk.offset = 0;
    chunk.length = size;
    asset.chunks = {chunk};
    return asset;
}

Error conflict(const QString& folder, const QUuid& asset, const QString& what)
{
    return {
        folder, asset.toString(QUuid::WithoutBraces), {}, what, QStringLiteral("commit again with a new identifier")};
}

} // namespace

struct PackageTransaction::State {
    QString folder;
    DeliveryDescription description;
    FolderLock lock;
    std::optional<CommitFolder> work;
    /// The delivery as it was; without an identifier where there was none.
    AssetMap map;
    bool isSettled = false;
    int trackFiles = 0;
    QVector<PreparedFile> prepared;
    QVector<PackedAsset> packed;
    QVector<MappedAsset> newAssets;
    QSet<QUuid> kept;
    NewPackage package;

    ~State() { settle(); }

    Status open(CommitFolder::Parent parent);
    Status readFormer();
    Status admit(const QUuid& asset, const QString& name) const;
    Status keepExisting();
    Status writePackingListFile();
    Status closePackage();
    Status prepareVolumeIndex();
    Status prepareMap();
    Result<CommitJournal> journal() const;
    Status bringIn(const CommitJournal& journal);
    Status run();
    void settle();

    QString inFolder(const QString& name) const { return folder + QLatin1Char('/') + name; }
};

namespace
{

/// Refuses at once what would fail when all is encoded and the documents are written.
Status checkLength(const QString& folder)
{
    constexpr char longest[] = "/.stratacut-commit-0123456789ab/CPL_01234567-89ab-cdef-0123-456789abcdef.xml";
    constexpr int room = PATH_MAX - int(sizeof longest);
    if (QFile::encodeName(folder).size() <= room)
        return {};
    return Error{folder,
                 {},
                 {},
                 QStringLiteral("the path is longer than the %1 bytes that the system takes").arg(room),
                 QStringLiteral("choose a shorter name or a folder further up")};
}

/// The longest part of the path that exists must be a folder; what is missing is made.
Result<CommitFolder::Parent> makeFolder(const QString& folder)
{
    const Status fits = checkLength(folder);
    if (!fits)
        return fits.error();
    const QFileInfo facts(folder);
    if (facts.isDir())
        return CommitFolder::Parent::Existed;
    if (facts.exists())
        return Error{folder,
                     {},
                     {},
                     QStringLiteral("a file stands where the delivery's folder is to be"),
                     QStringLiteral("choose another folder")};
    if (!QDir().mkpath(folder))
        return Error{folder,
                     {},
                     {},
                     QStringLiteral("the folder cannot be made"),
                     QStringLiteral("choose a place that you may write to")};
    return CommitFolder::Parent::WasMade;
}

} // namespace

Status PackageTransaction::State::open(CommitFolder::Parent parent)
{
    if (!lock.tryLock(folder))
        return Error{folder,
                     {},
                     {},
                     QStringLiteral("another commit is writing into the folder"),
                     QStringLiteral("wait until it has finished")};
    const QVector<CommitFolder> leftovers = CommitFolder::leftIn(folder);
    for (const CommitFolder& one : leftovers)
        one.settle();
    const Status read = readFormer();
    if (!read)
        return read;
    Result<CommitFolder> created = CommitFolder::create(folder, parent);
    if (!created)
        return created.error();
    work = std::move(*created);
    return {};
}

Status PackageTransaction::State::readFormer()
{
    const QString file = inFolder(QLatin1String(fileName::assetMap));
    if (!QFileInfo::exists(file))
        return {};
    const Result<QByteArray> bytes = readDocumentFile(file);
    if (!bytes)
        return bytes.error();
    Result<AssetMap> former = readAssetMap(*bytes, file);
    if (!former)
        return former.error();
    map = std::move(*former);
    const std::optional<DeliveryMark> mark = deliveryMark(map);
    if (mark && !sealHolds(*bytes, bytesOf(inFolder(QLatin1String(fileName::volumeIndex))), *mark))
        return Error{file,
                     {},
                     {},
                     QStringLiteral("the delivery was changed after it was committed"),
                     QStringLiteral("verify it and mend it, or commit into a new folder")};
    return {};
}

Status PackageTransaction::State::admit(const QUuid& asset, const QString& name) const
{
    const bool isNew = std::none_of(newAssets.cbegin(), newAssets.cend(), [&](const MappedAsset& one) {
        return one.id == asset || one.chunks[0].path == name;
    });
    if (asset.isNull() || map.find(asset) || !isNew)
        return conflict(folder, asset,
                        QStringLiteral("the delivery already holds an asset of that identifier or name"));
    if (name.contains(QLatin1Char('/')))
        return conflict(folder, asset, QStringLiteral("the file name \"%1\" leads into another folder").arg(name));
    if (QFileInfo::exists(inFolder(name)))
        return systemError(inFolder(name), EEXIST);
    return checkAssetPath(name, inFolder(QLatin1String(fileName::assetMap)));
}

/// Packs what addExistingAsset() and a replaced packing list name, as their present lists describe it.
Status PackageTransaction::State::keepExisting()
{
    if (kept.isEmpty() && package.replaces.isNull())
        return {};
    const Result<Delivery> former = openDelivery(folder);
    if (!former)
        return former.error();
    QVector<PackedAsset> carried;
    for (const DeliveredPackage& one : former->packages) {
        for (const PackedAsset& asset : one.packingList.assets) {
            const bool isWanted = one.packingList.id == package.replaces || kept.contains(asset.id);
            const bool isTaken = std::any_of(carried.cbegin(), carried.cend(),
                                             [&](const PackedAsset& other) { return other.id == asset.id; });
            if (isWanted && !isTaken)
                carried.append(asset);
        }
    }
    for (const QUuid& id : qAsConst(kept)) {
        if (std::none_of(carried.cbegin(), carried.cend(), [&](const PackedAsset& one) { return one.id == id; }))
            return conflict(folder, id, QStringLiteral("no packing list of the delivery describes the asset"));
    }
    packed = carried + packed;
    return {};
}

Status PackageTransaction::State::writePackingListFile()
{
    PackingList list;
    list.id = package.id;
    list.annotation = package.annotation.isEmpty() ? UserText(package.name) : package.annotation;
    list.issuer = package.issuer;
    list.creator = orProduct(package.creator);
    list.issueDate = QDateTime::currentDateTimeUtc();
    list.assets = packed;
    const QString name = fileName::packingList(package.id);
    const Status fits = admit(package.id, name);
    if (!fits)
        return fits;
    const QByteArray xml = writePackingList(list);
    MappedAsset asset = mapped(package.id, name, xml.size());
    asset.packingList = true;
    asset.annotation = markedText(FileMark{package.name, sha1Of(xml).toHex()});
    newAssets.append(asset);
    prepared.append({work->file(name), name});
    return writeNewFile(work->file(name), xml);
}

Status PackageTransaction::State::closePackage()
{
    const Status kept = keepExisting();
    if (!kept)
        return kept;
    if (packed.isEmpty())
        return Error{folder,
                     package.name,
                     {},
                     QStringLiteral("the package is empty"),
                     QStringLiteral("add a composition to it")};
    return writePackingListFile();
}

Status PackageTransaction::State::prepareVolumeIndex()
{
    const QString name = QLatin1String(fileName::volumeIndex);
    if (QFileInfo::exists(inFolder(name)))
        return {};
    prepared.append({work->file(name), name});
    return writeNewFile(work->file(name), writeVolumeIndex());
}

Status PackageTransaction::State::prepareMap()
{
    AssetMap next = map;
    const std::optional<DeliveryMark> former = deliveryMark(map);
    next.id = QUuid::createUuid();
    next.issueDate = QDateTime::currentDateTimeUtc();
    next.creator = orProduct(description.creator);
    next.issuer = description.issuer;
    next.annotation.language = description.annotation.language;
    next.volumeCount = 1;
    const auto replaced = std::find_if(next.assets.begin(), next.assets.end(),
                                       [&](const MappedAsset& one) { return one.id == package.replaces; });
    if (replaced != next.assets.end())
        *replaced = newAssets.takeLast();
    next.assets += newAssets;
    DeliveryMark mark{description.annotation.text, description.version, description.name, {}};
    if (mark.name.isEmpty())
        mark.name = former ? former->name : QFileInfo(folder).fileName();
    const QString present = inFolder(QLatin1String(fileName::volumeIndex));
    const QByteArray volumeIndex = QFileInfo::exists(present) ? bytesOf(present) : writeVolumeIndex();
    return writeNewFile(work->file(QLatin1String(fileName::assetMap)), writeSealed(next, volumeIndex, mark));
}

Result<CommitJournal> PackageTransaction::State::journal() const
{
    CommitJournal result;
    result.assetMap = inodeOf(work->file(QLatin1String(fileName::assetMap)));
    for (const PreparedFile& one : prepared) {
        result.brought.append({one.name, inodeOf(one.prepared)});
        if (result.brought.last().inode == 0)
            return systemError(one.prepared, ENOENT);
    }
    if (const MappedAsset* former = map.find(package.replaces)) {
        const QString name = former->chunks.first().path;
        result.obsolete.append({name, inodeOf(inFolder(name))});
    }
    return result;
}

Status PackageTransaction::State::bringIn(const CommitJournal& journal)
{
    const Status written = work->writeJournal(journal);
    if (!written)
        return written;
    for (const PreparedFile& one : qAsConst(prepared)) {
        const Status renamed = renameToNew(one.prepared, inFolder(one.name));
        if (!renamed)
            return renamed;
    }
    // The entries must be on disk before the map that names them.
    const Status synced = syncToDisk(folder);
    if (!synced)
        return synced;
    const QString map = QLatin1String(fileName::assetMap);
    const Status replaced = renameOver(work->file(map), inFolder(map));
    if (!replaced)
        return replaced;
    return syncToDisk(folder);
}

Status PackageTransaction::State::run()
{
    if (isSettled)
        return Error{folder, {}, {}, QStringLiteral("the commit has already ended"), QStringLiteral("begin a new one")};
    if (!package.replaces.isNull() && !map.find(package.replaces))
        return conflict(folder, package.replaces, QStringLiteral("the delivery holds no such packing list"));
    for (const auto step : {&State::closePackage, &State::prepareMap, &State::prepareVolumeIndex}) {
        const Status done = (this->*step)();
        if (!done)
            return done;
    }
    const Result<CommitJournal> plan = journal();
    return plan ? bringIn(*plan) : Status(plan.error());
}

void PackageTransaction::State::settle()
{
    if (!isSettled && work)
        work->settle();
    isSettled = true;
    lock.unlock();
}

PackageTransaction::PackageTransaction(std::unique_ptr<State> state) : m_state(std::move(state)) {}

PackageTransaction::PackageTransaction(PackageTransaction&&) noexcept = default;
PackageTransaction& PackageTransaction::operator=(PackageTransaction&&) noexcept = default;
PackageTransaction::~PackageTransaction() = default;

Result<PackageTransaction> PackageTransaction::begin(const QString& folder, const DeliveryDescription& delivery)
{
    auto state = std::make_unique<State>();
    state->folder = canonicalFolder(folder);
    state->description = delivery;
    const Result<CommitFolder::Parent> parent = makeFolder(state->folder);
    if (!parent)
        return parent.error();
    const Status opened = state->open(*parent);
    if (!opened) {
        if (*parent == CommitFolder::Parent::WasMade)
            QDir().rmdir(state->folder);
        return opened.error();
    }
    return PackageTransaction(std::move(state));
}

QString PackageTransaction::newTrackFilePath()
{
    return m_state->work->file(QStringLiteral("track-%1.mxf").arg(++m_state->trackFiles));
}

Status PackageTransaction::addTrackFile(const NewTrackFile& file)
{
    State& state = *m_state;
    const QString name = file.fileName.isEmpty() ? fileName::trackFile(file.id) : file.fileName;
    const Status fits = state.admit(file.id, name);
    if (!fits)
        return fits;
    const QFileInfo facts(file.temporaryPath);
    if (!facts.isFile() || facts.path() != state.work->path())
        return systemError(file.temporaryPath, ENOENT);
    if (facts.size() != file.size)
        return Error{file.temporaryPath,
                     {},
                     {},
                     QStringLiteral("the track file has %1 bytes instead of %2").arg(facts.size()).arg(file.size),
                     QStringLiteral("commit again")};
    const Status synced = syncToDisk(file.temporaryPath);
    if (!synced)
        return synced;
    PackedAsset packed;
    packed.id = file.id;
    packed.annotation = file.annotation;
    packed.hash = file.sha1;
    packed.size = file.size;
    packed.type = QLatin1String(mediaType::trackFile);
    packed.originalFileName = name;
    state.packed.append(packed);
    state.newAssets.append(mapped(file.id, name, file.size));
    state.prepared.append({file.temporaryPath, name});
    return {};
}

Status PackageTransaction::addComposition(const Composition& composition, const QString& name)
{
    State& state = *m_state;
    const QString file = fileName::composition(composition.id);
    const Status fits = state.admit(composition.id, file);
    if (!fits)
        return fits;
    const QByteArray xml = writeComposition(composition);
    const Status written = writeNewFile(state.work->file(file), xml);
    if (!written)
        return written;
    PackedAsset packed;
    packed.id = composition.id;
    packed.hash = sha1Of(xml);
    packed.size = xml.size();
    packed.type = QLatin1String(mediaType::composition);
    packed.originalFileName = file;
    state.packed.append(packed);
    MappedAsset asset = mapped(composition.id, file, xml.size());
    asset.annotation = name;
    state.newAssets.append(asset);
    state.prepared.append({state.work->file(file), file});
    return {};
}

Status PackageTransaction::addExistingAsset(const QUuid& asset)
{
    if (!m_state->map.find(asset))
        return conflict(m_state->folder, asset, QStringLiteral("the delivery holds no such asset"));
    m_state->kept.insert(asset);
    return {};
}

void PackageTransaction::setPackage(const NewPackage& package)
{
    m_state->package = package;
}

Status PackageTransaction::nextPackage()
{
    State& state = *m_state;
    if (!state.package.replaces.isNull())
        return conflict(state.folder, state.package.replaces,
                        QStringLiteral("only the last package of a commit can replace one"));
    const Status closed = state.closePackage();
    state.packed.clear();
    state.kept.clear();
    state.package = {};
    return closed;
}

Status PackageTransaction::commit()
{
    const Status done = m_state->run();
    m_state->settle();
    return done;
}

void PackageTransaction::rollback()
{
    m_state->settle();
}

Result<QStringList> recoverFolder(const QString& folder)
{
    const QString path = canonicalFolder(folder);
    FolderLock lock;
    if (!QFileInfo(path).isDir() || !lock.tryLock(path))
        return QStringList();
    QStringList removed;
    const QVector<CommitFolder> leftovers = CommitFolder::leftIn(path);
    for (const CommitFolder& one : leftovers) {
        removed += one.settle();
        if (QFileInfo::exists(one.path()))
            return Error{one.path(),
                         {},
                         {},
                         QStringLiteral("the leftovers of a broken-off commit cannot be removed"),
                         QStringLiteral("remove that folder by hand")};
    }
    return removed;
}

} // namespace desk::imf
