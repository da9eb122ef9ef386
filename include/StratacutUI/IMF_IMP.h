#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QJsonObject>
#include <QString>

#include <memory>
#include <string_view>

class IMF_Node;
class QVariant;

/// The payload of an IMP's node: a document and a cached validity. A value, like IMF_Deliverable.
class STRATACUTUI_EXPORT IMF_IMP
{
public:
    /// @param owner the node that holds this payload
    IMF_IMP(std::weak_ptr<IMF_Node> owner, QJsonObject json, IMF_PackageMgr::Status status);

    const QJsonObject& jsonObject() const { return m_json; }

    /// Replaces the document and checks it.
    void setJsonObject(const QJsonObject& json);
    /// Takes the document of the written IMP: from now on it is committed.
    void updateCommittedJsonObject(const QJsonObject& json);

    QString name() const;
    /// @return whether the name differed and was written
    bool setName(const QString& name);

    /// The parent's identifier, "/", the name.
    QString id() const;

    /// Writes a key at the top level, whether or not it exists. @param key one of ImfDict
    void setValue(std::string_view key, const QString& value);

    IMF_PackageMgr::Status status() const { return m_status; }

    void setStatus(IMF_PackageMgr::Status status) { m_status = status; }

    /// What validateParams() answered when the IMP was made or last changed.
    bool isValid() const { return m_valid; }

    /// Whether the IMP has a name.
    bool validateParams() const;

    /// The value of a key of the document, or else of its descriptive metadata; empty when there is none.
    QString getProperty(const QString& key) const;
    /// Writes a key that exists at either place; never adds one. A value that is no text is a programming error.
    /// @return whether anything was written
    bool setProperty(const QString& key, const QVariant& value);

private:
    std::weak_ptr<IMF_Node> m_owner;
    QJsonObject m_json;
    IMF_PackageMgr::Status m_status;
    bool m_valid = false;
};
