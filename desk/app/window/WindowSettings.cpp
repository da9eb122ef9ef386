#include "desk/app/window/WindowSettings.h"

#include "desk/base/WholeFile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace desk::app
{

namespace
{
namespace key
{
const QString skin = QStringLiteral("skin");
const QString geometry = QStringLiteral("geometry");
const QString splitters = QStringLiteral("splitters");
const QString dialogs = QStringLiteral("dialogs");
const QString mediaFolder = QStringLiteral("mediaFolder");
const QString monitors = QStringLiteral("monitors");
const QString work = QStringLiteral("work");
} // namespace key

const QString lightSkin = QStringLiteral("light");
const QString darkSkin = QStringLiteral("dark");
const QString packages = QStringLiteral("packages");
const QString transcript = QStringLiteral("transcript");

QByteArray bytesOf(const QJsonValue& value)
{
    return QByteArray::fromBase64(value.toString().toLatin1());
}

QString textOf(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}
} // namespace

WindowSettings WindowSettings::load(const QString& file)
{
    WindowSettings settings;
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return settings;
    const QJsonObject json = QJsonDocument::fromJson(source.readAll()).object();
    settings.skin = json[key::skin].toString() == lightSkin ? Palette::Skin::Light : Palette::Skin::Dark;
    settings.geometry = bytesOf(json[key::geometry]);
    settings.mediaFolder = json[key::mediaFolder].toString();
    settings.monitors = json[key::monitors].toBool(true) ? Monitors::Shown : Monitors::Hidden;
    settings.work = json[key::work].toString() == transcript ? Work::Transcript : Work::Packages;
    const QJsonObject splitters = json[key::splitters].toObject();
    for (auto entry = splitters.constBegin(); entry != splitters.constEnd(); ++entry)
        settings.splitters[entry.key()] = bytesOf(*entry);
    const QJsonObject dialogs = json[key::dialogs].toObject();
    for (auto entry = dialogs.constBegin(); entry != dialogs.constEnd(); ++entry) {
        const QSize size(entry->toArray().at(0).toInt(), entry->toArray().at(1).toInt());
        if (!size.isEmpty())
            settings.dialogs[entry.key()] = size;
    }
    return settings;
}

Status WindowSettings::save(const QString& file) const
{
    QJsonObject states;
    for (auto entry = splitters.constBegin(); entry != splitters.constEnd(); ++entry)
        states[entry.key()] = textOf(*entry);
    QJsonObject sizes;
    for (auto entry = dialogs.constBegin(); entry != dialogs.constEnd(); ++entry)
        sizes[entry.key()] = QJsonArray{entry->width(), entry->height()};
    const QJsonObject json{{key::skin, skin == Palette::Skin::Light ? lightSkin : darkSkin},
                           {key::geometry, textOf(geometry)},
                           {key::mediaFolder, mediaFolder},
                           {key::monitors, monitors == Monitors::Shown},
                           {key::work, work == Work::Transcript ? transcript : packages},
                           {key::splitters, states},
                           {key::dialogs, sizes}};
    return writeWhole(file, QJsonDocument(json).toJson(), QStringLiteral("the window's look cannot be kept"));
}

} // namespace desk::app
