#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

struct IMFO_ItemInfo;
struct IMFO_TrackInfo;

/// The host's IMF output service: it creates, reads, renames, removes and commits package items.
///
/// The host implements this class, owns the object and keeps it alive longer than the item model. The module stores
/// plain pointers and never deletes it. Every call is made on the user-interface thread, fills the error value that it
/// is given (success included) and must not throw. Arguments are valid for the length of the call. Where a slot says no
/// more, a failure is shown to the user, its other results are not looked at, and the action stops there. The user
/// waits for each call. From inside one the host neither changes nor destroys the model, nor runs an event loop, in
/// which the user could. The order of the declarations is the binary interface: a host that was compiled against this
/// header relies on each slot's position.
class STRATACUTUI_EXPORT IMFO_Bridge
{
public:
    /// The outcome of one call: an 8-bit code, zero for success, and a text for the user.
    ///
    /// Two codes mean something to the module: ItemExists (the target path already holds a deliverable) and
    /// WarningOnly (the failure is shown with the warning icon). An error whose code is 0 is a success whatever its
    /// message says.
    class STRATACUTUI_EXPORT IMFO_Error_t
    {
    public:
        enum Code : quint8 { Success = 0, ItemExists = 3, WarningOnly = 32 };

        IMFO_Error_t() = default;

        IMFO_Error_t(quint8 code, const QString& message) : m_code(code), m_message(message) {}

        IMFO_Error_t(const IMFO_Error_t&) = default;
        IMFO_Error_t& operator=(const IMFO_Error_t&) = default;

        virtual ~IMFO_Error_t();
        /// True when the code is not zero.
        virtual bool isError() const;
        virtual quint8 code() const;
        /// The text for the user, shown verbatim. It names the file, the item and the next step.
        virtual QString message() const;

    private:
        quint8 m_code = Success;
        QString m_message;
    };

    /// The same type under the name that slot signatures use.
    using Error = IMFO_Error_t;

    /// Called by the host once, from any thread, when a commit has ended. Copyable.
    using CommitCallback = std::function<void(const IMFO_Error_t&)>;

    /// Slot 0.
    virtual ~IMFO_Bridge();

    /// Slot 1. Reads the deliverable stored in the folder `path`.
    /// @param result its component identifier and its whole document with nested "Children", in tree order. "Path" is
    ///        the folder, "Mutable" is false. A host that fails leaves its last good document here, if it has one, so
    ///        that a refresh that ignores the failure blanks nothing.
    virtual void readDelivery(IMFO_Error_t& error, const QString& path, std::pair<QByteArray, QJsonObject>& result) = 0;

    /// Slot 2. Describes a component as JSON. A member "MissingAssets" anywhere inside says that something which the
    /// component refers to is not loaded; the member's mere presence counts, so it is left out when nothing is missing.
    /// A failure is shown and counts as nothing missing.
    /// @param recursive whether the items below the component are described too; the module passes true.
    virtual void getDeliveryInfo(IMFO_Error_t& error, const QByteArray& componentId, QJsonObject& info,
                                 bool recursive) = 0;

    /// Slot 3. Reserved: the module does not call it. Leave the error at success.
    virtual void reserved3(IMFO_Error_t& error) = 0;
    /// Slot 4. Reserved: the module does not call it. Leave the error at success.
    virtual void reserved4(IMFO_Error_t& error) = 0;
    /// Slot 5. Reserved: the module does not call it. Leave the error at success.
    virtual void reserved5(IMFO_Error_t& error) = 0;

    /// Slot 6. Registers a new deliverable; nothing is written to disk yet.
    /// @param path in: the parent folder wanted, or empty; out: the parent folder chosen. The commit will create a
    ///        folder of the deliverable's name inside it.
    /// @param original true for an IMF Original, false for an IMF Supplemental.
    /// @param componentId out: an identifier that is unique for each folder and stays until the item is renamed. It is
    ///        not empty. After a failure no deliverable is added.
    virtual void createDelivery(IMFO_Error_t& error, const QString& name, QString& path, bool original,
                                QString& componentId) = 0;

    /// Slot 7. Forgets the component. The files of a committed deliverable stay on disk. A failure with an empty
    /// message counts as success.
    virtual void removeItem(IMFO_Error_t& error, const QByteArray& componentId) = 0;

    /// Slot 8. Starts to commit the deliverable or IMP, with all that it contains, and returns at once. The documents
    /// and settings to write came before, through slots 13 and 14.
    /// @param error a failure to start, which is shown; `onDone` is then not called.
    /// @param onDone called once with the outcome, from any thread. It may outlive the item, the controller and the
    ///        model: it is then without effect.
    virtual void commit(IMFO_Error_t& error, const IMFO_ItemInfo& item, CommitCallback onDone) = 0;

    /// Slot 9. Registers a new IMP. After a failure the IMP stays in the tree all the same. While saved work is
    /// restored a failure is not shown, and the IMP is left out.
    /// @param impComponentId the deliverable's identifier, "/", the IMP's name, in UTF-8.
    /// @param descriptiveMetadata UTF-8 text, empty or a compact JSON object.
    virtual void createIMP(IMFO_Error_t& error, const QByteArray& impComponentId,
                           const QByteArray& descriptiveMetadata) = 0;

    /// Slot 10. Registers a new CPL. A failure counts as that of slot 9 does.
    /// @param cplComponentId the IMP's identifier, "/", the CPL's name, in UTF-8.
    /// @param token what MXE_Bridge::sequenceToken answered for the CPL's sequence.
    /// @param reserved always empty.
    virtual void createCPL(IMFO_Error_t& error, const QByteArray& cplComponentId, const QByteArray& token,
                           const QByteArray& reserved) = 0;

    /// Slot 11. Chooses the folder in which the deliverable will be created. After a failure the former folder holds,
    /// and the user may choose again. Code ItemExists says that a deliverable of that name is there already: the module
    /// then shows a text of its own in place of the error's.
    /// @param actualPath out: the folder as the host stores it. The module keeps `path`.
    virtual void setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& path,
                             QString& actualPath) = 0;

    /// Slot 12. Renames a deliverable. After a failure the former name holds.
    /// @param newComponentId out: the identifier from now on; the host fills it also where it did not change.
    virtual void renameItem(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& name,
                            QString& newComponentId) = 0;

    /// Slot 13. Stores a CPL's output settings, before a commit. After a failure nothing is committed.
    /// @param commitSettingsJson compact JSON text: what the CPL's TargetFormatBuilder::settings() answered.
    virtual void applyCommitSettings(IMFO_Error_t& error, const QString& commitSettingsJson,
                                     const IMFO_ItemInfo& item) = 0;

    /// Slot 14. Stores an item's document, before a commit. After a failure nothing is committed.
    /// @param metadataJson compact JSON text of the item's whole document. It is the truth about the item, its name
    ///        included: a local rename reaches the host only here.
    virtual void applyDescriptiveMetadata(IMFO_Error_t& error, const QString& metadataJson,
                                          const IMFO_ItemInfo& item) = 0;

    /// Slot 15. Describes the tracks and parameters of a committed CPL. A failure is not shown; the CPL's document then
    /// stays as slot 1 gave it.
    /// @param tracks out: one entry a parameter, keyed by the document keys of the "Video" and "Audio" sections,
    ///        "ContentKind" and "Multiple Audio Mix". A parameter that neither this nor the document names is shown
    ///        with the value of the CPL's target-format builder.
    /// @param cplId the CPL's identifier in UTF-8.
    virtual void getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>& tracks,
                                 const QByteArray& cplId) = 0;
};

/// Completion of a commit.
using IMFO_CommitCallback = IMFO_Bridge::CommitCallback;

/// One package item as it travels over IMFO_Bridge. The controller builds it from a model index; an invalid index gives
/// empty fields, node type 0 and version 0.
struct IMFO_ItemInfo {
    /// The deliverable's identifier, or the parent's identifier, "/", the name.
    QByteArray componentId;
    /// The item's document as compact JSON text.
    QString metadataJson;
    /// The CPL's output settings as compact JSON text; the text of an empty object for other items.
    QString commitSettingsJson;
    IMF_PackageMgr::NodeType nodeType = IMF_PackageMgr::Delivery;
    /// The version of the deliverable that contains the item.
    IMF_PackageMgr::Version version = IMF_PackageMgr::None;
};

/// What the host knows of one parameter of a committed CPL.
struct IMFO_TrackInfo {
    /// The choices, for the user to read; an entry without any is ignored. For "ContentKind" a code of the list of
    /// content kinds (ST 2067-3) or the module's label of one.
    QStringList values;
    /// The position of the current choice in `values`, counted from 0; -1 when there is none.
    int currentIndex = -1;
    /// "Multiple Audio Mix" only: the "AudioMapping" array, in the present or the older form.
    QJsonArray audioMapping;
};

Q_DECLARE_METATYPE(IMFO_Bridge::IMFO_Error_t)
