#include "app/Written.h"
#include "media/Otio.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cmath>

using support::Clip;
using support::decoded;
using support::samplesOf;
using support::soundFiles;

/// Whole exports, read with programs that nobody here wrote.
class TestExport : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    QString clip(const Clip& wanted, const QString& name = QStringLiteral("clip")) const
    {
        return support::makeClip(path(name + QStringLiteral(".mov")), wanted);
    }

    /// The folder of the delivery; empty after a failure, which is shown.
    QString exported(const QStringList& arguments) const
    {
        const auto run = support::desk(QStringList{"export"} + arguments + QStringList{"--to", m_folder->path()});
        if (run.exitCode != 0)
            qInfo("%s", qPrintable(run.errors));
        return run.exitCode == 0 ? run.output.trimmed().section('\n', -1) : QString();
    }

    static QJsonArray streams(const QString& delivery)
    {
        const QByteArray json = support::run(QStringLiteral("ffprobe"),
                                             {"-v", "error", "-f", "imf", "-count_frames", "-show_streams", "-of",
                                              "json", support::onlyFile(delivery, QStringLiteral("CPL_*.xml"))});
        return QJsonDocument::fromJson(json)[QLatin1String("streams")].toArray();
    }

    struct MixRow {
        const char* map;
        /// For each channel, gains by the number of the track.
        QVector<QMap<int, double>> channels;
        /// What mediainfo calls them; where it has no name, the node of the label.
        const char* layout;
        const char* labels;
    };

    static const QVector<MixRow>& mixRows()
    {
        const double low = std::sqrt(0.5);
        static const QVector<MixRow> rows{
            {"Pair:Mono:en-US:DXC", {{{7, 1}, {8, 1}}}, "C", "Mono, en-US, DXC"},
            {"A5:Mono:de:VO", {{{5, 1}}}, "C", "Mono, de, VO"},
            {"Pair:Stereo:fr-CA:PRM", {{{7, 1}}, {{8, 1}}}, "L R", "Stereo, fr-CA, PRM"},
            {"A2:Stereo:zxx:MEC", {{{2, 1}}, {{2, 1}}}, "L R", "Stereo, zxx, MEC"},
            {"Six:5.1 to Stereo:en:PRM",
             {{{1, 1}, {3, low}, {5, low}}, {{2, 1}, {3, low}, {6, low}}},
             "L R",
             "Stereo, en, PRM"},
            {"Pair:Dual Mono:en:DXC", {{{7, 1}}, {{8, 1}}}, "03020120 03020120", "Dual Mono, en, DXC"},
            {"Pair:Lt-Rt:en:PRM", {{{7, 1}}, {{8, 1}}}, "Lt Rt", "Lt-Rt, en, PRM"},
            {"Five:5.0:zh-Hant-TW:PRM",
             {{{8, 1}}, {{1, 1}}, {{2, 1}}, {{3, 1}}, {{4, 1}}},
             "L R C Ls Rs",
             "5.0, zh-Hant-TW, PRM"},
            {"Six:5.1:en-US:PRM",
             {{{1, 1}}, {{2, 1}}, {{3, 1}}, {{4, 1}}, {{5, 1}}, {{6, 1}}},
             "L R C LFE Ls Rs",
             "5.1, en-US, PRM"},
            {"all:7.1:en:PRM",
             {{{1, 1}}, {{2, 1}}, {{3, 1}}, {{4, 1}}, {{5, 1}}, {{6, 1}}, {{7, 1}}, {{8, 1}}},
             "L R C LFE 03020107 03020108 03020109 0302010A",
             "7.1, en, PRM"},
            {"Pair:Discrete:en:DXS", {{{7, 1}}, {{8, 1}}}, "03020120 03020120", "Discrete, en, DXS"}};
        return rows;
    }

    static QVector<qint32> expected(const MixRow& row, const QVector<QVector<qint32>>& sources, int count)
    {
        QVector<qint32> samples;
        for (int i = 0; i < count; ++i) {
            for (const auto& gains : row.channels) {
                double sum = 0;
                for (auto gain = gains.begin(); gain != gains.end(); ++gain)
                    sum += gain.value() * sources[gain.key() - 1][i];
                samples += qint32(std::lround(sum));
            }
        }
        return samples;
    }

private slots:

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aReversibleExportDecodesToWhatWentIn()
    {
        Clip source;
        source.picture = QStringLiteral("testsrc2");
        source.frames = 3;
        const QString media = clip(source);
        const QString delivery = exported({media, "--set", "Compression=JPEG 2000 reversible"});
        QCOMPARE(delivery, path(QStringLiteral("clip")));
        const QStringList cpl{"-f", "imf", "-i", support::onlyFile(delivery, QStringLiteral("CPL_*.xml"))};
        const QStringList frames{"-map", "0:v", "-f", "rawvideo", "-pix_fmt", "yuv422p10le"};
        const QByteArray pictures = decoded({"-i", media}, frames);
        QCOMPARE(pictures.size(), 3 * 1920 * 1080 * 2 * 2);
        QVERIFY(decoded(cpl, frames) == pictures);
        const QStringList interleaved{
            "-filter_complex", "[0:a:0][0:a:1]amerge,atrim=end_sample=6000", "-f", "s24le", "-c:a", "pcm_s24le"};
        const QByteArray sound = decoded({"-i", media}, interleaved);
        QCOMPARE(sound.size(), 6000 * 2 * 3);
        QVERIFY(decoded(cpl, {"-map", "0:a", "-f", "s24le", "-c:a", "pcm_s24le"}) == sound);
    }

    void aTimelineGivesTheFramesAndSamplesOfItsCuts()
    {
        Clip source;
        source.picture = QStringLiteral("testsrc2");
        source.frames = 5;
        source.tracks = 1;
        const QString a = clip(source, QStringLiteral("a"));
        source.picture = QStringLiteral("smptehdbars");
        const QString b = clip(source, QStringLiteral("b"));
        const QJsonArray cuts{otio::clip(QStringLiteral("a.mov"), otio::range(1, 2, 24)), otio::gap(1, 24),
                              otio::clip(QStringLiteral("b.mov"), otio::range(3, 2, 24))};
        support::writeFile(path(QStringLiteral("cut.otio")),
                           otio::timeline({otio::track("Video", cuts), otio::track("Audio", cuts)}));
        const QString delivery =
            exported({path(QStringLiteral("cut.otio")), "--set", "Compression=JPEG 2000 reversible"});
        const QStringList cpl{"-f", "imf", "-i", support::onlyFile(delivery, QStringLiteral("CPL_*.xml"))};
        const QStringList raw{"-f", "rawvideo", "-pix_fmt", "yuv422p10le"};
        const int frame = 1920 * 1080 * 4;
        const auto pictures = [&](const QString& media, const char* cut) {
            return decoded({"-i", media}, QStringList{"-map", "0:v", "-vf", QLatin1String(cut)} + raw);
        };
        const QByteArray written = decoded(cpl, QStringList{"-map", "0:v"} + raw);
        QCOMPARE(written.size(), 5 * frame);
        QVERIFY(written.left(2 * frame) == pictures(a, "trim=start_frame=1:end_frame=3,setpts=PTS-STARTPTS"));
        QCOMPARE(written.mid(2 * frame, frame / 2), QByteArray("\x40\x00", 2).repeated(frame / 4));
        QVERIFY(written.mid(3 * frame) == pictures(b, "trim=start_frame=3:end_frame=5,setpts=PTS-STARTPTS"));
        const QStringList pcm{"-f", "s24le", "-c:a", "pcm_s24le"};
        const auto sound = [&](const char* cut) {
            return decoded({"-i", a}, QStringList{"-map", "0:a", "-af", QLatin1String(cut)} + pcm);
        };
        QVERIFY(decoded(cpl, QStringList{"-map", "0:a"} + pcm) ==
                sound("atrim=start_sample=2000:end_sample=6000") + QByteArray(2000 * 3, '\0') +
                    sound("atrim=start_sample=6000:end_sample=10000"));
    }

    void everyRateGivesEveryFrameAndSample_data()
    {
        QTest::addColumn<QString>("rate");
        QTest::addColumn<int>("samples");
        QTest::newRow("23.976") << "24000/1001" << 5 * 2002;
        QTest::newRow("24") << "24" << 5 * 2000;
        QTest::newRow("25") << "25" << 5 * 1920;
        QTest::newRow("29.97") << "30000/1001" << 8008;
        QTest::newRow("30") << "30" << 5 * 1600;
        QTest::newRow("50") << "50" << 5 * 960;
        QTest::newRow("59.94") << "60000/1001" << 4004;
        QTest::newRow("60") << "60" << 5 * 800;
    }

    void everyRateGivesEveryFrameAndSample()
    {
        QFETCH(QString, rate);
        QFETCH(int, samples);
        Clip source;
        source.rate = rate;
        source.frames = 5;
        source.tracks = 1;
        const QString delivery = exported({clip(source)});
        const QJsonArray found = streams(delivery);
        QCOMPARE(found.size(), 2);
        QCOMPARE(found.at(0)[QLatin1String("nb_read_frames")].toString(), QStringLiteral("5"));
        const QString exact = rate.contains('/') ? rate : rate + QStringLiteral("/1");
        QCOMPARE(found.at(0)[QLatin1String("r_frame_rate")].toString(), exact);
        const QStringList cpl{"-f", "imf", "-i", support::onlyFile(delivery, QStringLiteral("CPL_*.xml"))};
        QCOMPARE(decoded(cpl, {"-map", "0:a", "-f", "s24le", "-c:a", "pcm_s24le"}).size(), samples * 3);
    }

    void aLengthThatFitsNoSampleIsRefusedOrPadded()
    {
        Clip source;
        source.rate = QStringLiteral("30000/1001");
        source.frames = 7;
        source.tracks = 1;
        const QString media = clip(source);
        const auto refused = support::desk({"export", media, "--to", m_folder->path()});
        QCOMPARE(refused.exitCode, 1);
        for (const char* part : {"clip.mov", "7 frames", "multiple of 5", "--pad"})
            QVERIFY2(refused.errors.contains(QLatin1String(part)), qPrintable(refused.errors));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("clip"))));
        const QString delivery = exported({media, "--pad", "--set", "Compression=JPEG 2000 reversible"});
        QCOMPARE(streams(delivery).at(0)[QLatin1String("nb_read_frames")].toString(), QStringLiteral("10"));
        const QStringList cpl{"-f", "imf", "-i", support::onlyFile(delivery, QStringLiteral("CPL_*.xml"))};
        const QByteArray last =
            decoded(cpl, {"-map", "0:v", "-vf", "select=eq(n\\,9)", "-vsync", "0", "-f", "rawvideo"});
        QCOMPARE(last.size(), 1920 * 1080 * 4);
        QCOMPARE(last.left(2), QByteArray("\x40\x00", 2));
        QCOMPARE(last.left(1920 * 1080 * 2), last.left(2).repeated(1920 * 1080));
        const QByteArray sound = decoded(cpl, {"-map", "0:a", "-f", "s24le", "-c:a", "pcm_s24le"});
        QCOMPARE(sound.size(), 2 * 8008 * 3);
        // 7 frames of sound, then silence.
        QCOMPARE(sound.mid(11211 * 3), QByteArray((16016 - 11211) * 3, '\0'));
        QVERIFY(sound.mid(11205 * 3, 15).count('\0') < 10);
    }

    void documentsFollowTheirSchemas()
    {
        const QString schemas = qEnvironmentVariable("STRATACUT_IMF_XSD");
        if (schemas.isEmpty())
            QSKIP("STRATACUT_IMF_XSD is not set: no schemas to check against");
        const QString delivery =
            exported({clip({}), "--title", "Über <alles> & \"mehr\"", "--issuer", "A & B", "--imp", "Päckchen", "--set",
                      "ContentKind=trailer", "--set", "Annotation= two\nlines ", "--name", "Größe 100"});
        QVERIFY(!delivery.isEmpty());
        const QStringList documents = QDir(delivery).entryList({"*.xml"});
        for (const QString& name : documents) {
            const QString schema = name.startsWith(QLatin1String("CPL_")) ? "/cpl-all.xsd" : "/pkl-am-all.xsd";
            int code = -1;
            support::run(QStringLiteral("xmllint"),
                         {"--nonet", "--noout", "--schema", schemas + schema, delivery + '/' + name}, &code);
            QVERIFY2(code == 0, qPrintable(name));
        }
        const auto shown = support::desk({"show", delivery, "--json"});
        const QJsonValue document = QJsonDocument::fromJson(shown.output.toUtf8()).object();
        QCOMPARE(document[QLatin1String("Name")].toString(), QStringLiteral("Größe 100"));
        const QJsonValue imp = document[QLatin1String("Children")][0];
        QCOMPARE(imp[QLatin1String("Name")].toString(), QStringLiteral("Päckchen"));
        const QJsonValue texts = imp[QLatin1String("Children")][0][QLatin1String("DescriptiveMetadata")];
        QCOMPARE(texts[QLatin1String("ContentTitle")].toString(), QStringLiteral("Über <alles> & \"mehr\""));
        QCOMPARE(texts[QLatin1String("Issuer")].toString(), QStringLiteral("A & B"));
        QCOMPARE(texts[QLatin1String("ContentKind")][QLatin1String("Value")].toString(), QStringLiteral("trailer"));
    }

    void othersReadTheProfileAndTheChannels()
    {
        Clip source;
        source.tracks = 8;
        const QString delivery = exported({clip(source)});
        QStringList facts;
        const QStringList trackFiles = QDir(delivery).entryList({"*.mxf"});
        for (const QString& file : trackFiles)
            facts += QString::fromUtf8(support::run(QStringLiteral("mediainfo"), {delivery + '/' + file}));
        const QString all = facts.join(QString());
        for (const char* part : {"IMFS2k@ML2SL1", "L R C LFE Ls Rs", "Channel layout                           : L R\n",
                                 "4:2:2", "10 bits", "BT.709"})
            QVERIFY2(all.contains(QLatin1String(part)), part);
    }

    void everyMixModeWritesItsSamplesAndItsLabels()
    {
        Clip source;
        source.tracks = 8;
        const QString media = clip(source);
        QStringList arguments{media,     "--title",   "Der Hafen", "--group",      "Pair=A7,A8",
                              "--group", "Six=A1-A6", "--group",   "Five=A8,A1-A4"};
        for (int i = 0; i < mixRows().size(); ++i)
            arguments += {"--map", QStringLiteral("A%1=%2").arg(i + 1).arg(QLatin1String(mixRows()[i].map))};
        const QString delivery = exported(arguments);
        const QStringList files = soundFiles(delivery);
        QCOMPARE(files.size(), mixRows().size());
        QVector<QVector<qint32>> tracks;
        for (int track = 0; track < source.tracks; ++track)
            tracks += samplesOf({"-i", media, "-map", QStringLiteral("0:a:%1").arg(track)});
        QString shown = support::desk({"show", delivery}).output;
        for (int i = 0; i < files.size(); ++i) {
            const MixRow& row = mixRows()[i];
            QVERIFY2(samplesOf({"-i", files[i]}) == expected(row, tracks, 4000), row.map);
            const QString facts = QString::fromUtf8(support::run(QStringLiteral("mediainfo"), {files[i]}));
            const QString layout = QStringLiteral("Channel layout                           : %1\n").arg(row.layout);
            const QString kind = QString(row.labels).section(' ', -1);
            QVERIFY2(facts.contains(layout) && facts.contains("Kind                   : " + kind), qPrintable(facts));
            QVERIFY2(facts.contains(": Der Hafen\n"), qPrintable(facts));
            const QByteArray language = support::run("mediainfo", {"--Output=Audio;%Language%", files[i]}).trimmed();
            QCOMPARE(QString::fromUtf8(language), QString(row.labels).section(", ", 1, 1));
            const QString line = QStringLiteral("A%1: %2\n").arg(i + 1).arg(row.labels);
            QVERIFY2(shown.contains(line), qPrintable(shown));
        }
        QCOMPARE(support::desk({"verify", delivery}).exitCode, 0);
    }

    void soundAboveFullScaleIsLimitedAndTold_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<double>("loudness");
        QTest::newRow("float") << "pcm_f32le" << 1.41;
        QTest::newRow("AAC") << "aac" << 1.0;
    }

    void soundAboveFullScaleIsLimitedAndTold()
    {
        QFETCH(QString, codec);
        QFETCH(double, loudness);
        const QString media = path(QStringLiteral("loud.mov"));
        const QString sound = QStringLiteral("aevalsrc=%1*(2*random(0)-1)*exp(-3*abs(t-0.3)):s=48000:d=1");
        support::run("ffmpeg", {"-v",        "error",
                                "-f",        "lavfi",
                                "-i",        "color=gray:size=320x180:rate=24:d=0.48",
                                "-f",        "lavfi",
                                "-i",        sound.arg(loudness),
                                "-c:v",      "ffv1",
                                "-c:a",      codec,
                                "-b:a",      "64k",
                                "-timecode", "10:00:00:00",
                                "-shortest", media});
        const QByteArray floats = decoded({"-i", media}, {"-map", "0:a", "-f", "f32le", "-c:a", "pcm_f32le"});
        QVector<qint32> wanted;
        double peak = 0;
        int loudest = 0;
        for (int i = 0; i < 24000; ++i) {
            const double value = double(qFromLittleEndian<float>(floats.constData() + 4 * i));
            wanted += int(std::lround(std::min(std::max(value * 8388608, -8388608.0), 8388607.0)));
            loudest = std::abs(value) > peak ? i : loudest;
            peak = std::max(peak, std::abs(value));
        }
        QVERIFY(peak > 1.1);
        const auto run = support::desk({"export", media, "--to", m_folder->path(), "--map", "A1=A1:Mono"});
        QCOMPARE(run.exitCode, 0);
        const QString note =
            QStringLiteral("%1, track A1, Mono (10:00:00:%2): the sound, here at its loudest, is %3 dB")
                .arg(media)
                .arg(loudest / 2000, 2, 10, QLatin1Char('0'))
                .arg(20 * std::log10(peak), 0, 'f', 1);
        QCOMPARE(run.errors.count(QStringLiteral("above full scale")), 1);
        QVERIFY2(run.errors.contains(note), qPrintable(note + '\n' + run.errors));
        QVERIFY(samplesOf({"-i", soundFiles(path(QStringLiteral("loud"))).value(0)}) == wanted);
    }

    void whatCannotBeMixedIsRefusedAndLeavesNothing_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QStringList>("parts");
        QTest::newRow("clipping") << QStringList{"--map", "A1=all:Mono"}
                                  << QStringList{"clip.mov", "IMF track A1", "from A1, A2", "00:00:00:00", "dB", "; "};
        QTest::newRow("two for six") << QStringList{"--map", "A1=A1:Mono", "--map", "A2=all:5.1"}
                                     << QStringList{"IMF track A2", "needs 6 tracks and gets 2", "; "};
        QTest::newRow("no such group") << QStringList{"--map", "A1=Dialogue 1:Mono"}
                                       << QStringList{"\"Dialogue 1\" is neither a group nor a track", "; "};
        QTest::newRow("no such track") << QStringList{"--group", "D=A1-A3"} << QStringList{"no track A3", "2 tracks"};
        const QString stale =
            QStringLiteral(R"({"AudioMapping":[{"TargetTrack":"A1","MixMode":"Mono",)"
                           R"("SourceTracksGroups":"Dialogue 1"}],"Groups":[],"AllActiveTracks":[]})");
        QTest::newRow("group that is gone") << QStringList{"--set", "Multiple Audio Mix=" + stale}
                                            << QStringList{"IMF track A1", "\"Dialogue 1\" is neither", "; "};
    }

    void whatCannotBeMixedIsRefusedAndLeavesNothing()
    {
        QFETCH(QStringList, options);
        QFETCH(QStringList, parts);
        Clip source;
        source.loudness = 0.9;
        const auto run = support::desk(QStringList{"export", clip(source), "--to", m_folder->path()} + options);
        QCOMPARE(run.exitCode, 1);
        for (const QString& part : parts)
            QVERIFY2(run.errors.contains(part), qPrintable(run.errors));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"clip.mov"});
    }

    void severalFilesBecomeSeveralCompositions()
    {
        const QString one = clip({}, QStringLiteral("one"));
        Clip silent;
        silent.tracks = 0;
        silent.size = QStringLiteral("641x359");
        const QString delivery = exported({one, clip(silent, QStringLiteral("two")), "--name", "both"});
        const auto shown = support::desk({"show", delivery});
        QVERIFY(shown.output.contains(QLatin1String("CPL \"one\"")));
        QVERIFY(shown.output.contains(QLatin1String("CPL \"two\"")));
        QCOMPARE(QDir(delivery).entryList({"CPL_*.xml"}).size(), 2);
    }

    void verifyTellsADamagedByte()
    {
        const QString delivery = exported({clip({})});
        const auto clean = support::desk({"verify", delivery});
        QCOMPARE(clean.exitCode, 0);
        QVERIFY(clean.output.contains(QLatin1String("clean")));
        const QStringList files = QDir(delivery).entryList(QDir::Files);
        for (const QString& name : files) {
            QFile file(delivery + '/' + name);
            QVERIFY(file.open(QIODevice::ReadWrite));
            const qint64 place = file.size() / 2;
            file.seek(place);
            const QByteArray before = file.read(1);
            file.seek(place);
            file.write(QByteArray(1, char(before[0] ^ 1)));
            file.flush();
            const auto found = support::desk({"verify", delivery});
            QVERIFY2(found.exitCode == 3, qPrintable(name));
            QVERIFY2(found.output.contains(name) || name.startsWith("VOLINDEX"), qPrintable(found.output));
            file.seek(place);
            file.write(before);
        }
        QCOMPARE(support::desk({"verify", delivery}).exitCode, 0);
    }

    void theStateOfAProfileComesBack()
    {
        const QString profile = path(QStringLiteral("profile"));
        QVERIFY(!exported({clip({}), "--profile", profile, "--name", "first"}).isEmpty());
        QFile state(profile + QStringLiteral("/packages.json"));
        QVERIFY(state.open(QIODevice::ReadOnly));
        QVERIFY(state.readAll().contains("/first"));
        state.close();
        QVERIFY(QDir(path(QStringLiteral("first"))).removeRecursively());
        // The former delivery is gone: that is told, and the new one is made all the same.
        const auto run = support::desk({"export", path(QStringLiteral("clip.mov")), "--to", m_folder->path(),
                                        "--profile", profile, "--name", "second"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errors.contains(QLatin1String("/first")));
    }
};

STRATACUT_TEST_MAIN(TestExport)
#include "tst_export.moc"
