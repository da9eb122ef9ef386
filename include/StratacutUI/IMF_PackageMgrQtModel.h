#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QAbstractItemModel>
#include <QByteArray>
#include <QIcon>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QPixmap>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

class IMFO_Bridge;
class IMF_Controller;
class IMF_Deliverable;
class IMF_Node;
class ISettingsStorage;

/// The package tree as a two-column item model: deliverables, their IMPs (ST 2067-2:2020) and their CPLs
/// (ST 2067-3:2020). Every view, the controller and the saved state read package items through its roles alone.
///
/// The host constructs it on the user-interface thread, after it has installed the media-engine bridge, and calls
/// initialize() once. The model owns the tree, the controller and the track data models of the sequences in use. An
/// index carries the address of its node; it is valid until the next structural change, as with every item model.
class STRATACUTUI_EXPORT IMF_PackageMgrQtModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// The numbers are part of the interface.
    enum Roles {
        ComponentIdRole = 257,    ///< QByteArray: the item's identifier.
        PathRole = 258,           ///< QString: the folder of a deliverable; empty for other items.
        NameRole = 259,           ///< QString: the name in the document.
        MetadataRole = 260,       ///< QJsonObject: the item's whole document. Written by a pair of key and text.
        CommitSettingsRole = 261, ///< QJsonObject: the output settings of a CPL; invalid for other items.
        StatusRole = 262,         ///< int: IMF_PackageMgr::Status.
        NodeTypeRole = 263,       ///< int: IMF_PackageMgr::NodeType.
        VersionRole = 264,        ///< int: IMF_PackageMgr::Version of the deliverable that contains the item.
        ValidRole = 265,          ///< bool: nothing that the item needs is missing.
        BurnableRole = 266,       ///< bool: the item can be committed now.
        IssuerRole = 267,         ///< QString. Written by text, or a pair of key and text.
        CreatorRole = 268,        ///< QString. Written by text, or a pair of key and text.
        MultiMixRole = 281,       ///< Write-only, QJsonObject: the multiple audio mix of a CPL.
        ContentTitleRole = 284,   ///< QString: of a CPL. Written by text, or a pair of key and text.
        AudioGroupingRole = 286,  ///< QAbstractItemModel*: a CPL's track data model, filled when first asked for.
        TrackGroupsRole = 287,    ///< QJsonArray: the group profiles; invalid when the item has none.
    };
    Q_ENUM(Roles)

    explicit IMF_PackageMgrQtModel(QObject* parent = nullptr);
    ~IMF_PackageMgrQtModel() override;

    /// Creates the controller, which at once loads the saved state into the tree; a controller that was there goes.
    /// @param bridge must outlive the model; without one nothing happens. @param settings is kept by the controller.
    void initialize(IMFO_Bridge* bridge, std::unique_ptr<ISettingsStorage> settings);
    /// Null before initialize().
    IMF_Controller* getIMFController() const;

    /// The root has no index: this is the invalid one.
    QModelIndex rootIndex() const;
    int columnCount(const QModelIndex& parent = {}) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    using QObject::parent;
    QModelIndex parent(const QModelIndex& child) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Writes through the edit role, 258, 260, 267, 268, 281, 284 and 287; any other role answers true and changes
    /// nothing. 260, 267, 268, 281 and 284 answer true also where the item refuses the value: dataChanged tells.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    bool event(QEvent* event) override;

    // Sequences are dragged in from the host and become CPLs; CPLs can be dragged out, by their identifiers.

    /// "stratacut.IMF", which is only advertised, and the host's "application/x-dnditemdata".
    QStringList mimeTypes() const override;
    /// "IMF_Tool/CPL": a compact JSON array with the identifier of each index. Never null; the caller owns it.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    /// Moving alone.
    Qt::DropActions supportedDropActions() const override;
    /// Whether the action is one of supportedDropActions() and the host's format is there.
    bool isMimeTypeSupported(Qt::DropAction action, const QMimeData* mime) const;
    /// Whether one of the dragged media is a sequence.
    bool isDraggingSequence(const QMimeData* mime) const;
    bool canDropMimeData(const QMimeData* mime, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    /// Makes a CPL of each dragged medium: in an IMP, in a new IMP of a deliverable, or, dropped on no item, in a
    /// new deliverable that the user is asked about. The new rows come last whatever `row` says. Ends with
    /// sequenceDropped.
    /// @return false when nothing was created: refused by canDropMimeData, by the user or by the host, or dropped on a
    ///         CPL.
    bool dropMimeData(const QMimeData* mime, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    static void* ToInternalPointer(IMF_Node* node);
    static IMF_Node* FromInternalPointer(void* pointer);
    /// The node behind an index; the root for an invalid one. An index of another model is a programming error, and
    /// counts as invalid.
    std::shared_ptr<IMF_Node> FromIndex(const QModelIndex& index) const;
    /// The index of a node; invalid for the root and for a node outside this tree.
    QModelIndex indexOf(const IMF_Node* node, int column = 0) const;

    // What a role answers, converted; an empty value or 0 for an invalid index. For any model that hands on the roles.
    static QByteArray ComponentIDFromIndex(const QModelIndex& index);
    static QJsonObject MetadataJsonFromIndex(const QModelIndex& index);
    static QJsonObject CommitSettingsJsonFromIndex(const QModelIndex& index);
    static IMF_PackageMgr::Status StatusFromIndex(const QModelIndex& index);
    static IMF_PackageMgr::NodeType NodeTypeFromIndex(const QModelIndex& index);
    static IMF_PackageMgr::Version VersionFromIndex(const QModelIndex& index);

    // Finding items. Where several match, the row that was just appended is meant, then the first.

    /// The deliverable whose stored path is `path`; a committed one goes before an uncommitted one.
    QModelIndex getDeliveryModelIndex(const QString& path) const;
    /// The first committed deliverable in the folder `path`.
    QModelIndex getCommittedDeliveryModelIndex(const QString& path) const;
    QModelIndex getIMPModelIndex(const QModelIndex& delivery, const QString& name) const;
    QModelIndex getCPLModelIndex(const QModelIndex& imp, const QString& name) const;
    /// The first CPL made from a sequence.
    QModelIndex mobToIndex(const QString& mobId) const;
    /// The children of `parent`, in row order, that are uncommitted or contain something uncommitted.
    QModelIndexList getUnBurnedIndexes(const QModelIndex& parent) const;
    /// Calls `visitor` with each deliverable in row order.
    void deliveriesVisitor(const std::function<void(const IMF_Deliverable&)>& visitor) const;

    QByteArray getComponendID(const QModelIndex& index) const;
    QByteArray getComponendID(const std::shared_ptr<IMF_Node>& node) const;
    /// A committed deliverable: its folder. An uncommitted one: the folder that its commit will create. Else empty.
    QString getIMFPath(const QModelIndex& index) const;
    /// A bool: false for CPLs and committed items.
    QVariant IsBurnable(const QModelIndex& index) const;
    /// Whether a drop would land on something committed; a deliverable always takes drops.
    bool IsDroppingOnCommitedItem(int row, int column, const QModelIndex& parent) const;
    /// The item's document as saved state holds it: a CPL's with its sequence and its track groups. Without children.
    QJsonObject serializeIndexToJson(const QModelIndex& index) const;

    /// Appends `node`, which must not be null, below `parent` and makes it that node's child.
    void push_back(const QModelIndex& parent, const std::shared_ptr<IMF_Node>& node);
    /// Puts `node`, which must not be null, in the place of a row. Persistent indexes of the row follow to the new
    /// node; those of items below it become invalid, as do the track data of its CPLs.
    /// @return the index of the new node; invalid when `index` is.
    QModelIndex replace(const QModelIndex& index, const std::shared_ptr<IMF_Node>& node);
    /// Removes the row from the tree. False for an invalid index.
    bool removeIndex(const QModelIndex& index);

    /// Adds an IMP with default values and a name that no sibling has.
    std::shared_ptr<IMF_Node> addIMPNode(const std::shared_ptr<IMF_Node>& deliverable);
    /// Adds a CPL made from the sequence `mobId`.
    void addCPLNode(const QString& mobId, const std::shared_ptr<IMF_Node>& imp);
    /// Adds a CPL for each sequence, in list order; on a deliverable, below a new IMP.
    void createCPLFromMobs(const QStringList& mobIds, const QModelIndex& impIndex);

    void addTrackGroups(const QByteArray& componentId, const QJsonArray& groups);
    /// Registers a CPL as a user of the track data model of the sequence `key`, which is created for its first user.
    /// Nothing happens for an unknown identifier, an item that is no CPL and an empty key.
    void addTrackModel(const QByteArray& componentId, const QString& key);
    void addTrackModel(const QModelIndex& cpl, const QString& key);
    /// Forgets the track data model of a sequence; its CPLs have none from then on.
    void unregisterTrackDataModel(const QString& key);
    /// Forgets the track groups of every CPL in the subtree, and its use of a track data model. Groups that a CPL
    /// shares by its identifier with one outside the subtree stay.
    void removeTracksData(const QModelIndex& index);
    /// Runs a change that may alter identifiers in the subtree and carries the track groups over to the new ones.
    void keepTrackGroups(const std::shared_ptr<IMF_Node>& subtree, const std::function<void()>& change);

Q_SIGNALS:
    void notifyNewIMPCreated(const QByteArray& impCompID);
    void notifyNewCPLCreated(const QByteArray& cplCompID, const QByteArray& token);
    /// Sequences were dropped on `parent`, which had `row` children before.
    void sequenceDropped(const QModelIndex& parent, int row);

public Q_SLOTS:
    /// The host tells that a sequence changed or went: the CPLs made from it check themselves.
    void onMobStatusChanged(const QString& mobID);

private:
    struct TrackModel {
        QPointer<QAbstractItemModel> model;
        std::unordered_map<const IMF_Node*, std::weak_ptr<IMF_Node>> users;
    };
    class ParkedIndexes;

    /// Tells of a new item, by its identifier.
    using Announcement = std::function<void(const QByteArray& componentId)>;
    /// What is told to the host once a drop's rows stand.
    using Announcements = std::vector<std::pair<std::weak_ptr<IMF_Node>, Announcement>>;

    QModelIndex dropTarget(const QModelIndex& parent);
    void insertDropped(const QStringList& mobIds, const QModelIndex& target, int row);
    void announce(const std::shared_ptr<IMF_Node>& item, Announcement announcement);
    void updateIcons();
    QVariant decoration(const IMF_Node& node, int column) const;
    QVariant audioGrouping(const QModelIndex& index) const;
    QVariant trackGroups(const QModelIndex& index) const;
    bool setName(const QModelIndex& index, const QVariant& value);
    bool setPath(const QModelIndex& index, const QVariant& value);
    void setProperty(const QModelIndex& index, const QVariant& value, int role);
    void setContentTitle(const QModelIndex& index, const QVariant& value);
    void emitRowChanged(const QModelIndex& index, const QVector<int>& roles);
    QModelIndex childByName(const QModelIndex& parent, const QString& name, IMF_PackageMgr::NodeType parentType) const;
    std::shared_ptr<IMF_Node> nodeByComponentId(const QByteArray& componentId, const IMF_Node* except = nullptr) const;
    bool isIdentifierShared(const std::shared_ptr<IMF_Node>& node) const;
    void append(const std::shared_ptr<IMF_Node>& parent, const std::shared_ptr<IMF_Node>& node);
    void registerTrackModel(const std::shared_ptr<IMF_Node>& node, const QString& key);
    void releaseTrackModel(const std::shared_ptr<IMF_Node>& node);
    void releaseTrackModels(const std::shared_ptr<IMF_Node>& subtree);

    std::shared_ptr<IMF_Node> m_root;
    std::unordered_map<int, QIcon> m_icons;
    std::array<QPixmap, 3> m_statusImages;
    QMap<QByteArray, QJsonArray> m_trackGroups;
    QMap<QString, TrackModel> m_trackModels;
    std::unordered_map<const IMF_Node*, QString> m_trackKeys;
    std::weak_ptr<IMF_Node> m_justAppended;
    /// Not null while a drop creates its items.
    std::unique_ptr<Announcements> m_dropAnnouncements;
    std::shared_ptr<IMF_Node> m_parking;
    std::unique_ptr<IMF_Controller> m_controller;
};
