#include "NvCore/Assert.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

/// Every test here must fail: another one runs this program and reads its report.
class SupportProbe : public QObject
{
    Q_OBJECT

private slots:

    void warning() { qWarning("out of the blue"); }

    void assertion() { NV_ASSERT(1 == 2); }

    void silence() { support::expectMessage(QtWarningMsg, "never said"); }

    void noMessageBox() { support::ModalAnswer answer(QMessageBox::Ok); }
};

STRATACUT_TEST_MAIN(SupportProbe)
#include "support_probe.moc"
