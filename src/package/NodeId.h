#pragma once

#include <QString>

#include <memory>

class IMF_Node;

namespace NodeId
{

/// The identifier of an item below another: the parent's identifier, "/", the name. Without a living owner that has a
/// living parent it is "/" and the name.
QString below(const std::weak_ptr<IMF_Node>& owner, const QString& name);

} // namespace NodeId
