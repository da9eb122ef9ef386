#include "desk/imf/package/Folder.h"

#include "desk/imf/xml/AssetMap.h"
#include "desk/imf/xml/XmlElement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace desk::imf
{

namespace fileName
{

QString packingList(const QUuid& id)
{
    return QStringLiteral("PKL_%1.xml").arg(id.toString(QUuid::WithoutBraces));
}

QString composition(const QUuid& id)
{
    return QStringLiteral("CPL_%1.xml").arg(id.toString(QUuid::WithoutBraces));
}

QString trackFile(const QUuid& id)
{
    return QStringLiteral("%1.mxf").arg(id.toString(QUuid::WithoutBraces));
}

} // namespace fileName

QString canonicalFolder(const QString& folder)
{
    const QString clean = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    QString existing = clean;
    while (existing.size() > 1 && !QFileInfo::exists(existing))
        existing = QFileInfo(existing).path();
    const QString resolved = QFileInfo(existing).canonicalFilePath();
    return resolved.isEmpty() ? clean : QDir::cleanPath(resolved + clean.mid(existing.size()));
}

Status checkFolder(const QString& folder)
{
    const QFileInfo facts(folder);
    if (facts.isDir() && facts.isReadable() && facts.isExecutable())
        return {};
    if (facts.isDir())
        return Error{
            folder, {}, {}, QStringLiteral("the folder may not be read"), QStringLiteral("change its permissions")};
    if (folder.isEmpty())
        return Error{
            {}, {}, {}, QStringLiteral("no folder is named"), QStringLiteral("name the folder of an IMF delivery")};
    if (facts.exists())
        return Error{folder,
                     {},
                     {},
                     QStringLiteral("this is a file and no folder"),
                     QStringLiteral("choose the folder of an IMF delivery")};
    return Error{folder,
                 {},
                 {},
                 QStringLiteral("the folder is not there"),
                 QStringLiteral("connect its disk or choose another folder")};
}

Result<QString> mappedFile(const QString& folder, const QString& path)
{
    const QString map = folder + QLatin1Char('/') + QLatin1String(fileName::assetMap);
    const Status lawful = checkAssetPath(path, map);
    if (!lawful)
        return lawful.error();
    const QString file = folder + QLatin1Char('/') + path;
    const QString resolved = QFileInfo(file).canonicalFilePath();
    const QString root = QFileInfo(folder).canonicalFilePath() + QLatin1Char('/');
    // A dangling link resolves to nothing, and nothing is read through it.
    if (resolved.isEmpty() || resolved.startsWith(root))
        return file;
    return Error{map,
                 QStringLiteral("path \"%1\"").arg(path),
                 {},
                 QStringLiteral("the path leaves the delivery's folder over a symbolic link"),
                 QStringLiteral("put the file itself into the folder")};
}

Result<QByteArray> readDocumentFile(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return Error{path,
                     {},
                     {},
                     QStringLiteral("the file is not there"),
                     QStringLiteral("copy the delivery again, with all its files")};
    if (!file.open(QIODevice::ReadOnly))
        return Error{path,
                     {},
                     {},
                     QStringLiteral("the file cannot be read (%1)").arg(file.errorString()),
                     QStringLiteral("check the file's permissions")};
    const qint64 limit = XmlLimits().bytes;
    const QByteArray bytes = file.read(limit + 1);
    if (bytes.size() > limit)
        return Error{path,
                     {},
                     {},
                     QStringLiteral("the document is larger than %1 bytes").arg(limit),
                     QStringLiteral("ask for a sound copy of the file")};
    if (file.error() != QFileDevice::NoError)
        return Error{path,
                     {},
                     {},
                     QStringLiteral("the file cannot be read (%1)").arg(file.errorString()),
                     QStringLiteral("check the disk")};
    return bytes;
}

} // namespace desk::imf
