#include "ModelFixture.h"

#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "ViewDeckQt/NineSlice.h"
#include "support/Assertions.h"
#include "support/TestMain.h"

#include <QItemSelectionModel>
#include <QPixmap>
#include <QSortFilterProxyModel>
#include <QStringListModel>
#include <QTreeView>

using Model = IMF_PackageMgrQtModel;

namespace
{
/// Three deliverables, the second of which has two IMPs with a CPL each.
struct Shelf {
    Shelf()
    {
        const QJsonArray imps{documents::imp("I1", {documents::cpl("C1")}),
                              documents::imp("I2", {documents::cpl("C2")})};
        f.load("/a", "a", documents::delivery("A", "/a", {documents::imp("Ia")}));
        f.load("/b", "b", documents::delivery("B", "/b", imps));
        f.load("/c", "c", documents::delivery("C", "/c", {documents::imp("Ic")}));
    }

    QModelIndex row(int number) { return f.model->index(number, 0); }

    /// Puts a deliverable "New" with three IMPs in the place of the second.
    void replaceSecond()
    {
        const QJsonArray imps{documents::imp("I1"), documents::imp("I2"), documents::imp("I3")};
        const auto fresh =
            IMF_PackageDeliveryReader::getDeliveryNodeFromJson(documents::delivery("New", "/b", imps), "b");
        f.withoutTester([&] { f.model->replace(row(1), fresh); });
    }

    ModelFixture f;
};
} // namespace

/// What the item model answers, and how it swaps rows.
class TestModelStructure : public QObject
{
    Q_OBJECT

private slots:

    void anInvalidIndexIsNothing()
    {
        ModelFixture f;
        QCOMPARE(Model::ComponentIDFromIndex({}), QByteArray());
        QCOMPARE(Model::CommitSettingsJsonFromIndex({}), QJsonObject());
        QVERIFY(IMF_Controller::itemInfo({}).metadataJson.isEmpty());
        QVERIFY(!f.model->removeIndex({}) && !f.model->setData({}, "x"));
        QVERIFY(!f.model->replace({}, IMF_Node::Create()).isValid());

        const QStringListModel stranger({"x"});
        support::Assertions assertions;
        QCOMPARE(f.model->FromIndex(stranger.index(0)), f.model->FromIndex({}));
        QCOMPARE(assertions.take(), QStringList("IMF_PackageMgrQtModel: own || !index.isValid()"));
    }

    void eachKindAllowsWhatItCan()
    {
        ModelFixture f;
        const Qt::ItemFlags base = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex imp = f.newImp(delivery);
        QCOMPARE(f.model->flags({}), Qt::ItemFlags(Qt::ItemIsDropEnabled));
        QCOMPARE(f.model->flags(delivery), base | Qt::ItemIsEditable | Qt::ItemIsDropEnabled);
        QCOMPARE(f.model->flags(imp), base | Qt::ItemIsDropEnabled);
        QCOMPARE(f.model->flags(f.newCpl(imp, "m1")), base | Qt::ItemIsDragEnabled);
    }

    void aPathIsTheFolderThatTheCommitCreates()
    {
        const QVector<QPair<QString, QString>> folders{{"/out", "/out/Film"}, {"/out/", "/out/Film"}, {"", ""}};
        for (const auto& [stored, uncommitted] : folders) {
            ModelFixture f;
            f.bridge.chosenFolder = stored;
            const QModelIndex delivery = f.newDelivery("Film");
            QCOMPARE(delivery.data(Model::PathRole).toString(), uncommitted);
            boost::get<IMF_Deliverable>(f.model->FromIndex(delivery)->value()).setStatus(IMF_PackageMgr::Committed);
            QCOMPARE(delivery.data(Model::PathRole).toString(), stored);
        }
    }

    void theSecondColumnShowsTheStatusAsAnImage()
    {
        ModelFixture f;
        const QModelIndex fresh = f.newDelivery("Film");
        const QModelIndex committed = f.load("/d", "d", documents::delivery("D", "/d"));
        for (const auto& [item, id] : {qMakePair(fresh, 4), qMakePair(committed, 3)}) {
            const QPixmap expected = NineSlice::GetImage("iconsV2", NineSlice::GetResourceIDString(id));
            const QVariant shown = item.siblingAtColumn(1).data(Qt::DecorationRole);
            QCOMPARE(shown.value<QPixmap>().toImage(), expected.toImage());
        }
        boost::get<IMF_Deliverable>(f.model->FromIndex(fresh)->value()).setStatus(IMF_PackageMgr::Status(2));
        QVERIFY(fresh.siblingAtColumn(1).data(Qt::DecorationRole).value<QPixmap>().isNull());
    }

    void onlyUncommittedDeliverablesAndImpsAreBurnable()
    {
        ModelFixture f;
        const QModelIndex committed = f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I")}));
        const QModelIndex added = f.newImp(committed);
        for (const QModelIndex& index : {committed, f.model->index(0, 0, committed), added, f.newCpl(added, "m1")})
            QCOMPARE(f.model->IsBurnable(index), QVariant(index == added));
        QCOMPARE(f.model->getUnBurnedIndexes({}), QModelIndexList{committed});
        QCOMPARE(f.model->getUnBurnedIndexes(committed), QModelIndexList{added});
    }

    void theTrackDataModelIsSharedBySequenceAndFilledOnce()
    {
        ModelFixture f;
        const QModelIndex imp = f.newImp(f.newDelivery("Film"));
        const QPersistentModelIndex first = f.newCpl(imp, "m1");
        const QPersistentModelIndex second = f.newCpl(imp, "m1");
        const QModelIndex other = f.newCpl(imp, "m2");
        f.engine.takeCalls();
        const auto tracks = [](const QModelIndex& cpl) {
            return QPointer<QAbstractItemModel>(cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>());
        };
        const QPointer<QAbstractItemModel> shared = tracks(first);
        QVERIFY(shared && tracks(second) == shared && tracks(other) != shared);
        QCOMPARE(f.engine.takeCalls().filter("fill"),
                 QStringList({"fillAudioGroupingModel(model, m1)", "fillAudioGroupingModel(model, m2)"}));
        // The host may let go of it first.
        delete tracks(other).data();
        QVERIFY(!tracks(other));
        f.controller().onRemoveIMFItem(first);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(tracks(second), shared);
        f.controller().onRemoveIMFItem(second);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!shared);
    }

    void persistentIndexesOfOtherRowsStayAndThoseBelowEnd()
    {
        Shelf shelf;
        Model& model = *shelf.f.model;

        struct Kept {
            QPersistentModelIndex index;
            QString name;
        };

        QVector<Kept> kept;
        for (const QModelIndex& index : {shelf.row(0), shelf.row(2), model.index(0, 0, shelf.row(2))})
            kept << Kept{index, index.data().toString()} << Kept{index.siblingAtColumn(1), index.data().toString()};
        const QPersistentModelIndex status = shelf.row(1).siblingAtColumn(1);
        const QPersistentModelIndex imp = model.index(1, 0, shelf.row(1));
        const QPersistentModelIndex cpl = model.index(0, 1, imp);
        shelf.replaceSecond();
        for (const Kept& entry : qAsConst(kept))
            QCOMPARE(entry.index.sibling(entry.index.row(), 0).data().toString(), entry.name);
        QCOMPARE(QModelIndex(status), shelf.row(1).siblingAtColumn(1));
        QVERIFY(!imp.isValid() && !cpl.isValid());
        model.removeIndex(shelf.row(0));
        QCOMPARE(QModelIndex(status), shelf.row(0).siblingAtColumn(1));
    }

    void viewsAndProxiesShowTheNewTree()
    {
        Shelf shelf;
        QSortFilterProxyModel proxy;
        proxy.setSourceModel(shelf.f.model.get());
        proxy.sort(0, Qt::DescendingOrder);
        QTreeView view;
        view.setModel(shelf.f.model.get());
        QTreeView proxied;
        proxied.setModel(&proxy);
        view.expandAll();
        proxied.expandAll();
        view.show();
        proxied.show();
        view.setCurrentIndex(shelf.row(1));
        QItemSelectionModel& selection = *view.selectionModel();
        selection.select(QItemSelection(shelf.row(1), shelf.row(2).siblingAtColumn(1)),
                         QItemSelectionModel::ClearAndSelect);
        shelf.replaceSecond();
        QCoreApplication::processEvents();
        QCOMPARE(view.currentIndex(), shelf.row(1));
        QCOMPARE(selection.selectedRows(), QModelIndexList({shelf.row(1), shelf.row(2)}));
        QVERIFY(view.isExpanded(shelf.row(1)));
        QVERIFY(view.visualRect(shelf.f.model->index(2, 0, shelf.row(1))).isValid());
        QCOMPARE(proxy.index(0, 0).data().toString(), QString("New"));
        QCOMPARE(proxy.rowCount(proxy.index(0, 0)), 3);
        QCOMPARE(proxy.index(0, 0, proxy.index(0, 0)).data().toString(), QString("I3"));
        shelf.f.model->removeIndex(shelf.row(1));
        QCoreApplication::processEvents();
        QCOMPARE(proxy.rowCount(), 2);
    }

    void anImpCanBeReplacedInPlace()
    {
        Shelf shelf;
        const QPersistentModelIndex second = shelf.f.model->index(1, 0, shelf.row(1));
        const QPersistentModelIndex first = shelf.f.model->index(0, 0, shelf.row(1));
        const std::shared_ptr<IMF_Node> parent = shelf.f.model->FromIndex(shelf.row(1));
        shelf.f.withoutTester([&] {
            shelf.f.model->replace(first, IMF_PackageDeliveryReader::impFromJson(documents::imp("New"), parent));
        });
        QCOMPARE(first.data().toString(), QString("New"));
        QCOMPARE(second.data().toString(), QString("I2"));
        QCOMPARE(Model::ComponentIDFromIndex(first), QByteArray("b/New"));
    }
};

STRATACUT_TEST_MAIN(TestModelStructure)
#include "tst_model_structure.moc"
