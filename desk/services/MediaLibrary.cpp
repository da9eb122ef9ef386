#include "desk/services/MediaLibrary.h"

#include "desk/base/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace desk::services
{

namespace
{
namespace bin
{
constexpr char sequences[] = "sequences";
constexpr char id[] = "id";
constexpr char name[] = "name";
constexpr char path[] = "path";
constexpr char rate[] = "rate";
constexpr char frames[] = "frames";
constexpr char width[] = "width";
constexpr char height[] = "height";
constexpr char audio[] = "audio";
constexpr char label[] = "label";
constexpr char title[] = "title";
constexpr char language[] = "language";
} // namespace bin

QJsonObject toJson(const BinItem& item)
{
    QJsonArray audio;
    for (const BinTrack& track : item.audio)
        audio += QJsonObject{{bin::name, track.name},
                             {bin::label, track.label},
                             {bin::title, track.title},
                             {bin::language, track.language}};
    return {{bin::id, item.id},         {bin::name, item.name},
            {bin::path, item.path},     {bin::rate, QJsonArray{item.frameRate.num, item.frameRate.den}},
            {bin::frames, item.frames}, {bin::width, item.width},
            {bin::height, item.height}, {bin::audio, audio}};
}

BinItem fromJson(const QJsonObject& json)
{
    BinItem item;
    item.id = json[QLatin1String(bin::id)].toString();
    item.name = json[QLatin1String(bin::name)].toString();
    item.path = json[QLatin1String(bin::path)].toString();
    const QJsonArray rate = json[QLatin1String(bin::rate)].toArray();
    item.frameRate = Rational(qint64(rate.at(0).toDouble()), qint64(rate.at(1).toDouble()));
    item.frames = qint64(json[QLatin1String(bin::frames)].toDouble());
    item.width = json[QLatin1String(bin::width)].toInt();
    item.height = json[QLatin1String(bin::height)].toInt();
    const QJsonArray entries = json[QLatin1String(bin::audio)].toArray();
    for (const QJsonValue& value : entries) {
        const QJsonObject track = value.toObject();
        item.audio +=
            BinTrack{track[QLatin1String(bin::name)].toString(), track[QLatin1String(bin::label)].toString(),
                     track[QLatin1String(bin::title)].toString(), track[QLatin1String(bin::language)].toString()};
    }
    return item;
}
} // namespace

BinItem binItem(const media::Sequence& sequence)
{
    BinItem item{sequence.id, sequence.name, sequence.path, sequence.frameRate, sequence.frames, 0, 0, {}};
    if (sequence.picture) {
        item.width = sequence.picture->width;
        item.height = sequence.picture->height;
    }
    for (const media::AudioTrackInfo& track : sequence.audio)
        item.audio += BinTrack{track.name, track.label, track.title, track.language};
    return item;
}

MediaLibrary::MediaLibrary(const QString& file, QObject* parent) : QObject(parent), m_file(file)
{
    if (!m_file.isEmpty())
        load();
}

QString MediaLibrary::projectName() const
{
    return QStringLiteral("Stratacut Desk");
}

QString MediaLibrary::binName() const
{
    return QStringLiteral("Sequences");
}

void MediaLibrary::add(const media::Sequence& sequence)
{
    m_items[sequence.id] = binItem(sequence);
    save();
    emit changed(sequence.id);
}

void MediaLibrary::remove(const QString& id)
{
    if (m_items.remove(id) == 0)
        return;
    save();
    emit changed(id);
}

std::optional<BinItem> MediaLibrary::find(const QString& id) const
{
    const auto found = m_items.constFind(id);
    return found == m_items.constEnd() ? std::nullopt : std::optional<BinItem>(*found);
}

bool MediaLibrary::exists(const QString& id) const
{
    const auto found = m_items.constFind(id);
    return found != m_items.constEnd() && QFileInfo(found->path).isFile();
}

void MediaLibrary::keep()
{
    if (!m_isWritten)
        save();
}

QStringList MediaLibrary::takeNotices()
{
    return std::exchange(m_notices, {});
}

void MediaLibrary::load()
{
    QFile file(m_file);
    if (!file.exists())
        return;
    const QJsonDocument document =
        file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()) : QJsonDocument();
    if (!document.object()[QLatin1String(bin::sequences)].isArray()) {
        m_notices += Error{m_file,
                           {},
                           {},
                           QStringLiteral("the bin cannot be read"),
                           QStringLiteral("repair or remove the file; until then the bin is not saved")}
                         .sentence();
        m_file.clear();
        return;
    }
    const QJsonArray entries = document.object()[QLatin1String(bin::sequences)].toArray();
    for (const QJsonValue& value : entries) {
        const BinItem item = fromJson(value.toObject());
        if (!item.id.isEmpty())
            m_items[item.id] = item;
    }
}

void MediaLibrary::save()
{
    if (m_file.isEmpty())
        return;
    QJsonArray sequences;
    for (const BinItem& item : qAsConst(m_items))
        sequences += toJson(item);
    const QByteArray text = QJsonDocument(QJsonObject{{bin::sequences, sequences}}).toJson();
    QDir().mkpath(QFileInfo(m_file).path());
    const Status saved = writeWhole(m_file, text, QStringLiteral("the bin cannot be saved"));
    m_isWritten = saved.ok();
    if (!saved)
        m_notices += saved.error().sentence();
}

} // namespace desk::services
