#include "ModelFixture.h"

#include "StratacutUI/IMF_Node.h"
#include "ViewDeckQt/NineSlice.h"
#include "support/FakeTargetFormatBuilder.h"
#include "support/TestMain.h"

#include <QEvent>
#include <QPalette>
#include <QPixmap>

using Model = IMF_PackageMgrQtModel;

/// What the item model answers.
class TestModelStructure : public QObject
{
    Q_OBJECT

    static QImage imageOf(const QVariant& decoration) { return decoration.value<QPixmap>().toImage(); }

    static QImage statusImage(int id)
    {
        return NineSlice::GetImage("iconsV2", NineSlice::GetResourceIDString(id)).toImage();
    }

private slots:

    void onlyTheFirstColumnHasRows()
    {
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex cpl = f.newCpl(f.newImp(delivery), "m1");
        QCOMPARE(f.model->rowCount(delivery), 1);
        QCOMPARE(f.model->rowCount(delivery.siblingAtColumn(1)), 0);
        QCOMPARE(f.model->columnCount(cpl), 2);
        QVERIFY(!f.model->index(0, 2, delivery).isValid());
        QVERIFY(!delivery.parent().isValid());
        QCOMPARE(cpl.siblingAtColumn(1).parent(), f.model->index(0, 0, delivery));
    }

    void headersNameTheTwoColumnsInEveryOrientation()
    {
        ModelFixture f;
        for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
            QCOMPARE(f.model->headerData(0, orientation).toString(), QString("Name"));
            QCOMPARE(f.model->headerData(1, orientation).toString(), QString("Status"));
            QVERIFY(!f.model->headerData(2, orientation).isValid());
            QVERIFY(!f.model->headerData(-1, orientation).isValid());
        }
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

    void anItemAnswersEveryRole()
    {
        ModelFixture f;
        f.engine.addSequence("m1", "Reel");
        const QModelIndex delivery = f.newDelivery("Film", IMF_PackageMgr::Supplemental);
        const QModelIndex imp = f.newImp(delivery);
        const QModelIndex cpl = f.newCpl(imp, "m1");

        struct Row {
            int role;
            QVariant delivery;
            QVariant imp;
            QVariant cpl;
        };

        const QByteArray id = "Film#1";
        const Row rows[] = {{Qt::DisplayRole, "Film", "Untitled IMP", "Reel"},
                            {Qt::EditRole, "Film", "Untitled IMP", "Reel"},
                            {257, id, id + "/Untitled IMP", id + "/Untitled IMP/Reel"},
                            {258, "/out/Film", "", ""},
                            {259, "Film", "Untitled IMP", "Reel"},
                            {262, 1, 1, 1},
                            {263, 0, 1, 2},
                            {264, 2, 2, 2},
                            {265, true, true, true},
                            {266, true, true, false},
                            {267, "", "", ""},
                            {268, "Test 1.0", "Test 1.0", "Test 1.0"},
                            {284, {}, {}, "Reel"},
                            {287, {}, {}, QJsonArray()},
                            {300, {}, {}, {}}};
        for (const Row& row : rows) {
            const QVariantList answers{delivery.data(row.role), imp.data(row.role), cpl.data(row.role)};
            QVERIFY2(answers == QVariantList({row.delivery, row.imp, row.cpl}),
                     qPrintable(QString("role %1: %2").arg(row.role).arg(answers[2].toString())));
        }
        for (const int role : {261, 281, 286})
            QVERIFY(!delivery.data(role).isValid());
        QCOMPARE(cpl.siblingAtColumn(1).data(Model::NameRole), cpl.data(Model::NameRole));
    }

    void anInvalidIndexReadsAsNothing()
    {
        QCOMPARE(Model::ComponentIDFromIndex({}), QByteArray());
        QCOMPARE(Model::MetadataJsonFromIndex({}), QJsonObject());
        QCOMPARE(Model::CommitSettingsJsonFromIndex({}), QJsonObject());
        QCOMPARE(int(Model::StatusFromIndex({})), 0);
        QCOMPARE(int(Model::NodeTypeFromIndex({})), 0);
        QCOMPARE(int(Model::VersionFromIndex({})), 0);
        const IMFO_ItemInfo info = IMF_Controller::itemInfo({});
        QVERIFY(info.componentId.isEmpty() && info.metadataJson.isEmpty() && info.commitSettingsJson.isEmpty());
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
        QVERIFY(!fresh.siblingAtColumn(1).data().isValid());
        QCOMPARE(imageOf(fresh.siblingAtColumn(1).data(Qt::DecorationRole)), statusImage(4));
        QCOMPARE(imageOf(committed.siblingAtColumn(1).data(Qt::DecorationRole)), statusImage(3));
        QVERIFY(statusImage(3) != statusImage(4));
    }

    void iconsFollowKindStateAndPalette()
    {
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex imp = f.newImp(delivery);
        const auto image = [](const QModelIndex& index, QIcon::Mode mode, QIcon::State state) {
            return index.data(Qt::DecorationRole).value<QIcon>().pixmap(16, mode, state).toImage();
        };
        QVERIFY(image(delivery, QIcon::Normal, QIcon::On) != image(delivery, QIcon::Normal, QIcon::Off));
        QVERIFY(image(delivery, QIcon::Normal, QIcon::On) != image(delivery, QIcon::Selected, QIcon::On));
        QCOMPARE(image(imp, QIcon::Normal, QIcon::On), image(imp, QIcon::Normal, QIcon::Off));
        const QImage before = image(imp, QIcon::Selected, QIcon::On);
        const QPalette former = QGuiApplication::palette();
        QPalette palette = former;
        palette.setColor(QPalette::Active, QPalette::HighlightedText, Qt::magenta);
        QGuiApplication::setPalette(palette);
        QEvent change(QEvent::PaletteChange);
        QCoreApplication::sendEvent(f.model.get(), &change);
        const QImage after = image(imp, QIcon::Selected, QIcon::On);
        QGuiApplication::setPalette(former);
        QVERIFY(before != after);
    }

    void onlyUncommittedDeliverablesAndImpsAreBurnable()
    {
        ModelFixture f;
        const QModelIndex committed =
            f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I", {documents::cpl("C")})}));
        const QModelIndex added = f.newImp(committed);
        const QModelIndex cpl = f.newCpl(added, "m1");
        QCOMPARE(f.model->IsBurnable(committed), QVariant(false));
        QCOMPARE(f.model->IsBurnable(f.model->index(0, 0, committed)), QVariant(false));
        QCOMPARE(f.model->IsBurnable(added), QVariant(true));
        QCOMPARE(f.model->IsBurnable(cpl), QVariant(false));
        QCOMPARE(f.model->IsBurnable({}), QVariant(false));
        QCOMPARE(f.model->getUnBurnedIndexes({}), QModelIndexList{committed});
        QCOMPARE(f.model->getUnBurnedIndexes(committed), QModelIndexList{added});
    }

    void anAmbiguousFolderMeansTheRowJustAppendedThenTheCommittedOne()
    {
        ModelFixture f;
        const QModelIndex first = f.newDelivery("First");
        const QModelIndex second = f.newDelivery("Second");
        QCOMPARE(f.model->getDeliveryModelIndex("/out"), second);
        QVERIFY(!f.model->getCommittedDeliveryModelIndex("/out").isValid());
        f.newImp(second);
        QCOMPARE(f.model->getDeliveryModelIndex("/out"), first);
        boost::get<IMF_Deliverable>(f.model->FromIndex(second)->value()).setStatus(IMF_PackageMgr::Committed);
        QCOMPARE(f.model->getDeliveryModelIndex("/out"), second);
        QVERIFY(!f.model->getDeliveryModelIndex("/elsewhere").isValid());
    }

    void anAmbiguousNameMeansTheRowJustAppendedThenTheFirst()
    {
        ModelFixture f;
        const QModelIndex imp = f.newImp(f.newDelivery("Film"));
        f.engine.addSequence("m1", "Same");
        const QModelIndex first = f.newCpl(imp, "m1");
        const QModelIndex second = f.newCpl(imp, "m1");
        QCOMPARE(f.model->getCPLModelIndex(imp, "Same"), second);
        f.newCpl(imp, "other");
        QCOMPARE(f.model->getCPLModelIndex(imp, "Same"), first);
        QCOMPARE(f.model->mobToIndex("m1"), first);
        QVERIFY(!f.model->getIMPModelIndex(imp, "Same").isValid());
        QVERIFY(!f.model->mobToIndex("unknown").isValid());
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
        f.controller().onRemoveIMFItem(first);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(tracks(second), shared);
        f.controller().onRemoveIMFItem(second);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!shared);
    }

    void aForgottenTrackDataModelIsGoneFromItsCpls()
    {
        ModelFixture f;
        const QModelIndex cpl = f.newCpl(f.newImp(f.newDelivery("Film")), "m1");
        f.model->unregisterTrackDataModel("m1");
        QVERIFY(!cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>());
        f.model->addTrackModel(Model::ComponentIDFromIndex(cpl), "m1");
        QVERIFY(cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>());
        f.model->addTrackModel(QByteArray("nobody"), "m3");
        f.model->addTrackModel(cpl.parent(), "m3");
        QCOMPARE(f.engine.calls.count("createTrackDataModel()"), 2);
    }
};

STRATACUT_TEST_MAIN(TestModelStructure)
#include "tst_model_structure.moc"
