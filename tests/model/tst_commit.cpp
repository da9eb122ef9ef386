#include "ModelFixture.h"

#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <thread>

using Model = IMF_PackageMgrQtModel;
using support::ModalAnswer;

namespace
{
/// A new deliverable with two IMPs, the first with a CPL.
struct Film {
    Film() { f.bridge.takeCalls(); }

    QJsonObject onDisk() const
    {
        QJsonObject first = documents::imp("Untitled IMP", {documents::cpl("Sequence m1")});
        first["Written"] = true;
        QJsonObject second = documents::imp("Untitled IMP.1");
        second["Written"] = true;
        return documents::delivery("Film", "/out/Film", {first, second});
    }

    void commit(const QModelIndex& index) { f.controller().onCommit({index}); }

    void finish(const IMFO_Bridge::Error& error = {})
    {
        const IMFO_CommitCallback done = f.bridge.commits.takeLast().onDone;
        std::thread([&] { done(error); }).join();
        QCoreApplication::processEvents();
    }

    ModelFixture f;
    QPersistentModelIndex delivery = f.newDelivery("Film");
    QPersistentModelIndex imp = f.newImp(delivery);
    QPersistentModelIndex cpl = f.newCpl(imp, "m1");
    QPersistentModelIndex secondImp = f.newImp(delivery);
};

bool isCommitted(const QModelIndex& index)
{
    return Model::StatusFromIndex(index) == IMF_PackageMgr::Committed;
}
} // namespace

/// Committing items, and completions that come from any thread at any time.
class TestCommit : public QObject
{
    Q_OBJECT

private slots:

    void theHostLearnsEverythingBeforeItCommits_data()
    {
        const support::Rows<QPersistentModelIndex Film::*, QStringList> row;
        const QString d = "applyDescriptiveMetadata(Film#1)";
        const QString i = "applyDescriptiveMetadata(Film#1/Untitled IMP)";
        const QString second = "applyDescriptiveMetadata(Film#1/Untitled IMP.1)";
        const QString settings = "applyCommitSettings(Film#1/Untitled IMP/Sequence m1)";
        const QString c = "applyDescriptiveMetadata(Film#1/Untitled IMP/Sequence m1)";
        row("deliverable", &Film::delivery, {d, i, settings, c, second, "commit(Film#1)"});
        row("IMP", &Film::imp, {i, settings, c, d, "commit(Film#1/Untitled IMP)"});
        row("CPL", &Film::cpl, {settings, c});
    }

    void theHostLearnsEverythingBeforeItCommits()
    {
        const auto [item, calls] = support::fetched<QPersistentModelIndex Film::*, QStringList>();
        Film film;
        film.commit(film.*item);
        QCOMPARE(film.f.bridge.takeCalls(), calls);
    }

    void rowsMayGoWhileTheHostIsTold_data()
    {
        const support::Rows<QPersistentModelIndex Film::*, QString, QStringList> row;
        const QString d = "applyDescriptiveMetadata(Film#1)";
        const QString i = "applyDescriptiveMetadata(Film#1/Untitled IMP)";
        const QString second = "applyDescriptiveMetadata(Film#1/Untitled IMP.1)";
        const QString settings = "applyCommitSettings(Film#1/Untitled IMP/Sequence m1)";
        row("all, at the first call", &Film::delivery, d, {d});
        row("all, further down", &Film::delivery, settings, {d, i, settings});
        row("an IMP", &Film::imp, i, {d, i, second, "commit(Film#1)"});
        row("a CPL", &Film::cpl, settings, {d, i, settings, second, "commit(Film#1)"});
    }

    void rowsMayGoWhileTheHostIsTold()
    {
        const auto [gone, call, calls] = support::fetched<QPersistentModelIndex Film::*, QString, QStringList>();
        Film film;
        film.f.bridge.onCall = [&film, gone = gone, call = call](const QString& made) {
            if (made == call)
                film.f.model->removeIndex(film.*gone);
        };
        film.commit(film.delivery);
        QCOMPARE(film.f.bridge.takeCalls(), calls);
    }

    void anyRefusalStopsTheCommit()
    {
        const QStringList refusals{"applyCommitSettings(Film#1/Untitled IMP/Sequence m1)",
                                   "applyDescriptiveMetadata(Film#1/Untitled IMP)", "applyDescriptiveMetadata(Film#1)",
                                   "commit(Film#1/Untitled IMP)"};
        for (const QString& refused : refusals) {
            Film film;
            film.f.bridge.failCall(refused, 32, "No.");
            ModalAnswer answer(QMessageBox::Ok);
            film.commit(film.imp);
            QCOMPARE(answer.text, QString("No."));
            QCOMPARE(answer.icon, QMessageBox::Critical);
            QCOMPARE(film.f.bridge.takeCalls().constLast(), refused);
            QVERIFY(film.f.bridge.commits.isEmpty());
        }
    }

    void aCommittedDeliverableIsReadBackInPlace()
    {
        Film film;
        film.f.putOnDisk("/out/Film", "Film#1", film.onDisk());
        QSignalSpy completed(&film.f.controller(), &IMF_Controller::commitCompleted);
        QSignalSpy changed(film.f.model.get(), &Model::dataChanged);
        film.commit(film.delivery);
        const QByteArray cplId = Model::ComponentIDFromIndex(film.cpl);
        QVERIFY(film.f.bridge.appliedSettings[cplId].contains("\"Compression\":\"JPEG 2000\""));
        QVERIFY(film.f.bridge.appliedMetadata[cplId].contains("\"ContentTitle\":\"Sequence m1\""));
        QVERIFY(completed.isEmpty());
        film.finish();
        QCOMPARE(completed.size(), 1);
        for (const QModelIndex& index : {film.delivery, film.imp, film.cpl, film.secondImp})
            QVERIFY(isCommitted(index));
        QVERIFY(Model::MetadataJsonFromIndex(film.imp)["Written"].toBool());
        QCOMPARE(film.delivery.data(Model::PathRole).toString(), QString("/out/Film"));
        QCOMPARE(changed[0][0].toModelIndex(), QModelIndex(film.delivery));
        QVERIFY(film.cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>());
    }

    void anImpAmongNamesakesIsFoundByItsPlace()
    {
        Film film;
        QVERIFY(film.f.model->setData(film.secondImp, "Untitled IMP"));
        QJsonObject second = documents::imp("Untitled IMP");
        second["Second"] = true;
        const QJsonArray imps{documents::imp("Untitled IMP", {documents::cpl("Sequence m1")}), second};
        film.f.putOnDisk("/out/Film", "Film#1", documents::delivery("Film", "/out/Film", imps));
        film.commit(film.secondImp);
        film.finish();
        QVERIFY(Model::MetadataJsonFromIndex(film.secondImp)["Second"].toBool());
        QVERIFY(!isCommitted(film.imp));
    }

    void whatIsCommittedStaysSoWhereItsFolderCannotBeRead()
    {
        for (const auto item : {&Film::delivery, &Film::imp}) {
            Film film;
            film.commit(film.*item);
            const ModalAnswer unreadable(QMessageBox::Ok);
            film.finish();
            QCOMPARE(unreadable.text, QString("No deliverable in /out/Film."));
            QVERIFY(isCommitted(film.*item));
            QCOMPARE(film.cpl.data().toString(), QString("Sequence m1"));
        }
    }

    void whatWasAddedMeanwhileStaysUncommitted()
    {
        Film film;
        film.f.putOnDisk("/out/Film", "Film#1", film.onDisk());
        film.commit(film.delivery);
        const QPersistentModelIndex imp = film.f.newImp(film.delivery);
        const QPersistentModelIndex cpl = film.f.newCpl(film.imp, "m2");
        film.finish();
        QVERIFY(isCommitted(film.delivery) && isCommitted(film.imp) && isCommitted(film.cpl));
        QVERIFY(!isCommitted(imp) && !isCommitted(cpl));
    }

    void aFailedCommitIsShownAndChangesNothing()
    {
        for (const auto& [code, icon] : {std::pair(32, QMessageBox::Warning), std::pair(1, QMessageBox::Critical)}) {
            Film film;
            QSignalSpy completed(&film.f.controller(), &IMF_Controller::commitCompleted);
            film.commit(film.delivery);
            film.f.bridge.takeCalls();
            const ModalAnswer answer(QMessageBox::Ok);
            film.finish({quint8(code), "Stopped."});
            QCOMPARE(answer.icon, icon);
            QCOMPARE(answer.text, QString("Stopped."));
            QVERIFY(completed.isEmpty() && film.f.bridge.takeCalls().isEmpty() && !isCommitted(film.delivery));
        }
    }

    void aCompletionFindsItsRowAfterOthersMoved()
    {
        Film film;
        const QPersistentModelIndex other = film.f.newDelivery("Other");
        film.f.putOnDisk("/out/Other", "o", documents::delivery("Other", "/out/Other"));
        film.commit(other);
        film.f.controller().onRemoveIMFItem(film.delivery);
        film.finish();
        QVERIFY(isCommitted(other));
    }

    void aCompletionForAReplacedRowReachesTheNewOne()
    {
        Film film;
        film.commit(film.delivery);
        film.f.putOnDisk("/out/Film", "Film#1", documents::delivery("Film", "/out/Film"));
        film.f.withoutTester([&] {
            const auto fresh =
                IMF_PackageDeliveryReader::deliveryFromJson(documents::delivery("Film", "/out"), "Film#1");
            film.f.model->replace(film.delivery, fresh);
        });
        QVERIFY(!isCommitted(film.delivery));
        film.finish();
        QVERIFY(isCommitted(film.delivery));
    }

    void aLateCompletionIsDropped()
    {
        const std::function<void(ModelFixture&)> ends[] = {
            [](ModelFixture& f) { f.controller().onRemoveIMFItem(f.model->index(0, 0)); },
            [](ModelFixture& f) { f.model->initialize(&f.bridge, std::make_unique<support::MemorySettings>()); },
            [](ModelFixture& f) { f.restart(); }};
        for (const auto& end : ends) {
            Film film;
            film.commit(film.delivery);
            film.commit(film.imp);
            const QVector<support::RecordingOutputBridge::Commit> commits = film.f.bridge.commits;
            // One completion is on its way when the receiver goes, one comes after that.
            std::thread([&] { commits[0].onDone({1, "Late."}); }).join();
            end(film.f);
            std::thread([&] { commits[1].onDone({}); }).join();
            film.f.bridge.takeCalls();
            QCoreApplication::processEvents();
            QVERIFY(film.f.bridge.takeCalls().isEmpty());
        }
    }

    void completionsRaceWithTheEndOfTheModel()
    {
        for (int round = 0; round < 50; ++round) {
            Film film;
            film.f.putOnDisk("/out/Film", "Film#1", film.onDisk());
            film.commit(film.delivery);
            const IMFO_CommitCallback done = film.f.bridge.commits.last().onDone;
            std::thread worker([&done] { done({}); });
            if (round % 2)
                QCoreApplication::processEvents();
            film.f.restart();
            worker.join();
            QCoreApplication::processEvents();
        }
    }

    void aSecondCallOfTheCallbackHasNoEffect()
    {
        Film film;
        film.f.putOnDisk("/out/Film", "Film#1", film.onDisk());
        QSignalSpy completed(&film.f.controller(), &IMF_Controller::commitCompleted);
        film.commit(film.delivery);
        const IMFO_CommitCallback done = film.f.bridge.commits.last().onDone;
        done({});
        done({});
        QCoreApplication::processEvents();
        QCOMPARE(completed.size(), 1);
    }

    void theReaderChecksTheNumberOfChildren()
    {
        Film film;
        support::Assertions assertions;
        const QJsonObject document = documents::delivery("Film", "/x", {documents::imp("Untitled IMP")});
        IMF_PackageDeliveryReader::updateDeliveryNodeFromJson(film.f.model.get(), film.delivery, document);
        QCOMPARE(assertions.take(), QStringList({"IMF_PackageDeliveryReader: imps.count() == model->rowCount(index)",
                                                 "IMF_PackageDeliveryReader: cpls.size() == impNode->childCount()"}));
        QVERIFY(isCommitted(film.imp) && !isCommitted(film.secondImp) && !isCommitted(film.cpl));
    }
};

STRATACUT_TEST_MAIN(TestCommit)
#include "tst_commit.moc"
