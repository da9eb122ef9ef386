#include "services/Clip.h"
#include "support/TestMain.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_TreeView.h"
#include "desk/app/Host.h"
#include "desk/app/walk/Hand.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/JobPane.h"

#include <QAction>
#include <QDrag>
#include <QPushButton>
#include <QTemporaryDir>
#include <QWindow>

using desk::app::Hand;
using Model = IMF_PackageMgrQtModel;

namespace
{
/// "Name(Package(Title))" for what is below the index.
QString shape(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        rows += index.data().toString() + '(' + shape(model, index) + ')';
    }
    return rows.join(',');
}
} // namespace

/// Drags with the mouse on an X server: from the press to the drop they go the way of the window system.
class TestDeskDrag : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<desk::app::Host> m_host;
    std::unique_ptr<desk::app::DeskWindow> m_window;

    Model& model() const { return m_host->model(); }

    IMF_TreeView& tree() const { return m_window->tree(); }

    QAbstractItemView& bin() const { return m_window->bin().view(); }

    QModelIndex sequence(int row) const { return bin().model()->index(row, 0); }

    /// By the names from the delivery down.
    QModelIndex item(const QStringList& names) const
    {
        QModelIndex found;
        for (const QString& name : names) {
            int row = 0;
            while (row < model().rowCount(found) && model().index(row, 0, found).data().toString() != name)
                ++row;
            found = model().index(row, 0, found);
        }
        return found;
    }

    /// The tree's empty part.
    QPoint below() const
    {
        return inWindow(*tree().viewport(), tree().viewport()->rect().bottomLeft() + QPoint(40, -9));
    }

    void checkBin() const
    {
        QCOMPARE(bin().model()->rowCount(), 2);
        QCOMPARE(sequence(0).data().toString() + sequence(1).data().toString(), QStringLiteral("onetwo"));
    }

    QPoint inWindow(const QWidget& widget, const QPoint& place) const { return widget.mapTo(m_window.get(), place); }

    QPoint placeOf(QAbstractItemView& view, const QModelIndex& index) const
    {
        view.scrollTo(index);
        return inWindow(*view.viewport(), view.visualRect(index).center());
    }

    /// With one composition; selected.
    QPersistentModelIndex makeDelivery(const QString& name)
    {
        m_window->action(QStringLiteral("newOriginal"))->trigger();
        const QPersistentModelIndex made = model().index(model().rowCount() - 1, 0);
        model().setData(made, name);
        model().setData(made, QVariant::fromValue(qMakePair(QStringLiteral("Issuer"), QStringLiteral("Me"))),
                        Model::IssuerRole);
        bin().setCurrentIndex(sequence(0));
        m_window->action(QStringLiteral("addSequence"))->trigger();
        tree().select(made);
        return made;
    }

    using Step = std::function<void(QWindow*)>;

    /// Each step is a turn of whatever event loop runs then: a drag runs its own.
    void play(const QList<Step>& steps, int number = 0)
    {
        if (number == steps.size())
            return;
        QTimer::singleShot(0, m_window.get(), [this, steps, number] {
            play(steps, number + 1);
            steps[number](m_window->windowHandle());
        });
    }

    void drag(const QPoint& from, const QPoint& to, const Step& last)
    {
        bool ended = false;
        QList<Step> steps;
        steps += [from](QWindow* window) { QTest::mousePress(window, Qt::LeftButton, {}, from); };
        for (int part = 1; part <= 8; ++part)
            steps += [place = from + (to - from) * part / 8](QWindow* window) { QTest::mouseMove(window, place); };
        steps += last;
        steps += [&ended](QWindow*) { ended = true; };
        play(steps);
        QTRY_VERIFY(ended && bin().findChildren<QDrag*>().isEmpty() && tree().findChildren<QDrag*>().isEmpty());
    }

    void drag(const QPoint& from, const QPoint& to)
    {
        drag(from, to, [to](QWindow* window) { QTest::mouseRelease(window, Qt::LeftButton, {}, to); });
    }

private slots:

    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        m_host = std::make_unique<desk::app::Host>(m_folder.filePath(QStringLiteral("profile")));
        QVERIFY(m_host->claim().ok());
        desk::app::DeskWindow::prepareLook(m_host->profile());
        m_host->load();
        m_host->output().setDefaultFolder(m_folder.path());
        m_window = std::make_unique<desk::app::DeskWindow>(m_host.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_window->addMedia(
            {support::makeClip(m_folder.filePath("one.mov"), {}), support::makeClip(m_folder.filePath("two.mov"), {})});
        QTRY_COMPARE_WITH_TIMEOUT(bin().model()->rowCount(), 2, 60000);
        const QPersistentModelIndex written = makeDelivery("Written");
        m_window->action(QStringLiteral("export"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(written), IMF_PackageMgr::Committed, 60000);
    }

    void init()
    {
        makeDelivery("Open");
        tree().expandAll();
    }

    void cleanup() { m_host->controller().onRemoveIMFItem(model().index(1, 0)); }

    void aDragMakesCompositionsAndLeavesTheBin_data()
    {
        QTest::addColumn<QStringList>("target");
        QTest::addColumn<QString>("open");
        QTest::addColumn<QString>("rest");
        const QString imp = "Untitled IMP(one())";
        QTest::newRow("on a package") << QStringList{"Open", "Untitled IMP"} << "Untitled IMP(one(),one(),two())"
                                      << "";
        QTest::newRow("beside a composition")
            << QStringList{"Open", "Untitled IMP", "one"} << "Untitled IMP(one(),one(),two())"
            << "";
        QTest::newRow("on a delivery") << QStringList{"Open"} << imp + ",Untitled IMP.1(one(),two())"
                                       << "";
        QTest::newRow("on nothing") << QStringList() << imp << ",Untitled Original(Untitled IMP(one(),two()))";
    }

    void aDragMakesCompositionsAndLeavesTheBin()
    {
        QFETCH(QStringList, target);
        QFETCH(QString, open);
        QFETCH(QString, rest);
        const QPoint place = target.isEmpty() ? below() : placeOf(tree(), item(target));
        if (target.isEmpty())
            Hand::whenOpen([](QWidget* dialog) { Hand::click(dialog->findChild<QPushButton*>("originalBtn")); });
        bin().selectAll();
        drag(placeOf(bin(), sequence(0)), place);
        QCOMPARE(shape(model()), "Written(Untitled IMP(one())),Open(" + open + ')' + rest);
        checkBin();
    }

    void aDragThatIsRefusedChangesNothing_data()
    {
        QTest::addColumn<QStringList>("dragged");
        QTest::addColumn<QStringList>("target");
        const QStringList openImp{"Open", "Untitled IMP"};
        const QStringList writtenImp{"Written", "Untitled IMP"};
        QTest::newRow("on a written package") << QStringList() << writtenImp;
        QTest::newRow("on the exports") << QStringList() << QStringList("exports");
        QTest::newRow("back on the bin") << QStringList() << QStringList("bin");
        QTest::newRow("given up") << QStringList() << openImp;
        QTest::newRow("a composition on a delivery") << openImp + QStringList("one") << QStringList("Written");
        QTest::newRow("a composition on the bin") << openImp + QStringList("one") << QStringList("bin");
        QTest::newRow("a delivery on nothing") << QStringList("Open") << QStringList("nothing");
    }

    void aDragThatIsRefusedChangesNothing()
    {
        QFETCH(QStringList, dragged);
        QFETCH(QStringList, target);
        const QString former = shape(model());
        const QHash<QString, QPoint> places{{"exports", inWindow(m_window->jobs(), {60, 60})},
                                            {"bin", inWindow(*bin().viewport(), {60, bin().viewport()->height() - 5})},
                                            {"nothing", below()}};
        const QPoint to = places.contains(target.first()) ? places[target.first()] : placeOf(tree(), item(target));
        const QPoint from = dragged.isEmpty() ? placeOf(bin(), sequence(0)) : placeOf(tree(), item(dragged));
        if (QByteArray(QTest::currentDataTag()) == "given up")
            drag(from, to, [](QWindow* window) { QTest::keyClick(window, Qt::Key_Escape); });
        else
            drag(from, to);
        QCOMPARE(shape(model()), former);
        checkBin();
    }
};

STRATACUT_TEST_MAIN(TestDeskDrag)
#include "tst_desk_drag.moc"
