#include "imf/package/Deliveries.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace desk;
using namespace desk::imf;

/// Processes that end at any instant of a commit.
class TestCrash : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir{deliveries::scratch()};
    deliveries::Tracks m_tracks;
    QMap<QString, QByteArray> m_first;

    QString path(const char* name) const { return m_dir.filePath(QLatin1String(name)); }

    void prepare(const QString& kind)
    {
        const QString folder = path("target");
        QDir(folder).removeRecursively();
        if (kind == QLatin1String("second"))
            deliveries::copyFolder(path("first"), folder);
    }

    /// Runs the committer, killed before its n-th change of the disk. @return whether it came to its end.
    bool run(const QString& kind, int call)
    {
        QProcess process;
        process.start(QStringLiteral(COMMITTER), {kind, path("target"), path("tracks"), QString::number(call)});
        if (!process.waitForFinished(60000))
            qFatal("the committer does not end");
        const bool isComplete = process.exitStatus() == QProcess::NormalExit;
        if (isComplete && process.exitCode() != 0)
            qFatal("%s", process.readAllStandardError().constData());
        return isComplete;
    }

    /// Before anything is mended: the former delivery or the complete new one, and nothing broken.
    void checkRaw(const QString& kind)
    {
        const QString folder = path("target");
        const bool hadFormer = kind == QLatin1String("second");
        if (!isDelivery(folder)) {
            QVERIFY2(!hadFormer, "the former delivery is gone");
            return;
        }
        const Result<Delivery> delivery = openDelivery(folder);
        QVERIFY2(delivery, delivery ? "" : qPrintable(delivery.error().sentence()));
        QVERIFY(!delivery->hasMissingAssets());
        const QStringList findings = deliveries::brief(verifyDelivery(folder));
        for (const QString& one : findings)
            QVERIFY2(one.startsWith("leftover ") || one.startsWith("file-unlisted "), qPrintable(one));
    }

    /// After mending: exactly the former files, or exactly the new ones.
    void checkMended(const QString& kind)
    {
        const QString folder = path("target");
        QVERIFY(recoverFolder(folder));
        if (!isDelivery(folder)) {
            QVERIFY(deliveries::contents(folder).isEmpty());
            return;
        }
        QCOMPARE(deliveries::brief(verifyDelivery(folder)), QStringList());
        const bool isNew = openDelivery(folder)->packages.size() == (kind == QLatin1String("second") ? 2 : 1);
        if (!isNew)
            QCOMPARE(deliveries::contents(folder), m_first);
    }

    bool checkAll(const QString& kind)
    {
        checkRaw(kind);
        if (!QTest::currentTestFailed())
            checkMended(kind);
        return !QTest::currentTestFailed();
    }

private slots:

    void initTestCase()
    {
        m_tracks = deliveries::make(path("tracks"));
        const Status done = deliveries::commitFirst(path("first"), m_tracks);
        QVERIFY2(done, qPrintable(done.error().sentence()));
        m_first = deliveries::contents(path("first"));
    }

    void aCrashBeforeAnyChangeOfTheDiskLeavesAWholeDelivery_data()
    {
        const support::Rows<QString> row;
        row("into a new folder", "first");
        row("into a delivery", "second");
    }

    void aCrashBeforeAnyChangeOfTheDiskLeavesAWholeDelivery()
    {
        const auto [kind] = support::fetched<QString>();
        int call = 0;
        bool isComplete = false;
        while (!isComplete) {
            prepare(kind);
            isComplete = run(kind, ++call);
            QVERIFY2(checkAll(kind), qPrintable(QStringLiteral("killed before change %1").arg(call)));
        }
        QVERIFY2(call > 20, "the stand-ins were not called");
    }

    void aCrashWhileMendingCanBeMended()
    {
        // Dies late in the commit, when track files have their names already, and then in every step of mending.
        int call = 0;
        bool isComplete = false;
        while (!isComplete) {
            prepare(QStringLiteral("second"));
            int late = 30;
            while (run(QStringLiteral("second"), late) || !isHalfWay())
                prepare(QStringLiteral("second")), --late;
            isComplete = run(QStringLiteral("recover"), ++call);
            QVERIFY2(checkAll(QStringLiteral("second")),
                     qPrintable(QStringLiteral("killed before change %1").arg(call)));
        }
        QVERIFY(call > 3);
    }

private:
    bool isHalfWay() const
    {
        return QFile::exists(path("target") + "/other.mxf") && openDelivery(path("target"))->packages.size() == 1;
    }
};

STRATACUT_TEST_MAIN(TestCrash)

#include "tst_imf_crash.moc"
