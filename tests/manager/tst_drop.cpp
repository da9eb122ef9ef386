#include "manager/ManagerFixture.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

using Model = IMF_PackageMgrQtModel;
using support::RecordingMediaEngine;

namespace
{
enum Target { OnDelivery, OnImp, OnCpl, OnEmpty };

/// A deliverable with one IMP of one CPL, editable or committed, and sequences to drop.
struct Shelf {
    explicit Shelf(IMF_PackageMgr::Status status = IMF_PackageMgr::Uncommitted)
    {
        for (const char* id : {"a", "b", "c"})
            f.engine.addSequence(id, QString(id).toUpper());
        if (status == IMF_PackageMgr::Committed)
            f.load("/d", "d", documents::delivery("Film", "/d", {documents::imp("I", {documents::cpl("X")})}));
        else
            f.newCpl(f.newImp(f.newDelivery("Film")), "x");
        delivery = f.model->index(0, 0);
        imp = f.model->index(0, 0, delivery);
        cpl = f.model->index(0, 0, imp);
        f.bridge.takeCalls();
    }

    QModelIndex at(int target) const
    {
        const QModelIndex indexes[] = {delivery, imp, cpl, {}};
        return indexes[target];
    }

    bool drop(const QStringList& mobIds, const QModelIndex& parent, int row = -1,
              Qt::DropAction action = Qt::MoveAction)
    {
        const auto mime = RecordingMediaEngine::dragOf(mobIds);
        bool taken = false;
        f.withoutTester([&] { taken = f.model->dropMimeData(mime.get(), action, row, 0, parent); });
        return taken;
    }

    ModelFixture f;
    QModelIndex delivery;
    QModelIndex imp;
    QModelIndex cpl;
};
} // namespace

/// Sequences dropped into the item model, and CPLs dragged out of it.
class TestDrop : public QObject
{
    Q_OBJECT
private slots:

    void aDragOutNamesItsItemsInOrder()
    {
        Shelf shelf;
        const std::unique_ptr<QMimeData> mime(shelf.f.model->mimeData({shelf.cpl, shelf.delivery}));
        QCOMPARE(mime->formats(), QStringList{"IMF_Tool/CPL"});
        QCOMPARE(mime->data("IMF_Tool/CPL"), QByteArray(R"(["Film#1/Untitled IMP/Sequence x","Film#1"])"));
        QCOMPARE(shelf.f.model->mimeTypes(), (QStringList{"stratacut.IMF", "application/x-dnditemdata"}));
        QCOMPARE(shelf.f.model->supportedDropActions(), Qt::DropActions(Qt::MoveAction));
        QVERIFY(!shelf.f.model->canDropMimeData(mime.get(), Qt::MoveAction, -1, -1, shelf.imp));
    }

    void movedSequencesBecomeCpls_data()
    {
        const support::Rows<Target, int, QStringList, Qt::DropAction, QString> add;
        const QString inImp = "Film(Untitled IMP(Sequence x,A,B))";
        const QString inNewImp = "Film(Untitled IMP(Sequence x),Untitled IMP.1(A,B))";
        add("on an IMP", OnImp, -1, {"a", "b"}, Qt::MoveAction, inImp);
        add("above a CPL", OnImp, 0, {"a", "b"}, Qt::MoveAction, inImp);
        add("on a deliverable", OnDelivery, -1, {"a", "b"}, Qt::MoveAction, inNewImp);
        add("below an IMP", OnDelivery, 1, {"a", "b"}, Qt::MoveAction, inNewImp);
        add("committed deliverable", OnDelivery, -1, {"a", "b"}, Qt::MoveAction, "Film(I(X title),Untitled IMP(A,B))");
        add("clip first", OnImp, -1, {"clip", "a"}, Qt::MoveAction, "Film(Untitled IMP(Sequence x,,A))");
        add("on a CPL", OnCpl, -1, {"a"}, Qt::MoveAction, "");
        add("clips", OnImp, -1, {"clip", "clip2"}, Qt::MoveAction, "");
        add("no media", OnImp, -1, {}, Qt::MoveAction, "");
        add("copied", OnImp, -1, {"a"}, Qt::CopyAction, "");
        add("no action", OnImp, -1, {"a"}, Qt::IgnoreAction, "");
        add("committed IMP", OnImp, -1, {"a"}, Qt::MoveAction, "");
        add("committed CPL", OnCpl, -1, {"a"}, Qt::MoveAction, "");
    }

    void movedSequencesBecomeCpls()
    {
        const auto [target, row, mobIds, action, tree] =
            support::fetched<Target, int, QStringList, Qt::DropAction, QString>();
        const QByteArray tag = QTest::currentDataTag();
        Shelf shelf(tag.startsWith("committed") ? IMF_PackageMgr::Committed : IMF_PackageMgr::Uncommitted);
        const QString former = shape(*shelf.f.model);
        const QModelIndex parent = shelf.at(target);
        QSignalSpy dropped(shelf.f.model.get(), &Model::sequenceDropped);
        QSignalSpy inserted(shelf.f.model.get(), &Model::rowsInserted);
        int relaid = 0;
        connect(shelf.f.model.get(), &Model::layoutChanged, this, [&relaid] { ++relaid; });
        const auto mime = RecordingMediaEngine::dragOf(mobIds);
        const bool taken = !tree.isEmpty();
        QCOMPARE(shelf.f.model->canDropMimeData(mime.get(), action, row, 0, parent), taken || tag == "on a CPL");
        QCOMPARE(shelf.drop(mobIds, parent, row, action), taken);
        QCOMPARE(shape(*shelf.f.model), taken ? tree : former);
        QCOMPARE(dropped.size(), taken ? 1 : 0);
        QCOMPARE(inserted.size(), taken ? 1 : 0);
        QCOMPARE(relaid, taken ? 1 : 0);
        const QStringList calls = shelf.f.bridge.takeCalls();
        QCOMPARE(calls.filter("createCPL").size(), taken ? mobIds.size() : 0);
        QCOMPARE(calls.filter("createIMP").size(), taken && target == OnDelivery ? 1 : 0);
        if (taken)
            QCOMPARE(dropped[0], (QVariantList{parent, 1}));
    }

    void aDropWithoutDataIsAProgrammingError()
    {
        Shelf shelf;
        support::Assertions assertions;
        QVERIFY(!shelf.f.model->canDropMimeData(nullptr, Qt::MoveAction, -1, -1, shelf.imp));
        QCOMPARE(assertions.take(), QStringList{"IMF_PackageMgrQtModel: mime != nullptr"});
        QVERIFY(!shelf.f.model->dropMimeData(nullptr, Qt::MoveAction, -1, -1, shelf.imp));
        QVERIFY(assertions.take().isEmpty());
    }

    void aDropOnNothingAsksForADeliverable_data()
    {
        const support::Rows<QString, int> row;
        row("originalBtn", ",Untitled Original(Untitled IMP(A))", 1);
        row("supplementalBtn", ",Untitled Supplemental(Untitled IMP(A))", 2);
        row("cancelBtn", "", 0);
        row("closed", "", 0);
    }

    void aDropOnNothingAsksForADeliverable()
    {
        const auto [added, version] = support::fetched<QString, int>();
        Shelf shelf;
        WhenOpened answer(WhenOpened::clicking(QTest::currentDataTag()));
        QCOMPARE(shelf.drop({"a"}, {}), !added.isEmpty());
        QCOMPARE(shape(*shelf.f.model), "Film(Untitled IMP(Sequence x))" + added);
        QCOMPARE(int(Model::VersionFromIndex(shelf.f.model->index(1, 0))), version);
    }

    void aRefusedDeliverableCreatesNothingAnywhere()
    {
        Shelf shelf;
        shelf.f.bridge.fail("createDelivery", 1, "No.");
        QSignalSpy inserted(shelf.f.model.get(), &Model::rowsInserted);
        support::ModalAnswer refusal(QMessageBox::Ok);
        WhenOpened answer(WhenOpened::clicking("originalBtn"));
        QVERIFY(!shelf.drop({"a"}, {}));
        QCOMPARE(shape(*shelf.f.model), QString("Film(Untitled IMP(Sequence x))"));
        QVERIFY(inserted.isEmpty());
    }

    void aHostThatComplainsFindsTheRowsInPlace()
    {
        Shelf shelf;
        shelf.f.bridge.fail("createCPL", 1, "No.");
        QStringList seen;
        shelf.f.bridge.onCall = [&](const QString& call) { seen += call.section('(', 0, 0) + shape(*shelf.f.model); };
        support::ModalAnswer first(QMessageBox::Ok);
        support::ModalAnswer second(QMessageBox::Ok);
        QVERIFY(shelf.drop({"a", "b"}, shelf.delivery));
        const QString tree = "Film(Untitled IMP(Sequence x),Untitled IMP.1(A,B))";
        QCOMPARE(seen, (QStringList{"createIMP" + tree, "createCPL" + tree, "createCPL" + tree}));
        // What goes while the first is told is not told any more.
        shelf.f.bridge.succeed();
        shelf.f.bridge.onCall = [&](const QString&) {
            shelf.f.model->removeIndex(shelf.f.model->index(2, 0, shelf.imp));
        };
        shelf.f.bridge.takeCalls();
        QVERIFY(shelf.drop({"a", "b"}, shelf.imp));
        QCOMPARE(shelf.f.bridge.takeCalls().size(), 1);
    }
};

STRATACUT_TEST_MAIN(TestDrop)
#include "tst_drop.moc"
