#include "StratacutUI/IMF_Node.h"
#include "support/TestMain.h"

#include <random>

using NodePtr = std::shared_ptr<IMF_Node>;

namespace
{
NodePtr appended(const NodePtr& parent)
{
    const NodePtr node = IMF_Node::Create();
    parent->push_back(node);
    return node;
}

int firstPosition(const std::vector<NodePtr>& list, const NodePtr& node)
{
    const auto found = std::find(list.begin(), list.end(), node);
    return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

// One random change, made to the node's list and to a plain list alike.
void change(const NodePtr& parent, std::vector<NodePtr>& mirror, std::vector<NodePtr>& pool, std::mt19937& random)
{
    const auto below = [&random](std::size_t end) { return static_cast<int>(random() % end); };
    const int action = below(10);
    if (action == 0)
        pool.push_back(IMF_Node::Create());
    const NodePtr node =
        pool[static_cast<std::size_t>(action == 0 ? static_cast<int>(pool.size()) - 1 : below(pool.size()))];
    if (mirror.empty() || action < 4) {
        parent->push_back(node);
        mirror.push_back(node);
        return;
    }
    const int row = below(mirror.size());
    if (action < 6) {
        parent->replace(row, node);
        mirror[static_cast<std::size_t>(row)] = node;
    } else {
        parent->removeChild(row);
        mirror.erase(mirror.begin() + row);
    }
}
} // namespace

/// The tree: lists of children, positions, life times.
class TestNode : public QObject
{
    Q_OBJECT

private slots:

    void positionsAgreeWithAPlainSearchAfterRandomChanges()
    {
        std::mt19937 random(support::seed());
        const NodePtr parents[] = {IMF_Node::Create(), IMF_Node::Create()};
        std::vector<NodePtr> mirrors[2];
        std::vector<NodePtr> pool{IMF_Node::Create()};
        for (int step = 0; step < 4000; ++step) {
            const std::size_t which = random() % 2;
            change(parents[which], mirrors[which], pool, random);
            const NodePtr& asked = pool[random() % pool.size()];
            for (std::size_t i = 0; i < 2; ++i) {
                QVERIFY(std::equal(parents[i]->begin(), parents[i]->end(), mirrors[i].begin(), mirrors[i].end()));
                QCOMPARE(parents[i]->childPos(asked), firstPosition(mirrors[i], asked));
            }
        }
    }

    // Linear searches would take minutes here; the test's time limit is the check.
    void rowsOfManySiblingsAreFoundAtOnce()
    {
        const NodePtr parent = IMF_Node::Create();
        constexpr int count = 200000;
        for (int i = 0; i < count; ++i)
            appended(parent);
        parent->removeChild(0);
        for (int pass = 0; pass < 3; ++pass) {
            for (int i = 0; i < count - 1; ++i)
                QCOMPARE(parent->getChild(i)->row(), i);
        }
    }
};

STRATACUT_TEST_MAIN(TestNode)
#include "tst_node.moc"
