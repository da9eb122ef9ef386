#include "desk/services/ProfileLock.h"

#include <QDir>

namespace desk::services
{

ProfileLock::ProfileLock(const Profile& profile) : m_profile(profile), m_file(profile.lockFile())
{
    // Whether the holder lives tells; its age does not.
    m_file.setStaleLockTime(0);
}

Status ProfileLock::claim()
{
    if (!QDir().mkpath(m_profile.folder()))
        return Error{m_profile.folder(),
                     {},
                     {},
                     QStringLiteral("the profile's folder cannot be made"),
                     QStringLiteral("name another one with --profile")};
    if (m_file.tryLock())
        return {};
    if (m_file.error() != QLockFile::LockFailedError)
        return Error{m_profile.lockFile(),
                     {},
                     {},
                     QStringLiteral("the profile cannot be locked"),
                     QStringLiteral("check the rights of the folder, or name another one with --profile")};
    qint64 process = 0;
    QString machine;
    QString program;
    m_file.getLockInfo(&process, &machine, &program);
    return Error{m_profile.folder(),
                 {},
                 {},
                 QStringLiteral("Stratacut Desk already works with this profile (process %1)").arg(process),
                 QStringLiteral("end the other one, or name another profile with --profile")};
}

} // namespace desk::services
