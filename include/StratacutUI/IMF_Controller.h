#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QModelIndexList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>

#include <memory>
#include <unordered_map>

class IMF_Node;
class IMF_PackageMgrQtModel;
class ISettingsStorage;

/// Carries out every package action that needs the host: loading, creating, renaming, removing, refreshing and
/// committing items. The item model owns it; the views call its slots. Failures end in a message box.
///
/// Everything runs on the user-interface thread. The completion of a commit may come from any thread and at any time,
/// also when the item, the controller or the model is gone; it is then dropped. Indexes are those of the item model: a
/// host that puts a proxy between it and a view maps them first.
class STRATACUTUI_EXPORT IMF_Controller : public QObject
{
    Q_OBJECT
public:
    /// Loads the saved state into the model at once.
    /// @param model must not be null. @param bridge must not be null and must outlive the controller. @param settings
    ///        may be null: nothing is loaded or saved.
    IMF_Controller(IMF_PackageMgrQtModel* model, IMFO_Bridge* bridge, std::unique_ptr<ISettingsStorage> settings,
                   QObject* parent);
    ~IMF_Controller() override;

    void setSettings(std::unique_ptr<ISettingsStorage> settings);

    /// Adds the deliverable in the folder `path`, unless it is loaded already.
    /// @param hasMissing when given: out, whether something that the deliverable refers to is not loaded; unchanged
    ///        when the host fails.
    /// @param refresh whether a deliverable that is loaded is read again.
    void loadNewDelivery(const QString& path, bool* hasMissing, bool refresh);
    /// Reads every committed deliverable again.
    void refreshAll();
    /// After a commit: brings the item, and what is below it, to what its folder holds. For an IMP the folder of its
    /// deliverable is read, and the IMP's part alone is applied.
    void updateDelivery(const QModelIndex& index);
    /// Whether the host reports that something which the item refers to is not loaded.
    bool hasMissingAssets(const QModelIndex& index);
    /// Offers to load the deliverables that are missing. For the host to call; nothing in the module does.
    void resolveMissingAssetsIfNeeded(const QModelIndex& index);
    /// Registers a new IMP with the host. @return true when the host failed.
    bool NewIMP(const QByteArray& impCompID);
    /// Registers a new CPL with the host. @return true when the host failed.
    bool NewCPL(const QByteArray& cplCompID, const QByteArray& token);

    /// The description of an item as it travels to the host.
    static IMFO_ItemInfo itemInfo(const QModelIndex& index);

Q_SIGNALS:
    /// A deliverable was added, or replaced by a fresh copy.
    void newDeliveryAdded(const QModelIndex& delivery);
    /// A commit ended without error and the item was updated.
    void commitCompleted();

public Q_SLOTS:
    void onExploreNewDelivery(const QString& fullPath);
    /// Stores the folders of the committed deliverables and the uncommitted items.
    void onSaveSettings();
    void onNewIMFDelivery(const QString& name, IMF_PackageMgr::Version version);
    /// Removes an item from the tree; a committed deliverable is only forgotten, its files stay.
    void onRemoveIMFItem(const QModelIndex& imfIndex);
    /// Reads a deliverable again. @return its new index; invalid when it could not be read.
    QModelIndex onRefreshIMFItem(const QModelIndex& imfIndex);
    void onCommitComplete(const QModelIndex& imfIndex, const IMFO_Bridge::Error& error);
    /// Commits the first of the items.
    void onCommit(const QModelIndexList& selectedItems);
    /// Asks for the folder in which the deliverable will be created.
    void onSetPathButtonClicked(const QModelIndex& index);
    /// Asks the host to rename a deliverable; the caller applies the name. @param newCmpId out: its new identifier.
    bool onRename(const QModelIndex& index, const QString& name, QString& newCmpId);

private:
    class Mailbox;

    /// @return the message for the user; empty when the host took the path.
    Q_INVOKABLE QString setPath(const QString& path, const QModelIndex& index);

    bool tryPath(const QString& path, const QModelIndex& index, QString& message);
    void loadModelFromSettings();
    void loadUncommitedModelState();
    void addDeliveryToModel(const std::shared_ptr<IMF_Node>& node);
    void addDeliveryFromFolder(const QString& path, bool* hasMissing);
    void resolveMissingAssets(const QString& path);
    bool loadMissingDelivery(const QString& folder, const QString& path);
    bool applyAllNeededSettingsAndDescriptiveMetadata(const QModelIndex& index);
    void updateDeliverable(const QModelIndex& delivery, const QJsonObject& document);
    void updateIMP(const QModelIndex& imp, const QJsonObject& delivery);
    void finishCommit(quint64 ticket, const IMFO_Bridge::Error& error);

    IMFO_Bridge* m_bridge;
    std::unique_ptr<ISettingsStorage> m_settings;
    QPointer<IMF_PackageMgrQtModel> m_model;
    std::shared_ptr<Mailbox> m_mailbox;
    std::unordered_map<quint64, QPersistentModelIndex> m_commits;
    quint64 m_nextTicket = 1;
};
