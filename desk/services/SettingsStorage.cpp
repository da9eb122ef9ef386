#include "desk/services/SettingsStorage.h"

#include "desk/base/WholeFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace desk::services
{

SettingsStorage::SettingsStorage(const QString& file) : m_file(file)
{
    load();
}

QStringList SettingsStorage::takeNotices()
{
    return std::exchange(m_notices, {});
}

void SettingsStorage::reserved1() {}

void SettingsStorage::reserved3() {}

boost::optional<QJsonArray> SettingsStorage::get(const char* key)
{
    const QJsonValue value = m_values.value(QLatin1String(key));
    if (!value.isArray())
        return boost::none;
    return value.toArray();
}

void SettingsStorage::set(const char* key, const QJsonArray& value)
{
    const QLatin1String name(key);
    QJsonArray stored = value;
    const QJsonArray keptEntries = kept(key);
    for (const QJsonValue& entry : keptEntries) {
        if (value.contains(entry))
            letGo(key, entry);
        else
            stored.append(entry);
    }
    if (m_isWritten && m_values.value(name) == QJsonValue(stored))
        return;
    keepPrevious();
    m_values.insert(name, stored);
    const Status saved = save();
    m_isWritten = saved.ok();
    // Once it is overwritten, the file tells nothing of the former run.
    m_previousKept = m_previousKept || m_isWritten;
    if (!saved)
        m_notices += saved.error().sentence();
}

void SettingsStorage::keep(const char* key, const QJsonArray& entries)
{
    for (const QJsonValue& entry : entries)
        m_kept[QLatin1String(key)].append(entry);
}

bool SettingsStorage::letGo(const char* key, const QJsonValue& entry)
{
    QJsonArray& entries = m_kept[QLatin1String(key)];
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i) == entry) {
            entries.removeAt(i);
            return true;
        }
    }
    return false;
}

void SettingsStorage::load()
{
    QFile file(m_file);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly))
        return setAside(QStringLiteral("it cannot be opened (%1)").arg(file.errorString()));
    const QByteArray text = file.readAll();
    file.close();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        return setAside(
            QStringLiteral("it is no JSON from byte %1 on (%2)").arg(error.offset).arg(error.errorString()));
    if (!document.isObject())
        return setAside(QStringLiteral("it holds no JSON object"));
    m_values = document.object();
    for (auto entry = m_values.constBegin(); entry != m_values.constEnd(); ++entry) {
        if (!entry->isArray())
            return setAside(QStringLiteral("\"%1\" is no array").arg(entry.key()));
    }
}

void SettingsStorage::setAside(const QString& reason)
{
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = m_file + QStringLiteral(".unreadable-") + stamp;
    for (int n = 2; QFileInfo::exists(aside); ++n)
        aside = m_file + QStringLiteral(".unreadable-%1-%2").arg(stamp).arg(n);
    const bool moved = QFile::rename(m_file, aside);
    m_values = {};
    // What stays in its place must not be overwritten: from here on the values go to a file of their own.
    const QString unreadable = m_file;
    if (!moved)
        m_file += QStringLiteral(".new");
    const QString next = moved ? QStringLiteral("it was kept as %1 and the saved packages start empty").arg(aside)
                               : QStringLiteral("it was left alone and new settings go to %1").arg(m_file);
    m_notices +=
        Error{unreadable, {}, {}, QStringLiteral("the saved state cannot be used: ") + reason, next}.sentence();
}

void SettingsStorage::keepPrevious()
{
    if (m_previousKept || !QFile::exists(m_file))
        return;
    const QString previous = m_file + QStringLiteral(".previous");
    QFile source(m_file);
    const QByteArray text = source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
    const QString failure = QStringLiteral("the former saved state cannot be kept");
    const Status kept = source.error() == QFileDevice::NoError
                            ? writeWhole(previous, text, failure)
                            : Error{m_file, {}, {}, failure, QStringLiteral("check the rights of the file")};
    m_previousKept = kept.ok();
    if (!kept)
        m_notices += kept.error().sentence();
}

Status SettingsStorage::save() const
{
    QDir().mkpath(QFileInfo(m_file).path());
    return writeWhole(m_file, QJsonDocument(m_values).toJson(), QStringLiteral("the packages cannot be saved"));
}

} // namespace desk::services
