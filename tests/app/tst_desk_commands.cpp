#include "app/Desk.h"
#include "services/Clip.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QFileInfo>
#include <QLockFile>
#include <QRegularExpression>
#include <QTemporaryDir>

/// The commands on saved state, each in a process of its own, as a script calls them.
class TestDeskCommands : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_media;
    QString m_clip;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    support::DeskRun run(const QStringList& arguments) const
    {
        return support::desk(arguments + QStringList{"--profile", path(QStringLiteral("profile"))});
    }

    /// The last line of a command that must succeed; its errors where it does not.
    QString done(const QStringList& arguments) const
    {
        const auto result = run(arguments);
        return result.exitCode == 0 ? result.output.trimmed().section('\n', -1) : QStringLiteral("!") + result.errors;
    }

    /// The tree as "list" shows it, a line an item, without folders and indents.
    QStringList listed() const
    {
        QStringList lines;
        const QStringList printed = run({"list"}).output.split('\n', Qt::SkipEmptyParts);
        for (const QString& line : printed)
            lines += line.trimmed().remove(QRegularExpression(QStringLiteral(", /.*$")));
        return lines;
    }

private slots:

    void initTestCase() { m_clip = support::makeClip(m_media.filePath(QStringLiteral("reel.mov")), support::Clip()); }

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aDeliveryIsMadeStepByStep()
    {
        QCOMPARE(done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()}), "1");
        QCOMPARE(done({"add", "Harbour/Main", m_clip}), "1.1.1");
        QCOMPARE(done({"set", "1.1.1", "Issuer=Somebody", "Audio Mix=Stereo", "ContentTitle=Reel One"}), "");
        QCOMPARE(done({"rename", "Harbour", "Harbour/II"}).at(0), '!');
        QCOMPARE(done({"rename", "Harbour", "Harbour II"}), "");
        QCOMPARE(listed(), (QStringList{"1  IMF Original \"Harbour II\", not written", "1.1  IMP \"Main\", not written",
                                        "1.1.1  CPL \"Reel One\", not written"}));
        // The issuer of the composition was that of all above it, too.
        QVERIFY(run({"list", "1", "--json"}).output.count(QLatin1String("\"Issuer\": \"Somebody\"")) == 3);
        QCOMPARE(done({"commit", "1"}), path(QStringLiteral("Harbour II")));
        QCOMPARE(listed().filter(QRegularExpression(", written$")).size(), 3);
    }

    void groupsAndMappingAreKeptAndReadBackFromWhatIsWritten()
    {
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        QCOMPARE(done({"set", "1.1.1", "--group", "Pair: 1=A1-A2", "--map", "A1=Pair: 1:Dual Mono:en-AU:HI"}), "");
        QCOMPARE(done({"set", "1.1.1", "--map", "A2=A2:Mono:fr", "--map", "A3=all:Stereo"}), "");
        // The second row goes, and the third one is the second then.
        QCOMPARE(done({"set", "1.1.1", "--map", "A2="}), "");
        const auto inUse = run({"set", "1.1.1", "--group", "Pair: 1="});
        QCOMPARE(inUse.exitCode, 1);
        QVERIFY2(inUse.errors.contains(QLatin1String("IMF track A1: its source \"Pair: 1\"")),
                 qPrintable(inUse.errors));
        QCOMPARE(done({"commit", "1"}), path(QStringLiteral("Harbour")));
        const QString shown = support::desk({"show", path(QStringLiteral("Harbour"))}).output;
        QVERIFY2(shown.contains(QLatin1String("A1: Dual Mono, en-AU, HI\n")), qPrintable(shown));
        QVERIFY2(shown.contains(QLatin1String("A2: Stereo, und, PRM\n")), qPrintable(shown));
        QVERIFY2(!shown.contains(QLatin1String("A3: ")), qPrintable(shown));
    }

    void whatIsTurnedOffIsRefused_data()
    {
        QTest::addColumn<QByteArray>("toggle");
        QTest::addColumn<QString>("refused");
        QTest::addColumn<QString>("accepted");
        QTest::addColumn<QString>("written");
        // Mappings made before do not count then, languages do until their row is mapped again.
        QTest::newRow("mapping") << QByteArray("MultipleAudioMix") << "A1=A2:Mono"
                                 << ""
                                 << "A1: Stereo, und, PRM\n";
        QTest::newRow("languages") << QByteArray("MCAMetadata") << "A1=A2:Mono:de"
                                   << "A2=A2:Mono"
                                   << "A1: Mono, fr, PRM\n      A2: Mono, und, PRM\n";
    }

    void whatIsTurnedOffIsRefused()
    {
        QFETCH(QByteArray, toggle);
        QFETCH(QString, refused);
        QFETCH(QString, accepted);
        QFETCH(QString, written);
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        QCOMPARE(done({"set", "1.1.1", "--map", "A1=A1:Mono:fr"}), "");
        qputenv("TGL_Stratacut_IMF" + toggle, "off");
        const auto refusal = run({"set", "1.1.1", "--map", refused});
        const bool set = accepted.isEmpty() || run({"set", "1.1.1", "--map", accepted}).exitCode == 0;
        const QString folder = done({"commit", "1"});
        qunsetenv("TGL_Stratacut_IMF" + toggle);
        QCOMPARE(refusal.exitCode, 1);
        QVERIFY2(refusal.errors.contains("IMF" + toggle), qPrintable(refusal.errors));
        QVERIFY(set);
        const QString shown = support::desk({"show", folder}).output;
        QVERIFY2(shown.contains(written), qPrintable(shown));
    }

    void aSavedMappingOfTheOlderFormIsNotLostInSilence()
    {
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        QCOMPARE(done({"set", "1.1.1", "--map", "A1=A1:Mono:fr"}), "");
        QCOMPARE(run({"list"}).errors, QString());
        QFile state(path(QStringLiteral("profile/packages.json")));
        QVERIFY(state.open(QIODevice::ReadOnly));
        support::writeFile(state.fileName(), state.readAll().replace("\"MixMode\"", "\"AudioMixdownSettings\""));
        const QString told = run({"list"}).errors;
        QVERIFY2(told.contains(QLatin1String("\"reel\": its audio mapping cannot be read")), qPrintable(told));
        for (int i = 0; i < 2; ++i)
            QVERIFY2(done({"commit", "1"}).contains("composition 1.1.1: its audio mapping cannot be read"),
                     qPrintable(told));
        QCOMPARE(done({"set", "1.1.1", "--map", "A1=A1:Mono:fr"}), "");
        QCOMPARE(done({"commit", "1"}), path(QStringLiteral("Harbour")));
    }

    void aNewImpOfAWrittenDeliveryIsWrittenAlone()
    {
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        done({"set", "1", "Issuer=Somebody"});
        QCOMPARE(done({"commit", "1"}), path(QStringLiteral("Harbour")));
        QCOMPARE(done({"new", "imp", "Extra", "--in", "Harbour"}), "1.2");
        QCOMPARE(done({"add", "Harbour/Extra", "reel"}), "1.2.1");
        QCOMPARE(listed().filter(QRegularExpression("not written$")).size(), 2);
        QCOMPARE(done({"commit", "1.2"}), path(QStringLiteral("Harbour")));
        QCOMPARE(listed().filter(QRegularExpression(", written$")).size(), 5);
        QCOMPARE(QDir(path(QStringLiteral("Harbour"))).entryList({"PKL_*.xml"}).size(), 2);
        // Forgotten, it is found again where it lies.
        QCOMPARE(done({"remove", "1"}), "");
        QCOMPARE(listed(), QStringList());
        QCOMPARE(done({"explore", path(QStringLiteral("Harbour"))}), "");
        QCOMPARE(listed().size(), 5);
    }

    void deliveriesInOneFolderKeepTheirOwnImps()
    {
        for (const char* name : {"One", "Two", "Three"})
            done({"new", "supplemental", name, "--imp", QLatin1String("IMP of ") + name, "--to", m_folder->path()});
        done({"add", "Two", m_clip});
        QCOMPARE(listed(),
                 (QStringList{"1  IMF Supplemental \"One\", not written", "1.1  IMP \"IMP of One\", not written",
                              "2  IMF Supplemental \"Two\", not written", "2.1  IMP \"IMP of Two\", not written",
                              "2.2  IMP \"Untitled IMP\", not written", "2.2.1  CPL \"reel\", not written",
                              "3  IMF Supplemental \"Three\", not written", "3.1  IMP \"IMP of Three\", not written"}));
    }

    void workInADeliveryThatIsAwayIsKept()
    {
        const QString folder = path(QStringLiteral("Harbour"));
        const QString away = path(QStringLiteral("away"));
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        QCOMPARE(done({"commit", "1"}), folder);
        done({"new", "imp", "Extra", "--in", "Harbour"});
        QVERIFY(QDir().rename(folder, away));
        for (const char* name : {"1", "2"})
            QCOMPARE(done({"new", "original", QLatin1String("Other ") + name, "--to", m_folder->path()}), name);
        QVERIFY(QDir().rename(away, folder));
        QCOMPARE(listed().filter(QStringLiteral("Extra")).size(), 1);
        QVERIFY(QDir().rename(folder, away));
        QCOMPARE(done({"remove", folder}), "");
        QCOMPARE(done({"remove", folder}).at(0), '!');
        QVERIFY(QDir().rename(away, folder));
        QCOMPARE(listed().size(), 4);
    }

    void whatACrashHasLeftGoesAtTheNextStart()
    {
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        const QString left = path(QStringLiteral("Harbour/.stratacut-commit-1"));
        QVERIFY(QDir().mkpath(left));
        support::writeFile(left + QStringLiteral("/made-folder"), {});
        QCOMPARE(listed().size(), 2);
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Harbour"))));
    }

    void aRefusedCommandSaysWhyAndChangesNothing_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("said");
        QTest::newRow("no item") << QStringList{"rename", "Quay", "Pier"} << 1 << "no such item";
        QTest::newRow("an ambiguous name") << QStringList{"rename", "Twin", "Pier"} << 1 << "2, 3";
        QTest::newRow("no key") << QStringList{"set", "1", "Colour=blue"} << 2 << "Issuer";
        QTest::newRow("another item's key") << QStringList{"set", "1", "Audio Mix=5.1"} << 1 << "Issuer";
        QTest::newRow("no value") << QStringList{"set", "1", "Issuer"} << 2 << "KEY=VALUE";
        QTest::newRow("no choice") << QStringList{"set", "1.1.1", "Audio Mix=22.2"} << 1 << "Stereo";
        QTest::newRow("no mode") << QStringList{"set", "1.1.1", "--map", "A1=all:22.2"} << 1 << "Stereo";
        QTest::newRow("no language") << QStringList{"set", "1.1.1", "--map", "A1=all:Stereo:en_US"} << 1 << "RFC 5646";
        QTest::newRow("a row too far") << QStringList{"set", "1.1.1", "--map", "A3=all:Stereo"} << 1 << "map A1 first";
        QTest::newRow("a name that is taken")
            << QStringList{"set", "1.1.1", "--group", "Untitled Group=A1"} << 1 << "NAME=A1,A2";
        QTest::newRow("a name of a track")
            << QStringList{"set", "1.1.1", "--group", "A1 Mono=A2"} << 1 << "another name";
        QTest::newRow("a mapping of no composition")
            << QStringList{"set", "1.1", "--map", "A1=all:Stereo"} << 1 << "only a composition";
        QTest::newRow("a sequence in use") << QStringList{"bin", "--remove", "reel"} << 1 << "composition 1.1.1";
        QTest::newRow("no media") << QStringList{"add", "1", "/nowhere.mov"} << 1 << "/nowhere.mov";
        QTest::newRow("onto a composition") << QStringList{"add", "1.1.1", "reel"} << 1 << "another item";
        QTest::newRow("an empty IMP") << QStringList{"commit", "2"} << 1 << "no composition";
        QTest::newRow("no delivery") << QStringList{"explore", "/proc"} << 1 << "/proc";
        QTest::newRow("no kind") << QStringList{"new", "copy", "X"} << 2 << "original, supplemental, imp";
        QTest::newRow("no delivery for an IMP") << QStringList{"new", "imp", "X"} << 2 << "--in";
        QTest::newRow("a folder for an IMP") << QStringList{"folder", "1.1", "/tmp"} << 1 << "only a delivery";
    }

    void aRefusedCommandSaysWhyAndChangesNothing()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, code);
        QFETCH(QString, said);
        done({"new", "original", "Harbour", "--imp", "Main", "--to", m_folder->path()});
        done({"add", "1.1", m_clip});
        QVERIFY(QDir().mkpath(path(QStringLiteral("a"))) && QDir().mkpath(path(QStringLiteral("b"))));
        done({"new", "original", "Twin", "--to", path(QStringLiteral("a"))});
        done({"new", "original", "Twin", "--to", path(QStringLiteral("b"))});
        const QString before = run({"list", "--json"}).output;
        const auto result = run(arguments);
        QCOMPARE(result.exitCode, code);
        QVERIFY2(result.errors.contains(said), qPrintable(result.errors));
        QCOMPARE(run({"list", "--json"}).output, before);
    }

    void aFullDiskLeavesWhatWasSaved()
    {
        done({"bin", m_clip});
        const QString file = path(QStringLiteral("profile/bin.json"));
        const QByteArray before = support::fileBytes(file);
        const QString second = path(QStringLiteral("second.mov"));
        QVERIFY(QFile::copy(m_clip, second));
        // No file may become larger than 512 bytes: the lock fits, the bin does not.
        const QStringList full{"sh", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "sh"};
        const auto added = support::desk({"bin", second, "--profile", path(QStringLiteral("profile"))}, full);
        QCOMPARE(added.exitCode, 1);
        QVERIFY2(added.errors.contains(file + QLatin1String(": the bin cannot be saved")), qPrintable(added.errors));
        QCOMPARE(support::fileBytes(file), before);
    }

    void aProfileInUseIsLeftAlone()
    {
        done({"new", "original", "Harbour"});
        QLockFile held(path(QStringLiteral("profile/lock")));
        QVERIFY(held.tryLock());
        const auto result = run({"rename", "Harbour", "Quay"});
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.errors.contains(QLatin1String("already works with this profile")), qPrintable(result.errors));
    }
};

STRATACUT_TEST_MAIN(TestDeskCommands)
#include "tst_desk_commands.moc"
