#include "StratacutUI/IMF_IMP.h"

#include "DocumentText.h"
#include "NodeId.h"
#include "NvCore/Assert.h"

#include <QVariant>

IMF_IMP::IMF_IMP(std::weak_ptr<IMF_Node> owner, QJsonObject json, IMF_PackageMgr::Status status)
    : m_owner(std::move(owner)), m_json(std::move(json)), m_status(status), m_valid(validateParams())
{
}

void IMF_IMP::setJsonObject(const QJsonObject& json)
{
    m_json = json;
    m_valid = validateParams();
}

void IMF_IMP::updateCommittedJsonObject(const QJsonObject& json)
{
    m_status = IMF_PackageMgr::Committed;
    setJsonObject(json);
}

QString IMF_IMP::name() const
{
    return DocumentText::name(m_json);
}

bool IMF_IMP::setName(const QString& name)
{
    return DocumentText::setName(m_json, name);
}

QString IMF_IMP::id() const
{
    return NodeId::below(m_owner, name());
}

void IMF_IMP::setValue(std::string_view key, const QString& value)
{
    m_json[QLatin1String(key.data(), static_cast<int>(key.size()))] = value;
}

bool IMF_IMP::validateParams() const
{
    return !name().isEmpty();
}

QString IMF_IMP::getProperty(const QString& key) const
{
    return DocumentText::read(m_json, key);
}

bool IMF_IMP::setProperty(const QString& key, const QVariant& value)
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
