#include "ModelFixture.h"

#include "StratacutUI/IMF_Node.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

using Model = IMF_PackageMgrQtModel;
using KeyAndText = QPair<QString, QString>;

namespace
{
QVariant pair(const QString& key, const QString& text)
{
    return QVariant::fromValue(KeyAndText(key, text));
}

struct Tree {
    ModelFixture f;
    QModelIndex delivery = f.newDelivery("Film");
    QModelIndex imp = f.newImp(delivery);
    QModelIndex cpl = f.newCpl(imp, "m1");

    QModelIndex at(int kind) const { return kind == 0 ? delivery : kind == 1 ? imp : cpl; }
};

QJsonArray groups()
{
    return {QJsonObject{{"Name", "G"}, {"Include Master Fader", false}, {"Tracks", QJsonArray{"A1"}}}};
}
} // namespace

/// What can be written into the item model, and what it announces.
class TestModelEditing : public QObject
{
    Q_OBJECT

private slots:

    void writingAnnouncesWhatChanged_data()
    {
        const support::Rows<int, int, int, QVariant, bool, int, QVector<int>> row;
        const QVector<int> renamed{Qt::DisplayRole, 257};
        const QVector<int> moved{258, 257};
        const QVector<int> retitled{260, Qt::DisplayRole};
        row("rename deliverable", 0, 0, 2, QVariant("New"), true, 0, renamed);
        row("rename CPL", 2, 0, 2, QVariant("New"), true, 0, renamed);
        row("same name", 0, 0, 2, QVariant("Film"), false, -1, QVector<int>());
        row("empty name", 1, 0, 2, QVariant(""), false, -1, QVector<int>());
        row("path", 0, 0, 258, QVariant("/new"), true, 0, moved);
        row("path of an IMP", 1, 0, 258, QVariant("/new"), false, -1, QVector<int>());
        row("annotation", 0, 0, 260, pair("Annotation", "x"), true, 1, QVector<int>{260});
        row("unknown key", 0, 0, 260, pair("No such", "x"), true, -1, QVector<int>());
        row("parameter", 2, 0, 260, pair("Compression", "Reversible"), true, 1, QVector<int>{260});
        row("issuer", 1, 0, 267, pair("Issuer", "x"), true, 1, QVector<int>{267});
        row("same issuer", 2, 0, 267, QVariant(""), true, -1, QVector<int>());
        row("creator from column 1", 0, 1, 268, QVariant("x"), true, 1, QVector<int>{268});
        row("title", 2, 0, 284, pair("ContentTitle", "x"), true, 1, retitled);
        row("same title", 2, 0, 284, QVariant("Sequence m1"), true, -1, QVector<int>());
        row("title of an IMP", 1, 0, 284, QVariant("x"), true, -1, QVector<int>());
        row("groups", 2, 0, 287, QVariant(groups()), true, 0, QVector<int>{287});
    }

    void writingAnnouncesWhatChanged()
    {
        const auto [kind, column, role, value, result, lastColumn, roles] =
            support::fetched<int, int, int, QVariant, bool, int, QVector<int>>();
        Tree tree;
        const QModelIndex index = tree.at(kind).siblingAtColumn(column);
        QSignalSpy changed(tree.f.model.get(), &Model::dataChanged);
        QCOMPARE(tree.f.model->setData(index, value, role), result);
        QCOMPARE(changed.size(), lastColumn < 0 ? 0 : 1);
        if (changed.isEmpty())
            return;
        QCOMPARE(changed[0][0].toModelIndex(), index);
        QCOMPARE(changed[0][1].toModelIndex(), index.siblingAtColumn(lastColumn));
        QCOMPARE(changed[0][2].value<QVector<int>>(), roles);
    }

    void aValueThatIsNoTextClearsNothing()
    {
        Tree tree;
        support::Assertions assertions;
        QVERIFY(tree.f.model->setData(tree.imp, "x", Model::IssuerRole));
        QVERIFY(tree.f.model->setData(tree.imp, QVariant(), Model::IssuerRole));
        QCOMPARE(assertions.take(), QStringList{"IMF_IMP: false"});
        QCOMPARE(tree.imp.data(Model::IssuerRole).toString(), QString("x"));
    }

    void aDeliverableIsRenamedByTheHostFirst()
    {
        Tree tree;
        tree.f.bridge.takeCalls();
        QVERIFY(tree.f.model->setData(tree.imp, "Local"));
        QVERIFY(tree.f.bridge.takeCalls().isEmpty());
        QVERIFY(tree.f.model->setData(tree.delivery, "New"));
        QCOMPARE(tree.f.bridge.takeCalls(), QStringList{"renameItem(Film#1, New)"});
        QCOMPARE(Model::ComponentIDFromIndex(tree.delivery), QByteArray("New#2"));
        tree.f.bridge.keepsIdentifiers = true;
        QVERIFY(tree.f.model->setData(tree.delivery, "Newer"));
        QCOMPARE(tree.delivery.data().toString(), QString("Newer"));
        tree.f.bridge.fail("renameItem", 1, "Not so.");
        const support::ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(!tree.f.model->setData(tree.delivery, "Newest"));
        QCOMPARE(tree.delivery.data().toString(), QString("Newer"));
        QCOMPARE(Model::ComponentIDFromIndex(tree.delivery), QByteArray("New#2"));
    }

    void aRenameTakesTheTrackGroupsOfTheSubtreeAlong()
    {
        Tree tree;
        const QByteArray former = Model::ComponentIDFromIndex(tree.cpl);
        tree.f.model->setData(tree.cpl, groups(), Model::TrackGroupsRole);
        QVERIFY(tree.f.model->setData(tree.imp, pair("Name", "New"), Model::MetadataRole));
        QCOMPARE(tree.cpl.data(Model::TrackGroupsRole).toJsonArray(), groups());
        // Whoever gets the former name finds nothing under it.
        const QModelIndex cpl = tree.f.newCpl(tree.f.newImp(tree.delivery), "m1");
        QCOMPARE(Model::ComponentIDFromIndex(cpl), former);
        QCOMPARE(cpl.data(Model::TrackGroupsRole).toJsonArray(), QJsonArray());
    }

    void namesakesShareTheirTrackGroupsUntilTheLastGoes()
    {
        Tree tree;
        tree.f.model->setData(tree.cpl, groups(), Model::TrackGroupsRole);
        const QModelIndex second = tree.f.newCpl(tree.imp, "m1");
        QCOMPARE(second.data(Model::TrackGroupsRole).toJsonArray(), groups());
        tree.f.controller().onRemoveIMFItem(second);
        QCOMPARE(tree.cpl.data(Model::TrackGroupsRole).toJsonArray(), groups());
        const QModelIndex namesake = tree.f.newImp(tree.delivery);
        tree.f.model->setData(namesake, tree.imp.data().toString());
        tree.f.newCpl(namesake, "m1");
        tree.f.controller().onRemoveIMFItem(namesake);
        QCOMPARE(tree.cpl.data(Model::TrackGroupsRole).toJsonArray(), groups());
        tree.f.controller().onRemoveIMFItem(tree.cpl);
        QCOMPARE(tree.f.newCpl(tree.imp, "m1").data(Model::TrackGroupsRole).toJsonArray(), QJsonArray());
    }

    void aNewCplCarriesItsSequence()
    {
        ModelFixture f;
        f.engine.addSequence("m1", "Reel");
        const QModelIndex imp = f.newImp(f.newDelivery("Film"));
        QSignalSpy created(f.model.get(), &Model::notifyNewCPLCreated);
        f.model->createCPLFromMobs({"m1"}, imp);
        const QModelIndex cpl = f.model->index(0, 0, imp);
        const QJsonObject document = Model::MetadataJsonFromIndex(cpl);
        QCOMPARE(document["CPLProjectName"].toString(), QString("Project"));
        QCOMPARE(document["CPLBin"].toString(), QString("Bin"));
        QCOMPARE(document["DescriptiveMetadata"].toObject()["Creator"].toString(), QString("Test 1.0"));
        QCOMPARE(created[0], (QVariantList{QByteArray("Film#1/Untitled IMP/Reel"), QByteArray("token:m1")}));
        QCOMPARE(f.bridge.takeCalls().constLast(), QString("createCPL(Film#1/Untitled IMP/Reel, token:m1)"));
        QVERIFY(f.model->setData(cpl, "A title", Model::ContentTitleRole));
        QCOMPARE(cpl.data(Model::ContentTitleRole).toString(), QString("A title"));
    }

    void aVanishedSequenceMakesItsCplsInvalid()
    {
        Tree tree;
        const QModelIndex second = tree.f.newCpl(tree.imp, "m1");
        const QModelIndex other = tree.f.newCpl(tree.imp, "m2");
        tree.f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I", {documents::cpl("C")})}));
        QSignalSpy changed(tree.f.model.get(), &Model::dataChanged);
        tree.f.engine.sequences.remove("m1");
        // What was read from disk is made from no sequence.
        tree.f.model->onMobStatusChanged("");
        tree.f.model->onMobStatusChanged("m1");
        QVERIFY(!tree.cpl.data(Model::ValidRole).toBool() && !second.data(Model::ValidRole).toBool());
        QVERIFY(other.data(Model::ValidRole).toBool());
        QCOMPARE(changed.size(), 2);
        QCOMPARE(changed[0][0].toModelIndex(), tree.cpl);
        QCOMPARE(changed[0][1].toModelIndex(), tree.cpl.siblingAtColumn(1));
        QVERIFY(changed[0][2].value<QVector<int>>().isEmpty());
    }

    void anAppendedRowRepaintsTheStatusOfItsParent()
    {
        Tree tree;
        QSignalSpy changed(tree.f.model.get(), &Model::dataChanged);
        tree.f.newImp(tree.delivery);
        QCOMPARE(changed.takeFirst().at(0).toModelIndex(), tree.delivery.siblingAtColumn(1));
        tree.f.newDelivery("Other");
        QVERIFY(changed.isEmpty());
    }
};

STRATACUT_TEST_MAIN(TestModelEditing)
#include "tst_model_editing.moc"
