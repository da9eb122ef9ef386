#include "StratacutUI/IMF_Node.h"

#include <algorithm>

namespace
{
// Hints that are no position: the node stands in no list, or in more than one, where no single hint can be right.
constexpr int Unlisted = -1;
constexpr int SeveralLists = -2;

class NameVisitor : public boost::static_visitor<QString>
{
public:
    template <class Payload>
    QString operator()(const Payload& payload) const
    {
        return payload.name();
    }
};
} // namespace

struct IMF_Node::Allocated final : IMF_Node {
    explicit Allocated(std::weak_ptr<IMF_Node> parent) : IMF_Node(std::move(parent)) {}
};

IMF_Node::IMF_Node(std::weak_ptr<IMF_Node> parent) : m_parent(std::move(parent)), m_positionHint(Unlisted) {}

IMF_Node::~IMF_Node()
{
    for (const auto& child : m_children)
        child->leaveList();
}

std::shared_ptr<IMF_Node> IMF_Node::Create()
{
    return Create({});
}

std::shared_ptr<IMF_Node> IMF_Node::Create(std::weak_ptr<IMF_Node> parent)
{
    return std::make_shared<Allocated>(std::move(parent));
}

void IMF_Node::setValue(NodeValue&& value)
{
    m_value = std::move(value);
}

void IMF_Node::setParent(std::weak_ptr<IMF_Node> parent)
{
    m_parent = std::move(parent);
}

void IMF_Node::enterList(int row)
{
    m_positionHint = m_positionHint == Unlisted ? row : SeveralLists;
}

void IMF_Node::leaveList()
{
    if (m_positionHint != SeveralLists)
        m_positionHint = Unlisted;
}

void IMF_Node::push_back(std::shared_ptr<IMF_Node> child)
{
    child->setParent(getNode());
    child->enterList(childCount());
    m_children.push_back(std::move(child));
}

void IMF_Node::replace(int row, std::shared_ptr<IMF_Node> child)
{
    child->setParent(getNode());
    std::shared_ptr<IMF_Node>& place = m_children[static_cast<std::size_t>(row)];
    place->leaveList();
    child->enterList(row);
    place = std::move(child);
}

void IMF_Node::removeChild(int row)
{
    m_children[static_cast<std::size_t>(row)]->leaveList();
    m_children.erase(m_children.begin() + row);
}

int IMF_Node::childPos(const std::shared_ptr<const IMF_Node>& child) const
{
    if (child && child->m_positionHint >= 0) {
        // Rows only ever move up, so a child that has moved stands shortly before its hint.
        for (int row = std::min(child->m_positionHint, childCount() - 1); row >= 0; --row) {
            if (m_children[static_cast<std::size_t>(row)] == child) {
                child->m_positionHint = row;
                return row;
            }
        }
    }
    const auto found = std::find(m_children.begin(), m_children.end(), child);
    return found == m_children.end() ? -1 : static_cast<int>(found - m_children.begin());
}

int IMF_Node::row() const
{
    const std::shared_ptr<IMF_Node> parent = getParent();
    return parent ? parent->childPos(getNode()) : 0;
}

QString IMF_Node::data(int column) const
{
    return column == 0 ? boost::apply_visitor(NameVisitor(), m_value) : QString();
}
