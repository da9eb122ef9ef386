#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/ImfDict.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

#include <algorithm>
#include <random>

using NodePtr = std::shared_ptr<IMF_Node>;

namespace
{
QJsonObject named(IMF_PackageMgr::NodeType type, const QString& name)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(type);
    document[ImfDict::Name] = name;
    return document;
}

NodePtr appended(const NodePtr& parent)
{
    const NodePtr node = IMF_Node::Create();
    parent->push_back(node);
    return node;
}

NodePtr appendedDelivery(const NodePtr& root, const QByteArray& id)
{
    const NodePtr node = appended(root);
    node->value() = IMF_Deliverable(node, "/out", "Film", id, named(IMF_PackageMgr::Delivery, ""));
    return node;
}

NodePtr appendedIMP(const NodePtr& parent, const QString& name)
{
    const NodePtr node = appended(parent);
    node->value() = IMF_IMP(node, named(IMF_PackageMgr::IMP, name), IMF_PackageMgr::Uncommitted);
    return node;
}

NodePtr appendedCPL(const NodePtr& parent, const QString& name)
{
    const NodePtr node = appended(parent);
    node->value() = IMF_CPL(node, named(IMF_PackageMgr::CPL, name), IMF_PackageMgr::Uncommitted);
    return node;
}

QString idOf(const NodePtr& node)
{
    return boost::apply_visitor(IMF_Utils::GetIdVisitor(), node->value());
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

/// The tree: lists of children, positions, identifiers, life times.
class TestNode : public QObject
{
    Q_OBJECT

private slots:

    void aFreshNodeIsAnUncommittedDeliveryWithoutPlace()
    {
        const NodePtr node = IMF_Node::Create();
        QCOMPARE(node->value().which(), 0);
        const auto& deliverable = boost::get<IMF_Deliverable>(node->value());
        QCOMPARE(deliverable.status(), IMF_PackageMgr::Uncommitted);
        QCOMPARE(deliverable.version(), IMF_PackageMgr::None);
        QVERIFY(!deliverable.isValid());
        QVERIFY(deliverable.jsonObject().isEmpty());
        QVERIFY(!node->getParent());
        QCOMPARE(node->row(), 0);
        QCOMPARE(node->childPos(nullptr), -1);
        QVERIFY_EXCEPTION_THROWN(boost::get<IMF_CPL>(node->value()), boost::bad_get);
    }

    void identifiersFollowTheTree()
    {
        const NodePtr root = IMF_Node::Create();
        NodePtr delivery = appendedDelivery(root, "id-1");
        const NodePtr imp = appendedIMP(delivery, "IMP");
        const NodePtr cpl = appendedCPL(imp, "a/b");
        QCOMPARE(idOf(delivery), QString("id-1"));
        QCOMPARE(idOf(cpl), QString("id-1/IMP/a/b"));
        QCOMPARE(cpl->data(0), QString("a/b"));
        QCOMPARE(cpl->data(1), QString());
        QCOMPARE(delivery->data(0), QString("Film"));
        QCOMPARE(boost::apply_visitor(IMF_Utils::NodeTypeVisitor(), cpl->value()), IMF_PackageMgr::CPL);
        QCOMPARE(boost::apply_visitor(IMF_Utils::GetJsonVisitor(), imp->value()).value("Name").toString(),
                 QString("IMP"));
        root->removeChild(0);
        delivery.reset();
        QCOMPARE(idOf(imp), QString("/IMP"));
        QVERIFY(!imp->getParent());
        QCOMPARE(imp->row(), 0);
    }

    void aRemovedSubtreeDiesUnlessSomeoneHoldsIt()
    {
        const NodePtr root = IMF_Node::Create();
        NodePtr delivery = appendedDelivery(root, "id");
        const std::weak_ptr<IMF_Node> imp = appendedIMP(delivery, "IMP");
        root->replace(0, IMF_Node::Create());
        QVERIFY(!imp.expired());
        delivery.reset();
        QVERIFY(imp.expired());
        QCOMPARE(root->getChild(0)->getParent(), root);
    }

    void aNodeTakenOverStaysInTheFormerList()
    {
        const NodePtr first = IMF_Node::Create();
        const NodePtr second = IMF_Node::Create();
        appended(first);
        const NodePtr node = appended(first);
        appended(second);
        second->push_back(node);
        QCOMPARE(node->getParent(), second);
        QCOMPARE(node->row(), 1);
        QCOMPARE(first->childPos(node), 1);
        first->removeChild(0);
        QCOMPARE(first->childPos(node), 0);
        node->setParent(first);
        QCOMPARE(node->row(), 0);
        QCOMPARE(second->childCount(), 2);
    }

    void positionsAgreeWithAPlainSearchAfterRandomChanges()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        std::mt19937 random(seed);
        const NodePtr parents[] = {IMF_Node::Create(), IMF_Node::Create()};
        std::vector<NodePtr> mirrors[2];
        std::vector<NodePtr> pool{IMF_Node::Create()};
        for (int step = 0; step < 4000; ++step) {
            const std::size_t which = random() % 2;
            change(parents[which], mirrors[which], pool, random);
            const NodePtr& asked = pool[random() % pool.size()];
            for (std::size_t i = 0; i < 2; ++i) {
                QVERIFY2(std::equal(parents[i]->begin(), parents[i]->end(), mirrors[i].begin(), mirrors[i].end()),
                         qPrintable(QString("seed %1, step %2").arg(seed).arg(step)));
                QVERIFY2(parents[i]->childPos(asked) == firstPosition(mirrors[i], asked),
                         qPrintable(QString("seed %1, step %2").arg(seed).arg(step)));
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
