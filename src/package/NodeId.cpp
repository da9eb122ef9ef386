#include "NodeId.h"

#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"

QString NodeId::below(const std::weak_ptr<IMF_Node>& owner, const QString& name)
{
    const std::shared_ptr<IMF_Node> node = owner.lock();
    const std::shared_ptr<IMF_Node> parent = node ? node->getParent() : nullptr;
    const QString parentId = parent ? boost::apply_visitor(IMF_Utils::GetIdVisitor(), parent->value()) : QString();
    return parentId + QLatin1Char('/') + name;
}
