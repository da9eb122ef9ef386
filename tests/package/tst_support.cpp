#include "NvCore/Assert.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

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

    void anAnnouncedWarningPasses()
    {
        support::expectMessage(QtWarningMsg, "as announced");
        qWarning("comes as announced");
    }

    void recordedAssertionsNameSourceAndExpression()
    {
        support::Assertions assertions;
        NV_ASSERT(1 == 2);
        QCOMPARE(assertions.take(), QStringList{"tst_support: 1 == 2"});
    }

    void messageBoxesAreAnsweredInOrderByTheirButtons()
    {
        using namespace ViewDeckQt;
        support::ModalAnswer first(QMessageBox::No);
        support::ModalAnswer second(QMessageBox::Ok);
        QCOMPARE(ManagedMessageBox::messageBox(nullptr, QMessageBox::Question, "Title", "Really?",
                                               QMessageBox::Yes | QMessageBox::No, QMessageBox::No),
                 QMessageBox::No);
        QCOMPARE(ManagedMessageBox::messageBox(nullptr, QMessageBox::Critical, "Title", "Well.", QMessageBox::Ok,
                                               QMessageBox::Ok),
                 QMessageBox::Ok);
        QCOMPARE(first.text, QString("Really?"));
        QCOMPARE(first.icon, QMessageBox::Question);
        QCOMPARE(first.buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(first.defaultButton, QMessageBox::No);
        QCOMPARE(second.title, QString("Title"));
        QCOMPARE(second.icon, QMessageBox::Critical);
    }

    void folderDialogsAreAnswered()
    {
        const QTemporaryDir folder;
        support::FolderAnswer choice(folder.path());
        QCOMPARE(QFileDialog::getExistingDirectory(nullptr, "Choose", {}, QFileDialog::ShowDirsOnly), folder.path());
        QCOMPARE(choice.title, QString("Choose"));
        support::FolderAnswer cancel{QString()};
        QCOMPARE(QFileDialog::getExistingDirectory(nullptr, "Choose", folder.path()), QString());
        QCOMPARE(cancel.openedIn, folder.path());
    }
};

STRATACUT_TEST_MAIN(TestSupport)
#include "tst_support.moc"
