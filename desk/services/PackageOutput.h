#pragma once

#include "StratacutUI/IMFO_Bridge.h"
#include "desk/services/CommitPlan.h"
#include "desk/services/CommitQueue.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QObject>
#include <QPointer>

#include <map>
#include <optional>

namespace desk::services
{

class MediaLibrary;

/// What is known of a commit when it is taken.
struct CommitStart {
    QByteArray deliveryId;
    /// That of the delivery.
    QString name;
    /// The delivery's own folder.
    QString folder;
    qint64 totalFrames = 0;
};

/// The package manager's output service over IMF packages on disk.
///
/// It registers what the package manager tells of, but takes a commit from the documents that are handed over just
/// before it: they alone know of local renames. Called on the user-interface thread; commits run on a thread of their
/// own and complete there.
class PackageOutput : public QObject, public IMFO_Bridge
{
    Q_OBJECT

public:
    /// The library is not owned and must outlive the output.
    explicit PackageOutput(MediaLibrary* library, QObject* parent = nullptr);
    /// Cancels running commits.
    ~PackageOutput() override;

    /// The parent folder of new deliveries for which none is asked.
    void setDefaultFolder(const QString& folder) { m_defaultFolder = folder; }

    /// Counts for commits that start after the call.
    void setPadding(Padding padding) { m_padding = padding; }

    /// Counts for commits that start after the call.
    void setSoundChoice(SoundChoice choice) { m_soundChoice = choice; }

    /// As CommitQueue has it.
    void yieldToPlayback() { m_queue.yieldToPlayback(); }

    /// The item model whose order of IMPs readDelivery() keeps: a folder lists them in the order of their commits,
    /// which is another one where they were committed one by one. Not owned.
    void follow(const QAbstractItemModel* packageModel) { m_packageModel = packageModel; }

    /// Whether a commit of the delivery runs or waits. Any thread.
    bool isBusy(const QByteArray& deliveryId) const { return m_queue.isBusy(deliveryId); }

    /// Cancels the commits of a delivery. Their completion carries the code for a warning.
    void cancel(const QByteArray& deliveryId);

    /// Removes what crashed commits have left where the known deliveries are or will be. Answers where it cannot.
    QStringList removeLeftovers() const;

    void readDelivery(IMFO_Error_t& error, const QString& path, std::pair<QByteArray, QJsonObject>& result) override;
    void getDeliveryInfo(IMFO_Error_t& error, const QByteArray& componentId, QJsonObject& info,
                         bool recursive) override;
    void reserved3(IMFO_Error_t& error) override;
    void reserved4(IMFO_Error_t& error) override;
    void reserved5(IMFO_Error_t& error) override;
    void createDelivery(IMFO_Error_t& error, const QString& name, QString& path, bool original,
                        QString& componentId) override;
    void removeItem(IMFO_Error_t& error, const QByteArray& componentId) override;
    void commit(IMFO_Error_t& error, const IMFO_ItemInfo& item, CommitCallback onDone) override;
    void createIMP(IMFO_Error_t& error, const QByteArray& impComponentId,
                   const QByteArray& descriptiveMetadata) override;
    void createCPL(IMFO_Error_t& error, const QByteArray& cplComponentId, const QByteArray& token,
                   const QByteArray& reserved) override;
    void setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& path, QString& actualPath) override;
    void renameItem(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& name,
                    QString& newComponentId) override;
    void applyCommitSettings(IMFO_Error_t& error, const QString& commitSettingsJson,
                             const IMFO_ItemInfo& item) override;
    void applyDescriptiveMetadata(IMFO_Error_t& error, const QString& metadataJson, const IMFO_ItemInfo& item) override;
    void getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>& tracks, const QByteArray& cplId) override;

signals:
    /// A commit was taken; it runs or waits for its turn. On the user-interface thread.
    void commitStarted(const desk::services::CommitStart& start);
    /// From the commit's thread, just after its completion was called: whoever waits for the end finds it posted.
    /// @param code 0 for success, else one of IMFO_Error_t. @param message empty on success.
    void commitEnded(const QByteArray& deliveryId, int code, const QString& message);
    /// A sentence about a composition that was written: what the user should know of it all the same. From the commit's
    /// thread, before commitEnded().
    void noted(const QByteArray& deliveryId, const QString& note);
    /// From the commit's thread: connect with a context object, so that it arrives on the receiver's.
    void progressed(const QByteArray& deliveryId, const desk::services::ExportProgress& progress);

private:
    /// A delivery that the package manager knows.
    struct Entry {
        QString name;
        /// Where a delivery that is not written yet will be made.
        QString parent;
        /// Where its commit writes; empty before one was started.
        QString target;
        /// On disk: its folder, what was read last and the documents of its compositions by identifier.
        QString folder;
        imf::Delivery delivery;
        QJsonObject document;
        QHash<QByteArray, QJsonObject> compositions;
    };

    Result<QByteArray> open(const QString& folder);
    QByteArray idOfFolder(const QString& folder) const;
    Entry* entryOf(const QByteArray& componentId);
    imf::AssetResolver resolverFor(const QString& folder) const;
    QStringList impsInTreeOrder(const QByteArray& id);
    static void indexCompositions(const QByteArray& id, Entry& entry);
    Status checkTarget(const QString& folder, const Entry& entry) const;
    Status checkMovable(const QByteArray& id, const Entry& entry) const;
    Status start(const IMFO_ItemInfo& item, const CommitCallback& onDone);

    MediaLibrary* m_library;
    QString m_defaultFolder;
    Padding m_padding = Padding::Refuse;
    SoundChoice m_soundChoice = SoundChoice::Mapping;
    QPointer<const QAbstractItemModel> m_packageModel;
    std::map<QByteArray, Entry> m_entries;
    /// The deliveries that are in a folder, or were last begun to be written there.
    QHash<QString, QByteArray> m_folders;
    /// Of the item model: where a delivery was last found.
    int m_lastRow = 0;
    QVector<AppliedItem> m_applied;
    std::pair<QByteArray, QJsonObject> m_settings;
    CommitQueue m_queue;
};

} // namespace desk::services

Q_DECLARE_METATYPE(desk::services::ExportProgress)
Q_DECLARE_METATYPE(desk::services::CommitStart)
