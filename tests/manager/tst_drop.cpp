#include "manager/ManagerFixture.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "StratacutUI/IMF_Node.h"

#include <QJsonDocument>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <algorithm>

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
            delivery =
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

    bool drop(const QStringList& mobIds, const QModelIndex& parent, int row = -1)
    {
        const auto mime = RecordingMediaEngine::dragOf(mobIds);
        bool taken = false;
        f.withoutTester([&] { taken = f.model->dropMimeData(mime.get(), Qt::MoveAction, row, 0, parent); });
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

    void onlyMovedSequencesMayBeDropped_data()
    {
        QTest::addColumn<bool>("committed");
        QTest::addColumn<int>("target");
        QTest::addColumn<QStringList>("mobIds");
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("taken");
        QTest::newRow("on an IMP") << false << int(OnImp) << QStringList{"a"} << int(Qt::MoveAction) << true;
        QTest::newRow("on a deliverable")
            << false << int(OnDelivery) << QStringList{"a"} << int(Qt::MoveAction) << true;
        QTest::newRow("on nothing") << false << int(OnEmpty) << QStringList{"a"} << int(Qt::MoveAction) << true;
        QTest::newRow("clip first") << false << int(OnImp) << QStringList{"clip", "a"} << int(Qt::MoveAction) << true;
        QTest::newRow("clips") << false << int(OnImp) << QStringList{"clip", "clip2"} << int(Qt::MoveAction) << false;
        QTest::newRow("no media") << false << int(OnImp) << QStringList() << int(Qt::MoveAction) << false;
        QTest::newRow("copied") << false << int(OnImp) << QStringList{"a"} << int(Qt::CopyAction) << false;
        QTest::newRow("no action") << false << int(OnImp) << QStringList{"a"} << int(Qt::IgnoreAction) << false;
        QTest::newRow("on committed IMP") << true << int(OnImp) << QStringList{"a"} << int(Qt::MoveAction) << false;
        QTest::newRow("on committed CPL") << true << int(OnCpl) << QStringList{"a"} << int(Qt::MoveAction) << false;
        QTest::newRow("on committed deliverable")
            << true << int(OnDelivery) << QStringList{"a"} << int(Qt::MoveAction) << true;
    }

    void onlyMovedSequencesMayBeDropped()
    {
        QFETCH(bool, committed);
        QFETCH(int, target);
        QFETCH(QStringList, mobIds);
        QFETCH(int, action);
        Shelf shelf(committed ? IMF_PackageMgr::Committed : IMF_PackageMgr::Uncommitted);
        const auto mime = RecordingMediaEngine::dragOf(mobIds);
        QTEST(shelf.f.model->canDropMimeData(mime.get(), Qt::DropAction(action), -1, -1, shelf.at(target)), "taken");
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

    void droppedSequencesBecomeCpls_data()
    {
        QTest::addColumn<int>("target");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<int>("formerCount");
        QTest::newRow("on an IMP") << int(OnImp) << -1 << "Film(Untitled IMP(Sequence x,A,B))" << 1;
        QTest::newRow("above a CPL") << int(OnImp) << 0 << "Film(Untitled IMP(Sequence x,A,B))" << 1;
        QTest::newRow("on a deliverable")
            << int(OnDelivery) << -1 << "Film(Untitled IMP(Sequence x),Untitled IMP.1(A,B))" << 1;
        QTest::newRow("below an IMP") << int(OnDelivery) << 1 << "Film(Untitled IMP(Sequence x),Untitled IMP.1(A,B))"
                                      << 1;
    }

    void droppedSequencesBecomeCpls()
    {
        QFETCH(int, target);
        QFETCH(int, row);
        Shelf shelf;
        QSignalSpy dropped(shelf.f.model.get(), &Model::sequenceDropped);
        QSignalSpy inserted(shelf.f.model.get(), &Model::rowsInserted);
        QVERIFY(shelf.drop({"a", "b"}, shelf.at(target), row));
        QTEST(shape(*shelf.f.model), "tree");
        QCOMPARE(dropped.size(), 1);
        QCOMPARE(dropped[0][0].value<QModelIndex>(), shelf.at(target));
        QTEST(dropped[0][1].toInt(), "formerCount");
        QCOMPARE(inserted.size(), 1);
        const QStringList calls = shelf.f.bridge.takeCalls();
        QCOMPARE(calls.filter("createCPL").size(), 2);
        QCOMPARE(calls.filter("createIMP").size(), target == OnDelivery ? 1 : 0);
    }

    void aDropOnNothingAsksForADeliverable_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<int>("version");
        const QString film = "Film(Untitled IMP(Sequence x))";
        QTest::newRow("Original") << QByteArray("originalBtn") << true << film + ",Untitled Original(Untitled IMP(A))"
                                  << 1;
        QTest::newRow("Supplemental") << QByteArray("supplementalBtn") << true
                                      << film + ",Untitled Supplemental(Untitled IMP(A))" << 2;
        QTest::newRow("Cancel") << QByteArray("cancelBtn") << false << film << 0;
        QTest::newRow("closed") << QByteArray() << false << film << 0;
    }

    void aDropOnNothingAsksForADeliverable()
    {
        QFETCH(QByteArray, button);
        Shelf shelf;
        WhenOpened answer(WhenOpened::clicking(button));
        QTEST(shelf.drop({"a"}, {}), "taken");
        QTEST(shape(*shelf.f.model), "tree");
        QTEST(int(Model::VersionFromIndex(shelf.f.model->index(1, 0))), "version");
    }

    void aRefusedDeliverableCreatesNothingAnywhere()
    {
        Shelf shelf;
        shelf.f.bridge.fail("createDelivery", 1, "No.");
        QSignalSpy dropped(shelf.f.model.get(), &Model::sequenceDropped);
        QSignalSpy inserted(shelf.f.model.get(), &Model::rowsInserted);
        support::ModalAnswer refusal(QMessageBox::Ok);
        WhenOpened answer(WhenOpened::clicking("originalBtn"));
        QVERIFY(!shelf.drop({"a"}, {}));
        QCOMPARE(shape(*shelf.f.model), QString("Film(Untitled IMP(Sequence x))"));
        QVERIFY(dropped.isEmpty());
        QVERIFY(inserted.isEmpty());
    }

    void aDropOnAnEditableCplIsRefused()
    {
        Shelf shelf;
        QVERIFY(!shelf.drop({"a"}, shelf.cpl));
        QCOMPARE(shape(*shelf.f.model), QString("Film(Untitled IMP(Sequence x))"));
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
    }

    /// Persistent indexes and the selection stay with their items, and the tree shows what the model has.
    void randomDropsLeaveEveryIndexWithItsItem()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        ManagerFixture f;
        for (const char* id : {"a", "b", "c"})
            f.engine.addSequence(id, QString(id).toUpper());
        f.newImp(f.newDelivery("Film"));
        f.newDelivery("Second");
        f.tree().expandAll();

        struct Kept {
            QPersistentModelIndex index;
            const void* item;
        };

        QVector<Kept> kept;
        for (int round = 0; round < 60; ++round) {
            QModelIndex target = f.model->index(int(random.bounded(2)), 0);
            if (random.bounded(2) && f.model->rowCount(target) > 0)
                target = f.model->index(int(random.bounded(f.model->rowCount(target))), 0, target);
            for (int row = 0; row < f.model->rowCount(target); ++row) {
                const QModelIndex index = f.model->index(row, int(random.bounded(2)), target);
                kept.append({index, index.internalPointer()});
                if (random.bounded(4) == 0)
                    f.tree().select(index.siblingAtColumn(0));
            }
            const void* selected = f.tree().currentIndex().internalPointer();
            const auto mime = RecordingMediaEngine::dragOf(QStringList{"a", "b", "c"}.mid(int(random.bounded(3))));
            const int row = int(random.bounded(f.model->rowCount(target) + 2)) - 1;
            QObject::disconnect(f.model.get(), &Model::sequenceDropped, nullptr, nullptr);
            f.withoutTester([&] { QVERIFY(f.model->dropMimeData(mime.get(), Qt::MoveAction, row, 0, target)); });
            QCOMPARE(f.tree().currentIndex().internalPointer(), selected);
            for (const Kept& entry : qAsConst(kept))
                QCOMPARE(entry.index.internalPointer(), const_cast<void*>(entry.item));
            for (const Kept& entry : qAsConst(kept))
                QCOMPARE(entry.index.row(), f.model->FromInternalPointer(entry.index.internalPointer())->row());
            f.tree().grab();
        }
    }
};

STRATACUT_TEST_MAIN(TestDrop)
#include "tst_drop.moc"
