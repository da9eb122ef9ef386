#include "ModelFixture.h"

#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "support/TestMain.h"

#include <QItemSelectionModel>
#include <QSortFilterProxyModel>
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

    std::shared_ptr<IMF_Node> fresh(const QString& name)
    {
        return IMF_PackageDeliveryReader::getDeliveryNodeFromJson(
            documents::delivery(name, "/b", {documents::imp("I1"), documents::imp("I2"), documents::imp("I3")}), "b");
    }

    QModelIndex replaceSecond(const QString& name)
    {
        QModelIndex index;
        f.withoutTester([&] { index = f.model->replace(row(1), fresh(name)); });
        return index;
    }

    ModelFixture f;
};

/// What a model announced, in order.
QStringList recordAnnouncements(Model& model, const std::function<void()>& action)
{
    QStringList log;
    QObject context;
    const auto note = [&](auto signal, const QString& text) {
        QObject::connect(&model, signal, &context, [&log, text](const QModelIndex&, int first, int last) {
            log += QString("%1 %2-%3").arg(text).arg(first).arg(last);
        });
    };
    note(&QAbstractItemModel::rowsAboutToBeInserted, "inserting");
    note(&QAbstractItemModel::rowsInserted, "inserted");
    note(&QAbstractItemModel::rowsAboutToBeRemoved, "removing");
    note(&QAbstractItemModel::rowsRemoved, "removed");
    QObject::connect(&model, &QAbstractItemModel::layoutChanged, &context, [&log] { log += "layout"; });
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &context,
                     [&log](const QModelIndex& index) { log += QString("data, column %1").arg(index.column()); });
    action();
    return log;
}
} // namespace

/// How the item model swaps a row.
class TestModelReplace : public QObject
{
    Q_OBJECT

private slots:

    void theAnnouncementsAreNested()
    {
        Shelf shelf;
        const QStringList log = recordAnnouncements(*shelf.f.model, [&] { shelf.replaceSecond("New"); });
        QCOMPARE(log, QStringList({"inserting 1-1", "removing 1-1", "removed 1-1", "inserted 1-1", "layout",
                                   "data, column 1"}));
    }

    void persistentIndexesOfOtherRowsStay()
    {
        Shelf shelf;
        QVector<QPersistentModelIndex> kept;
        for (const int row : {0, 2}) {
            kept << shelf.row(row) << shelf.row(row).siblingAtColumn(1);
            kept << shelf.f.model->index(0, 0, shelf.row(row));
        }
        QStringList before;
        for (const QPersistentModelIndex& index : qAsConst(kept))
            before += index.sibling(index.row(), 0).data().toString();
        shelf.replaceSecond("New");
        QStringList after;
        for (const QPersistentModelIndex& index : qAsConst(kept))
            after += index.sibling(index.row(), 0).data().toString();
        QCOMPARE(after, before);
        QCOMPARE(QModelIndex(kept[3]), shelf.row(2));
    }

    void persistentIndexesOfTheRowFollowAndThoseBelowEnd()
    {
        Shelf shelf;
        const QPersistentModelIndex row = shelf.row(1);
        const QPersistentModelIndex status = shelf.row(1).siblingAtColumn(1);
        const QPersistentModelIndex imp = shelf.f.model->index(1, 0, shelf.row(1));
        const QPersistentModelIndex cpl = shelf.f.model->index(0, 1, imp);
        shelf.replaceSecond("New");
        QCOMPARE(QModelIndex(row), shelf.row(1));
        QCOMPARE(QModelIndex(status), shelf.row(1).siblingAtColumn(1));
        QVERIFY(!imp.isValid() && !cpl.isValid());
        shelf.f.model->removeIndex(shelf.row(0));
        QCOMPARE(QModelIndex(row), shelf.row(0));
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
        shelf.replaceSecond("New");
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

STRATACUT_TEST_MAIN(TestModelReplace)
#include "tst_model_replace.moc"
