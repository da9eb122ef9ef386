#include "manager/ManagerFixture.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "StratacutUI/IMF_View.h"
#include "StratacutUI/NewIMFDialog.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QAction>
#include <QHeaderView>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTextEdit>

using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using ViewDeckQt::PWTextInput;

namespace
{
const QString removal = QStringLiteral("Delete a reference");

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

/// What a window over a model without a controller says.
struct Bare {
    Bare() : window(&model, QModelIndex())
    {
        window.show();
        QApplication::setActiveWindow(&window);
    }

    QStandardItemModel model{2, 2};
    IMF_ManagerWindow window;
};
} // namespace

/// The window, its buttons and its tree.
class TestManagerWindow : public QObject
{
    Q_OBJECT
private slots:

    void widgetsHaveTheNamesAndTextsThatHostsAddress()
    {
        const ManagerFixture f;
        const QHash<QString, QString> texts{{"m_explore", "Explore"}, {"m_newIMF", "New IMF"}, {"m_burn", "Export"}};
        for (auto text = texts.begin(); text != texts.end(); ++text)
            QCOMPARE(f.window->findChild<QPushButton*>(text.key())->text(), text.value());
        QVERIFY(f.window->findChild<IMF_View*>("m_imfView")->getSidebarView() == &f.tree());
        const auto* splitter = f.window->findChild<QSplitter*>("m_splitter");
        QCOMPARE(splitter->orientation(), Qt::Horizontal);
        QVERIFY(!splitter->isCollapsible(0));
        QCOMPARE(splitter->widget(0)->minimumWidth(), 200);
        QVERIFY(splitter->widget(1)->isAncestorOf(&f.params()));
        QVERIFY(!f.button("m_burn").isEnabled());
        QCOMPARE(f.tree().header()->sectionResizeMode(0), QHeaderView::Stretch);
        QCOMPARE(f.tree().header()->sectionResizeMode(1), QHeaderView::ResizeToContents);
    }

    void theHintMakesWayForTheFirstDeliverable()
    {
        ManagerFixture f;
        const auto* hint = f.window->findChild<IMF_View*>("m_imfView")->findChild<QTextEdit*>();
        QVERIFY(hint->isVisible());
        QCOMPARE(hint->toPlainText(), QString("Click Explore to link to an existing IMF\n\n"
                                              "Create a new deliverable by clicking New IMF"));
        const QModelIndex delivery = f.newDelivery("Film");
        QVERIFY(f.tree().isVisible());
        f.controller().onRemoveIMFItem(delivery);
        QVERIFY(f.tree().isVisible());
        QEvent change(QEvent::PaletteChange);
        QApplication::sendEvent(f.tree().parentWidget()->parentWidget(), &change);
        QVERIFY(hint->isVisible());
    }

    void exportIsForOneDeliverableThatCanBeCommitted_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("new deliverable") << "0" << true;
        QTest::newRow("IMP") << "0/0" << false;
        QTest::newRow("CPL") << "0/0/0" << false;
        QTest::newRow("committed deliverable") << "1" << false;
    }

    void exportIsForOneDeliverableThatCanBeCommitted()
    {
        QFETCH(QString, path);
        ManagerFixture f;
        f.newCpl(f.newImp(f.newDelivery("New")), "m");
        f.load("/d", "d", film());
        QModelIndex index;
        const QStringList rows = path.split('/');
        for (const QString& row : rows)
            index = f.model->index(row.toInt(), 0, index);
        f.click(index);
        QTEST(f.button("m_burn").isEnabled(), "enabled");
    }

    void exportNeedsASingleRange()
    {
        ManagerFixture f;
        for (const char* name : {"A", "B", "C"})
            f.newDelivery(name);
        f.click(f.model->index(0, 0));
        QVERIFY(f.button("m_burn").isEnabled());
        QItemSelection two(f.model->index(0, 0), f.model->index(0, 1));
        two.select(f.model->index(2, 0), f.model->index(2, 1));
        f.tree().selectionModel()->clearSelection();
        f.tree().selectionModel()->select(two, QItemSelectionModel::Select);
        QVERIFY(!f.button("m_burn").isEnabled());
        QVERIFY(!f.param<PWTextInput>("id_name"));
        f.click(f.model->index(1, 0));
        QSignalSpy wanted(f.window.get(), &IMF_ManagerWindow::commitSelectedItems);
        QTest::mouseClick(&f.button("m_burn"), Qt::LeftButton);
        QCOMPARE(wanted[0][0].value<QList<QModelIndex>>(), QList<QModelIndex>{f.model->index(1, 0)});
        QCOMPARE(f.bridge.commits.size(), 1);
    }

    void clickingBelowTheRowsSelectsNothing()
    {
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        QVERIFY(f.param<PWTextInput>("id_name"));
        QTest::mouseClick(f.tree().viewport(), Qt::LeftButton, {}, f.tree().viewport()->rect().bottomLeft());
        QVERIFY(f.tree().selectionModel()->selection().isEmpty());
        QVERIFY(!f.tree().currentIndex().isValid());
        QVERIFY(!f.param<PWTextInput>("id_name"));
        QVERIFY(!f.button("m_burn").isEnabled());
    }

    void deleteAsksToRemoveTheFirstSelectedRow_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Delete") << int(Qt::Key_Delete);
        QTest::newRow("Backspace") << int(Qt::Key_Backspace);
    }

    void deleteAsksToRemoveTheFirstSelectedRow()
    {
        QFETCH(int, key);
        Bare bare;
        auto* tree = bare.window.findChild<IMF_TreeView*>("m_treeView");
        QSignalSpy removal(tree, &IMF_TreeView::notifyRemoveItem);
        QTest::keyClick(tree, Qt::Key(key));
        QVERIFY(removal.isEmpty());
        tree->selectionModel()->select(QItemSelection(bare.model.index(0, 0), bare.model.index(1, 1)),
                                       QItemSelectionModel::Select);
        QTest::keyClick(tree, Qt::Key(key));
        QCOMPARE(removal.size(), 1);
        QCOMPARE(removal[0][0].value<QModelIndex>(), bare.model.index(0, 0));
    }

    void theContextMenuRemovesUncommittedItemsAlone()
    {
        ManagerFixture f;
        const QModelIndex fresh = f.newDelivery("New");
        const QModelIndex committed = f.load("/d", "d", film());
        {
            bool enabled = true;
            WhenOpened menu([&enabled](QWidget& opened) {
                enabled = opened.actions().value(0)->isEnabled();
                QTest::keyClick(&opened, Qt::Key_Escape);
            });
            openContextMenu(f.tree(), f.tree().visualRect(committed).center());
            QVERIFY(!enabled);
        }
        openContextMenu(f.tree(), f.tree().viewport()->rect().bottomLeft());
        QVERIFY(!QApplication::activePopupWidget());
        WhenOpened menu(WhenOpened::choosing(removal));
        openContextMenu(f.tree(), f.tree().visualRect(fresh).center());
        QCOMPARE(shape(*f.model), QString("Film(I(X title))"));
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
        QTest::addColumn<int>("target");
        QTest::addColumn<QString>("selected");
        QTest::newRow("on nothing") << 0 << "A";
        QTest::newRow("on a deliverable") << 1 << "A";
        QTest::newRow("on an IMP") << 2 << "A";
        QTest::newRow("below the rows") << 3 << "A";
    }

    void aDropIsShownAndSelected()
    {
        QFETCH(int, target);
        ManagerFixture f;
        f.engine.addSequence("a", "A");
        QModelIndex index;
        if (target > 0)
            index = f.newDelivery("Film");
        if (target > 1)
            index = f.newImp(index);
        f.tree().expandAll();
        std::unique_ptr<WhenOpened> answer;
        if (target == 3)
            index = {};
        if (target == 0 || target == 3)
            answer = std::make_unique<WhenOpened>(WhenOpened::clicking("originalBtn"));
        f.withoutTester([&] { QVERIFY(f.drop({"a"}, index)); });
        QTEST(f.tree().currentIndex().data().toString(), "selected");
        QCOMPARE(f.tree().selectionModel()->selectedRows().size(), 1);
        QCOMPARE(f.param<PWTextInput>("id_content_title")->getValue().toString(), QString("A"));
    }

    void aRefusedDragIsNotTaken()
    {
        ManagerFixture f;
        QVERIFY(!f.drop({"clip"}, {}));
        f.engine.addSequence("a", "A");
        const QModelIndex committed = f.load("/d", "d", film());
        f.tree().expandAll();
        QVERIFY(!f.drop({"a"}, f.model->index(0, 0, committed)));
        QVERIFY(!f.drop({"a"}, committed, Qt::CopyAction));
    }

    void newImfOffersBothKinds_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("version");
        QTest::newRow("Original") << "IMF Original"
                                  << "Untitled Original" << 1;
        QTest::newRow("Supplemental") << "IMF Supplemental"
                                      << "Untitled Supplemental" << 2;
    }

    void newImfOffersBothKinds()
    {
        QFETCH(QString, entry);
        QFETCH(QString, name);
        ManagerFixture f;
        WhenOpened menu(WhenOpened::choosing(entry));
        QTest::mouseClick(&f.button("m_newIMF"), Qt::LeftButton);
        QCOMPARE(shape(*f.model), name);
        QTEST(int(Model::VersionFromIndex(f.model->index(0, 0))), "version");
        QCOMPARE(f.tree().currentIndex(), f.model->index(0, 0));
        QVERIFY(f.button("m_burn").isEnabled());
    }

    void exploreOpensWhereTheLastOneEnded()
    {
        const QTemporaryDir folder;
        ManagerFixture f;
        f.putOnDisk(folder.path(), "d", documents::delivery("Film", folder.path()));
        QSignalSpy added(f.window.get(), &IMF_ManagerWindow::newDeliveryAdded);
        {
            FolderAnswer chosen(folder.path());
            QTest::mouseClick(&f.button("m_explore"), Qt::LeftButton);
            QCOMPARE(chosen.title, QString("Select Delivery Folder"));
            QVERIFY(chosen.options.testFlag(QFileDialog::ShowDirsOnly));
        }
        QCOMPARE(added.size(), 1);
        QCOMPARE(added[0][0].toString(), folder.path());
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

    void overAnotherModelTheWindowOnlySignals()
    {
        Bare bare;
        QSignalSpy original(&bare.window, &IMF_ManagerWindow::newOriginalIMF);
        QSignalSpy supplemental(&bare.window, &IMF_ManagerWindow::newSupplementalIMF);
        WhenOpened menu(WhenOpened::choosing("IMF Supplemental"));
        QTest::mouseClick(bare.window.findChild<QPushButton*>("m_newIMF"), Qt::LeftButton);
        QCOMPARE(original.size(), 0);
        QCOMPARE(supplemental.size(), 1);
        QCOMPARE(bare.model.rowCount(), 2);
    }

    void theDialogAsksForTheKind()
    {
        NewIMFDialog dialog;
        QCOMPARE(dialog.windowTitle(), QString("New IMF"));
        QCOMPARE(int(dialog.version), 1);
        QVERIFY(dialog.name.isEmpty());
        dialog.show();
        ManagerFixture::shoot(dialog, "new-imf");
        const QMap<QString, QString> texts{
            {"cancelBtn", "Cancel"}, {"originalBtn", "Original"}, {"supplementalBtn", "Supplemental"}};
        int left = -1;
        for (const char* name : {"cancelBtn", "originalBtn", "supplementalBtn"}) {
            const auto* button = dialog.findChild<QPushButton*>(name);
            QCOMPARE(button->text(), texts[name]);
            QVERIFY(button->x() > left);
            left = button->x();
        }
        QTest::mouseClick(dialog.findChild<QPushButton*>("supplementalBtn"), Qt::LeftButton);
        QCOMPARE(dialog.name, QString("Untitled Supplemental"));
        QCOMPARE(int(dialog.version), 2);
        QVERIFY(dialog.result() != 0);
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
        QVERIFY(!f.param<PWTextInput>("id_content_title")->isReadOnly());
        QJsonObject written = documents::cpl("Sequence m");
        written["DescriptiveMetadata"] = QJsonObject{{"ContentTitle", "As written"}};
        f.putOnDisk("/out/Film", "Film#1",
                    documents::delivery("Film", "/out/Film", {documents::imp("Untitled IMP", {written})}));
        f.bridge.commits[0].onDone({});
        QTRY_VERIFY(f.param<PWTextInput>("id_content_title")->isReadOnly());
        QCOMPARE(f.param<PWTextInput>("id_content_title")->getValue().toString(), QString("As written"));
        QCOMPARE(f.param<PWTextInput>("id_file_name")->getValue().toString(), QString("Sequence m"));
        f.click(delivery);
        QVERIFY(!f.button("m_burn").isEnabled());
    }

    void aCommitThatEndsLaterFindsNoWindow_data()
    {
        QTest::addColumn<int>("gone");
        QTest::newRow("the row") << 0;
        QTest::newRow("the window") << 1;
        QTest::newRow("the row, replaced") << 2;
    }

    void aCommitThatEndsLaterFindsNoWindow()
    {
        QFETCH(int, gone);
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        QTest::mouseClick(&f.button("m_burn"), Qt::LeftButton);
        if (gone == 0) {
            QTest::keyClick(&f.tree(), Qt::Key_Delete);
            QVERIFY(!f.param<PWTextInput>("id_name"));
            QVERIFY(!f.button("m_burn").isEnabled());
        }
        f.putOnDisk("/out/Film", "d", documents::delivery("Written", "/out/Film"));
        if (gone == 1)
            f.window.reset();
        if (gone == 2) {
            f.withoutTester([&] { f.controller().onRefreshIMFItem(f.model->index(0, 0)); });
            QCOMPARE(f.param<PWTextInput>("id_name")->getValue().toString(), QString("Written"));
            QVERIFY(f.param<PWTextInput>("id_name")->isReadOnly());
            QVERIFY(!f.button("m_burn").isEnabled());
        }
        f.bridge.commits[0].onDone({});
        QCoreApplication::processEvents();
        QCOMPARE(shape(*f.model), QString(gone == 0 ? "" : "Written"));
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

    /// Both skins, each page and state; kept as pictures where a folder is named.
    void everyStateFollowsTheSkin_data()
    {
        QTest::addColumn<int>("skin");
        QTest::newRow("dark") << int(Palette::Skin::Dark);
        QTest::newRow("light") << int(Palette::Skin::Light);
    }

    void everyStateFollowsTheSkin()
    {
        QFETCH(int, skin);
        const QPalette former = QApplication::palette();
        const QString suffix = QTest::currentDataTag();
        ManagerFixture f;
        Palette::PaletteManager::Instance().setSkin(Palette::Skin(skin));
        const QColor pane = Palette::PaletteManager::Instance().color("PanelBackgroundLighterColor");
        f.shoot("empty-" + suffix);
        QCOMPARE(f.window->grab().toImage().pixelColor(40, 100), pane);
        const QModelIndex delivery = f.newDelivery("Untitled Original");
        f.click(delivery);
        f.shoot("delivery-" + suffix);
        QCOMPARE(f.tree().viewport()->grab().toImage().pixelColor(5, 300), pane);
        const QModelIndex imp = f.newImp(delivery);
        const QModelIndex cpl = f.newCpl(imp, "m1");
        f.newCpl(imp, "m2");
        f.engine.sequences.remove("m2");
        f.model->onMobStatusChanged("m2");
        f.click(imp);
        f.shoot("imp-" + suffix);
        f.click(cpl);
        f.shoot("cpl-" + suffix);
        f.click(f.load("/d", "d", film()));
        f.shoot("committed-delivery-" + suffix);
        f.click(f.model->index(0, 0, f.model->index(0, 0, f.model->index(1, 0))));
        f.shoot("committed-cpl-" + suffix);
        QApplication::setPalette(former);
    }
};

STRATACUT_TEST_MAIN(TestManagerWindow)
#include "tst_manager_window.moc"
