#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <memory>

class IMF_Node;
class QVariant;

/// The payload of a delivery's node: a document, the component identifier that the host gave it, and a cached
/// validity by which views mark incomplete items. A value: copies share the document until one of them is changed.
class STRATACUTUI_EXPORT IMF_Deliverable
{
public:
    /// No owner, an empty document, uncommitted, of no version, not valid.
    IMF_Deliverable() = default;
    /// Version and status come from the document: "Original" counts before "Kind"; without "Mutable" the delivery is
    /// uncommitted.
    /// @param owner the node that holds this payload
    /// @param path overrides the document's "Path"
    /// @param name overrides the document's "Name"
    IMF_Deliverable(std::weak_ptr<IMF_Node> owner, QString path, QString name, QByteArray componentID,
                    QJsonObject json);

    const QJsonObject& jsonObject() const { return m_json; }

    /// Replaces the document; the validity stays as it was.
    void setJsonObject(const QJsonObject& json);
    /// Takes the document of the written delivery: from now on it is committed.
    void updateCommittedJsonObject(const QJsonObject& json);

    QString name() const;
    /// @return whether the name differed and was written
    bool setName(const QString& name);
    /// The delivery's folder, or the parent folder wanted while it is uncommitted; empty when none is chosen.
    QString path() const;
    void setPath(const QString& path);

    /// The component identifier as text.
    QString id() const;

    const QByteArray& compID() const { return m_componentID; }

    void setComponentID(const QByteArray& componentID) { m_componentID = componentID; }

    IMF_PackageMgr::Status status() const { return m_status; }

    void setStatus(IMF_PackageMgr::Status status) { m_status = status; }

    IMF_PackageMgr::Version version() const { return m_version; }

    void setVersion(IMF_PackageMgr::Version version) { m_version = version; }

    /// What validateParams() answered when the delivery was made or last changed.
    bool isValid() const { return m_valid; }

    /// Whether the delivery has a name, a path and all required metadata.
    bool validateParams() const;

    /// The value of a key of the document, or else of its descriptive metadata; empty when there is none.
    QString getProperty(const QString& key) const;
    /// Writes a key that exists at either place; never adds one. A value that is no text is a programming error.
    /// @return whether anything was written
    bool setProperty(const QString& key, const QVariant& value);

    /// Whether both lie in the same folder.
    bool operator==(const IMF_Deliverable& other) const;
    /// Whether the delivery lies in this folder. Plain comparison: folders are not normalised.
    bool operator==(const QString& path) const;

private:
    std::weak_ptr<IMF_Node> m_owner;
    QJsonObject m_json;
    QByteArray m_componentID;
    IMF_PackageMgr::Status m_status = IMF_PackageMgr::Uncommitted;
    IMF_PackageMgr::Version m_version = IMF_PackageMgr::None;
    bool m_valid = false;
};
