#pragma once

#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "desk/app/SoundDefaults.h"
#include "desk/base/Result.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/PackageOutput.h"
#include "desk/services/Profile.h"
#include "desk/services/ProfileLock.h"

#include <QStringList>

#include <memory>

class IMF_Controller;

namespace desk::services
{
class SettingsStorage;
class TranscriptService;
} // namespace desk::services

namespace desk::app
{

/// All of the desk but its windows: the bin, the output and the package manager's model over one profile. The window
/// and every command that works on saved state stand on one of these. One a process: the module keeps the host's
/// services for the life of the process. User-interface thread.
class Host
{
public:
    /// @param profileFolder empty for the user's own.
    explicit Host(const QString& profileFolder);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Takes the profile for this process; fails while another one has it. A crashed process has none.
    Status claim() { return m_lock.claim(); }

    /// Installs the services and loads saved work. What cannot be loaded is told by the package manager's message
    /// boxes.
    void load();
    /// Keeps the packages as they are now, and the bin. Only after load().
    Status save();
    /// The bin keeps itself at each change; this tells where it could not, and tries again.
    Status saveBin();

    /// The folders of deliveries that could not be loaded and are kept though they are not in the tree.
    QStringList absentFolders() const;

    /// Forgets a delivery that could not be loaded, with what was begun in it, from the next save() on; false when
    /// there is none in that folder.
    bool forget(const QString& folder);

    const services::Profile& profile() const { return m_profile; }

    services::MediaLibrary& library() { return m_library; }

    services::PackageOutput& output() { return m_output; }

    /// Opened at the first use; only after claim().
    services::TranscriptService& transcripts();

    IMF_PackageMgrQtModel& model() { return *m_model; }

    IMF_Controller& controller();

    /// What the user must be told about the files of the profile. Cleared by the call.
    QStringList takeNotices();

    /// The compositions whose saved audio mapping could not be read and was not kept.
    const QList<CompositionKey>& mappedAnew() const { return m_mappedAnew; }

    /// Deliveries that nobody has written yet and that hold no IMP: saved state has no place for them.
    QModelIndexList unkept() const;

private:
    services::Profile m_profile;
    services::ProfileLock m_lock;
    services::MediaLibrary m_library;
    services::PackageOutput m_output;
    std::unique_ptr<services::TranscriptService> m_transcripts;
    std::unique_ptr<IMF_PackageMgrQtModel> m_model;
    /// Owned by the model's controller.
    services::SettingsStorage* m_settings = nullptr;
    QStringList m_notices;
    QList<CompositionKey> m_mappedAnew;
};

} // namespace desk::app
