#include "ModelFixture.h"

#include "ViewDeckQt/ManagedMessageBox.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <QMimeData>

using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using support::ModalAnswer;

namespace
{
QJsonObject missing()
{
    return {{"Kind", "x"}, {"IMPs", QJsonArray{1, QJsonObject{{"MissingAssets", QJsonArray()}}}}};
}

/// A message as it must look.
bool looksLike(const ModalAnswer& box, QMessageBox::Icon icon, const QString& text)
{
    return box.title == "Norvel Stratacut" && box.icon == icon && box.text == text && box.buttons == QMessageBox::Ok &&
           box.defaultButton == QMessageBox::Ok && !box.parentWidget;
}

/// A model with something of every sort, over a host that refuses everything.
struct Behind {
    Behind()
    {
        f.bridge.infos["a"] = missing();
        f.controller().onSaveSettings();
        for (const char* mobId : {"m1", "m2"})
            f.engine.addSequence(mobId, mobId);
        for (const char* operation : {"readDelivery", "renameItem", "removeItem", "createCPL"})
            f.bridge.fail(operation, 1, "No.");
    }

    ModelFixture f;
    QPersistentModelIndex first = f.load("/a", "a", documents::delivery("A", "/a"));
    QPersistentModelIndex second = f.load("/b", "b", documents::delivery("B", "/b"));
    QPersistentModelIndex film = f.newDelivery("Film");
    QPersistentModelIndex imp = f.newImp(film);
    IMF_Controller& controller = f.controller();
    /// The message at which the model ends.
    int endsAt = 1;
};
} // namespace

/// The controller, its messages answered through the real widgets. Commits have a test of their own.
class TestController : public QObject
{
    Q_OBJECT

private slots:

    void aRefusedNewDeliveryIsReported()
    {
        ModelFixture f;
        f.bridge.fail("createDelivery", 9, "Disk full.");
        ModalAnswer answer(QMessageBox::Ok);
        f.controller().onNewIMFDelivery("Film", IMF_PackageMgr::Original);
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Disk full."));
        QCOMPARE(f.model->rowCount(), 0);
    }

    void anExploredDeliveryIsLoadedOnce()
    {
        ModelFixture f;
        const QJsonObject document = documents::delivery("D", "/d", {documents::imp("I"), documents::imp("J")});
        QSignalSpy added(&f.controller(), &IMF_Controller::newDeliveryAdded);
        f.putOnDisk("/d", "d", document);
        f.controller().onExploreNewDelivery("/d");
        const QModelIndex delivery = f.model->index(0, 0);
        QCOMPARE(added[0][0].toModelIndex(), delivery);
        QCOMPARE(int(Model::StatusFromIndex(delivery)), int(IMF_PackageMgr::Committed));
        QCOMPARE(f.model->index(1, 0, delivery).data().toString(), QString("J"));
        QVERIFY(!Model::MetadataJsonFromIndex(delivery).contains("Children"));
        f.bridge.takeCalls();
        f.controller().onExploreNewDelivery("/d");
        QCOMPARE(f.bridge.takeCalls(), QStringList{"getDeliveryInfo(d, recursive)"});
        QCOMPARE(f.model->rowCount(), 1);
    }

    void theMerePresenceOfMissingAssetsCounts()
    {
        const QVector<QPair<QJsonObject, bool>> infos{{{}, false},
                                                      {{{"MissingAssets", false}}, true},
                                                      {{{"MissingAssets", QJsonValue::Null}}, false},
                                                      {missing(), true},
                                                      {{{"a", "MissingAssets"}}, false}};
        ModelFixture f;
        QJsonObject document = documents::delivery("D", "/d");
        document["Info"] = missing();
        f.putOnDisk("/d", "d", document);
        bool hasMissing = false;
        f.controller().loadNewDelivery("/d", &hasMissing, false);
        QVERIFY(hasMissing);
        for (const auto& [info, expected] : infos) {
            f.bridge.infos["d"] = info;
            QCOMPARE(f.controller().hasMissingAssets(f.model->index(0, 0)), expected);
            f.controller().loadNewDelivery("/d", &hasMissing, false);
            QCOMPARE(hasMissing, expected);
        }
        f.bridge.fail("getDeliveryInfo", 1, "Gone.");
        const ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(!f.controller().hasMissingAssets(f.model->index(0, 0)));
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Gone."));
    }

    void anItemIsRefreshedWithItsDeliverable()
    {
        ModelFixture f;
        const QModelIndex delivery = f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I")}));
        f.bridge.fail("readDelivery", 1, "Unreadable.");
        const ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(!f.controller().onRefreshIMFItem(f.model->index(0, 0, delivery)).isValid());
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Unreadable."));
        QCOMPARE(f.model->rowCount(delivery), 1);
        f.bridge.succeed();
        f.putOnDisk("/d", "d", documents::delivery("Renamed", "/d"));
        f.withoutTester([&] { f.controller().onRefreshIMFItem(f.model->index(0, 0, delivery)); });
        QCOMPARE(f.model->index(0, 0).data().toString(), QString("Renamed"));
        QVERIFY(!f.controller().onRefreshIMFItem({}).isValid());
    }

    void removing_data()
    {
        const support::Rows<bool, int, QString, QString> row;
        row("deliverable", false, 0, "", "");
        row("CPL", false, 2, "", "");
        row("committed deliverable", true, 0, "", "");
        row("committed IMP", true, 1, "", "Can't remove committed element: I");
        row("committed CPL", true, 2, "", "Can't remove committed element: C title");
        row("refused", false, 1, "In use.", "Failed to remove : In use. I");
    }

    void removing()
    {
        const auto [committed, depth, refusal, text] = support::fetched<bool, int, QString, QString>();
        ModelFixture f;
        const QJsonObject document = documents::delivery("D", "/d", {documents::imp("I", {documents::cpl("C")})});
        QModelIndex index = committed ? f.load("/d", "d", document) : f.newDelivery("New");
        if (!committed) {
            const QModelIndex imp = f.newImp(index);
            f.model->setData(imp, "I");
            f.newCpl(imp, "m1");
        }
        for (int level = 0; level < depth; ++level)
            index = f.model->index(0, 0, index);
        const QModelIndex parent = index.parent();
        if (!refusal.isEmpty())
            f.bridge.fail("removeItem", 5, refusal);
        f.bridge.takeCalls();
        std::unique_ptr<ModalAnswer> answer;
        if (!text.isEmpty())
            answer = std::make_unique<ModalAnswer>(QMessageBox::Ok);
        f.controller().onRemoveIMFItem(index);
        QVERIFY(!answer || answer->text == text);
        QCOMPARE(f.model->rowCount(parent), answer ? 1 : 0);
        QCOMPARE(f.bridge.takeCalls().isEmpty(), committed && answer);
    }

    void aRefusedFolderCanBeChosenAgain()
    {
        const QTemporaryDir taken;
        const QTemporaryDir other;
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        f.bridge.failCall(QString("setItemPath(Film#1, %1)").arg(taken.path()), 3, "There.");
        // A refusal without a message is no consent.
        f.bridge.failCall(QString("setItemPath(Film#1, %1)").arg(other.path()), 7, "");
        FolderAnswer first(taken.path());
        ModalAnswer again(QMessageBox::Ok);
        FolderAnswer second(other.path());
        ModalAnswer giveUp(QMessageBox::Cancel);
        f.controller().onSetPathButtonClicked(delivery);
        QCOMPARE(again.text, "Film already exists at path:\n" + taken.path() + "\n\n\tPlease choose a new path");
        QVERIFY(giveUp.text.isEmpty());
        QCOMPARE(giveUp.icon, QMessageBox::Warning);
        QCOMPARE(giveUp.buttons, QMessageBox::Ok | QMessageBox::Cancel);
        QCOMPARE(giveUp.defaultButton, QMessageBox::Ok);
        QCOMPARE(giveUp.margins, QMargins(20, 10, 20, 10));
        QCOMPARE(delivery.data(Model::PathRole).toString(), QString("/out/Film"));
        FolderAnswer cancelled("");
        f.bridge.takeCalls();
        f.controller().onSetPathButtonClicked(delivery);
        QVERIFY(f.bridge.takeCalls().isEmpty());
        QCOMPARE(cancelled.openedIn, QDir(other.path()).canonicalPath());
    }

    void aFolderCanBeSetWithoutDialog()
    {
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        const auto setPath = [&f, &delivery](const QString& path) {
            QString message;
            QMetaObject::invokeMethod(&f.controller(), "setPath", Q_RETURN_ARG(QString, message), Q_ARG(QString, path),
                                      Q_ARG(QModelIndex, delivery));
            return message;
        };
        QCOMPARE(setPath("/new"), QString());
        QCOMPARE(delivery.data(Model::PathRole).toString(), QString("/new/Film"));
        f.bridge.fail("setItemPath", 3, "There.");
        QCOMPARE(setPath("/x"), QString("Film already exists at path:\n/x\n\n\tPlease choose a new path"));
        QCOMPARE(delivery.data(Model::PathRole).toString(), QString("/new/Film"));
    }

    void missingDeliverablesAreAskedForUntilTheyAreThere()
    {
        const QTemporaryDir wrong;
        const QTemporaryDir right;
        ModelFixture f;
        const QModelIndex delivery = f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I")}));
        f.newDelivery("Not on disk");
        const QModelIndex imp = f.model->index(0, 0, delivery);
        f.bridge.takeCalls();
        f.controller().resolveMissingAssetsIfNeeded(imp);
        QCOMPARE(f.bridge.takeCalls(), QStringList{"getDeliveryInfo(d/I, recursive)"});
        f.bridge.infos["d"] = missing();
        f.bridge.infos["d/I"] = missing();
        f.putOnDisk(wrong.path(), "w", documents::delivery("W", wrong.path()));
        f.putOnDisk(right.path(), "r", documents::delivery("R", right.path()));
        f.bridge.onCall = [&](const QString& call) {
            if (call == QString("readDelivery(%1)").arg(right.path()))
                f.bridge.infos.remove("d");
        };
        ModalAnswer first(QMessageBox::Yes);
        FolderAnswer chooseWrong(wrong.path());
        ModalAnswer second(QMessageBox::Yes);
        FolderAnswer chooseRight(right.path());
        f.withoutTester([&] { f.controller().resolveMissingAssetsIfNeeded(imp); });
        QCOMPARE(first.text, QString("The associated IMF deliverable was not found. Would you like to load the "
                                     "dependent IMF deliverable?"));
        QCOMPARE(first.buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(first.defaultButton, QMessageBox::No);
        QCOMPARE(f.model->rowCount(), 4);
        // At the end, everything that is on disk is read again.
        const QString read = "readDelivery(%1)";
        const QStringList calls = f.bridge.takeCalls();
        QCOMPARE(calls.mid(calls.size() - 3),
                 QStringList({read.arg("/d"), read.arg(wrong.path()), read.arg(right.path())}));
    }

    void aLostFolderIsReportedAndTheOthersAreLoadedOnce()
    {
        ModelFixture f;
        f.putOnDisk("/b", "b", documents::delivery("B", "/b"));
        (*f.settings)["VISITED_IMF_SETTINGS_KEY"] = QJsonArray{"/gone", "/b", "/b"};
        const ModalAnswer gone(QMessageBox::Ok);
        f.restart();
        QVERIFY(looksLike(gone, QMessageBox::Critical, "No deliverable in /gone."));
        QCOMPARE(f.model->rowCount(), 1);
    }

    void aModelWithoutAHostHasNoController()
    {
        support::Assertions assertions;
        IMF_PackageMgrQtModel model;
        model.initialize(nullptr, std::make_unique<support::MemorySettings>());
        QCOMPARE(assertions.take(), QStringList{"IMF_PackageMgrQtModel: bridge != nullptr"});
        QVERIFY(!model.getIMFController());
    }

    void theModelMayEndBehindAMessage_data()
    {
        const support::Rows<std::function<void(Behind&)>> row;
        row("start", [](Behind& b) { b.f.restart(); });
        row("question", [](Behind& b) { b.controller.resolveMissingAssetsIfNeeded(b.first); });
        row("folder of missing assets", [](Behind& b) {
            b.endsAt = 2;
            const FolderAnswer choice(QDir::tempPath());
            b.controller.resolveMissingAssetsIfNeeded(b.first);
        });
        row("missing assets", [](Behind& b) {
            b.f.bridge.fail("getDeliveryInfo", 1, "No.");
            b.controller.resolveMissingAssetsIfNeeded(b.first);
        });
        row("refreshing all", [](Behind& b) { b.controller.refreshAll(); });
        row("renaming", [](Behind& b) { b.f.model->setData(b.film, "New"); });
        row("removing", [](Behind& b) { b.controller.onRemoveIMFItem(b.film); });
        row("creating CPLs", [](Behind& b) { b.f.model->createCPLFromMobs({"m1", "m2"}, b.imp); });
        row("dropping", [](Behind& b) {
            b.f.bridge.fail("createIMP", 1, "No.");
            b.f.model->dropMimeData(support::RecordingMediaEngine::dragOf({"m1"}).get(), Qt::MoveAction, -1, -1,
                                    b.film);
        });
        row("failed completion", [](Behind& b) { b.controller.onCommitComplete(b.first, {1, "No."}); });
        row("read-back", [](Behind& b) { b.controller.onCommitComplete(b.first, {}); });
    }

    void theModelMayEndBehindAMessage()
    {
        const auto [action] = support::fetched<std::function<void(Behind&)>>();
        Behind behind;
        int messages = 0;
        ViewDeckQt::ManagedMessageBox::setPresenter([&](const ViewDeckQt::ManagedMessageBox::Request& request) {
            if (++messages == behind.endsAt)
                behind.f.end();
            return request.icon == QMessageBox::Question ? QMessageBox::Yes : QMessageBox::Ok;
        });
        action(behind);
        ViewDeckQt::ManagedMessageBox::setPresenter({});
        QCOMPARE(messages, behind.endsAt);
    }

    // The answer holds for the life of the process: no test that asks may follow.
    void nobodyIsAskedAgainAfterIgnore()
    {
        ModelFixture f;
        f.load("/d", "d", documents::delivery("D", "/d"));
        f.bridge.infos["d"] = missing();
        int questions = 0;
        ViewDeckQt::ManagedMessageBox::setPresenter([&questions](const auto&) {
            ++questions;
            return QMessageBox::Ignore;
        });
        f.controller().resolveMissingAssetsIfNeeded(f.model->index(0, 0));
        f.controller().resolveMissingAssetsIfNeeded(f.model->index(0, 0));
        ViewDeckQt::ManagedMessageBox::setPresenter({});
        QCOMPARE(questions, 1);
    }
};

STRATACUT_TEST_MAIN(TestController)
#include "tst_controller.moc"
