#pragma once

#include <QString>

namespace desk::services
{

/// Where the desk keeps what outlives a run: one folder a user, or the one that a caller names.
class Profile
{
public:
    /// An empty folder means the standard location of the user's application data.
    explicit Profile(const QString& folder = {});

    QString folder() const { return m_folder; }

    QString settingsFile() const;
    QString binFile() const;
    /// Where deliveries go until the user chooses another folder.
    static QString defaultDeliveryFolder();

private:
    QString m_folder;
};

} // namespace desk::services
