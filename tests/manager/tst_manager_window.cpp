#include "manager/ManagerFixture.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "StratacutUI/IMF_View.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QSplitter>
#include <QStackedWidget>
#include <QTextEdit>

using Model = IMF_PackageMgrQtModel;

class TestManagerWindow : public QObject
{
    Q_OBJECT
private slots:

    void pictures_data()
    {
        QTest::addColumn<int>("skin");
        QTest::newRow("dark") << int(Palette::Skin::Dark);
        QTest::newRow("light") << int(Palette::Skin::Light);
    }

    void pictures()
    {
        QFETCH(int, skin);
        const QString suffix = QTest::currentDataTag();
        ManagerFixture f;
        Palette::PaletteManager::Instance().setSkin(Palette::Skin(skin));
        QTest::qWait(50);
        f.shoot("empty-" + suffix);
        const QModelIndex delivery = f.newDelivery("Untitled Original");
        f.click(delivery);
        f.shoot("delivery-" + suffix);
        const QModelIndex imp = f.newImp(delivery);
        const QModelIndex cpl = f.newCpl(imp, "m1");
        f.newCpl(imp, "m2");
        f.engine.sequences.remove("m2");
        f.model->onMobStatusChanged("m2");
        f.click(imp);
        f.shoot("imp-" + suffix);
        f.click(cpl);
        f.shoot("cpl-" + suffix);
        f.load("/d", "d", documents::delivery("Old film", "/d", {documents::imp("Package", {documents::cpl("Main")})}));
        f.click(f.model->index(1, 0));
        f.shoot("committed-delivery-" + suffix);
        f.click(f.model->index(0, 0, f.model->index(0, 0, f.model->index(1, 0))));
        f.shoot("committed-cpl-" + suffix);
    }
};

STRATACUT_TEST_MAIN(TestManagerWindow)
#include "tst_manager_window.moc"
