#include "desk/services/Profile.h"

#include <QDir>
#include <QStandardPaths>

namespace desk::services
{

Profile::Profile(const QString& folder)
    : m_folder(folder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                                : QDir(folder).absolutePath())
{
}

QString Profile::settingsFile() const
{
    return m_folder + QStringLiteral("/packages.json");
}

QString Profile::binFile() const
{
    return m_folder + QStringLiteral("/bin.json");
}

QString Profile::windowFile() const
{
    return m_folder + QStringLiteral("/window.json");
}

QString Profile::transcriptFile() const
{
    return m_folder + QStringLiteral("/transcripts.sqlite");
}

QString Profile::transcriptSettingsFile() const
{
    return m_folder + QStringLiteral("/transcript.json");
}

QString Profile::lockFile() const
{
    return m_folder + QStringLiteral("/lock");
}

QString Profile::thumbnailFolder() const
{
    return m_folder + QStringLiteral("/thumbnails");
}

QString Profile::defaultDeliveryFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
}

} // namespace desk::services
