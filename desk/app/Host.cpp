#include "desk/app/Host.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/SettingsStorage.h"

#include <QDir>

namespace desk::app
{

Host::Host(const QString& profileFolder)
    : m_profile(profileFolder), m_lock(m_profile.lockFile()), m_library(m_profile.binFile()), m_output(&m_library)
{
    // Whether the holder lives tells; its age does not.
    m_lock.setStaleLockTime(0);
}

Host::~Host() = default;

Status Host::claim()
{
    if (!QDir().mkpath(m_profile.folder()))
        return Error{m_profile.folder(),
                     {},
                     {},
                     QStringLiteral("the profile's folder cannot be made"),
                     QStringLiteral("name another one with --profile")};
    if (m_lock.tryLock())
        return {};
    if (m_lock.error() != QLockFile::LockFailedError)
        return Error{m_profile.lockFile(),
                     {},
                     {},
                     QStringLiteral("the profile cannot be locked"),
                     QStringLiteral("check the rights of the folder, or name another one with --profile")};
    qint64 process = 0;
    QString machine;
    QString program;
    m_lock.getLockInfo(&process, &machine, &program);
    return Error{m_profile.folder(),
                 {},
                 {},
                 QStringLiteral("Stratacut Desk already works with this profile (process %1)").arg(process),
                 QStringLiteral("end the other one, or name another profile with --profile")};
}

void Host::load()
{
    IMF_MXE_bridge::Initialize(std::make_unique<services::MediaEngine>(&m_library));
    IMF_IMFO_bridge::Initialize(&m_output);
    auto settings = std::make_unique<services::SettingsStorage>(m_profile.settingsFile());
    m_settings = settings.get();
    m_notices += settings->takeNotices();
    m_model = std::make_unique<IMF_PackageMgrQtModel>();
    m_output.follow(m_model.get());
    m_model->initialize(&m_output, std::move(settings));
}

Status Host::save()
{
    controller().onSaveSettings();
    const QStringList notices = m_settings->takeNotices();
    if (notices.isEmpty())
        return {};
    return Error{{}, {}, {}, notices.join(QLatin1Char(' ')), {}};
}

IMF_Controller& Host::controller()
{
    return *m_model->getIMFController();
}

QStringList Host::takeNotices()
{
    return std::exchange(m_notices, {}) + m_library.takeNotices();
}

QModelIndexList Host::unkept() const
{
    QModelIndexList found;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex delivery = m_model->index(row, 0);
        if (IMF_PackageMgrQtModel::StatusFromIndex(delivery) == IMF_PackageMgr::Uncommitted &&
            m_model->rowCount(delivery) == 0)
            found += delivery;
    }
    return found;
}

} // namespace desk::app
