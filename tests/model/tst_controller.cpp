#include "ModelFixture.h"

#include "ViewDeckQt/ManagedMessageBox.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <functional>
#include <vector>

using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using support::ModalAnswer;

namespace
{
const QString question = QStringLiteral(
    "The associated IMF deliverable was not found. Would you like to load the dependent IMF deliverable?");

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
} // namespace

/// The controller, its messages answered through the real widgets. Commits have a test of their own.
class TestController : public QObject
{
    Q_OBJECT

private slots:

    void aNewDeliveryComesFromTheHost()
    {
        for (const bool isOriginal : {true, false}) {
            const auto version = isOriginal ? IMF_PackageMgr::Original : IMF_PackageMgr::Supplemental;
            ModelFixture f;
            QSignalSpy added(&f.controller(), &IMF_Controller::newDeliveryAdded);
            const QModelIndex delivery = f.newDelivery("Film", version);
            QCOMPARE(f.bridge.takeCalls(), QStringList{isOriginal ? "createDelivery(Film, , original)"
                                                                  : "createDelivery(Film, , supplemental)"});
            QCOMPARE(added[0][0].toModelIndex(), delivery);
            QCOMPARE(Model::VersionFromIndex(delivery), version);
            QCOMPARE(Model::MetadataJsonFromIndex(delivery)["Original"].toBool(), isOriginal);
            QCOMPARE(delivery.data(Model::CreatorRole).toString(), QString("Test 1.0"));
        }
    }

    void aRefusedNewDeliveryIsReported()
    {
        ModelFixture f;
        f.bridge.fail("createDelivery", 9, "Disk full.");
        ModalAnswer answer(QMessageBox::Ok);
        f.controller().onNewIMFDelivery("Film", IMF_PackageMgr::Original);
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Disk full."));
        QCOMPARE(f.model->rowCount(), 0);
    }

    void refusedImpsAndCplsAreReported()
    {
        ModelFixture f;
        f.bridge.fail("createIMP", 1, "No IMP.");
        f.bridge.fail("createCPL", 1, "No CPL.");
        ModalAnswer imp(QMessageBox::Ok);
        ModalAnswer cpl(QMessageBox::Ok);
        QVERIFY(f.controller().NewIMP("d/i"));
        QVERIFY(f.controller().NewCPL("d/i/c", "t"));
        QVERIFY(looksLike(imp, QMessageBox::Critical, "No IMP.") && looksLike(cpl, QMessageBox::Critical, "No CPL."));
        f.bridge.succeed();
        QVERIFY(!f.controller().NewIMP("d/i") && !f.controller().NewCPL("d/i/c", "t"));
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

    void loadingTellsWhatIsMissing()
    {
        ModelFixture f;
        QJsonObject document = documents::delivery("D", "/d");
        document["Info"] = missing();
        f.putOnDisk("/d", "d", document);
        bool hasMissing = false;
        f.controller().loadNewDelivery("/d", &hasMissing, false);
        QVERIFY(hasMissing);
        f.controller().loadNewDelivery("/d", &hasMissing, false);
        QVERIFY(!hasMissing);
        f.bridge.infos["d"] = missing();
        f.controller().loadNewDelivery("/d", &hasMissing, false);
        QVERIFY(hasMissing);
    }

    void theMerePresenceOfMissingAssetsCounts_data()
    {
        const support::Rows<QJsonObject, bool> row;
        row("nothing", QJsonObject(), false);
        row("false", QJsonObject{{"MissingAssets", false}}, true);
        row("empty list", QJsonObject{{"MissingAssets", QJsonArray()}}, true);
        row("null", QJsonObject{{"MissingAssets", QJsonValue::Null}}, false);
        row("deep", missing(), true);
        row("as a value", QJsonObject{{"a", "MissingAssets"}}, false);
    }

    void theMerePresenceOfMissingAssetsCounts()
    {
        const auto [info, expected] = support::fetched<QJsonObject, bool>();
        ModelFixture f;
        const QModelIndex delivery = f.load("/d", "d", documents::delivery("D", "/d"));
        f.bridge.infos["d"] = info;
        QCOMPARE(f.controller().hasMissingAssets(delivery), expected);
        f.bridge.fail("getDeliveryInfo", 1, "Gone.");
        ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(!f.controller().hasMissingAssets(delivery));
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Gone."));
    }

    void aRefreshReplacesTheRow()
    {
        ModelFixture f;
        const QModelIndex first = f.load("/d", "d", documents::delivery("D", "/d"));
        QSignalSpy added(&f.controller(), &IMF_Controller::newDeliveryAdded);
        f.putOnDisk("/d", "d", documents::delivery("Renamed", "/d", {documents::imp("I")}));
        QModelIndex fresh;
        f.withoutTester([&] { fresh = f.controller().onRefreshIMFItem(first); });
        QCOMPARE(fresh.data().toString(), QString("Renamed"));
        QCOMPARE(added[0][0].toModelIndex(), fresh);
        f.withoutTester([&] { fresh = f.controller().onRefreshIMFItem(f.model->index(0, 0, fresh)); });
        QCOMPARE(fresh, f.model->index(0, 0));
        QVERIFY(!f.controller().onRefreshIMFItem({}).isValid());
    }

    void aFailedRefreshLeavesTheRow()
    {
        ModelFixture f;
        const QModelIndex delivery = f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I")}));
        f.bridge.fail("readDelivery", 1, "Unreadable.");
        ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(!f.controller().onRefreshIMFItem(delivery).isValid());
        QVERIFY(looksLike(answer, QMessageBox::Critical, "Unreadable."));
        QCOMPARE(f.model->rowCount(f.model->index(0, 0)), 1);
    }

    void refreshingAllReadsTheCommittedDeliverablesAlone()
    {
        ModelFixture f;
        f.load("/a", "a", documents::delivery("A", "/a"));
        f.newDelivery("New");
        f.load("/b", "b", documents::delivery("B", "/b"));
        f.bridge.takeCalls();
        f.withoutTester([&] { f.controller().refreshAll(); });
        QCOMPARE(f.bridge.takeCalls(), QStringList({"readDelivery(/a)", "readDelivery(/b)"}));
    }

    void removing_data()
    {
        const support::Rows<bool, int, int, QString, int, QString, bool> row;
        const QString none;
        row("deliverable", false, 0, 0, "", 0, none, true);
        row("CPL", false, 2, 0, "", 0, none, true);
        row("committed deliverable", true, 0, 0, "", 0, none, true);
        row("committed IMP", true, 1, 0, "", int(QMessageBox::Warning), "Can't remove committed element: I", false);
        row("committed CPL", true, 2, 0, "", int(QMessageBox::Warning), "Can't remove committed element: C title",
            false);
        row("failure without message", false, 1, 5, "", 0, none, true);
        row("failure", false, 1, 5, "In use.", int(QMessageBox::Critical), "Failed to remove : In use. I", false);
    }

    void removing()
    {
        const auto [committed, depth, code, message, icon, text, removed] =
            support::fetched<bool, int, int, QString, int, QString, bool>();
        ModelFixture f;
        QModelIndex index =
            f.load("/d", "d", documents::delivery("D", "/d", {documents::imp("I", {documents::cpl("C")})}));
        if (!committed) {
            index = f.newDelivery("New");
            const QModelIndex imp = f.newImp(index);
            f.model->setData(imp, "I");
            f.newCpl(imp, "m1");
        }
        for (int level = 0; level < depth; ++level)
            index = f.model->index(0, 0, index);
        const QModelIndex parent = index.parent();
        const int rows = f.model->rowCount(parent);
        f.bridge.fail("removeItem", quint8(code), message);
        f.bridge.takeCalls();
        {
            std::unique_ptr<ModalAnswer> answer;
            if (!text.isEmpty())
                answer = std::make_unique<ModalAnswer>(QMessageBox::Ok);
            f.controller().onRemoveIMFItem(index);
            QVERIFY(!answer || looksLike(*answer, QMessageBox::Icon(icon), text));
        }
        QCOMPARE(f.model->rowCount(parent), rows - removed);
        QCOMPARE(f.bridge.takeCalls().isEmpty(), icon == int(QMessageBox::Warning));
        f.controller().onRemoveIMFItem({});
        QVERIFY(f.bridge.takeCalls().isEmpty());
    }

    void aChosenFolderGoesToHostAndModel()
    {
        const QTemporaryDir folder;
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        {
            FolderAnswer answer(folder.path());
            f.controller().onSetPathButtonClicked(delivery);
            QCOMPARE(answer.title, QString("Select Delivery Folder"));
            QVERIFY(answer.options.testFlag(QFileDialog::ShowDirsOnly));
        }
        QCOMPARE(delivery.data(Model::PathRole).toString(), folder.path() + "/Film");
        FolderAnswer second("");
        f.bridge.takeCalls();
        f.controller().onSetPathButtonClicked(delivery);
        QVERIFY(f.bridge.takeCalls().isEmpty());
        QCOMPARE(second.openedIn, QDir(folder.path()).canonicalPath());
    }

    void aRefusedFolderCanBeChosenAgain()
    {
        const QTemporaryDir taken;
        const QTemporaryDir other;
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        f.bridge.failCall(QString("setItemPath(Film#1, %1)").arg(taken.path()), 3, "There.");
        f.bridge.failCall(QString("setItemPath(Film#1, %1)").arg(other.path()), 7, "Read-only.");
        FolderAnswer first(taken.path());
        ModalAnswer again(QMessageBox::Ok);
        FolderAnswer second(other.path());
        ModalAnswer giveUp(QMessageBox::Cancel);
        f.controller().onSetPathButtonClicked(delivery);
        QCOMPARE(again.text, "Film already exists at path:\n" + taken.path() + "\n\n\tPlease choose a new path");
        QCOMPARE(giveUp.text, QString("Read-only."));
        for (const ModalAnswer* box : {&again, &giveUp}) {
            QCOMPARE(box->title, QString("Norvel Stratacut"));
            QCOMPARE(box->icon, QMessageBox::Warning);
            QCOMPARE(box->buttons, QMessageBox::Ok | QMessageBox::Cancel);
            QCOMPARE(box->defaultButton, QMessageBox::Ok);
            QCOMPARE(int(box->windowFlags), 0x200100b);
            QCOMPARE(box->margins, QMargins(20, 10, 20, 10));
        }
        QCOMPARE(delivery.data(Model::PathRole).toString(), QString("/out/Film"));
    }

    void aRefusalWithoutAMessageIsNoConsent()
    {
        const QTemporaryDir folder;
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        f.bridge.fail("setItemPath", 7, QString());
        FolderAnswer choice(folder.path());
        ModalAnswer giveUp(QMessageBox::Cancel);
        f.controller().onSetPathButtonClicked(delivery);
        QVERIFY(giveUp.text.isEmpty());
        QCOMPARE(delivery.data(Model::PathRole).toString(), QString("/out/Film"));
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
        f.withoutTester([&] { f.controller().resolveMissingAssetsIfNeeded(f.model->index(0, 0, delivery)); });
        QCOMPARE(first.text, question);
        QCOMPARE(first.title, QString("Norvel Stratacut"));
        QCOMPARE(first.icon, QMessageBox::Question);
        QCOMPARE(first.buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(first.defaultButton, QMessageBox::No);
        QCOMPARE(f.model->rowCount(), 3);
        // At the end, everything is read again.
        const QString read = "readDelivery(%1)";
        const QStringList calls = f.bridge.takeCalls();
        QCOMPARE(calls.mid(calls.size() - 3),
                 QStringList({read.arg("/d"), read.arg(wrong.path()), read.arg(right.path())}));
    }

    void nobodyIsAskedWhereNothingIsMissing()
    {
        ModelFixture f;
        f.controller().resolveMissingAssetsIfNeeded(f.load("/d", "d", documents::delivery("D", "/d")));
        f.bridge.infos["d"] = missing();
        f.bridge.takeCalls();
        ModalAnswer no(QMessageBox::No);
        f.controller().resolveMissingAssetsIfNeeded(f.model->index(0, 0));
        QCOMPARE(f.bridge.takeCalls(), QStringList{"getDeliveryInfo(d, recursive)"});
        QVERIFY(no.answered);
    }

    void savingKeepsTheFoldersOfWhatIsOnDisk()
    {
        ModelFixture f;
        f.load("/a", "a", documents::delivery("A", "/a"));
        f.newDelivery("New");
        f.load("/b", "b", documents::delivery("B", "/b"));
        f.controller().onSaveSettings();
        QCOMPARE(f.settings->value("VISITED_IMF_SETTINGS_KEY"), QJsonArray({"/a", "/b"}));
        QCOMPARE(f.settings->value("UNBURNED_ITEMS_KEY"), QJsonArray());
        QVERIFY(f.settings->contains("UNBURNED_ITEMS_KEY"));
    }

    void aLostFolderIsReportedAndTheOthersAreLoaded()
    {
        ModelFixture f;
        f.putOnDisk("/b", "b", documents::delivery("B", "/b"));
        (*f.settings)["VISITED_IMF_SETTINGS_KEY"] = QJsonArray{"/gone", 7, "/b", "/b"};
        ModalAnswer gone(QMessageBox::Ok);
        ModalAnswer noText(QMessageBox::Ok);
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

    void slotsCanBeCalledByNameOverAQueue()
    {
        ModelFixture f;
        ModalAnswer answer(QMessageBox::Ok);
        QVERIFY(QMetaObject::invokeMethod(&f.controller(), "onCommitComplete", Qt::QueuedConnection,
                                          Q_ARG(QModelIndex, QModelIndex()),
                                          Q_ARG(IMFO_Bridge::Error, IMFO_Bridge::Error(1, "Disk full."))));
        QTRY_VERIFY(looksLike(answer, QMessageBox::Critical, "Disk full."));
    }

    void theModelMayEndBehindAMessage_data()
    {
        const support::Rows<int> row;
        const QStringList actions{
            "start",    "missing assets", "question",      "folder of missing assets", "refreshing all",
            "renaming", "removing",       "creating CPLs", "failed completion",        "read-back"};
        for (int i = 0; i < actions.size(); ++i)
            row(qPrintable(actions[i]), i);
    }

    void theModelMayEndBehindAMessage()
    {
        const int action = std::get<0>(support::fetched<int>());
        const QTemporaryDir folder;
        ModelFixture f;
        f.load("/a", "a", documents::delivery("A", "/a"));
        const QModelIndex first = f.model->index(0, 0);
        const QModelIndex second = f.load("/b", "b", documents::delivery("B", "/b"));
        const QModelIndex film = f.newDelivery("Film");
        const QModelIndex imp = f.newImp(film);
        f.bridge.infos["a"] = missing();
        f.controller().onSaveSettings();
        for (const char* mobId : {"m1", "m2"})
            f.engine.addSequence(mobId, mobId);
        for (const char* operation : {"readDelivery", "renameItem", "removeItem", "createCPL"})
            f.bridge.fail(operation, 1, "No.");
        if (action == 1)
            f.bridge.fail("getDeliveryInfo", 1, "No.");
        IMF_Controller& controller = f.controller();
        const std::vector<std::function<void()>> actions = {
            [&] { f.restart(); },
            [&] { controller.resolveMissingAssetsIfNeeded(first); },
            [&] { controller.resolveMissingAssetsIfNeeded(first); },
            [&] {
                const FolderAnswer choice(folder.path());
                controller.resolveMissingAssetsIfNeeded(first);
            },
            [&] { controller.refreshAll(); },
            [&] { f.model->setData(film, "New"); },
            [&] { controller.onRemoveIMFItem(film); },
            [&] {
                f.model->createCPLFromMobs({"m1", "m2"}, imp);
            },
            [&] {
                controller.onCommitComplete(second, {1, "No."});
            },
            [&] { controller.onCommitComplete(second, {}); },
        };
        int messages = 0;
        ViewDeckQt::ManagedMessageBox::setPresenter([&](const ViewDeckQt::ManagedMessageBox::Request& request) {
            ++messages;
            if (action != 3 || request.icon != QMessageBox::Question)
                f.end();
            return request.icon == QMessageBox::Question ? QMessageBox::Yes : QMessageBox::Ok;
        });
        actions[std::size_t(action)]();
        ViewDeckQt::ManagedMessageBox::setPresenter({});
        QCOMPARE(messages, action == 3 ? 2 : 1);
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
