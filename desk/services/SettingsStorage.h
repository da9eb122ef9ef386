#pragma once

#include "StratacutUI/ISettingsStorage.h"
#include "desk/base/Result.h"

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace desk::services
{

/// The package manager's settings as one JSON file, an object with an array for each key.
///
/// The file is written whole and renamed. A file that cannot be read is set aside under a new name and never
/// overwritten; what the file held when the program started is kept beside it as "<name>.previous" with the first
/// change, so that a restore which failed half-way loses nothing. User-interface thread.
class SettingsStorage : public ISettingsStorage
{
public:
    /// Reads the file at once; an absent one is empty.
    explicit SettingsStorage(const QString& file);

    /// What the user must be told about the file: set aside, or not written. Cleared by the call.
    QStringList takeNotices();

    void reserved1() override;
    boost::optional<QJsonArray> get(const char* key) override;
    void reserved3() override;
    /// A failure to write becomes a notice; the value then lives for this run only, unless a later call can write it.
    void set(const char* key, const QJsonArray& value) override;

    /// Entries of this key that are not to be lost though the next set() does not know of them: it stores them behind
    /// its own. One that it stores itself is kept no longer.
    void keep(const char* key, const QJsonArray& entries);

    QJsonArray kept(const char* key) const { return m_kept.value(QLatin1String(key)); }

    /// The next set() leaves the entry out; false when it was not kept.
    bool letGo(const char* key, const QJsonValue& entry);

private:
    void load();
    void setAside(const QString& reason);
    void keepPrevious();
    Status save() const;

    QString m_file;
    QJsonObject m_values;
    QHash<QString, QJsonArray> m_kept;
    QStringList m_notices;
    bool m_previousKept = false;
    /// The file holds the values.
    bool m_isWritten = true;
};

} // namespace desk::services
