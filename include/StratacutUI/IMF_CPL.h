#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QAbstractItemModel>
#include <QJsonObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <string>
#include <string_view>

class IMF_Node;
class QJsonArray;
class QVariant;
class TargetFormatBuilder;

/// The host sequence from which a CPL is made. All fields are empty for a CPL that was read from disk.
struct CPL_TokenInfo {
    /// The host's identifier of the sequence.
    QString mobID;
    /// In the spelling of the target-format builder's choices.
    QString frameRate;
    QString projectName;
    QString bin;
    /// Opaque text of the host, UTF-8.
    std::string token;
};

/// The payload of a CPL's node. Beside its document it carries the sequence that the CPL is made from and the host's
/// builder of its output format, and keeps the document in step with both: encoding parameters are changed in the
/// builder and the sections "Video" and "Audio" follow; a committed CPL shows what the output bridge reports.
/// Used on the user-interface thread. A value: copies share the builder.
class STRATACUTUI_EXPORT IMF_CPL
{
public:
    /// Asks the media-engine bridge for the builder, hands it the choices that the document holds, and brings the
    /// document in step. Without a bridge the document stays as it is.
    /// @param owner the node that holds this payload; its parent must be set, as the CPL's identifier goes to the host
    IMF_CPL(std::weak_ptr<IMF_Node> owner, QJsonObject json, IMF_PackageMgr::Status status);

    const QJsonObject& jsonObject() const { return m_json; }

    /// Replaces the document and checks it.
    void setJsonObject(const QJsonObject& json);
    /// Takes the document of the written CPL, refreshed from the host: from now on it is committed.
    void updateCommittedJsonObject(const QJsonObject& json);

    QString name() const;
    /// Refuses: a CPL keeps the name it was made with. What a user edits is the content title.
    bool setName(const QString& name);
    /// The same as setContentTitle.
    bool setDisplayName(const QString& name);
    QString contentTitle() const;
    /// @return whether the title differed and was written; false for a committed CPL
    bool setContentTitle(const QString& title);

    /// The parent's identifier, "/", the name.
    QString id() const;

    /// The value of a key of the document, or else of its descriptive metadata; empty when there is none.
    QString getProperty(const QString& key) const;
    /// The value of a key at the top level. @param key one of ImfDict
    QString value(std::string_view key) const;
    /// Changes an encoding parameter (in the builder), the multi-mix (a QJsonObject), or a key that the document has.
    /// @return whether anything changed; false for a committed CPL
    bool setProperty(const QString& key, const QVariant& value);

    /// The builder's settings for the commit; empty without a builder.
    QString settings() const;

    const CPL_TokenInfo& tokenInfo() const { return m_tokenInfo; }

    /// Sets the sequence and checks whether the host has it.
    void setTokenInfo(const CPL_TokenInfo& info);

    IMF_PackageMgr::Status status() const { return m_status; }

    void setStatus(IMF_PackageMgr::Status status) { m_status = status; }

    /// What validateParams() answered last.
    bool isValid() const { return m_valid; }

    /// False when the output offers no such frame rate as the sequence has.
    bool isValidFPS() const { return m_validFPS; }

    /// The model of the CPL's audio track groups; null when there is none or it is gone. Not owned.
    QAbstractItemModel* getAudioGroupingModel() const { return m_audioGroupingModel; }

    void setAudioGroupingModel(QAbstractItemModel* model) { m_audioGroupingModel = model; }

    void resetAudioGroupingModel() { m_audioGroupingModel = nullptr; }

    /// Checks that the CPL has a name and that its sequence, if it names one, exists in the host. To be called again
    /// when the host says that the sequence has changed.
    bool validateParams();

private:
    void InitializeMultiMix();
    void UpdateJsonFromTargetFormatBuilder();
    void UpdateJsonFromAAF();
    void UpdateFPSJsonValueFromTargetFormatBuilder();
    void UpdateCommittedMapping(const QJsonArray& reported);
    void UpdateCommittedFrameRate();
    void UpdateContentKind(const QString& kind);
    bool SetMultiMix(const QJsonObject& multiMix);
    bool SetStringProperty(const QString& key, const QString& text);
    bool SetContentKind(const QString& kind);
    void StoreMultiMix(const QJsonObject& multiMix);

    std::weak_ptr<IMF_Node> m_owner;
    QJsonObject m_json;
    CPL_TokenInfo m_tokenInfo;
    IMF_PackageMgr::Status m_status;
    bool m_valid = false;
    bool m_validFPS = true;
    std::shared_ptr<TargetFormatBuilder> m_targetFormatBuilder;
    QPointer<QAbstractItemModel> m_audioGroupingModel;
};
