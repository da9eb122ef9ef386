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
    /// How the window looks.
    QString windowFile() const;
    /// The database of what was said in the clips.
    QString transcriptFile() const;
    /// How transcripts are made and shown.
    QString transcriptSettingsFile() const;
    /// Held by the one process that may change what is here.
    QString lockFile() const;
    /// A cache: it may be removed at any time.
    QString thumbnailFolder() const;
    /// Where deliveries go until the user chooses another folder.
    static QString defaultDeliveryFolder();

private:
    QString m_folder;
};

} // namespace desk::services
