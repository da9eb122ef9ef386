#include "desk/imf/package/CommitFolder.h"

#include "desk/imf/package/DurableFile.h"
#include "desk/imf/package/Folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace desk::imf
{
namespace
{

const QLatin1String prefix(".stratacut-commit-");
const QLatin1String journalName("journal.json");
/// Its presence says that the delivery's folder was made for this commit.
const QLatin1String parentMark("made-folder");

const QLatin1String assetMapKey("assetMap");
const QLatin1String broughtKey("brought");
const QLatin1String obsoleteKey("obsolete");
const QLatin1String nameKey("name");
const QLatin1String inodeKey("inode");

QJsonArray toJson(const QVector<NumberedFile>& files)
{
    QJsonArray result;
    // Numbers go as text: JSON's are floating-point.
    for (const NumberedFile& one : files)
        result.append(QJsonObject{{nameKey, one.name}, {inodeKey, QString::number(one.inode)}});
    return result;
}

QVector<NumberedFile> fromJson(const QJsonValue& value)
{
    QVector<NumberedFile> result;
    const QJsonArray entries = value.toArray();
    for (const QJsonValue& one : entries) {
        const QString name = one[nameKey].toString();
        if (!name.contains(QLatin1Char('/')))
            result.append({name, one[inodeKey].toString().toULongLong()});
    }
    return result;
}

int makeFolder(const QString& path)
{
    return ::mkdir(QFile::encodeName(path).constData(), 0777) == 0 ? 0 : errno;
}

} // namespace

bool isCommitFolderName(const QString& name)
{
    return name.startsWith(prefix);
}

Result<CommitFolder> CommitFolder::create(const QString& deliveryFolder, Parent parent)
{
    const QString name = prefix + QUuid::createUuid().toString(QUuid::Id128).left(12);
    const CommitFolder result(deliveryFolder, deliveryFolder + QLatin1Char('/') + name);
    const int failure = makeFolder(result.m_path);
    if (failure != 0)
        return systemError(deliveryFolder, failure);
    if (parent == Parent::WasMade) {
        const Status marked = writeNewFile(result.file(parentMark), {});
        if (!marked) {
            result.settle();
            return marked.error();
        }
    }
    return result;
}

QVector<CommitFolder> CommitFolder::leftIn(const QString& deliveryFolder)
{
    QVector<CommitFolder> result;
    const QStringList names =
        QDir(deliveryFolder).entryList({prefix + QLatin1Char('*')}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& name : names)
        result.append(CommitFolder(deliveryFolder, deliveryFolder + QLatin1Char('/') + name));
    return result;
}

Status CommitFolder::writeJournal(const CommitJournal& journal) const
{
    const QJsonObject document{{assetMapKey, QString::number(journal.assetMap)},
                               {broughtKey, toJson(journal.brought)},
                               {obsoleteKey, toJson(journal.obsolete)}};
    const QString draft = file(QStringLiteral("journal.new"));
    Status step = writeNewFile(draft, QJsonDocument(document).toJson(QJsonDocument::Compact));
    if (step)
        step = renameOver(draft, file(journalName));
    if (step)
        step = syncToDisk(m_path);
    if (step)
        step = syncToDisk(m_delivery);
    return step;
}

CommitJournal CommitFolder::readJournal() const
{
    QFile in(file(journalName));
    if (!in.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject document = QJsonDocument::fromJson(in.readAll()).object();
    return {document[assetMapKey].toString().toULongLong(), fromJson(document[broughtKey]),
            fromJson(document[obsoleteKey])};
}

QStringList CommitFolder::settle() const
{
    const CommitJournal journal = readJournal();
    const QString map = m_delivery + QLatin1Char('/') + QLatin1String(fileName::assetMap);
    const bool cameThrough = journal.assetMap != 0 && inodeOf(map) == journal.assetMap;
    QStringList removed;
    for (const NumberedFile& one : cameThrough ? journal.obsolete : journal.brought) {
        if (removeIfSame(m_delivery + QLatin1Char('/') + one.name, one.inode))
            removed.append(one.name);
    }
    // The files must be gone for good before the journal that names them is.
    (void)syncToDisk(m_delivery);
    const bool madeParent = QFileInfo::exists(file(parentMark));
    QFile::remove(file(journalName));
    if (QDir(m_path).removeRecursively())
        removed.append(QFileInfo(m_path).fileName());
    if (madeParent && !cameThrough)
        ::rmdir(QFile::encodeName(m_delivery).constData()); // stays where somebody has put a file into it
    return removed;
}

} // namespace desk::imf
