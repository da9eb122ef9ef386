#include "app/Desk.h"
#include "desk/imf/package/PackageTransaction.h"
#include "desk/imf/package/Verifier.h"
#include "desk/services/Profile.h"
#include "services/Clip.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QLockFile>
#include <QTemporaryDir>

#include <csignal>

using support::Clip;

/// What a user or a machine can do wrong. Whatever it is, nothing half-written passes for a whole delivery.
class TestExportDamage : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    QString clip(const Clip& wanted = {}) const { return support::makeClip(path(QStringLiteral("clip.mov")), wanted); }

    QString write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
        return file.fileName();
    }

    static QByteArray read(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString media(const QString& kind) const
    {
        if (kind == QLatin1String("text"))
            return write(QStringLiteral("clip.mov"), "no media at all");
        if (kind == QLatin1String("absent"))
            return path(QStringLiteral("absent.mov"));
        if (kind == QLatin1String("folder"))
            return m_folder->path();
        if (kind == QLatin1String("sound only")) {
            Clip sound;
            sound.frames = 0;
            return clip(sound);
        }
        if (kind == QLatin1String("variable rate")) {
            const QString file = path(QStringLiteral("clip.mkv"));
            support::run(QStringLiteral("ffmpeg"),
                         {"-v", "error", "-f", "lavfi", "-i", "color=gray:size=320x180:rate=25", "-frames:v", "20",
                          "-vf", "setpts=if(lt(N\\,10)\\,N*2\\,N*3-9)/50/TB", "-vsync", "vfr", "-c:v", "ffv1", file});
            return file;
        }
        Clip whole;
        whole.frames = 12;
        whole.picture = QStringLiteral("testsrc2");
        const QByteArray bytes = read(clip(whole));
        return write(QStringLiteral("clip.mov"), bytes.left(bytes.size() / 2));
    }

    /// Sends the signal once the export has told of its first frame; answers its exit code, -1 when it was killed.
    static int interrupted(const QStringList& arguments, const std::function<void(QProcess&)>& whenRunning)
    {
        QProcess process;
        process.setReadChannel(QProcess::StandardError);
        process.start(QStringLiteral(STRATACUT_DESK), arguments);
        QByteArray errors;
        while (!errors.contains("frames") && process.waitForReadyRead(60000))
            errors += process.readAllStandardError();
        whenRunning(process);
        process.waitForFinished(60000);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

private slots:

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void mediaThatCannotBeExportedIsNamed_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"text", "absent", "folder", "sound only", "variable rate", "cut"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }

    void mediaThatCannotBeExportedIsNamed()
    {
        QFETCH(QString, kind);
        const QString file = media(kind);
        const auto run = support::desk({"export", file, "--to", path(QStringLiteral("out")), "--name", "made"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(file), qPrintable(run.errors));
        QVERIFY2(run.errors.contains(QLatin1String("; ")), qPrintable(run.errors));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("out/made"))));
    }

    void aCommandLineThatIsWrongIsTold_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::newRow("unknown command") << QStringList{"frobnicate"} << 2;
        QTest::newRow("no media") << QStringList{"export", "--to", "/tmp"} << 2;
        QTest::newRow("no folder") << QStringList{"export", "a.mov"} << 2;
        QTest::newRow("unknown option") << QStringList{"export", "a.mov", "--too", "/tmp"} << 2;
        QTest::newRow("set without value") << QStringList{"export", "a.mov", "--to", "/tmp", "--set", "x"} << 2;
        QTest::newRow("set of an unknown key")
            << QStringList{"export", "a.mov", "--to", "/tmp", "--set", "Shoe Size=11"} << 2;
        QTest::newRow("two folders") << QStringList{"verify", "/a", "/b"} << 2;
        QTest::newRow("no delivery") << QStringList{"show", "/proc"} << 1;
        QTest::newRow("nothing to verify") << QStringList{"verify", "/proc"} << 3;
        QTest::newRow("no folder to verify") << QStringList{"verify", "/nowhere"} << 1;
        QTest::newRow("a file to verify") << QStringList{"verify", "/proc/version"} << 1;
        QTest::newRow("a file to show") << QStringList{"show", "/proc/version"} << 1;
        QTest::newRow("an empty name") << QStringList{"show", ""} << 2;
        QTest::newRow("an empty name of media") << QStringList{"export", "", "--to", "/tmp"} << 2;
        QTest::newRow("help") << QStringList{"export", "--help"} << 0;
        QTest::newRow("version") << QStringList{"--version"} << 0;
    }

    void aCommandLineThatIsWrongIsTold()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, code);
        const auto run = support::desk(arguments);
        QCOMPARE(run.exitCode, code);
        QVERIFY(!(run.errors + run.output).isEmpty());
        if (code == 1)
            QVERIFY2(run.errors.contains(arguments.last() + ": ") && run.errors.contains("; "), qPrintable(run.errors));
        // The name under which a user types it, not the place where it lies.
        QVERIFY2(!(run.errors + run.output).contains(QStringLiteral(STRATACUT_DESK)), qPrintable(run.output));
    }

    void aWindowWithoutADisplayIsRefused()
    {
        const auto run = support::desk({}, {"env", "-u", "QT_QPA_PLATFORM", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(QLatin1String("display")), qPrintable(run.errors));
    }

    void aParameterThatIsNotOfferedNamesTheChoices_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("choice");
        QTest::newRow("value") << "Audio Mix=22.2"
                               << "\"5.1\"";
        QTest::newRow("mix") << "Multiple Audio Mix=x"
                             << "multi-mix";
        QTest::newRow("object that is no mix") << "Multiple Audio Mix={\"Audio Mapping\":[{\"x\":1}]}"
                                               << "multi-mix";
        QTest::newRow("content kind") << "ContentKind=novel"
                                      << "\"Trailer - TLR\"";
    }

    void aParameterThatIsNotOfferedNamesTheChoices()
    {
        QFETCH(QString, setting);
        QFETCH(QString, choice);
        const auto run =
            support::desk({"export", clip(), "--to", path(QStringLiteral("deep/below")), "--set", setting});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(choice), qPrintable(run.errors));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("deep"))));
    }

    void aFolderThatIsThereIsLeftAlone()
    {
        const QString file = clip();
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("made")));
        write(QStringLiteral("made/ASSETMAP.xml"), "somebody's");
        const auto run = support::desk({"export", file, "--to", m_folder->path(), "--name", "made"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(QLatin1String("already exists")), qPrintable(run.errors));
        QCOMPARE(read(path(QStringLiteral("made/ASSETMAP.xml"))), QByteArray("somebody's"));
    }

    void aPlaceWhereNothingCanBeWrittenIsTold_data()
    {
        QTest::addColumn<QString>("place");
        QTest::newRow("system") << QStringLiteral("/proc/none");
        QTest::newRow("below a file") << QStringLiteral("clip.mov/out");
        QTest::newRow("a file") << QStringLiteral("clip.mov");
    }

    void aPlaceWhereNothingCanBeWrittenIsTold()
    {
        QFETCH(QString, place);
        const QString file = clip();
        const QString folder = QDir(m_folder->path()).filePath(place);
        const auto run = support::desk({"export", file, "--to", folder});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(folder), qPrintable(run.errors));
    }

    void aFullDiskLeavesNothingBehind()
    {
        Clip large;
        large.picture = QStringLiteral("testsrc2");
        const QString file = clip(large);
        const QString folder = path(QStringLiteral("small"));
        QVERIFY(QDir().mkpath(folder));
        const QString script = QStringLiteral("mount -t tmpfs -o size=150k none \"$0\" || exit 77; "
                                              "\"$@\"; code=$?; ls -A \"$0\" >&2; exit $code");
        const auto run = support::desk({"export", file, "--to", folder, "--name", "made"},
                                       {"unshare", "-r", "-m", "sh", "-c", script, folder});
        if (run.exitCode == 77 || run.errors.startsWith(QLatin1String("unshare")))
            QSKIP("no small file system can be mounted here");
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(folder), qPrintable(run.errors));
        // The listing of the folder comes last and is empty.
        QVERIFY2(run.errors.endsWith(QLatin1String(".\n")), qPrintable(run.errors));
    }

    void aFolderThatDisappearsEndsTheExport()
    {
        Clip longer;
        longer.frames = 12;
        const QStringList arguments{"export", clip(longer), "--to", path(QStringLiteral("out")), "--name", "made"};
        const int code = interrupted(
            arguments, [this](QProcess&) { QVERIFY(QDir(path(QStringLiteral("out"))).removeRecursively()); });
        QCOMPARE(code, 1);
        QVERIFY(!::desk::imf::isDelivery(path(QStringLiteral("out/made"))));
    }

    void anInterruptCancelsAndCleansUp_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl-C") << SIGINT;
        QTest::newRow("the terminal is closed") << SIGHUP;
    }

    void anInterruptCancelsAndCleansUp()
    {
        QFETCH(int, signal);
        Clip longer;
        longer.frames = 24;
        const QStringList arguments{"export", clip(longer), "--to", path(QStringLiteral("out")), "--name", "made"};
        const int code =
            interrupted(arguments, [signal](QProcess& process) { ::kill(pid_t(process.processId()), signal); });
        QCOMPARE(code, 130);
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("out"))));
    }

    void nobodyNeedsToReadTheProgress()
    {
        Clip longer;
        longer.frames = 12;
        const QStringList arguments{"export", clip(longer), "--to", path(QStringLiteral("out")), "--name", "made"};
        const int code =
            interrupted(arguments, [](QProcess& process) { process.closeReadChannel(QProcess::StandardError); });
        QCOMPARE(code, 0);
        QVERIFY(::desk::imf::verifyDelivery(path(QStringLiteral("out/made"))).isEmpty());
    }

    void aProfileThatCannotBeHadIsToldBeforeTheWork_data()
    {
        QTest::addColumn<bool>("taken");
        QTest::newRow("a file") << false;
        QTest::newRow("another process works with it") << true;
    }

    void aProfileThatCannotBeHadIsToldBeforeTheWork()
    {
        QFETCH(bool, taken);
        const QString profile = taken ? path(QStringLiteral("profile")) : write(QStringLiteral("profile"), "a file");
        const ::desk::services::Profile kept(profile);
        QLockFile lock(kept.lockFile());
        if (taken)
            QVERIFY(QDir().mkpath(profile) && lock.tryLock());
        const auto run =
            support::desk({"export", clip(), "--to", m_folder->path(), "--name", "made", "--profile", profile});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.errors.contains(profile + QLatin1String(": ")), qPrintable(run.errors));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("made"))));
    }

    void aKilledExportLeavesAWholeDeliveryOrNone()
    {
        QRandomGenerator random(support::seed());
        const int rounds = qEnvironmentVariableIsSet("STRATACUT_SOAK") ? 1000 : 36;
        Clip tiny;
        tiny.frames = 1;
        const QString folder = path(QStringLiteral("out/made"));
        const QStringList arguments{"export", clip(tiny), "--to", path(QStringLiteral("out")), "--name", "made"};
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(support::desk(arguments).exitCode, 0);
        const int whole = int(timer.elapsed());
        int finished = 0;
        for (int round = 0; round < rounds; ++round) {
            if (::desk::imf::isDelivery(folder))
                QVERIFY(QDir(folder).removeRecursively());
            QProcess process;
            process.start(QStringLiteral(STRATACUT_DESK), arguments);
            if (!process.waitForFinished(random.bounded(whole / 4, whole + whole / 4)))
                process.kill();
            process.waitForFinished();
            if (process.exitStatus() == QProcess::NormalExit) {
                QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
                ++finished;
            }
            if (!::desk::imf::isDelivery(folder))
                continue;
            // Whole, though the commit's own traces may still lie about until the next start.
            QVERIFY(!::desk::imf::hasErrors(::desk::imf::verifyDelivery(folder)));
            QVERIFY(::desk::imf::recoverFolder(folder).ok());
            const auto findings = ::desk::imf::verifyDelivery(folder);
            QVERIFY2(findings.isEmpty(), qPrintable(findings.isEmpty() ? QString() : findings.first().reason));
        }
        qInfo("%d of %d ended before they were killed", finished, rounds);
        // What the last one has left is no hindrance.
        if (::desk::imf::isDelivery(folder))
            QVERIFY(QDir(folder).removeRecursively());
        const auto run = support::desk(arguments);
        QVERIFY2(run.exitCode == 0, qPrintable(run.errors));
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 6);
    }
};

STRATACUT_TEST_MAIN(TestExportDamage)
#include "tst_export_damage.moc"
