#include "desk/speech/Transcriber.h"
#include "desk/speech/store/Sql.h"
#include "desk/speech/store/TranscriptStore.h"
#include "speech/Recordings.h"
#include "speech/Texts.h"
#include "support/TestMain.h"

#include <csignal>
#include <future>

#include <sys/resource.h>

using namespace desk;
using namespace desk::speech;
using Stage = ClipState::Stage;
using Condition = TranscriptStore::Condition;

namespace
{

const QString clip = QStringLiteral("clip-1");

/// Says one word a second, from the second where it starts: "w3" in the fourth.
class Counter : public Recogniser
{
public:
    struct Script {
        /// Seconds without a word.
        bool isMute = false;
        /// Waits for a cancel at this second; -1 never.
        int hangsAt = -1;
        /// Times that cannot be.
        bool lies = false;
        std::atomic<int> firstSecond{-1};
    };

    explicit Counter(Script& script) : m_script(script) {}

    QString name() const override { return "counter"; }

    Status recognise(SoundSource& sound, qint64 first, RecognitionSink& sink) override
    {
        m_script.firstSecond = int(first / soundRate);
        for (qint64 at = first; at < sound.length(); at += soundRate) {
            const auto samples = sound.read(at, soundRate);
            if (!samples)
                return samples.error();
            const int second = int(at / soundRate);
            while (second == m_script.hangsAt) {
                if (sink.progress(at) == Go::Stop)
                    return {};
                std::this_thread::yield();
            }
            const int start = m_script.lies ? 90000 : second * 1000;
            const Word word{start + 100, start + 600, QStringLiteral("w%1").arg(second), 0.5};
            sink.take({m_script.isMute ? QVector<QVector<Word>>() : QVector<QVector<Word>>{{word}}, at + soundRate});
            if (sink.progress(at + soundRate) == Go::Stop)
                return {};
        }
        return {};
    }

private:
    Script& m_script;
};

Transcriber::RecogniserMaker counting(Counter::Script& script)
{
    return [&script]() -> Result<std::unique_ptr<Recogniser>> {
        return std::unique_ptr<Recogniser>(std::make_unique<Counter>(script));
    };
}

/// A clip of so many seconds on each track.
RecognitionJob job(int seconds, int tracks, SpeakersBy by = SpeakersBy::Track)
{
    RecognitionJob job;
    job.clipName = "clip.mov";
    job.speakersBy = by;
    for (int i = 0; i < tracks; ++i)
        job.tracks.append(recordings::opener(recordings::Samples(seconds * soundRate, qint16(i + 1))));
    return job;
}

} // namespace

class TestTranscriptStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_path;

    /// What is in the store, once it is read.
    QString stored(TranscriptStore& store, const QString& name = clip)
    {
        [&] { QTRY_VERIFY(store.condition() == Condition::Online && store.waitUntilStored(5000)); }();
        const auto isThere = [&] { return store.transcript(name) != nullptr; };
        [&] { QTRY_VERIFY(isThere()); }();
        return isThere() ? texts::textOf(*store.transcript(name)) : QString();
    }

    /// As it would be found after the process was killed now.
    QString killedCopy(TranscriptStore& store)
    {
        store.waitUntilStored(5000);
        const QString copy = m_dir.filePath("copy.db");
        for (const char* part : {"", "-wal", "-shm"}) {
            QFile::remove(copy + part);
            QFile::copy(m_path + part, copy + part);
        }
        return copy;
    }

private slots:

    void init()
    {
        static int number = 0;
        m_path = m_dir.filePath(QStringLiteral("folder/project%1.db").arg(++number));
    }

    void whatTheUserDidSurvivesARepeatedImport()
    {
        {
            TranscriptStore store(m_path);
            store.putTranscript(
                clip, texts::transcriptOf({{7, "0-1000 a|1000-2000 b"}, {9, "2000-4000 c"}, {7, "4000-5000 d"}}, 9));
            store.putTranscript("other", texts::transcriptOf({{1, "0-1000 x"}}, 1));
            QCOMPARE(stored(store),
                     QString("Speaker 7: 0-1000 a|1000-2000 b / Speaker 9: 2000-4000 c / Speaker 7: 4000-5000 d"));
            const int anna = store.transcript(clip)->segments[0].speaker;
            store.nameSpeaker(anna, "Anna");
            const int added = store.addSpeaker();
            store.nameSpeaker(added, "Ben");
            store.correctSpeaker(clip, 2, added);
            QCOMPARE(stored(store), QString("Anna: 0-1000 a|1000-2000 b / Speaker 9: 2000-4000 c / Ben: 4000-5000 d"));
        }
        TranscriptStore store(m_path);
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Done));
        QCOMPARE(stored(store), QString("Anna: 0-1000 a|1000-2000 b / Speaker 9: 2000-4000 c / Ben: 4000-5000 d"));
        // The next recognition numbers its voices another way and cuts elsewhere.
        store.putTranscript(
            clip, texts::transcriptOf({{2, "0-1900 A"}, {1, "2100-3900 C"}, {2, "4100-4900 D|4900-5100 E"}}, 2));
        QTRY_VERIFY(stored(store).contains('C'));
        QCOMPARE(stored(store), QString("Anna: 0-1900 A / Speaker 9: 2100-3900 C / Ben: 4100-4900 D|4900-5100 E"));
        // Whoever the file names stays that one.
        Transcript named = texts::transcriptOf({{1, "0-1000 hi"}, {2, "1000-5000 ho"}}, 2);
        named.speakers[0].name = "Ben";
        store.putTranscript("third", named);
        QVERIFY(stored(store, "third").startsWith("Ben: 0-1000 hi / Speaker "));
    }

    void changesThatCrossEachOtherAreAllKept()
    {
        TranscriptStore store(m_path);
        store.putTranscript(clip, texts::transcriptOf({{1, "0-1000 a"}, {2, "1000-2000 b"}}, 2));
        stored(store);
        store.putTranscript(clip, texts::transcriptOf({{1, "0-10 new"}, {1, "100-1000 a"}, {2, "1000-2000 b"}}, 2));
        const int added = store.addSpeaker();
        store.correctSpeaker(clip, 1, added);
        store.nameSpeaker(added, "Eve");
        QTRY_COMPARE(stored(store), QString("Speaker 1: 0-10 new / Speaker 1: 100-1000 a / Eve: 1000-2000 b"));
        TranscriptStore again(killedCopy(store));
        QCOMPARE(stored(again), stored(store));
        store.removeClip(clip);
        QVERIFY(!store.transcript(clip));
        QVERIFY(store.waitUntilStored(5000));
    }

    void aKilledTranscriptionGoesOnWhereItStopped()
    {
        Counter::Script script;
        script.hangsAt = 3;
        TranscriptStore store(m_path);
        QString copy;
        {
            Transcriber transcriber(store, counting(script));
            transcriber.add(clip, job(6, 1));
            QTRY_COMPARE(store.recognised(clip).value(0).utterances.size(), 3);
            QTRY_COMPARE(store.clipState(clip).percent, 50);
            copy = killedCopy(store);
        }
        TranscriptStore found(copy);
        QTRY_COMPARE(found.clips(Stage::Waiting), QStringList{clip});
        script.hangsAt = -1;
        Transcriber transcriber(found, counting(script));
        transcriber.add(clip, job(6, 1));
        QTRY_COMPARE(int(found.clipState(clip).stage), int(Stage::Done));
        QCOMPARE(int(script.firstSecond), 3);
        QCOMPARE(stored(found), QString("Speaker 1: 100-600 w0 / Speaker 1: 1100-1600 w1 / Speaker 1: 2100-2600 w2 / "
                                        "Speaker 1: 3100-3600 w3 / Speaker 1: 4100-4600 w4 / Speaker 1: 5100-5600 w5"));
        QVERIFY(found.recognised(clip).isEmpty());
    }

    void everyTrackIsASpeakerAndLiesAreRepaired()
    {
        Counter::Script script;
        script.lies = true;
        TranscriptStore store(m_path);
        Transcriber transcriber(store, counting(script));
        int repairs = 0;
        connect(&transcriber, &Transcriber::finished, this,
                [&](const QString&, const RepairReport& report) { repairs = report.total(); });
        RecognitionJob task = job(1, 2);
        task.numbers = {2, 7};
        transcriber.add(clip, task);
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Done));
        QCOMPARE(stored(store), QString("Speaker 1: 0-300 w0 / Speaker 2: 0-300 w0"));
        QCOMPARE(store.transcript(clip)->segments[1].track, 7);
        QCOMPARE(repairs, 2);
    }

    void aTranscriptionThatFailsSaysWhy_data()
    {
        const support::Rows<RecognitionJob, bool, QString, int> row;
        RecognitionJob broken = job(1, 0);
        broken.tracks = {recordings::opener(recordings::Samples(5 * soundRate, 1), 3 * soundRate)};
        row("no words", job(2, 1), true,
            "clip.mov: no speech was recognised; check that the clip's sound has speech in the recogniser's language "
            "(counter).",
            0);
        row("no sound", job(2, 0), false, "clip.mov: the clip has no sound; choose a clip with an audio track.", 0);
        row("the clip goes", broken, false, "clip.mov: the clip is gone; connect the drive.", 3);
    }

    void aTranscriptionThatFailsSaysWhy()
    {
        const auto [task, mute, sentence, kept] = support::fetched<RecognitionJob, bool, QString, int>();
        Counter::Script script;
        script.isMute = mute;
        TranscriptStore store(m_path);
        Transcriber transcriber(store, counting(script));
        transcriber.add(clip, task);
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Failed));
        QCOMPARE(store.clipState(clip).failure, sentence);
        QCOMPARE(store.recognised(clip).value(0).utterances.size(), kept);
        QVERIFY(!store.transcript(clip));
    }

    void aCancelledClipIsMissingAndTheNextOneRuns()
    {
        Counter::Script script;
        script.hangsAt = 1;
        TranscriptStore store(m_path);
        Transcriber transcriber(store, counting(script));
        transcriber.add(clip, job(2, 1));
        transcriber.add("short", job(1, 1));
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Running));
        QCOMPARE(int(store.clipState("short").stage), int(Stage::Waiting));
        transcriber.cancel(clip);
        QTRY_COMPARE(int(store.clipState("short").stage), int(Stage::Done));
        QCOMPARE(int(store.clipState(clip).stage), int(Stage::Missing));
        QVERIFY(!transcriber.isBusy(clip));
    }

    void aTranscriptStaysUntilTheNextOneIsThere_data()
    {
        const support::Rows<bool, QString> row;
        row("fails", true,
            "clip.mov: no speech was recognised; check that the clip's sound has speech in the recogniser's "
            "language (counter).");
        row("is cancelled", false, "");
    }

    void aTranscriptStaysUntilTheNextOneIsThere()
    {
        const auto [mute, failure] = support::fetched<bool, QString>();
        Counter::Script script;
        script.isMute = mute;
        script.hangsAt = mute ? -1 : 1;
        TranscriptStore store(m_path);
        store.putTranscript(clip, texts::transcriptOf({{1, "0-1000 former"}}, 1));
        stored(store);
        Transcriber transcriber(store, counting(script));
        transcriber.add(clip, job(2, 1));
        QTRY_VERIFY(mute || store.clipState(clip).stage == Stage::Running);
        {
            TranscriptStore killed(killedCopy(store));
            QCOMPARE(stored(killed), QString("Speaker 1: 0-1000 former"));
        }
        if (!mute)
            transcriber.cancel(clip);
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Done));
        QCOMPARE(store.clipState(clip).failure, failure);
        TranscriptStore again(killedCopy(store));
        QCOMPARE(stored(again), QString("Speaker 1: 0-1000 former"));
        QCOMPARE(int(again.clipState(clip).stage), int(Stage::Done));
        store.removeClip(clip);
        store.setClipState(clip, {Stage::Failed, 0, "why"});
        QCOMPARE(int(store.clipState(clip).stage), int(Stage::Failed));
    }

    /// The one that is left may be in the midst of a long utterance.
    void anotherRecogniserIsTakenWithoutWaiting()
    {
        class Stuck : public Recogniser
        {
        public:
            explicit Stuck(std::promise<void>& starts, std::shared_future<void> gate)
                : m_starts(starts), m_gate(std::move(gate))
            {
            }

            QString name() const override { return "stuck"; }

            Status recognise(SoundSource&, qint64, RecognitionSink& sink) override
            {
                m_starts.set_value();
                m_gate.wait();
                sink.take({{{{0, 500, "wrong", 1}}}, soundRate});
                return {};
            }

        private:
            std::promise<void>& m_starts;
            std::shared_future<void> m_gate;
        };

        std::promise<void> starts;
        std::promise<void> gate;
        const auto stick = [&, future = gate.get_future().share()]() -> Result<std::unique_ptr<Recogniser>> {
            return std::unique_ptr<Recogniser>(std::make_unique<Stuck>(starts, future));
        };
        Counter::Script script;
        TranscriptStore store(m_path);
        Transcriber transcriber(store, stick);
        transcriber.add(clip, job(1, 1));
        starts.get_future().wait();
        transcriber.use(counting(script));
        transcriber.add(clip, job(1, 1));
        QVERIFY(transcriber.isBusy(clip));
        gate.set_value();
        QTRY_COMPARE(int(store.clipState(clip).stage), int(Stage::Done));
        QCOMPARE(stored(store), QString("Speaker 1: 100-600 w0"));
    }

    void aDatabaseThatCannotBeUsedIsLeftAlone_data()
    {
        const support::Rows<QString, std::function<void(QByteArray&)>> row;
        row("cut", "is damaged (", [](QByteArray& bytes) { bytes.chop(bytes.size() / 2); });
        row("a page of noise", "damaged (",
            [](QByteArray& bytes) { bytes.replace(4096, 4096, QByteArray(4096, '\x5a')); });
        row("no database", "the transcript database is damaged or no database; put",
            [](QByteArray& bytes) { bytes = "hello"; });
        row("empty", "the transcript database is damaged or no database; put",
            [](QByteArray& bytes) { bytes.clear(); });
        row("another program's", "the database belongs to another program; move",
            [](QByteArray& bytes) { bytes[68] = 1; });
        row("a later version's", "was made by another version of the desk; open",
            [](QByteArray& bytes) { bytes[63] = 3; });
    }

    void aDatabaseThatCannotBeUsedIsLeftAlone()
    {
        const auto [what, damage] = support::fetched<QString, std::function<void(QByteArray&)>>();
        {
            TranscriptStore store(m_path);
            QRandomGenerator random(1);
            store.putTranscript(clip, texts::randomTranscript(random));
        }
        const QByteArray good = support::fileBytes(m_path);
        QByteArray bytes = good;
        damage(bytes);
        QVERIFY(bytes != good);
        support::writeFile(m_path, bytes);
        {
            TranscriptStore store(m_path);
            QTRY_COMPARE(int(store.condition()), int(Condition::Offline));
            QVERIFY2(store.problem().sentence().contains(what), qPrintable(store.problem().sentence()));
            QCOMPARE(store.problem().file, m_path);
            QVERIFY(!store.transcript(clip));
            QCOMPARE(support::fileBytes(m_path), bytes);
            support::writeFile(m_path, good);
            store.retry();
            QTRY_COMPARE(int(store.condition()), int(Condition::Online));
        }
        QVERIFY(QFile::remove(m_path));
    }

    void aDatabaseOfTheFirstVersionIsTakenOver()
    {
        {
            TranscriptStore store(m_path);
            store.putTranscript(clip, texts::transcriptOf({{1, "0-1000 a"}}, 1));
        }
        {
            Sql sql(m_path, Sql::Access::Write);
            sql.run("ALTER TABLE segment DROP COLUMN track");
            sql.run("PRAGMA user_version = 1");
            QVERIFY2(sql.ok(), qPrintable(sql.problem()));
        }
        for (int opened = 0; opened < 2; ++opened) {
            TranscriptStore store(m_path);
            QCOMPARE(stored(store), QString("Speaker 1: 0-1000 a"));
            TranscriptStore killed(killedCopy(store));
            QCOMPARE(stored(killed), stored(store));
        }
    }

    void aLockOfAnotherDelaysChangesButNotTheCaller()
    {
        TranscriptStore store(m_path);
        QTRY_COMPARE(int(store.condition()), int(Condition::Online));
        {
            Sql other(m_path, Sql::Access::Write);
            QVERIFY(other.begin(Sql::Access::Write));
            store.putTranscript(clip, texts::transcriptOf({{1, "0-1000 a"}}, 1));
            QTRY_COMPARE(int(store.condition()), int(Condition::Locked));
            QVERIFY(!store.waitUntilStored(0));
            QCOMPARE(store.problem().what, QString("another program has locked the transcript database"));
        }
        QCOMPARE(stored(store), QString("Speaker 1: 0-1000 a"));
        QCOMPARE(int(store.condition()), int(Condition::Online));
    }

    void aDatabaseThatIsMovedAwayTakesNothingUntilItIsBack()
    {
        TranscriptStore store(m_path);
        QTRY_COMPARE(int(store.condition()), int(Condition::Online));
        QVERIFY(QFile::rename(m_path, m_path + ".away"));
        store.putTranscript(clip, texts::transcriptOf({{1, "0-1000 a"}}, 1));
        QTRY_COMPARE(int(store.condition()), int(Condition::Offline));
        QVERIFY2(store.problem().what.contains("moved or replaced"), qPrintable(store.problem().sentence()));
        QVERIFY(QFile::copy(m_path + ".away", m_path));
        store.retry();
        QVERIFY(!store.waitUntilStored(100));
        QVERIFY(QFile::remove(m_path) && QFile::rename(m_path + ".away", m_path));
        store.retry();
        QCOMPARE(stored(store), QString("Speaker 1: 0-1000 a"));
        QTRY_COMPARE(int(store.condition()), int(Condition::Online));
    }

    void aDiskThatTakesNoMoreDelaysChanges()
    {
        TranscriptStore store(m_path);
        QTRY_COMPARE(int(store.condition()), int(Condition::Online));
        QRandomGenerator random(2);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tight{rlim_t(QFileInfo(m_path).size()), before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
        for (int i = 0; i < 20; ++i)
            store.putTranscript(QString::number(i), texts::randomTranscript(random));
        [&] { QTRY_COMPARE(int(store.condition()), int(Condition::Locked)); }();
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY2(store.problem().sentence().contains("free space"), qPrintable(store.problem().sentence()));
        QVERIFY(!stored(store, "19").isEmpty());
    }

    void aFileThatIsLockedWhileItOpensIsTriedAgain()
    {
        TranscriptStore(m_path).waitUntilStored(5000);
        auto other = std::make_unique<Sql>(m_path, Sql::Access::Write);
        other->run("PRAGMA locking_mode = EXCLUSIVE");
        QVERIFY(other->begin(Sql::Access::Write));
        TranscriptStore store(m_path);
        store.setClipState(clip, {Stage::Waiting, 0, QString()});
        QTRY_COMPARE(int(store.condition()), int(Condition::Locked));
        other.reset();
        QTRY_COMPARE(int(store.condition()), int(Condition::Online));
        QCOMPARE(int(store.clipState(clip).stage), int(Stage::Waiting));
    }

    void whatCouldNotBeStoredIsTold()
    {
        support::writeFile(m_dir.filePath("foreign.db"), "hello");
        support::expectMessage(QtWarningMsg, "changes of transcripts that could not be stored: 1");
        TranscriptStore store(m_dir.filePath("foreign.db"));
        store.setClipState(clip, {Stage::Waiting, 0, QString()});
        QTRY_COMPARE(int(store.condition()), int(Condition::Offline));
    }
};

STRATACUT_TEST_MAIN(TestTranscriptStore)
#include "tst_transcript_store.moc"
