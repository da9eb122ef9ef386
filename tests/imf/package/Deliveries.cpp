#include "imf/package/Deliveries.h"

#include "desk/imf/mxf/TrackFileReader.h"
#include "desk/imf/package/Digest.h"
#include "imf/support/TinyTracks.h"
#include "support/Files.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

namespace deliveries
{

using namespace desk;
using namespace desk::imf;

namespace
{

TrackFileInfo required(const Result<TrackFileInfo>& info)
{
    if (!info)
        qFatal("%s", qPrintable(info.error().sentence()));
    return *info;
}

TrackFileInfo loaded(const QString& path)
{
    const Result<TrackFile> file = readTrackFile(path);
    const Result<QByteArray> digest = sha1OfFile(path);
    if (!file || !digest)
        qFatal("%s cannot be read", qPrintable(path));
    const TrackFileFacts& facts = file->facts();
    return {facts.id, QFileInfo(path).size(), *digest, facts.duration, facts.editRate, file->descriptorXml()};
}

Resource whole(const TrackFileInfo& info, uint number)
{
    Resource resource;
    resource.id = QUuid(number, 1, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 1);
    resource.editRate = info.editRate;
    resource.intrinsicDuration = info.duration;
    resource.sourceDuration = info.duration;
    resource.sourceEncoding = QUuid(number, 2, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 2);
    resource.trackFileId = info.id;
    resource.hash = info.sha1;
    return resource;
}

Sequence sequence(SequenceKind kind, const Resource& resource, uint number)
{
    Sequence result;
    result.kind = kind;
    result.id = QUuid(number, 3, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 3);
    result.trackId = QUuid(number, 4, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 4);
    result.resources = {resource};
    return result;
}

DeliveryDescription description()
{
    return {QStringLiteral("Feature film"), DeliveryVersion::Original, QStringLiteral("For the [archive] \"only\""),
            QStringLiteral("The issuer"), QStringLiteral("The creator")};
}

} // namespace

QString scratch()
{
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/stratacut-XXXXXX");
}

Tracks make(const QString& folder)
{
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/');
    return {required(tinytracks::writePicture(path + "picture.mxf", 5)),
            required(tinytracks::writeSound(path + "sound.mxf", 10000)),
            required(tinytracks::writeSound(path + "other.mxf", 10000, QStringLiteral("sgM"))), folder};
}

Tracks load(const QString& folder)
{
    const QString path = folder + QLatin1Char('/');
    return {loaded(path + "picture.mxf"), loaded(path + "sound.mxf"), loaded(path + "other.mxf"), folder};
}

QUuid packageId(int n)
{
    return QUuid(uint(n), 5, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 5);
}

QUuid compositionId(int n)
{
    return QUuid(uint(n), 6, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 6);
}

Composition composition(int n, const Tracks& tracks, const TrackFileInfo& sound)
{
    const uint number = uint(n) * 100;
    const Resource picture = whole(tracks.picture, number + 1);
    const Resource audio = whole(sound, number + 2);
    Composition result;
    result.id = compositionId(n);
    result.issueDate = QDateTime({2024, 1, 2}, {3, 4, 5}, Qt::UTC);
    result.contentTitle = QStringLiteral("Title %1").arg(n);
    result.contentKind = {QLatin1String(edition::contentKindScope), QStringLiteral("feature")};
    result.editRate = tracks.picture.editRate;
    result.essenceDescriptors = {{picture.sourceEncoding, tracks.picture.descriptorXml},
                                 {audio.sourceEncoding, sound.descriptorXml}};
    Segment segment;
    segment.id = QUuid(number, 7, 0x4000, 0x80, 0, 0, 0, 0, 0, 0, 7);
    segment.sequences = {sequence(SequenceKind::MainImage, picture, number + 1),
                         sequence(SequenceKind::MainAudio, audio, number + 2)};
    result.segments = {segment};
    return result;
}

Status addTrack(PackageTransaction& transaction, const Tracks& tracks, const TrackFileInfo& info, const QString& name)
{
    NewTrackFile file;
    file.id = info.id;
    file.temporaryPath = transaction.newTrackFilePath();
    file.fileName = name;
    file.size = info.size;
    file.sha1 = info.sha1;
    QFile::copy(tracks.folder + QLatin1Char('/') + name, file.temporaryPath);
    return transaction.addTrackFile(file);
}

Status commitFirst(const QString& folder, const Tracks& tracks, const Change& change)
{
    Result<PackageTransaction> transaction = PackageTransaction::begin(folder, description());
    if (!transaction)
        return transaction.error();
    Composition cpl = composition(1, tracks, tracks.sound);
    if (change)
        change(cpl);
    transaction->setPackage({packageId(1),
                             {},
                             QStringLiteral("First"),
                             QStringLiteral("One package"),
                             QStringLiteral("I"),
                             QStringLiteral("C")});
    for (const Status& step : {addTrack(*transaction, tracks, tracks.picture, QStringLiteral("picture.mxf")),
                               addTrack(*transaction, tracks, tracks.sound, QStringLiteral("sound.mxf")),
                               transaction->addComposition(cpl, QStringLiteral("Main version"))}) {
        if (!step)
            return step;
    }
    return transaction->commit();
}

Status commitSecond(const QString& folder, const Tracks& tracks)
{
    Result<PackageTransaction> transaction = PackageTransaction::begin(folder, description());
    if (!transaction)
        return transaction.error();
    transaction->setPackage({packageId(2), {}, QStringLiteral("Second"), {}, {}, {}});
    for (const Status& step : {transaction->addExistingAsset(tracks.picture.id),
                               addTrack(*transaction, tracks, tracks.otherSound, QStringLiteral("other.mxf")),
                               transaction->addComposition(composition(2, tracks, tracks.otherSound))}) {
        if (!step)
            return step;
    }
    return transaction->commit();
}

void copyFolder(const QString& from, const QString& to)
{
    QDir().mkpath(to);
    const QStringList names = QDir(from).entryList(QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        const QString target = to + QLatin1Char('/') + name;
        QFile::copy(from + QLatin1Char('/') + name, target);
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
    }
}

QMap<QString, QByteArray> contents(const QString& folder)
{
    QMap<QString, QByteArray> result;
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        result.insert(path.mid(folder.size() + 1), support::fileBytes(path));
    }
    return result;
}

QStringList brief(const QVector<Finding>& findings)
{
    static const QRegularExpression identifier(QStringLiteral("_[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    QStringList result;
    for (const Finding& one : findings)
        result.append(QString(one.code + QLatin1Char(' ') + one.file).remove(identifier));
    result.sort();
    return result;
}

} // namespace deliveries
