#include "support/TestMain.h"

#include <QProcess>

/// The instruments that the other tests rely on.
class TestSupport : public QObject
{
    Q_OBJECT

private slots:

    void whatNobodyAnnouncedFailsATest()
    {
        QProcess probe;
        probe.start(QStringLiteral(SUPPORT_PROBE), QStringList());
        QVERIFY(probe.waitForFinished());
        const QString report = probe.readAllStandardOutput() + probe.readAllStandardError();
        QVERIFY2(report.contains("unannounced message: out of the blue"), qPrintable(report));
        QVERIFY2(report.contains("unannounced assertion in support_probe: 1 == 2"), qPrintable(report));
        QVERIFY2(report.contains("announced a message that never came: never said"), qPrintable(report));
        QVERIFY2(report.contains("was never answered"), qPrintable(report));
        QCOMPARE(probe.exitCode(), 4);
    }
};

STRATACUT_TEST_MAIN(TestSupport)
#include "tst_support.moc"
