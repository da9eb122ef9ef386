#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_CPL.h"
#include "StratacutUI/IMF_Deliverable.h"
#include "StratacutUI/IMF_IMP.h"

#include <QString>

#include <boost/variant.hpp>

#include <memory>
#include <vector>

/// A node of the package tree: an invisible root, deliveries, IMPs, CPLs. A node owns its children and knows its parent
/// weakly; it lives as long as some shared pointer holds it. Nothing here notifies anyone: the item model does that.
/// Used on the user-interface thread.
class STRATACUTUI_EXPORT IMF_Node : public std::enable_shared_from_this<IMF_Node>
{
public:
    /// The payload, one alternative a kind, in the order of IMF_PackageMgr::NodeType.
    using NodeValue = boost::variant<IMF_Deliverable, IMF_IMP, IMF_CPL>;
    using const_iterator = std::vector<std::shared_ptr<IMF_Node>>::const_iterator;

    /// A node without parent and children that holds a default IMF_Deliverable.
    static std::shared_ptr<IMF_Node> Create();
    ~IMF_Node();

    IMF_Node(const IMF_Node&) = delete;
    IMF_Node& operator=(const IMF_Node&) = delete;

    NodeValue& value() { return m_value; }

    const NodeValue& value() const { return m_value; }

    std::shared_ptr<IMF_Node> getNode() { return shared_from_this(); }

    std::shared_ptr<const IMF_Node> getNode() const { return shared_from_this(); }

    /// The node above; null when there is none or it is gone.
    std::shared_ptr<IMF_Node> getParent() const { return m_parent.lock(); }

    /// Sets the pointer alone; no list of children changes.
    void setParent(std::weak_ptr<IMF_Node> parent);

    /// Appends the child and becomes its parent. A child that stands in another list must be removed there first.
    void push_back(std::shared_ptr<IMF_Node> child);
    /// Puts the child in the place of the one that stands at `row`, which is released. `row` must exist.
    void replace(int row, std::shared_ptr<IMF_Node> child);
    /// Releases the child at `row`; later rows move up by one. `row` must exist.
    void removeChild(int row);

    /// The child at `row`, which must exist.
    std::shared_ptr<IMF_Node> getChild(int row) const { return m_children[static_cast<std::size_t>(row)]; }

    /// The last child; there must be one.
    std::shared_ptr<IMF_Node> back() const { return m_children.back(); }

    int childCount() const { return static_cast<int>(m_children.size()); }

    /// The first position of the child; -1 when it is none. Takes constant time however many children there are,
    /// as long as no rows before the child were removed since the last call.
    int childPos(const std::shared_ptr<const IMF_Node>& child) const;
    /// The position in the parent's list; 0 without a living parent.
    int row() const;
    /// Column 0: the name. Other columns: empty.
    QString data(int column) const;

    const_iterator begin() const { return m_children.begin(); }

    const_iterator end() const { return m_children.end(); }

private:
    friend class IMF_PackageDeliveryReader;
    friend class IMF_DataModelSerializer;
    struct Allocated;

    /// For the readers: a node that knows its parent from the start but does not stand in its list yet.
    static std::shared_ptr<IMF_Node> Create(std::weak_ptr<IMF_Node> parent);
    explicit IMF_Node(std::weak_ptr<IMF_Node> parent);
    void setValue(NodeValue&& value);
    void enterList(int row);
    void leaveList();

    NodeValue m_value;
    std::weak_ptr<IMF_Node> m_parent;
    std::vector<std::shared_ptr<IMF_Node>> m_children;
    // Where to look first in the list that holds this node; it is checked before it is believed.
    mutable int m_positionHint;
};
