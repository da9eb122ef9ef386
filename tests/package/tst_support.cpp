#include "support/Programs.h"
#include "support/TestMain.h"

/// The instruments that the other tests rely on.
class TestSupport : public QObject
{
    Q_OBJECT

private slots:

    void whatNobodyAnnouncedFailsATest()
    {
        const support::Ran probe = support::ran(QStringLiteral(SUPPORT_PROBE), {});
        const QString report = probe.output + probe.errors;
        QVERIFY2(report.contains("unannounced message: out of the blue"), qPrintable(report));
        QVERIFY2(report.contains("unannounced assertion in support_probe: 1 == 2"), qPrintable(report));
        QVERIFY2(report.contains("announced a message that never came: never said"), qPrintable(report));
        QVERIFY2(report.contains("was never answered"), qPrintable(report));
        QCOMPARE(probe.exitCode, 4);
    }
};

STRATACUT_TEST_MAIN(TestSupport)
#include "tst_support.moc"
