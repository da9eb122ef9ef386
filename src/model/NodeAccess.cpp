#include "NodeAccess.h"

#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/ImfDict.h"

#include <QVariant>

#include <algorithm>

namespace
{
/// Applies a callable that takes any payload.
template <typename Value, typename Visitor>
decltype(auto) visit(Value& value, Visitor&& visitor)
{
    return boost::apply_visitor(std::forward<Visitor>(visitor), value);
}
} // namespace

IMF_PackageMgr::NodeType NodeAccess::type(const IMF_Node& node)
{
    return static_cast<IMF_PackageMgr::NodeType>(node.value().which());
}

std::optional<IMF_PackageMgr::Status> NodeAccess::status(const IMF_Node& node)
{
    return visit(node.value(), [](const auto& payload) { return std::optional(payload.status()); });
}

QString NodeAccess::name(const IMF_Node& node)
{
    return visit(node.value(), [](const auto& payload) { return payload.name(); });
}

QString NodeAccess::displayName(const IMF_Node& node)
{
    const IMF_CPL* payload = cpl(node);
    return payload ? payload->contentTitle() : name(node);
}

const QJsonObject& NodeAccess::document(const IMF_Node& node)
{
    return *visit(node.value(), [](const auto& payload) { return &payload.jsonObject(); });
}

QString NodeAccess::property(const IMF_Node& node, const QString& key)
{
    return visit(node.value(), [&key](const auto& payload) { return payload.getProperty(key); });
}

bool NodeAccess::setProperty(IMF_Node& node, const QString& key, const QVariant& value)
{
    return visit(node.value(), [&](auto& payload) { return payload.setProperty(key, value); });
}

bool NodeAccess::isValid(const IMF_Node& node)
{
    return visit(node.value(), [](const auto& payload) { return payload.isValid(); });
}

bool NodeAccess::isMadeFrom(const IMF_Node& cpl, const QString& mobId)
{
    return !mobId.isEmpty() && property(cpl, QString::fromLatin1(ImfDict::CPLMobID)) == mobId;
}

bool NodeAccess::hasUncommitted(const IMF_Node& node)
{
    return status(node) == IMF_PackageMgr::Uncommitted ||
           std::any_of(node.begin(), node.end(), [](const auto& child) { return hasUncommitted(*child); });
}

const IMF_Deliverable* NodeAccess::deliverable(const IMF_Node& node)
{
    return boost::get<IMF_Deliverable>(&node.value());
}

IMF_Deliverable* NodeAccess::deliverable(IMF_Node& node)
{
    return boost::get<IMF_Deliverable>(&node.value());
}

IMF_IMP* NodeAccess::imp(IMF_Node& node)
{
    return boost::get<IMF_IMP>(&node.value());
}

const IMF_CPL* NodeAccess::cpl(const IMF_Node& node)
{
    return boost::get<IMF_CPL>(&node.value());
}

IMF_CPL* NodeAccess::cpl(IMF_Node& node)
{
    return boost::get<IMF_CPL>(&node.value());
}
