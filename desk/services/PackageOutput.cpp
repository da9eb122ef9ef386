#include "desk/services/PackageOutput.h"

#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/services/DeliveryDocument.h"
#include "desk/services/FolderName.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/Profile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace desk::services
{

namespace
{
using OutputError = IMFO_Bridge::IMFO_Error_t;

OutputError failure(const Error& error, quint8 code = 1)
{
    return {code, error.sentence()};
}

OutputError outcome(const Status& status)
{
    return status ? OutputError() : failure(status.error());
}

QString cleaned(const QString& folder)
{
    return folder.isEmpty() ? QString() : QDir::cleanPath(QDir(folder).absolutePath());
}

Result<QJsonObject> parseObject(const QString& text, const IMFO_ItemInfo& item)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isObject())
        return document.object();
    return desk::Error{{},
                       QString::fromUtf8(item.componentId),
                       {},
                       QStringLiteral("its description is no JSON object"),
                       QStringLiteral("remove the item and make it anew")};
}

/// Whether something is there once what a crashed commit has left is gone. An empty folder has nothing to lose, and
/// a crash may leave one.
bool isOccupied(const QString& folder)
{
    if (!QFileInfo::exists(folder))
        return false;
    (void)imf::recoverFolder(folder);
    if (!QFileInfo(folder).isDir())
        return QFileInfo::exists(folder);
    return !QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

Error occupied(const QString& folder)
{
    return {folder,
            {},
            {},
            QStringLiteral("this folder already exists"),
            QStringLiteral("choose another name or another place")};
}

/// The delivery in whose folder this one would be made: it would be taken for a part of it. Empty where there is none.
QString deliveryAbove(const QString& folder)
{
    QString above = QFileInfo(folder).path();
    while (!imf::isDelivery(above)) {
        const QString next = QFileInfo(above).path();
        if (next == above)
            return {};
        above = next;
    }
    return above;
}

/// Packages that the tree does not name come last, in their own order.
void sortPackages(imf::Delivery& delivery, QStringList names)
{
    QHash<QUuid, int> places;
    for (const imf::DeliveredPackage& package : qAsConst(delivery.packages)) {
        const int place = names.indexOf(package.name);
        places[package.packingList.id] = place < 0 ? names.size() : place;
        // A name that two rows share belongs to each of them once.
        if (place >= 0)
            names[place] = QString();
    }
    std::stable_sort(delivery.packages.begin(), delivery.packages.end(),
                     [&places](const imf::DeliveredPackage& a, const imf::DeliveredPackage& b) {
                         return places[a.packingList.id] < places[b.packingList.id];
                     });
}

QMap<QString, IMFO_TrackInfo> trackInfoOf(const QJsonObject& cpl)
{
    QMap<QString, IMFO_TrackInfo> tracks;
    for (const char* section : {ImfDict::Video, ImfDict::Audio}) {
        const QJsonObject parameters = cpl[QLatin1String(section)].toObject();
        for (auto entry = parameters.constBegin(); entry != parameters.constEnd(); ++entry) {
            const QJsonObject parameter = entry->toObject();
            IMFO_TrackInfo info;
            const QJsonArray entries = parameter[QLatin1String(ImfDict::values)].toArray();
            for (const QJsonValue& value : entries)
                info.values += value.toString();
            info.currentIndex = info.values.isEmpty() ? -1 : parameter[QLatin1String(ImfDict::currentIndex)].toInt();
            info.audioMapping = parameter[QLatin1String(ImfDict::AudioMapping)].toArray();
            tracks[entry.key()] = info;
        }
    }
    const QJsonObject metadata = cpl[QLatin1String(ImfDict::DescriptiveMetadata)].toObject();
    const QString kind =
        metadata[QLatin1String(ImfDict::ContentKind)].toObject()[QLatin1String(ImfDict::Value)].toString();
    tracks[QLatin1String(ImfDict::ContentKind)] = {{kind}, 0, {}};
    return tracks;
}
} // namespace

PackageOutput::PackageOutput(MediaLibrary* library, QObject* parent)
    : QObject(parent),
      m_library(library),
      m_defaultFolder(Profile::defaultDeliveryFolder()),
      m_queue([this](const QByteArray& id, const ExportProgress& progress) { emit progressed(id, progress); },
              [this](const QByteArray& id, const QString& note) { emit noted(id, note); })
{
    qRegisterMetaType<ExportProgress>();
    qRegisterMetaType<CommitStart>();
}

PackageOutput::~PackageOutput() = default;

void PackageOutput::cancel(const QByteArray& deliveryId)
{
    m_queue.cancel(deliveryId);
}

PackageOutput::Entry* PackageOutput::entryOf(const QByteArray& componentId)
{
    const auto found = m_entries.find(componentId);
    return found == m_entries.end() ? nullptr : &found->second;
}

QByteArray PackageOutput::idOfFolder(const QString& folder) const
{
    const auto known = m_folders.constFind(folder);
    return known == m_folders.constEnd() ? imf::deliveryComponentId(folder) : *known;
}

imf::AssetResolver PackageOutput::resolverFor(const QString& folder) const
{
    return [this, folder](const QUuid& asset) {
        for (const auto& [id, entry] : m_entries) {
            const QString file = entry.folder == folder ? QString() : entry.delivery.existingFile(asset);
            if (!file.isEmpty())
                return file;
        }
        return QString();
    };
}

QStringList PackageOutput::impsInTreeOrder(const QByteArray& id)
{
    QStringList names;
    const int rows = m_packageModel ? m_packageModel->rowCount() : 0;
    for (int i = 0; i < rows; ++i) {
        // Whoever reads all of them again does so in the order of the tree.
        const int row = (m_lastRow + i) % rows;
        const QModelIndex delivery = m_packageModel->index(row, 0);
        if (IMF_PackageMgrQtModel::ComponentIDFromIndex(delivery) != id)
            continue;
        m_lastRow = row;
        for (int imp = 0; imp < m_packageModel->rowCount(delivery); ++imp)
            names += m_packageModel->index(imp, 0, delivery).data(IMF_PackageMgrQtModel::NameRole).toString();
        break;
    }
    return names;
}

void PackageOutput::indexCompositions(const QByteArray& id, Entry& entry)
{
    entry.compositions.clear();
    const QJsonArray imps = entry.document[QLatin1String(ImfDict::Children)].toArray();
    for (const QJsonValue& imp : imps) {
        const QByteArray impId = id + '/' + imp[QLatin1String(ImfDict::Name)].toString().toUtf8() + '/';
        const QJsonArray cpls = imp[QLatin1String(ImfDict::Children)].toArray();
        for (const QJsonValue& cpl : cpls) {
            const QByteArray cplId = impId + cpl[QLatin1String(ImfDict::Name)].toString().toUtf8();
            if (!entry.compositions.contains(cplId))
                entry.compositions.insert(cplId, cpl.toObject());
        }
    }
}

Result<QByteArray> PackageOutput::open(const QString& folder)
{
    auto delivery = imf::openDelivery(folder, resolverFor(folder));
    if (!delivery)
        return delivery.error();
    const QByteArray id = idOfFolder(folder);
    const auto [place, isNew] = m_entries.try_emplace(id);
    Entry& entry = place->second;
    entry.folder = folder;
    m_folders[folder] = id;
    entry.delivery = std::move(*delivery);
    entry.name = entry.delivery.name;
    // What was not known so far is not in the tree.
    if (!isNew && entry.delivery.packages.size() > 1)
        sortPackages(entry.delivery, impsInTreeOrder(id));
    entry.document = documentOf(entry.delivery);
    indexCompositions(id, entry);
    return id;
}

QStringList PackageOutput::removeLeftovers() const
{
    QStringList notices;
    for (const auto& [id, entry] : m_entries) {
        const auto removed =
            imf::recoverFolder(entry.folder.isEmpty() ? QDir(entry.parent).filePath(entry.name) : entry.folder);
        if (!removed)
            notices += removed.error().sentence();
    }
    return notices;
}

void PackageOutput::readDelivery(IMFO_Error_t& error, const QString& path, std::pair<QByteArray, QJsonObject>& result)
{
    const QString folder = cleaned(path);
    const auto opened = open(folder);
    error = opened ? OutputError() : failure(opened.error());
    const QByteArray id = opened ? *opened : idOfFolder(folder);
    const Entry* entry = entryOf(id);
    result = {id, entry ? entry->document : QJsonObject()};
}

void PackageOutput::getDeliveryInfo(IMFO_Error_t& error, const QByteArray& componentId, QJsonObject& info,
                                    bool recursive)
{
    error = OutputError();
    const QByteArray id =
        componentId.left(componentId.indexOf('/') < 0 ? componentId.size() : componentId.indexOf('/'));
    Entry* entry = entryOf(id);
    if (!entry) {
        error = failure(desk::Error{{},
                                    QString::fromUtf8(componentId),
                                    {},
                                    QStringLiteral("the delivery is not loaded"),
                                    QStringLiteral("load it from its folder")});
        return;
    }
    if (entry->folder.isEmpty()) {
        info = {{ImfDict::Name, entry->name}, {ImfDict::Path, entry->parent}};
        return;
    }
    // Read again: what was missing may have been loaded since.
    const auto opened = open(entry->folder);
    if (!opened)
        error = failure(opened.error());
    info = entry->document;
    if (!recursive)
        info.remove(QLatin1String(ImfDict::Children));
}

void PackageOutput::reserved3(IMFO_Error_t& error)
{
    error = OutputError();
}

void PackageOutput::reserved4(IMFO_Error_t& error)
{
    error = OutputError();
}

void PackageOutput::reserved5(IMFO_Error_t& error)
{
    error = OutputError();
}

void PackageOutput::createDelivery(IMFO_Error_t& error, const QString& name, QString& path, bool, QString& componentId)
{
    const Status fit = checkFolderName(name);
    error = outcome(fit);
    if (!fit)
        return;
    // What was typed and kept as no full path is refused when it is exported, not read as another place now.
    if (path.isEmpty() || QDir::isAbsolutePath(path))
        path = cleaned(path.isEmpty() ? m_defaultFolder : path);
    componentId = QUuid::createUuid().toString(QUuid::WithoutBraces).prepend(QStringLiteral("urn:uuid:"));
    Entry entry;
    entry.name = name;
    entry.parent = path;
    m_entries[componentId.toUtf8()] = entry;
}

void PackageOutput::removeItem(IMFO_Error_t& error, const QByteArray& componentId)
{
    error = OutputError();
    const QByteArray deliveryId = componentId.left(componentId.indexOf('/'));
    if (m_queue.isBusy(deliveryId)) {
        error = failure(
            desk::Error{{}, {}, {}, QStringLiteral("it is being exported"), QStringLiteral("cancel the export first")});
        return;
    }
    m_entries.erase(componentId);
    for (auto folder = m_folders.begin(); folder != m_folders.end();)
        folder = *folder == componentId ? m_folders.erase(folder) : std::next(folder);
}

Status PackageOutput::checkTarget(const QString& folder, const Entry& entry) const
{
    if (folder == entry.folder)
        return {};
    const QFileInfo parent(QFileInfo(folder).path());
    const auto fail = [&parent](const QString& what, const QString& next) {
        return desk::Error{parent.filePath(), {}, {}, what, next};
    };
    if (!parent.exists())
        return fail(QStringLiteral("the folder is not there"), QStringLiteral("make it or choose another"));
    if (!parent.isDir())
        return fail(QStringLiteral("it is no folder"), QStringLiteral("choose a folder"));
    if (!parent.isWritable())
        return fail(QStringLiteral("nothing can be written to the folder"),
                    QStringLiteral("change its rights or choose another"));
    const QString above = deliveryAbove(folder);
    if (!above.isEmpty())
        return fail(QStringLiteral("a delivery cannot be made inside another one, which is %1").arg(above),
                    QStringLiteral("choose a folder outside of it"));
    return {};
}

/// The end of a commit is read from the folder in which it was begun.
Status PackageOutput::checkMovable(const QByteArray& id, const Entry& entry) const
{
    if (m_queue.isBusy(id))
        return desk::Error{entry.target,
                           {},
                           {},
                           QStringLiteral("the delivery is being exported"),
                           QStringLiteral("wait for the end or cancel it")};
    const QString folder = entry.folder.isEmpty() ? entry.target : entry.folder;
    if (folder.isEmpty() || (entry.folder.isEmpty() && !imf::isDelivery(folder)))
        return {};
    return desk::Error{folder,
                       {},
                       {},
                       QStringLiteral("a delivery that is written keeps its folder and its name"),
                       QStringLiteral("make a new delivery for the other ones")};
}

Status PackageOutput::start(const IMFO_ItemInfo& item, const CommitCallback& onDone)
{
    CommitRequest request{item.nodeType, item.componentId, item.version, std::exchange(m_applied, {}),
                          m_padding,     m_soundChoice};
    auto plan = planCommit(request, *m_library);
    if (!plan)
        return plan.error();
    Entry& entry = m_entries[plan->deliveryId];
    // The place that nobody chose is made when it is first needed.
    if (QFileInfo(plan->folder).path() == m_defaultFolder)
        QDir().mkpath(m_defaultFolder);
    Status target = checkTarget(plan->folder, entry);
    if (!target)
        return target;
    if (m_queue.isBusy(plan->deliveryId))
        return desk::Error{plan->folder,
                           {},
                           {},
                           QStringLiteral("the delivery is being exported already"),
                           QStringLiteral("wait for the end or cancel it")};
    if (plan->newFolder && entry.folder != plan->folder && isOccupied(plan->folder))
        return occupied(plan->folder);
    entry.target = plan->folder;
    m_folders[plan->folder] = plan->deliveryId;
    emit commitStarted({plan->deliveryId, QFileInfo(plan->folder).fileName(), plan->folder, plan->totalFrames});
    m_queue.add(*plan, [this, id = plan->deliveryId, onDone](const IMFO_Error_t& outcome) {
        onDone(outcome);
        emit commitEnded(id, outcome.code(), outcome.message());
    });
    return {};
}

void PackageOutput::commit(IMFO_Error_t& error, const IMFO_ItemInfo& item, CommitCallback onDone)
{
    error = outcome(start(item, onDone));
}

void PackageOutput::createIMP(IMFO_Error_t& error, const QByteArray&, const QByteArray&)
{
    // Its name may still change without a word to this side: what it is, its document says when it is committed.
    error = OutputError();
}

void PackageOutput::createCPL(IMFO_Error_t& error, const QByteArray&, const QByteArray&, const QByteArray&)
{
    // A sequence that is gone for the moment is no reason to drop a composition: its commit will say so.
    error = OutputError();
}

void PackageOutput::setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& path,
                                QString& actualPath)
{
    error = OutputError();
    Entry& entry = m_entries[item.componentId];
    const auto document = parseObject(item.metadataJson, item);
    const QString name = document ? (*document)[QLatin1String(ImfDict::Name)].toString() : entry.name;
    const QString parent = cleaned(path);
    const QString folder = QDir(parent).filePath(name);
    const Status movable = folder == entry.folder ? Status() : checkMovable(item.componentId, entry);
    const Status target = movable ? checkTarget(folder, entry) : movable;
    error = outcome(target);
    if (!target)
        return;
    if (folder != entry.folder && isOccupied(folder)) {
        error = failure(occupied(folder), IMFO_Error_t::ItemExists);
        return;
    }
    entry.parent = actualPath = parent;
}

void PackageOutput::renameItem(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& name,
                               QString& newComponentId)
{
    newComponentId = QString::fromUtf8(item.componentId);
    Entry& entry = m_entries[item.componentId];
    const Status movable = checkMovable(item.componentId, entry);
    const Status fit = movable ? checkFolderName(name) : movable;
    error = outcome(fit);
    if (!fit)
        return;
    const QString folder = QDir(entry.parent).filePath(name);
    if (!entry.parent.isEmpty() && isOccupied(folder)) {
        error = failure(occupied(folder), IMFO_Error_t::ItemExists);
        return;
    }
    entry.name = name;
}

void PackageOutput::applyCommitSettings(IMFO_Error_t& error, const QString& commitSettingsJson,
                                        const IMFO_ItemInfo& item)
{
    const auto settings = parseObject(commitSettingsJson, item);
    error = settings ? OutputError() : failure(settings.error());
    if (settings)
        m_settings = {item.componentId, *settings};
}

void PackageOutput::applyDescriptiveMetadata(IMFO_Error_t& error, const QString& metadataJson,
                                             const IMFO_ItemInfo& item)
{
    const auto document = parseObject(metadataJson, item);
    error = document ? OutputError() : failure(document.error());
    if (!document)
        return;
    AppliedItem applied{item.nodeType, item.componentId, *document, {}};
    if (item.nodeType == IMF_PackageMgr::CPL && m_settings.first == item.componentId)
        applied.settings = std::exchange(m_settings, {}).second;
    m_applied += applied;
}

void PackageOutput::getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>& tracks, const QByteArray& cplId)
{
    error = OutputError();
    const Entry* entry = entryOf(cplId.left(cplId.indexOf('/')));
    if (entry && entry->compositions.contains(cplId)) {
        tracks = trackInfoOf(entry->compositions[cplId]);
        return;
    }
    error = failure(desk::Error{{},
                                QString::fromUtf8(cplId),
                                {},
                                QStringLiteral("the composition is not loaded"),
                                QStringLiteral("load its delivery from its folder")});
}

} // namespace desk::services
