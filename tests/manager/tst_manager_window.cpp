#include "manager/ManagerFixture.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "StratacutUI/IMF_View.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QAction>
#include <QLineEdit>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTextEdit>

using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using ViewDeckQt::PWTextInput;

namespace
{
QJsonObject film()
{
    return documents::delivery("Film", "/d", {documents::imp("I", {documents::cpl("X")})});
}

/// Right-clicks an item.
void openContextMenu(IMF_TreeView& tree, const QPoint& point)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, tree.viewport()->mapToGlobal(point));
    QApplication::sendEvent(tree.viewport(), &event);
}

} // namespace

/// The window, its buttons and its tree.
class TestManagerWindow : public QObject
{
    Q_OBJECT
private slots:

    void theHintMakesWayForTheFirstDeliverable()
    {
        ManagerFixture f;
        auto* view = f.window->findChild<IMF_View*>("m_imfView");
        const auto* hint = view->findChild<QTextEdit*>();
        QVERIFY(hint->isVisible());
        const QModelIndex delivery = f.newDelivery("Film");
        QVERIFY(f.tree().isVisible());
        f.controller().onRemoveIMFItem(delivery);
        QVERIFY(f.tree().isVisible());
        QEvent change(QEvent::PaletteChange);
        QApplication::sendEvent(view, &change);
        QVERIFY(hint->isVisible());
    }

    void exportIsForOneDeliverableThatCanBeCommitted()
    {
        ManagerFixture f;
        const QModelIndex fresh = f.newDelivery("New");
        const QModelIndex cpl = f.newCpl(f.newImp(fresh), "m");
        const QModelIndex committed = f.load("/d", "d", film());
        for (const QModelIndex& index : {cpl.parent(), cpl, committed, fresh}) {
            f.click(index);
            QCOMPARE(f.button("m_burn").isEnabled(), index == fresh);
        }
        QItemSelection two(fresh, fresh);
        two.select(committed, committed);
        f.tree().selectionModel()->clearSelection();
        f.tree().selectionModel()->select(two, QItemSelectionModel::Select);
        QVERIFY(!f.button("m_burn").isEnabled());
        QVERIFY(!f.param<PWTextInput>("id_name"));
        f.tree().selectionModel()->clearSelection();
        f.click(fresh);
        emit f.params().valueChanged(cpl);
        QVERIFY(!f.button("m_burn").isEnabled());
        emit f.params().valueChanged(fresh);
        QSignalSpy wanted(f.window.get(), &IMF_ManagerWindow::commitSelectedItems);
        QTest::mouseClick(&f.button("m_burn"), Qt::LeftButton);
        QCOMPARE(wanted[0][0].value<QList<QModelIndex>>(), QList<QModelIndex>{fresh});
        QCOMPARE(f.bridge.commits.size(), 1);
        f.putOnDisk("/out/New", "New#1", documents::delivery("New", "/out/New"));
        f.bridge.commits[0].onDone({});
        QTRY_VERIFY(!f.button("m_burn").isEnabled());
    }

    void aRowThatIsReplacedUnderTheSelectionIsShownAnew()
    {
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        f.putOnDisk("/out/Film", "d", documents::delivery("Written", "/out/Film", {documents::imp("I")}));
        const auto refresh = [&f] { f.controller().onRefreshIMFItem(f.model->index(0, 0)); };
        f.withoutTester(refresh);
        QCOMPARE(f.param<PWTextInput>("id_name")->getValue().toString(), QString("Written"));
        QVERIFY(!f.button("m_burn").isEnabled());
        f.click(f.model->index(0, 0, f.model->index(0, 0)));
        QCOMPARE(f.param<PWTextInput>("id_name")->getValue().toString(), QString("I"));
        f.withoutTester(refresh);
        QVERIFY(!f.param<PWTextInput>("id_name"));
    }

    void clickingBelowTheRowsSelectsNothing()
    {
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        QVERIFY(f.param<PWTextInput>("id_name"));
        QTest::mouseClick(f.tree().viewport(), Qt::LeftButton, {}, f.tree().viewport()->rect().bottomLeft());
        QVERIFY(!f.tree().currentIndex().isValid() && !f.param<PWTextInput>("id_name"));
        QVERIFY(!f.button("m_burn").isEnabled());
    }

    void deleteAsksToRemoveTheFirstSelectedRow()
    {
        QStandardItemModel model(2, 2);
        IMF_TreeView tree;
        tree.setModel(&model);
        QSignalSpy removal(&tree, &IMF_TreeView::notifyRemoveItem);
        QTest::keyClick(&tree, Qt::Key_Delete);
        QVERIFY(removal.isEmpty());
        tree.selectionModel()->select(QItemSelection(model.index(0, 0), model.index(1, 1)),
                                      QItemSelectionModel::Select);
        for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_Backspace}) {
            QTest::keyClick(&tree, key);
            QCOMPARE(removal.size(), 1);
            QCOMPARE(removal.takeFirst().constFirst().value<QModelIndex>(), model.index(0, 0));
        }
    }

    void theContextMenuRemovesUncommittedItemsAlone()
    {
        ManagerFixture f;
        const QModelIndex fresh = f.newDelivery("New");
        const QModelIndex committed = f.load("/d", "d", film());
        bool enabled = true;
        WhenOpened disabled([&enabled](QWidget& menu) {
            enabled = menu.actions().value(0)->isEnabled();
            QTest::keyClick(&menu, Qt::Key_Escape);
        });
        openContextMenu(f.tree(), f.tree().visualRect(committed).center());
        QVERIFY(!enabled);
        openContextMenu(f.tree(), f.tree().viewport()->rect().bottomLeft());
        QVERIFY(!QApplication::activePopupWidget());
        f.click(fresh);
        WhenOpened menu(WhenOpened::choosing("Delete a reference"));
        openContextMenu(f.tree(), f.tree().visualRect(fresh).center());
        QCOMPARE(shape(*f.model), QString("Film(I(X title))"));
        QVERIFY(!f.button("m_burn").isEnabled());
    }

    void namesAreEditedInPlaceWhereTheItemIsNotCommitted()
    {
        ManagerFixture f;
        f.click(f.newDelivery("New"));
        QTest::keyClick(&f.tree(), Qt::Key_F2);
        auto* editor = f.tree().viewport()->findChild<QLineEdit*>();
        QVERIFY(editor);
        editor->setText("Renamed");
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(shape(*f.model), QString("Renamed"));
        f.click(f.load("/d", "d", film()));
        QTest::keyClick(&f.tree(), Qt::Key_F2);
        QTRY_VERIFY(!f.tree().viewport()->findChild<QLineEdit*>());
    }

    void aDropIsShownAndSelected_data()
    {
        // How much there is: nothing, a deliverable, an IMP in it.
        const support::Rows<int, bool> row;
        row("on the hint", 0, true);
        row("on a deliverable", 1, false);
        row("on an IMP", 2, false);
        row("below the rows", 2, true);
    }

    void aDropIsShownAndSelected()
    {
        const auto [depth, onNothing] = support::fetched<int, bool>();
        ManagerFixture f;
        f.engine.addSequence("a", "A");
        QModelIndex index;
        if (depth > 0)
            index = f.newDelivery("Film");
        if (depth > 1)
            index = f.newImp(index);
        f.tree().expandAll();
        std::unique_ptr<WhenOpened> answer;
        if (onNothing)
            answer = std::make_unique<WhenOpened>(WhenOpened::clicking("originalBtn"));
        QVERIFY(!f.drop({"clip"}, index));
        const QModelIndex target = onNothing ? QModelIndex() : index;
        f.withoutTester([&] { QVERIFY(f.drop({"a"}, target)); });
        QCOMPARE(f.tree().selectionModel()->selectedRows(), QModelIndexList{f.tree().currentIndex()});
        QCOMPARE(f.param<PWTextInput>("id_content_title")->getValue().toString(), QString("A"));
    }

    void aDropWhoseItemHasGoneSelectsNothingElse()
    {
        ManagerFixture f;
        f.newDelivery("First");
        f.tree().expandToCPL(f.newDelivery("Film"), 0);
        QVERIFY(!f.tree().currentIndex().isValid());
    }

    void newImfOffersBothKinds()
    {
        ManagerFixture f;
        int version = 0;
        for (const char* kind : {"Original", "Supplemental"}) {
            WhenOpened menu(WhenOpened::choosing(QString("IMF ") + kind));
            QTest::mouseClick(&f.button("m_newIMF"), Qt::LeftButton);
            const QModelIndex made = f.model->index(version, 0);
            QCOMPARE(made.data().toString(), QString("Untitled ") + kind);
            QCOMPARE(int(Model::VersionFromIndex(made)), ++version);
            QCOMPARE(f.tree().currentIndex(), made);
            QVERIFY(f.button("m_burn").isEnabled());
        }
    }

    void exploreOpensWhereTheLastOneEnded()
    {
        const QTemporaryDir folder;
        ManagerFixture f;
        f.putOnDisk(folder.path(), "d", documents::delivery("Film", folder.path()));
        QSignalSpy added(f.window.get(), &IMF_ManagerWindow::newDeliveryAdded);
        FolderAnswer chosen(folder.path());
        QTest::mouseClick(&f.button("m_explore"), Qt::LeftButton);
        QCOMPARE(added.takeFirst().constFirst().toString(), folder.path());
        QCOMPARE(shape(*f.model), QString("Film"));
        QCOMPARE(f.tree().currentIndex(), f.model->index(0, 0));
        f.reopen();
        QSignalSpy cancelled(f.window.get(), &IMF_ManagerWindow::newDeliveryAdded);
        for (int round = 0; round < 2; ++round) {
            FolderAnswer nothing{QString()};
            QTest::mouseClick(&f.button("m_explore"), Qt::LeftButton);
            QCOMPARE(nothing.openedIn, folder.path());
        }
        QVERIFY(cancelled.isEmpty());
    }

    void aCommitShowsAtOnce()
    {
        ManagerFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex cpl = f.newCpl(f.newImp(delivery), "m");
        f.click(delivery);
        QTest::mouseClick(&f.button("m_burn"), Qt::LeftButton);
        QCOMPARE(f.bridge.commits.size(), 1);
        f.click(cpl);
        const auto* title = f.param<PWTextInput>("id_content_title");
        QVERIFY(!title->isReadOnly());
        QJsonObject written = documents::cpl("Sequence m");
        written["DescriptiveMetadata"] = QJsonObject{{"ContentTitle", "As written"}};
        f.putOnDisk("/out/Film", "Film#1",
                    documents::delivery("Film", "/out/Film", {documents::imp("Untitled IMP", {written})}));
        f.bridge.commits[0].onDone({});
        QTRY_VERIFY(title->isReadOnly());
        QCOMPARE(title->getValue().toString(), QString("As written"));
    }

    void invalidItemsLookDifferent()
    {
        ManagerFixture f;
        const QModelIndex cpl = f.newCpl(f.newImp(f.newDelivery("Film")), "m");
        f.tree().expandAll();
        const QRect row = f.tree().visualRect(cpl);
        const QImage valid = f.tree().viewport()->grab(row).toImage();
        f.engine.sequences.remove("m");
        f.model->onMobStatusChanged("m");
        QVERIFY(f.tree().viewport()->grab(row).toImage() != valid);
    }

    void thePanesAndIconsFollowTheSkin()
    {
        const QPalette former = QApplication::palette();
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        QSet<qint64> icons;
        Palette::PaletteManager& palette = Palette::PaletteManager::Instance();
        for (const Palette::Skin skin : {Palette::Skin::Light, Palette::Skin::Dark}) {
            palette.setSkin(skin);
            icons.insert(f.model->index(0, 0).data(Qt::DecorationRole).value<QIcon>().cacheKey());
            const QColor pane = palette.color("PanelBackgroundLighterColor");
            QCOMPARE(f.tree().viewport()->grab().toImage().pixelColor(5, 300), pane);
            QCOMPARE(f.params().findChild<QStackedWidget*>()->currentWidget()->palette().base().color(), pane);
        }
        QCOMPARE(icons.size(), 2);
        QApplication::setPalette(former);
    }
};

STRATACUT_TEST_MAIN(TestManagerWindow)
#include "tst_manager_window.moc"
