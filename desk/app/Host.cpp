#include "desk/app/Host.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "desk/app/SoundDefaults.h"
#include "desk/services/AbsentWork.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/SettingsStorage.h"
#include "desk/services/TranscriptService.h"

namespace desk::app
{

namespace
{
Status statusOf(const QStringList& notices)
{
    if (notices.isEmpty())
        return {};
    return Error{{}, {}, {}, notices.join(QLatin1Char(' ')), {}};
}
} // namespace

Host::Host(const QString& profileFolder)
    : m_profile(profileFolder), m_lock(m_profile), m_library(m_profile.binFile()), m_output(&m_library)
{
    m_output.setSoundChoice(soundChoice());
}

Host::~Host() = default;

void Host::load()
{
    IMF_MXE_bridge::Initialize(std::make_unique<services::MediaEngine>(&m_library));
    IMF_IMFO_bridge::Initialize(&m_output);
    auto settings = std::make_unique<services::SettingsStorage>(m_profile.settingsFile());
    m_settings = settings.get();
    m_notices += settings->takeNotices();
    const QJsonArray saved = settings->get("UNBURNED_ITEMS_KEY").value_or(QJsonArray());
    const auto unreadable = unreadableMappings(saved, m_profile.settingsFile());
    m_notices += unreadable.values();
    m_mappedAnew = unreadable.keys();
    m_model = std::make_unique<IMF_PackageMgrQtModel>();
    m_output.follow(m_model.get());
    m_model->initialize(&m_output, std::move(settings));
    services::keepAbsentWork(*m_settings, *m_model);
    m_notices += m_output.removeLeftovers();
}

Status Host::save()
{
    controller().onSaveSettings();
    m_library.keep();
    return statusOf(m_settings->takeNotices() + m_library.takeNotices());
}

Status Host::saveBin()
{
    m_library.keep();
    return statusOf(m_library.takeNotices());
}

QStringList Host::absentFolders() const
{
    return services::absentFolders(*m_settings);
}

bool Host::forget(const QString& folder)
{
    return services::forgetAbsentWork(*m_settings, folder);
}

services::TranscriptService& Host::transcripts()
{
    if (!m_transcripts)
        m_transcripts = std::make_unique<services::TranscriptService>(m_profile);
    return *m_transcripts;
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
