#include "desk/speech/recognition/RecognitionJob.h"
#include "desk/speech/recognition/Voices.h"
#include "speech/Recordings.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QElapsedTimer>

using namespace desk;
using namespace desk::speech;
using recordings::Samples;

namespace
{

/// Keeps what comes and can stop after some batches.
struct Keeper : RecognitionSink, RecognitionEvents {
    void take(const Batch& batch) override { batches.append(batch); }

    Go progress(qint64 sample) override
    {
        if (reached.isEmpty() || reached.last() != sample)
            reached += sample;
        return batches.size() >= most ? Go::Stop : Go::On;
    }

    void progress(int percent) override { percents.append(percent); }

    void recognised(int, const Batch& batch) override { batches.append(batch); }

    QStringList words() const
    {
        QStringList texts;
        for (const Batch& batch : batches) {
            for (const auto& utterance : batch.utterances) {
                for (const Word& word : utterance)
                    texts << (word.text == "mr" ? QStringLiteral("mister") : word.text);
            }
        }
        return texts;
    }

    int most = INT_MAX;
    QVector<Batch> batches;
    QVector<int> percents;
    QVector<qint64> reached;
};

/// Sound as loud as given.
Samples noise(int seconds, int loudness, unsigned seed)
{
    QRandomGenerator random(seed);
    Samples samples(seconds * soundRate);
    for (qint16& sample : samples)
        sample = qint16(random.bounded(-loudness, loudness + 1));
    return samples;
}

/// Louder and fainter in turns, as speech is and hum is not.
Samples syllables(Samples samples)
{
    for (int i = 0; i < samples.size(); ++i)
        samples[i] = qint16(i / 3200 % 2 == 0 ? samples[i] : samples[i] / 4);
    return samples;
}

std::unique_ptr<Recogniser> sphinx()
{
    return support::valueOf(makeRecogniser({}));
}

} // namespace

class TestRecognition : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    /// A program in the place of whisper.cpp's, which runs a shell script.
    std::unique_ptr<Recogniser> whisper(const QByteArray& script, int patience = 0)
    {
        const QString program = m_dir.filePath("whisper-cli");
        const QString model = m_dir.filePath("ggml-base.en.bin");
        support::writeFile(program, "#!/bin/sh\n" + script);
        support::writeFile(model, "model");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return support::valueOf(makeRecogniser({program, model, "en", QString(), patience}));
    }

private slots:

    void recordedSpeechIsRecognised_data()
    {
        const support::Rows<QString, double> row;
        row("audiobook", "librivox", 0.35);
        row("names of cards", "cards", 0.25);
    }

    void recordedSpeechIsRecognised()
    {
        const auto [folder, bound] = support::fetched<QString, double>();
        const auto recording = recordings::joined(recordings::folder(folder));
        if (recording.words.isEmpty())
            QSKIP("the package pocketsphinx-testdata is not installed");
        recordings::Memory sound(recording.samples);
        Keeper keeper;
        QVERIFY(sphinx()->recognise(sound, 0, keeper).ok());
        const double rate = recordings::wordErrorRate(recording.words, keeper.words());
        qInfo("word error rate %.1f %%", rate * 100);
        QVERIFY2(rate < bound, qPrintable(keeper.words().join(' ')));
    }

    /// What is recognised in two goes is the same as in one, and its times too.
    void recognitionGoesOnWhereItStopped()
    {
        const auto recording = recordings::joined(recordings::folder("cards"));
        if (recording.words.isEmpty())
            QSKIP("the package pocketsphinx-testdata is not installed");
        recordings::Memory sound(recording.samples);
        const auto recogniser = sphinx();
        Keeper whole;
        QVERIFY(recogniser->recognise(sound, 0, whole).ok());
        Keeper parts;
        parts.most = 2;
        QVERIFY(recogniser->recognise(sound, 0, parts).ok());
        QCOMPARE(parts.batches.size(), 2);
        parts.most = INT_MAX;
        QVERIFY(recogniser->recognise(sound, parts.batches.last().resumeAt, parts).ok());
        QCOMPARE(parts.words(), whole.words());
        for (int i = 0; i < whole.batches.size(); ++i) {
            const int start = whole.batches[i].utterances.first().first().startMs;
            QVERIFY(std::abs(parts.batches[i].utterances.first().first().startMs - start) <= 50);
        }
    }

    void voicesAreToldApart()
    {
        const auto book = recordings::folder("librivox");
        const auto cards = recordings::folder("cards");
        if (book.isEmpty() || cards.isEmpty())
            QSKIP("the package pocketsphinx-testdata is not installed");
        Samples samples;
        QVector<TimeSpan> spans;
        for (int i = 0; i < 5; ++i) {
            for (const auto& recording : {book[i], cards[i]}) {
                const int start = msOfSample(samples.size());
                samples += recording.samples;
                spans.append({start, msOfSample(samples.size())});
            }
        }
        recordings::Memory sound(samples);
        const auto voices = support::valueOf(tellVoicesApart(sound, spans, [] { return true; }));
        QCOMPARE(voices.size(), spans.size());
        // A voice may come out as two, but none is mixed with the other.
        for (int i = 0; i < voices.size(); i += 2) {
            for (int k = 1; k < voices.size(); k += 2)
                QVERIFY(voices[i] != voices[k]);
        }
        QVERIFY2(*std::max_element(voices.begin(), voices.end()) <= 3, "too many voices");
    }

    void tracksOfOneMixAreOne()
    {
        const Samples one = syllables(noise(3, 8000, 1));
        Samples quieter = one;
        std::transform(one.begin(), one.end(), quieter.begin(), [](qint16 sample) { return qint16(sample / -3); });
        recordings::Memory a(one);
        recordings::Memory silent(noise(3, 10, 2));
        recordings::Memory copy(quieter);
        recordings::Memory hum(noise(3, 4000, 4));
        recordings::Memory other(syllables(noise(2, 500, 3)));
        const auto own = support::valueOf(tracksOfTheirOwn({&silent, &a, &copy, &hum, &other}, [] { return true; }));
        QCOMPARE(own, (QVector<int>{1, 4}));
    }

    void silenceIsNoTranscript()
    {
        const auto recogniser = sphinx();
        RecognitionJob job;
        job.clipName = "quiet.mov";
        job.tracks = {recordings::opener(Samples(5 * soundRate, 0))};
        Keeper keeper;
        const auto result = recogniseClip(job, *recogniser, {}, keeper, std::atomic<bool>{false});
        QVERIFY(!result);
        QCOMPARE(
            result.error().sentence(),
            QString("quiet.mov: no speech was recognised; check that the clip's sound has speech in the recogniser's "
                    "language (PocketSphinx, US English)."));
    }

    void whisperIsRunOverPartsCutInPauses()
    {
        const auto recogniser = whisper("for a; do [ \"$last\" = -of ] && out=$a; last=$a; done\n"
                                        "echo 'whisper_print_progress_callback: progress =  50%' >&2; sleep 1\n"
                                        "echo '{\"transcription\":[{\"offsets\":{\"from\":1000,\"to\":2000},"
                                        "\"text\":\" Hello there\"}]}' > $out.json\n");
        QCOMPARE(recogniser->name(), QString("whisper.cpp, ggml-base.en, en"));
        Samples samples = noise(400, 3000, 4);
        std::fill_n(samples.begin() + 170 * soundRate, soundRate, qint16(0));
        recordings::Memory sound(samples);
        Keeper keeper;
        const Status status = recogniser->recognise(sound, 0, keeper);
        QVERIFY2(status.ok(), qPrintable(status.error().sentence()));
        QCOMPARE(keeper.words(), QStringList({"Hello", "there", "Hello", "there", "Hello", "there"}));
        const int cut = msOfSample(keeper.batches[0].resumeAt);
        QVERIFY2(cut > 170000 && cut < 171000, qPrintable(QString::number(cut)));
        QCOMPARE(keeper.batches[1].utterances[0][0].startMs, cut + 1000);
        QCOMPARE(keeper.batches[2].resumeAt, qint64(samples.size()));
        QVERIFY(keeper.reached.contains(keeper.batches[0].resumeAt / 2));
    }

    void whisperWhoFailsIsAFailure_data()
    {
        const support::Rows<QByteArray, QString> row;
        row("exit code", "echo no memory >&2; exit 3",
            "the speech recognition program failed: no memory; run it by hand to see why, or remove it from the "
            "settings.");
        row("killed", "kill -9 $$",
            "the speech recognition program failed: it crashed; run it by hand to see why, or remove it from "
            "the settings.");
        row("half a result",
            "for a; do [ \"$last\" = -of ] && out=$a; last=$a; done; echo '{\"transcription' > $out.json",
            "the result of the speech recognition program cannot be read: the JSON is not valid: unterminated string; "
            "run it by "
            "hand to see what it writes.");
        row("nothing written", "exit 0",
            "the speech recognition program wrote no result; check that it knows the options -ojf, -of, -np and -pp.");
        row("crash after words", "echo loading; echo 'progress = 5%'; kill -SEGV $$",
            "the speech recognition program failed: it crashed after: loading; run it by hand to see why, or remove it "
            "from the settings.");
        row("prints without end", "exec yes",
            "the speech recognition program wrote more than 64 MB and was ended; run it by hand to see what it "
            "writes.");
        // Waking up now and then is no sign of life.
        row("hangs", "trap '' TERM; while sleep 1; do :; done",
            "the speech recognition program gave no sign of life for 2 s and was ended; transcribe the clip again, or "
            "run the program by hand to see where it hangs.");
    }

    void whisperWhoFailsIsAFailure()
    {
        const auto [script, sentence] = support::fetched<QByteArray, QString>();
        const auto recogniser = whisper("(trap '' TERM; exec sleep 600) & echo $! > $0.child\n" + script, 2);
        RecognitionJob job;
        job.clipName = "reel";
        job.tracks = {recordings::opener(noise(1, 100, 5))};
        Keeper keeper;
        const auto result = recogniseClip(job, *recogniser, {}, keeper, std::atomic<bool>{false});
        QVERIFY(!result);
        QCOMPARE(result.error().sentence(), "reel, " + m_dir.filePath("whisper-cli: ") + sentence);
        QVERIFY(keeper.batches.isEmpty());
        const QString child = support::fileBytes(m_dir.filePath("whisper-cli.child")).trimmed();
        QVERIFY(!child.isEmpty());
        QTRY_VERIFY(support::fileBytes("/proc/" + child + "/cmdline").isEmpty());
    }

    /// Neither printing nor a processor that is busy is a hang.
    void whisperAtWorkIsLeftAlone()
    {
        const auto recogniser = whisper("for a; do [ \"$last\" = -of ] && out=$a; last=$a; done\n"
                                        "for i in 1 2 3 4 5 6; do sleep .5; echo; done\n"
                                        "end=$(($(date +%s) + 4)); while [ $(date +%s) -lt $end ]; do :; done\n"
                                        "echo '{\"transcription\":[]}' > $out.json\n",
                                        2);
        recordings::Memory sound(noise(1, 100, 5));
        Keeper keeper;
        const Status status = recogniser->recognise(sound, 0, keeper);
        QVERIFY2(status.ok(), qPrintable(status.error().sentence()));
    }

    /// The word of the first part claims nearly all of the clip; silence is no word.
    void whisperWhoLiesSpoilsOnlyItsPart()
    {
        const auto recogniser = whisper(
            "for a; do [ \"$last\" = -of ] && out=$a; last=$a; done\nn=$(cat ${0}.n 2>/dev/null)x\n"
            "printf %s $n > ${0}.n\nto=2000; [ $n = x ] && to=390000\nhead -c 300000 /dev/zero\n"
            "echo '{\"transcription\":[{\"offsets\":{\"from\":1000,\"to\":'$to'},\"text\":\" Hello\"},{\"offsets\":"
            "{\"from\":3000,\"to\":4000},\"text\":\" [BLANK_AUDIO]\"}]}' > $out.json\n");
        RecognitionJob job;
        job.tracks = {recordings::opener(Samples(400 * soundRate, 0))};
        Keeper keeper;
        const auto result = support::valueOf(recogniseClip(job, *recogniser, {}, keeper, std::atomic<bool>{false}));
        QCOMPARE(result.repairs.total(), 1);
        QCOMPARE(result.transcript.segments.size(), 3);
        for (int i = 0; i < result.transcript.segments.size(); ++i) {
            const Word& word = result.transcript.segments[i].words.first();
            QCOMPARE(word.text, QString("Hello"));
            QVERIFY(i == 0 || word.endMs - word.startMs == 1000);
        }
    }

    void whisperIsStoppedAtOnce()
    {
        recordings::Memory sound(noise(1, 100, 6));
        Keeper keeper;
        keeper.most = 0;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(whisper("exec sleep 60")->recognise(sound, 0, keeper).ok());
        QVERIFY(timer.elapsed() < 20000);
        QVERIFY(keeper.batches.isEmpty());
    }

    void whatIsConfiguredMustBeThere_data()
    {
        const support::Rows<RecogniserSettings, QString> row;
        row("program", {"/none/whisper", "/none/model", {}, {}},
            "/none/whisper: the speech recognition program is not there or cannot be run; correct the path in the "
            "settings of the "
            "recogniser.");
        row("model", {"sh", "/none/model", {}, {}},
            "/none/model: the speech recognition model is not there; correct the path in the settings of the "
            "recogniser.");
        row("PocketSphinx", {{}, {}, {}, "/none"},
            "/none/en-us/mdef: the speech recognition model is not installed; install the package "
            "\"pocketsphinx-en-us\".");
    }

    void whatIsConfiguredMustBeThere()
    {
        const auto [settings, sentence] = support::fetched<RecogniserSettings, QString>();
        const auto made = makeRecogniser(settings);
        QVERIFY(!made);
        QCOMPARE(made.error().sentence(), sentence);
    }
};

STRATACUT_TEST_MAIN(TestRecognition)
#include "tst_recognition.moc"
