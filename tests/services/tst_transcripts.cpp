#include "services/Clip.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include "desk/media/EditList.h"
#include "desk/services/FrameTime.h"
#include "desk/services/SpeechSound.h"
#include "desk/services/TranscriptService.h"
#include "desk/speech/store/Sql.h"

#include <QTemporaryDir>

using namespace desk;
using namespace desk::services;
using Condition = speech::TranscriptStore::Condition;

Q_DECLARE_METATYPE(media::Cuts)

namespace
{
using Media = std::shared_ptr<const media::Sequence>;

Media clip(const QString& id)
{
    media::Sequence sequence;
    sequence.id = id;
    sequence.audio.resize(1);
    return std::make_shared<media::Sequence>(sequence);
}

/// Times in milliseconds.
media::Cut cut(int start, int length, const Media& clip, int from)
{
    return {start * 48LL, length * 48LL, clip, from * 48LL, 1};
}

/// Each word 400 ms long, one every 500 ms, five a segment.
std::shared_ptr<const speech::Transcript> counting(const QString& prefix, int words, int speaker)
{
    auto transcript = std::make_shared<speech::Transcript>();
    transcript->speakers = {{speaker, prefix.toUpper()}};
    for (int word = 0; word < words; ++word) {
        if (word % 5 == 0)
            transcript->segments.append(speech::Segment{speaker, {}});
        transcript->segments.last().words.append({word * 500, word * 500 + 400, prefix + QString::number(word), -1});
    }
    return transcript;
}

/// "a0: 0-900 a1 a2 | b0: 500-900 b0": clip and place in its transcript, times, words.
QString spelled(const MappedTranscript& mapped)
{
    QStringList segments;
    for (int i = 0; i < mapped.transcript.segments.size(); ++i) {
        const speech::Segment& segment = mapped.transcript.segments[i];
        QStringList words{QStringLiteral("%1%2: %3-%4")
                              .arg(mapped.origins[std::size_t(i)].clip)
                              .arg(mapped.origins[std::size_t(i)].segment)
                              .arg(segment.startMs())
                              .arg(segment.endMs())};
        for (const speech::Word& word : segment.words)
            words += word.text;
        segments += words.join(QLatin1Char(' '));
    }
    return segments.join(QStringLiteral(" | "));
}
} // namespace

/// Transcripts of clips and timelines, and the states of their database.
class TestTranscripts : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    /// In which a shell script takes the place of whisper.cpp.
    static Profile whisperProfile(const QString& folder, const QByteArray& script)
    {
        QDir().mkpath(folder);
        const QString program = folder + "/whisper";
        support::writeFile(program, "#!/bin/sh\n" + script);
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
        Profile profile(folder + "/profile");
        TranscriptSettings settings;
        settings.recogniser = {program, program, "en", {}};
        if (!settings.save(profile.transcriptSettingsFile()))
            qFatal("the settings of the test cannot be kept");
        return profile;
    }

private slots:

    void timelinesShowWhatTheirClipsSay_data()
    {
        const Media a = clip("a");
        const Media b = clip("b");
        QTest::addColumn<QVector<media::Cuts>>("tracks");
        QTest::addColumn<QString>("words");
        using Tracks = QVector<media::Cuts>;
        QTest::newRow("cut and shifted") << Tracks{{cut(10000, 1000, a, 1000)}} << "a0: 10000-10900 a2 a3";
        QTest::newRow("cut in words") << Tracks{{cut(0, 450, a, 150), cut(450, 1000, b, 700)}}
                                      << "a0: 0-250 a0 | b0: 450-1150 b1 b2";
        QTest::newRow("two tracks of one clip")
            << Tracks{{cut(0, 1000, a, 0)}, {cut(0, 1000, a, 0)}} << "a0: 0-900 a0 a1";
        QTest::newRow("a razor's cut") << Tracks{{cut(0, 600, a, 0), cut(600, 400, a, 600)}} << "a0: 0-900 a0 a1";
        QTest::newRow("at once") << Tracks{{cut(0, 1000, a, 0)}, {cut(500, 1000, b, 0)}}
                                 << "a0: 0-900 a0 a1 | b0: 500-1400 b0 b1";
        QTest::newRow("one clip twice") << Tracks{{cut(0, 500, a, 2500), cut(600, 500, a, 0)}}
                                        << "a1: 0-400 a5 | a0: 600-1000 a0";
        QTest::newRow("nothing heard") << Tracks{{cut(0, 1000, a, 60000)}, {cut(0, 1000, clip("silent"), 0)}} << "";
    }

    void timelinesShowWhatTheirClipsSay()
    {
        QFETCH(QVector<media::Cuts>, tracks);
        QFETCH(QString, words);
        auto edits = std::make_shared<media::EditList>();
        edits->sound.assign(tracks.begin(), tracks.end());
        media::Sequence timeline;
        timeline.edits = edits;
        const auto find = [](const QString& id) {
            return id == "silent" ? nullptr : counting(id, 10, id == "a" ? 1 : 2);
        };
        const MappedTranscript mapped = mapTranscript(spokenRanges(timeline), find);
        QCOMPARE(spelled(mapped), words);
    }

    /// A clip's two channels of one stream are one sound, its third track is another; timelines choose whole tracks.
    void onlyChosenTracksAreShown()
    {
        media::Sequence file = *clip("a");
        file.soundSamples = 48000 * 10;
        file.audio.resize(3);
        const char* const labels[] = {"L", "R", "Mono"};
        for (int track = 0; track < 3; ++track) {
            file.audio[track].label = labels[track];
            file.audio[track].stream = track / 2;
        }
        auto said = std::make_shared<speech::Transcript>(*counting("a", 15, 1));
        for (int i = 0; i < 3; ++i)
            said->segments[i].track = QVector<int>{0, 2, -1}[i];
        const auto find = [&](const QString&) { return said; };
        const auto shown = [&](const QVector<int>& chosen) {
            return spelled(mapTranscript(spokenRanges(file, chosen), find)).count(':');
        };
        QCOMPARE(shown({}), 3);
        QCOMPARE(shown({2}), 2);
        QCOMPARE(spelled(mapTranscript(spokenRanges(file, {1}), find)),
                 QString("a0: 0-2400 a0 a1 a2 a3 a4 | a2: 5000-7400 a10 a11 a12 a13 a14"));
        QCOMPARE(recognitionJob(file, {1, 2}).numbers, QVector<int>({1, 2}));
        QCOMPARE(recognitionJob(file).numbers, QVector<int>({0, 2}));
        media::Sequence timeline;
        timeline.edits = std::make_shared<media::EditList>(
            media::EditList{{}, {{cut(0, 1000, clip("a"), 0)}, {cut(0, 1000, clip("b"), 0)}}});
        QCOMPARE(spokenRanges(timeline).size(), 2U);
        QCOMPARE(spokenRanges(timeline, {1}).front().clip->id, QString("b"));
    }

    void framesAndMillisecondsLeadToEachOther()
    {
        for (const Rational rate : {Rational(24000, 1001), Rational(24, 1), Rational(25, 1), Rational(30000, 1001),
                                    Rational(60000, 1001), Rational(120, 1)}) {
            for (qint64 frame = 0; frame < 2000000; frame += frame < 3000 ? 1 : 997) {
                const qint64 ms = msOfFrame(frame, rate, FrameRounding::Up);
                QCOMPARE(frameOfMs(ms, rate), frame);
                QVERIFY(ms - msOfFrame(frame, rate, FrameRounding::Down) <= 1);
            }
        }
    }

    void anUnreadableDatabaseIsLeftAloneUntilItIsBack()
    {
        const Profile profile(m_dir.filePath("offline"));
        QDir().mkpath(profile.folder());
        support::writeFile(profile.transcriptFile(), "no database");
        TranscriptService service(profile);
        QTRY_COMPARE(int(service.store().condition()), int(Condition::Offline));
        QVERIFY(!service.isReadable());
        QVERIFY(service.store().problem().sentence().contains(profile.transcriptFile()));
        QCOMPARE(support::fileBytes(profile.transcriptFile()), QByteArray("no database"));
        QFile::remove(profile.transcriptFile());
        service.store().retry();
        QTRY_VERIFY(service.isReadable());
    }

    void aLockThatPassesIsWaitedFor()
    {
        const Profile profile(m_dir.filePath("locked"));
        QDir().mkpath(profile.folder());
        speech::TranscriptStore(profile.transcriptFile()).waitUntilStored(5000);
        auto other = std::make_unique<speech::Sql>(profile.transcriptFile(), speech::Sql::Access::Write);
        other->run("PRAGMA locking_mode = EXCLUSIVE");
        QVERIFY(other->begin(speech::Sql::Access::Write));
        TranscriptService service(profile);
        QTRY_COMPARE(int(service.store().condition()), int(Condition::Locked));
        QVERIFY(!service.isReadable());
        other.reset();
        QTRY_VERIFY(service.isReadable());
    }

    void mediaThatGoesAwayMeanwhileLosesNoWord_data()
    {
        QTest::addColumn<QString>("hand");
        QTest::addColumn<QString>("why");
        QTest::addColumn<int>("calls");
        QTest::addColumn<int>("words");
        // The program hears three parts. What it heard of the same media is gone on with.
        QTest::newRow("moved and put back") << "mv $clip $clip.away"
                                            << "not there any more" << 3 << 3;
        QTest::newRow("cut") << "head -c 2000000 $clip.other > $clip"
                             << "replaced or changed" << 3 << 2;
        QTest::newRow("replaced") << "mv $clip.other $clip"
                                  << "replaced or changed" << 4 << 3;
    }

    void mediaThatGoesAwayMeanwhileLosesNoWord()
    {
        QFETCH(QString, hand);
        QFETCH(QString, why);
        QFETCH(int, calls);
        QFETCH(int, words);
        const QString folder = m_dir.filePath(QTest::currentDataTag()).replace(' ', '-');
        const QString reel = folder + "/reel.wav";
        const Profile profile = whisperProfile(
            folder, "for a; do [ \"$last\" = -of ] && out=$a; last=$a; done\nclip=" + QFile::encodeName(reel) +
                        "\nprintf . >> $clip.calls\n[ -e $clip.done ] || { " + hand.toLatin1() +
                        "; touch $clip.done; }\necho '{\"transcription\":[{\"offsets\":{\"from\":1000,\"to\":2000},"
                        "\"text\":\" Hello\"}]}' > $out.json\n");
        support::run("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "anoisesrc=r=8000:d=400", "-c:a", "pcm_u8", reel});
        QVERIFY(QFile::copy(reel, reel + ".other"));
        TranscriptService service(profile);
        service.transcribe({"reel", "Reel", reel});
        QTRY_COMPARE_WITH_TIMEOUT(service.active(), 0, 30000);
        const QString failure = service.store().clipState("reel").failure;
        QVERIFY2(failure.startsWith(reel) && failure.contains(why), qPrintable(failure));
        QFile::rename(reel + ".away", reel);
        service.transcribe({"reel", "Reel", reel});
        QTRY_COMPARE_WITH_TIMEOUT(service.active(), 0, 30000);
        QCOMPARE(service.store().clipState("reel").failure, QString());
        QCOMPARE(support::fileBytes(reel + ".calls").size(), calls);
        QCOMPARE(service.store().transcript("reel")->countOfWords(), words);
    }

    void onlyClipsBehindOthersWait()
    {
        const QString folder = m_dir.filePath("queue");
        TranscriptService service(whisperProfile(folder, "exec sleep 600\n"));
        const QString reel = folder + "/reel.wav";
        support::run("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "anoisesrc=r=8000:d=1", reel});
        QSignalSpy progressed(&service, &TranscriptService::progressed);
        for (const char* id : {"first", "second"})
            service.transcribe({id, id, reel});
        const auto stage = [&](const char* id) { return int(service.store().clipState(id).stage); };
        QTRY_COMPARE(progressed.size(), 2);
        QCOMPARE(progressed[0], QVariantList({"first", -1}));
        QCOMPARE(progressed[1], QVariantList({"first", 0}));
        QCOMPARE(stage("second"), int(speech::ClipState::Stage::Waiting));
        service.cancel("first");
        QTRY_COMPARE(stage("second"), int(speech::ClipState::Stage::Running));
    }

    void aClipWhoseFileIsGoneFailsByName()
    {
        TranscriptService service(Profile(m_dir.filePath("gone")));
        service.transcribe({"gone", "Reel", m_dir.filePath("reel.mov")});
        QTRY_COMPARE(service.active(), 0);
        const speech::ClipState state = service.store().clipState("gone");
        QCOMPARE(int(state.stage), int(speech::ClipState::Stage::Failed));
        QVERIFY2(state.failure.startsWith(m_dir.filePath("reel.mov: the file is not there")),
                 qPrintable(state.failure));
    }
};

STRATACUT_TEST_MAIN(TestTranscripts)
#include "tst_transcripts.moc"
