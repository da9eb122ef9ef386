#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QJsonObject>
#include <QString>

#include <boost/variant/static_visitor.hpp>

class IMF_Deliverable;
class IMF_IMP;
class IMF_CPL;

/// Default documents, and the questions that can be put to a node of any kind:
/// `boost::apply_visitor(IMF_Utils::GetIdVisitor(), node->value())`.
namespace IMF_Utils
{

/// The document from which a new item of the kind starts; an empty object for a number that is no kind.
STRATACUTUI_EXPORT QJsonObject getDefaultJsonObject(IMF_PackageMgr::NodeType type);

/// The node's kind.
class STRATACUTUI_EXPORT NodeTypeVisitor : public boost::static_visitor<IMF_PackageMgr::NodeType>
{
public:
    IMF_PackageMgr::NodeType operator()(const IMF_Deliverable& deliverable) const;
    IMF_PackageMgr::NodeType operator()(const IMF_IMP& imp) const;
    IMF_PackageMgr::NodeType operator()(const IMF_CPL& cpl) const;
};

/// A copy of the node's document.
class STRATACUTUI_EXPORT GetJsonVisitor : public boost::static_visitor<QJsonObject>
{
public:
    QJsonObject operator()(const IMF_Deliverable& deliverable) const;
    QJsonObject operator()(const IMF_IMP& imp) const;
    QJsonObject operator()(const IMF_CPL& cpl) const;
};

/// The node's identifier: a delivery's component identifier; for the others the parent's identifier, "/", the name.
class STRATACUTUI_EXPORT GetIdVisitor : public boost::static_visitor<QString>
{
public:
    QString operator()(const IMF_Deliverable& deliverable) const;
    QString operator()(const IMF_IMP& imp) const;
    QString operator()(const IMF_CPL& cpl) const;
};

} // namespace IMF_Utils
