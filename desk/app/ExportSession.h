#pragma once

#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "desk/app/AudioSettings.h"
#include "desk/base/Result.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/PackageOutput.h"
#include "desk/services/Profile.h"
#include "desk/services/ProfileLock.h"

#include <QObject>
#include <QPair>
#include <QStringList>

#include <memory>

namespace desk::services
{
class SettingsStorage;
}

namespace desk::app
{

/// What the user asks of one export.
struct ExportRequest {
    QStringList media;
    /// The parent folder.
    QString folder;
    /// Empty: the first file's name.
    QString deliveryName;
    QString impName;
    QString title;
    QString issuer;
    /// Key and value in the order in which they were given.
    QVector<QPair<QString, QString>> settings;
    /// For every composition.
    AudioSettings audio;
    services::Padding padding = services::Padding::Refuse;
    /// Where saved work is kept; empty: nothing is loaded and nothing kept.
    QString profile;
};

/// Makes a delivery as a user of the package manager's window would: through the item model and its controller, from a
/// new IMF Original to its commit. Message boxes become lines of the error stream.
class ExportSession : public QObject
{
    Q_OBJECT

public:
    explicit ExportSession(const ExportRequest& request);
    ~ExportSession() override;

    /// Answers an exit code. Prints the delivery's folder as the last line on success.
    int run();

private:
    Status openMedia();
    Status installHost();
    Status makeFolder();
    Status createDelivery();
    Status createCompositions();
    Status checkTexts() const;
    Status applyTexts();
    Status applySettings();
    Status mapAudio();
    int commit();
    /// Folders that this export has made and that hold nothing go again.
    void removeMadeFolders() const;
    void saveState();
    void tell(const QStringList& notices) const;
    /// Sound that the user has not asked to lose.
    void tellSilentTracks() const;
    void write(const QModelIndex& index, const char* key, const QString& value);

    QModelIndex delivery() const { return m_model->index(m_model->rowCount() - 1, 0); }

    QModelIndex imp() const { return m_model->index(0, 0, delivery()); }

    ExportRequest m_request;
    services::Profile m_profile;
    services::ProfileLock m_lock;
    services::MediaLibrary m_library;
    services::PackageOutput m_output;
    std::unique_ptr<IMF_PackageMgrQtModel> m_model;
    /// Owned by the model's controller.
    services::SettingsStorage* m_settings = nullptr;
    /// One a composition.
    QStringList m_sequences;
    /// What message boxes have said.
    QStringList m_messages;
    /// Inner ones first.
    QStringList m_madeFolders;
};

} // namespace desk::app
