#include "StratacutUI/IMF_Deliverable.h"

#include "DocumentText.h"
#include "NvCore/Assert.h"
#include "StratacutUI/ImfDict.h"

#include <QStringList>
#include <QVariant>

#include <algorithm>

namespace
{
const QStringList& requiredKeys()
{
    static const QStringList keys{QString::fromLatin1(ImfDict::Path)};
    return keys;
}

bool isFilled(const QJsonObject& document, const QString& key)
{
    const QJsonObject metadata = document.value(QLatin1String(ImfDict::DescriptiveMetadata)).toObject();
    return !document.value(key).toString().isEmpty() || !metadata.value(key).toString().isEmpty();
}

IMF_PackageMgr::Version versionOf(const QJsonObject& document)
{
    const QJsonValue original = document.value(QLatin1String(ImfDict::Original));
    if (!original.isUndefined())
        return original.toBool() ? IMF_PackageMgr::Original : IMF_PackageMgr::Supplemental;
    const QJsonValue kind = document.value(QLatin1String(ImfDict::Kind));
    if (!kind.isUndefined())
        return kind.toString() == QLatin1String("Original") ? IMF_PackageMgr::Original : IMF_PackageMgr::Supplemental;
    return IMF_PackageMgr::None;
}
} // namespace

IMF_Deliverable::IMF_Deliverable(std::weak_ptr<IMF_Node> owner, QString path, QString name, QByteArray componentID,
                                 QJsonObject json)
    : m_owner(std::move(owner)), m_json(std::move(json)), m_componentID(std::move(componentID))
{
    setName(name);
    setPath(path);
    m_version = versionOf(m_json);
    const QJsonValue isMutable = m_json.value(QLatin1String(ImfDict::Mutable));
    if (!isMutable.isUndefined())
        m_status = isMutable.toBool() ? IMF_PackageMgr::Uncommitted : IMF_PackageMgr::Committed;
    m_valid = validateParams();
}

void IMF_Deliverable::setJsonObject(const QJsonObject& json)
{
    m_json = json;
}

void IMF_Deliverable::updateCommittedJsonObject(const QJsonObject& json)
{
    m_status = IMF_PackageMgr::Committed;
    setJsonObject(json);
}

QString IMF_Deliverable::name() const
{
    return DocumentText::name(m_json);
}

bool IMF_Deliverable::setName(const QString& name)
{
    return DocumentText::setName(m_json, name);
}

QString IMF_Deliverable::path() const
{
    return m_json.value(QLatin1String(ImfDict::Path)).toString();
}

void IMF_Deliverable::setPath(const QString& path)
{
    m_json[QLatin1String(ImfDict::Path)] = path;
    m_valid = validateParams();
}

QString IMF_Deliverable::id() const
{
    return QString::fromUtf8(m_componentID);
}

bool IMF_Deliverable::validateParams() const
{
    if (name().isEmpty() || path().isEmpty())
        return false;
    return std::all_of(requiredKeys().begin(), requiredKeys().end(),
                       [this](const QString& key) { return isFilled(m_json, key); });
}

QString IMF_Deliverable::getProperty(const QString& key) const
{
    return DocumentText::read(m_json, key);
}

bool IMF_Deliverable::setProperty(const QString& key, const QVariant& value)
{
    if (!value.canConvert<QString>()) {
        NV_ASSERT(false);
        return false;
    }
    if (!DocumentText::write(m_json, key, value.toString()))
        return false;
    m_valid = validateParams();
    return true;
}

bool IMF_Deliverable::operator==(const IMF_Deliverable& other) const
{
    return path() == other.path();
}

bool IMF_Deliverable::operator==(const QString& path) const
{
    return this->path() == path;
}
