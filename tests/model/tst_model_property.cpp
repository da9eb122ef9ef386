#include "ModelFixture.h"

#include "StratacutUI/IMF_DataModelSerializer.h"
#include "StratacutUI/IMF_Node.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <QMimeData>
#include <QPushButton>

#include <thread>

using Model = IMF_PackageMgrQtModel;

namespace
{
constexpr int operations = 2000;
constexpr int mostChildren = 5;

/// What the tree is to look like, kept apart from it.
struct Item {
    QString name;
    bool committed = false;
    QJsonArray groups;
    std::vector<Item> children;
};

QString text(const QJsonObject& json)
{
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

/// An item and what is below it as the host writes it.
QJsonObject written(const Model& model, const QModelIndex& index)
{
    QJsonObject document = model.serializeIndexToJson(index);
    QJsonArray children;
    for (int row = 0; row < model.rowCount(index); ++row)
        children.append(written(model, model.index(row, 0, index)));
    document["Children"] = children;
    document["Mutable"] = false;
    if (Model::NodeTypeFromIndex(index) == IMF_PackageMgr::Delivery)
        document["Path"] = index.data(Model::PathRole).toString();
    return document;
}

Item itemOf(const QJsonObject& document)
{
    Item item{document["Name"].toString(), true, {}, {}};
    const QJsonArray children = document["Children"].toArray();
    for (const QJsonValue& child : children)
        item.children.push_back(itemOf(child.toObject()));
    return item;
}

/// Answers the dialog for a new delivery, where it comes, and then the host's refusals.
struct Answers {
    Answers(bool asked, int refusals)
    {
        for (int number = 0; number < refusals; ++number)
            boxes.push_back(std::make_unique<support::ModalAnswer>(QMessageBox::Ok));
        if (asked)
            QTimer::singleShot(
                0, qApp, [] { QApplication::activeModalWidget()->findChild<QPushButton*>("originalBtn")->click(); });
    }

    std::vector<std::unique_ptr<support::ModalAnswer>> boxes;
};

void commitAll(Item& item)
{
    item.committed = true;
    for (Item& child : item.children)
        commitAll(child);
}

/// One line for each uncommitted item that saved state holds, without the identifiers that the host chooses anew.
QStringList uncommittedLines(const Model& model, const QModelIndex& parent = {}, const QString& path = {})
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const QModelIndexList inside = model.getUnBurnedIndexes(index);
        const bool isDelivery = !parent.isValid();
        if (isDelivery && inside.isEmpty())
            continue;
        const QString here = path + '/' + index.data(Model::NameRole).toString();
        if (Model::StatusFromIndex(index) == IMF_PackageMgr::Uncommitted)
            lines += QStringList{here,
                                 index.data().toString(),
                                 text(Model::MetadataJsonFromIndex(index)),
                                 text(Model::CommitSettingsJsonFromIndex(index)),
                                 text({{"Groups", index.data(Model::TrackGroupsRole).toJsonArray()}}),
                                 index.data(Model::VersionRole).toString(),
                                 index.data(Model::ValidRole).toString()}
                         .join(" | ");
        lines += uncommittedLines(model, index, here);
    }
    if (!parent.isValid())
        lines.sort();
    return lines;
}
} // namespace

/// Random operations on the model, checked after each against what the tree is to look like.
class TestModelProperty : public QObject
{
    Q_OBJECT

    using Operation = void (TestModelProperty::*)();

    struct Choice {
        const char* name;
        Operation operation;
        int weight;
    };

    std::unique_ptr<ModelFixture> f;
    std::vector<Item> expected;
    QRandomGenerator random;
    int names = 0;

    int upTo(int bound) { return int(random.bounded(bound)); }

    QString newName(const QString& kind) { return kind + QString::number(++names); }

    QModelIndex pick(int depth)
    {
        QModelIndex index;
        for (int level = 0; level <= depth; ++level) {
            const int rows = f->model->rowCount(index);
            if (rows == 0)
                return {};
            index = f->model->index(upTo(rows), 0, index);
        }
        return index;
    }

    std::vector<Item>& siblings(const QModelIndex& index)
    {
        return index.parent().isValid() ? at(index.parent()).children : expected;
    }

    Item& at(const QModelIndex& index) { return siblings(index)[std::size_t(index.row())]; }

    void add()
    {
        const int depth = upTo(3);
        const QModelIndex parent = depth == 0 ? QModelIndex() : pick(depth - 1);
        if (depth > 0 && (!parent.isValid() || (depth == 2 && at(parent).committed)))
            return;
        std::vector<Item>& list = depth == 0 ? expected : at(parent).children;
        if (list.size() >= mostChildren)
            return;
        QModelIndex added;
        if (depth == 0)
            added = f->newDelivery(newName("D"), IMF_PackageMgr::Version(1 + upTo(2)));
        else
            added = depth == 1 ? f->newImp(parent) : f->newCpl(parent, newName("m"));
        list.push_back({added.data(Model::NameRole).toString(), false, {}, {}});
    }

    /// Sequences, or a clip, on any row or on nothing, the host willing or not. It is asked for an IMP and a CPL when
    /// their rows are there, and cannot take them back; without a delivery nothing is made.
    void drop()
    {
        const int depth = upTo(4) - 1;
        const QPersistentModelIndex target = pick(depth);
        if (target.isValid() != (depth >= 0) || (target.isValid() ? at(target).children : expected).size() > 3)
            return;
        QStringList ids;
        for (int count = upTo(3); count > 0; --count) {
            ids += newName("m");
            f->engine.addSequence(ids.last(), ids.last());
        }
        const QString refused = QStringList{"", "createDelivery", "createIMP", "createCPL"}[upTo(4)];
        const bool asked = depth < 0 && !ids.isEmpty();
        const int row = upTo(f->model->rowCount(target) + 2) - 1;
        const QModelIndex below = f->model->index(row, 0, target);
        const QModelIndex over = below.isValid() && depth >= 0 ? below : QModelIndex(target);
        const bool open = depth < 2 && (!over.parent().isValid() || !at(over).committed);
        const bool taken = !ids.isEmpty() && open && !(asked && refused == "createDelivery");
        const QHash<QString, int> refusals{
            {"createDelivery", asked}, {"createIMP", taken && depth < 1}, {"createCPL", taken ? ids.size() : 0}};
        if (!refused.isEmpty())
            f->bridge.fail(refused, 1, "No.");
        f->bridge.chosenFolder = '/' + newName("F");
        const Answers answers{asked, refusals[refused]};
        const auto mime = support::RecordingMediaEngine::dragOf(ids.isEmpty() ? QStringList("clip") : ids);
        const std::vector<Kept> kept = everyItem();
        f->withoutTester([&] { f->model->dropMimeData(mime.get(), Qt::MoveAction, row, 0, target); });
        for (const auto& [index, item] : kept) {
            QCOMPARE(index.internalPointer(), item);
            QCOMPARE(index.row(), f->model->FromInternalPointer(item)->row());
        }
        f->bridge.succeed();
        if (taken)
            expectCpls(target, ids, depth);
    }

    /// An index that a view holds, and its item.
    using Kept = std::pair<QPersistentModelIndex, void*>;

    std::vector<Kept> everyItem(const QModelIndex& parent = {}) const
    {
        std::vector<Kept> kept;
        for (int row = 0; row < f->model->rowCount(parent); ++row) {
            for (const int column : {1, 0}) {
                const QModelIndex index = f->model->index(row, column, parent);
                kept.emplace_back(index, index.internalPointer());
            }
            const std::vector<Kept> below = everyItem(f->model->index(row, 0, parent));
            kept.insert(kept.end(), below.begin(), below.end());
        }
        return kept;
    }

    /// At the end of the IMP, which a drop on no IMP makes.
    void expectCpls(const QModelIndex& target, const QStringList& ids, int depth)
    {
        QModelIndex parent = target;
        std::vector<Item>* list = target.isValid() ? &at(target).children : &expected;
        for (int level = depth; level < 1; ++level) {
            parent = f->model->index(f->model->rowCount(parent) - 1, 0, parent);
            list->push_back({parent.data(Model::NameRole).toString(), false, {}, {}});
            list = &list->back().children;
        }
        for (const QString& id : ids)
            list->push_back({id, false, {}, {}});
    }

    void rename()
    {
        const QModelIndex index = pick(upTo(2));
        if (!index.isValid())
            return;
        const QString name = newName("N");
        QVERIFY(f->model->setData(index, name));
        at(index).name = name;
        // The host renames what it has written.
        const QString folder = index.data(Model::PathRole).toString();
        if (f->bridge.deliveries.contains(folder))
            f->bridge.deliveries[folder].second["Name"] = name;
    }

    void edit()
    {
        const QModelIndex index = pick(upTo(3));
        if (!index.isValid())
            return;
        const QStringList keys{"Annotation", "Issuer", "Resolution", "Compression", "ContentKind", "ContentTitle"};
        const QStringList values{newName("V"), "3840x2160", "Reversible", "Trailer - TLR", "", "Lossless"};
        const auto value = qMakePair(keys[upTo(keys.size())], values[upTo(values.size())]);
        QVERIFY(f->model->setData(index, QVariant::fromValue(value), Model::MetadataRole));
    }

    void group()
    {
        const QModelIndex cpl = pick(2);
        if (!cpl.isValid())
            return;
        const QJsonArray groups{QJsonObject{{"Name", newName("G")}, {"Tracks", QJsonArray()}}};
        QVERIFY(f->model->setData(cpl, groups, Model::TrackGroupsRole));
        at(cpl).groups = groups;
    }

    void remove()
    {
        const QModelIndex index = pick(upTo(3));
        if (!index.isValid() || (at(index).committed && index.parent().isValid()))
            return;
        std::vector<Item>& list = siblings(index);
        list.erase(list.begin() + index.row());
        f->controller().onRemoveIMFItem(index);
    }

    void commit()
    {
        const QModelIndex index = pick(upTo(2));
        if (!index.isValid())
            return;
        const bool isImp = index.parent().isValid();
        const QModelIndex delivery = isImp ? index.parent() : index;
        // An IMP of a deliverable that was never written has a test of its own.
        if (isImp && !at(delivery).committed)
            return;
        f->controller().onCommit({index});
        const IMFO_CommitCallback done = f->bridge.commits.takeLast().onDone;
        const QString folder = delivery.data(Model::PathRole).toString();
        writeToDisk(folder, delivery, index);
        std::thread([&done] { done({}); }).join();
        QCoreApplication::processEvents();
        commitAll(at(index));
    }

    /// What was committed before stays as it is; the item joins it.
    void writeToDisk(const QString& folder, const QModelIndex& delivery, const QModelIndex& item)
    {
        QJsonObject document = written(*f->model, delivery);
        if (item != delivery) {
            QJsonArray imps;
            for (int row = 0; row < f->model->rowCount(delivery); ++row) {
                const QModelIndex imp = f->model->index(row, 0, delivery);
                if (imp == item || at(imp).committed)
                    imps.append(written(*f->model, imp));
            }
            document["Children"] = imps;
        }
        f->putOnDisk(folder, Model::ComponentIDFromIndex(delivery), document);
    }

    void refresh()
    {
        const QPersistentModelIndex delivery = pick(0);
        if (!delivery.isValid() || !at(delivery).committed)
            return;
        const QString folder = delivery.data(Model::PathRole).toString();
        Item fresh = itemOf(f->bridge.deliveries[folder].second);
        f->withoutTester([&] { f->controller().onRefreshIMFItem(delivery); });
        carryGroupsOver(delivery, fresh);
        expected[std::size_t(delivery.row())] = fresh;
    }

    /// Groups go by identifier: what a refreshed CPL finds under its own is its.
    void carryGroupsOver(const QModelIndex& index, Item& item)
    {
        item.groups = index.data(Model::TrackGroupsRole).toJsonArray();
        for (std::size_t row = 0; row < item.children.size(); ++row)
            carryGroupsOver(f->model->index(int(row), 0, index), item.children[row]);
    }

    void replace()
    {
        const QPersistentModelIndex delivery = pick(0);
        if (!delivery.isValid() || at(delivery).committed)
            return;
        const std::shared_ptr<IMF_Node> node = IMF_Node::Create();
        const QString name = newName("R");
        node->value() = IMF_Deliverable(node, "/out", name, name.toUtf8(), {{"Mutable", true}, {"Original", true}});
        f->model->removeTracksData(delivery);
        f->withoutTester([&] { f->model->replace(delivery, node); });
        at(delivery) = {name, false, {}, {}};
    }

    void restart()
    {
        f->controller().onSaveSettings();
        std::vector<Item> committed;
        std::vector<Item> fresh;
        for (const Item& item : expected) {
            if (item.committed)
                committed.push_back(restored(item, f->model->index(int(&item - expected.data()), 0)));
            else if (!item.children.empty())
                fresh.push_back(item);
        }
        f->restart();
        expected = committed;
        expected.insert(expected.end(), fresh.begin(), fresh.end());
    }

    /// A committed deliverable as its folder holds it, followed by its uncommitted IMPs.
    Item restored(const Item& item, const QModelIndex& index)
    {
        Item whole = itemOf(f->bridge.deliveries[index.data(Model::PathRole).toString()].second);
        for (const Item& child : item.children) {
            if (!child.committed)
                whole.children.push_back(child);
        }
        return whole;
    }

    void compare(const QModelIndex& parent, const IMF_Node& node, const std::vector<Item>& items)
    {
        QCOMPARE(f->model->rowCount(parent), int(items.size()));
        QCOMPARE(node.childCount(), int(items.size()));
        for (int row = 0; row < int(items.size()); ++row) {
            const Item& item = items[std::size_t(row)];
            const QModelIndex index = f->model->index(row, 0, parent);
            const std::shared_ptr<IMF_Node> child = node.getChild(row);
            QCOMPARE(f->model->FromIndex(index), child);
            QCOMPARE(f->model->indexOf(child.get()), index);
            QCOMPARE(index.parent(), parent);
            QCOMPARE(child->row(), row);
            QCOMPARE(index.data(Model::NameRole).toString(), item.name);
            QCOMPARE(Model::StatusFromIndex(index) == IMF_PackageMgr::Committed, item.committed);
            if (Model::NodeTypeFromIndex(index) == IMF_PackageMgr::CPL && !item.committed)
                QCOMPARE(index.data(Model::TrackGroupsRole).toJsonArray(), item.groups);
            compare(index, *child, item.children);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void compareWithRestoredCopy()
    {
        const auto state = std::make_shared<support::MemorySettings::Values>();
        f->controller().setSettings(std::make_unique<support::MemorySettings>(state));
        f->controller().onSaveSettings();
        f->controller().setSettings(std::make_unique<support::MemorySettings>(f->settings));
        Model copy;
        copy.initialize(&f->bridge, std::make_unique<support::MemorySettings>(state));
        QCOMPARE(uncommittedLines(copy), uncommittedLines(*f->model));
    }

    /// What takes away comes seldom, so that the tree grows.
    const Choice& anyChoice()
    {
        using Test = TestModelProperty;
        static const Choice choices[] = {{"add", &Test::add, 30},        {"drop", &Test::drop, 10},
                                         {"rename", &Test::rename, 8},   {"edit", &Test::edit, 12},
                                         {"group", &Test::group, 8},     {"remove", &Test::remove, 4},
                                         {"commit", &Test::commit, 2},   {"refresh", &Test::refresh, 2},
                                         {"replace", &Test::replace, 1}, {"restart", &Test::restart, 2}};
        int left = upTo(79);
        return *std::find_if(std::begin(choices), std::end(choices) - 1,
                             [&left](const Choice& choice) { return (left -= choice.weight) < 0; });
    }

private slots:

    void modelTreeAndRestoredCopyAgreeAfterEveryOperation()
    {
        random.seed(support::seed());
        f = std::make_unique<ModelFixture>();
        for (int step = 0; step < operations; ++step) {
            const Choice& choice = anyChoice();
            (this->*choice.operation)();
            compare({}, *f->model->FromIndex({}), expected);
            compareWithRestoredCopy();
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QString("step %1, %2").arg(step).arg(choice.name)));
        }
        f.reset();
    }
};

STRATACUT_TEST_MAIN(TestModelProperty)
#include "tst_model_property.moc"
