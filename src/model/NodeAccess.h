#pragma once

#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageMgr.h"

#include <QJsonObject>
#include <QString>

#include <optional>

class QVariant;

/// Short questions to a node of any kind. None of them copies a document.
namespace NodeAccess
{

IMF_PackageMgr::NodeType type(const IMF_Node& node);
/// Every payload of today holds a status; a payload without one would count as neither committed nor burnable.
std::optional<IMF_PackageMgr::Status> status(const IMF_Node& node);
QString name(const IMF_Node& node);
/// What the tree shows: a CPL's content title, else the name.
QString displayName(const IMF_Node& node);
const QJsonObject& document(const IMF_Node& node);
QString property(const IMF_Node& node, const QString& key);
bool setProperty(IMF_Node& node, const QString& key, const QVariant& value);
bool isValid(const IMF_Node& node);
/// Whether a CPL was made from the sequence. One without a sequence was made from none, not from the empty identifier.
bool isMadeFrom(const IMF_Node& cpl, const QString& mobId);
/// Whether the node or something below it is uncommitted.
bool hasUncommitted(const IMF_Node& node);

const IMF_Deliverable* deliverable(const IMF_Node& node);
IMF_Deliverable* deliverable(IMF_Node& node);
IMF_IMP* imp(IMF_Node& node);
const IMF_CPL* cpl(const IMF_Node& node);
IMF_CPL* cpl(IMF_Node& node);

} // namespace NodeAccess
