#include "app/Written.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "StratacutUI/AudioMappingWidget.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_TreeView.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "desk/app/Host.h"
#include "desk/app/walk/Hand.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/JobPane.h"
#include "desk/services/SettingsStorage.h"

#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTableView>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>

using desk::app::DeskWindow;
using desk::app::Hand;
using desk::app::Host;
using desk::app::JobRow;
using support::Clip;
using support::ModalAnswer;
using Model = IMF_PackageMgrQtModel;

/// Clicks the button with this text in the next box that opens.
class Choice
{
public:
    explicit Choice(const QString& button)
    {
        Hand::whenOpen([this, button](QWidget* open) {
            text = open->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->text();
            const auto buttons = open->findChildren<QPushButton*>();
            for (QPushButton* one : buttons) {
                if (one->text() == button)
                    return QTest::mouseClick(one, Qt::LeftButton);
            }
        });
    }

    /// What the box said; empty before.
    QString text;
};

/// The desk's window over one profile; every test has a window of its own and deliveries that it makes itself.
class TestDeskWindow : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_clip;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<DeskWindow> m_window;
    QUrl m_openedUrl;

    QString path(const QString& name) const { return m_folder.filePath(name); }

    QString profile() const { return path(QStringLiteral("profile")); }

    Model& model() const { return m_host->model(); }

    QAbstractItemModel& bin() const { return *m_window->bin().view().model(); }

    void trigger(const char* action) const { m_window->action(QLatin1String(action))->trigger(); }

    QPushButton& button(const QObject& parent, const char* name) const
    {
        return *parent.findChild<QPushButton*>(QLatin1String(name));
    }

    void openWindow()
    {
        m_window = std::make_unique<DeskWindow>(m_host.get());
        m_window->show();
        QApplication::setActiveWindow(m_window.get());
    }

    /// A delivery with that sequence of the bin in it; selected.
    QPersistentModelIndex delivery(const QString& name, const QString& sequence = QStringLiteral("reel"))
    {
        trigger("newOriginal");
        const QPersistentModelIndex made = model().index(model().rowCount() - 1, 0);
        model().setData(made, name);
        model().setData(made, QVariant::fromValue(qMakePair(QStringLiteral("Issuer"), QStringLiteral("Me"))),
                        Model::IssuerRole);
        Hand::click(&m_window->bin().view(), bin().index(rowOf(sequence), 0));
        Hand::drag(&m_window->bin().view(), &m_window->tree(), made);
        Hand::click(&m_window->tree(), made);
        return made;
    }

    void addMedia(const QString& file)
    {
        const int before = bin().rowCount();
        m_window->addMedia({file});
        QTRY_COMPARE_WITH_TIMEOUT(bin().rowCount(), before + 1, 60000);
    }

    QString slowClip(const QString& name) const
    {
        Clip slow;
        slow.frames = 24;
        slow.picture = QStringLiteral("testsrc2");
        return support::makeClip(path(name), slow);
    }

    int rowOf(const QString& name) const
    {
        return bin().match(bin().index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0).row();
    }

    /// Chooses the entry that is or begins so from the opened list. @param asked what to do with the dialog that this
    /// opens.
    static void pick(QComboBox& box, const QString& start, const std::function<void(QWidget*)>& asked = {})
    {
        if (start.isEmpty())
            return;
        Hand::click(&box);
        const int exact = box.findText(start);
        const int row = exact < 0 ? box.findText(start, Qt::MatchStartsWith) : exact;
        box.view()->setCurrentIndex(box.model()->index(row, 0));
        if (asked)
            Hand::whenOpen(asked);
        Hand::key(box.view(), Qt::Key_Return);
    }

    /// Names groups of tracks in the dialog.
    void group(const QVector<QPair<QString, QVector<int>>>& groups) const
    {
        Hand::whenOpen([this, groups](QWidget* dialog) {
            auto* tracks = dialog->findChild<QTableView*>(QStringLiteral("m_tracks"));
            auto& box = *dialog->findChild<QComboBox*>(QStringLiteral("m_groups"));
            for (const auto& group : groups) {
                pick(box, QStringLiteral("Untitled Group"));
                for (const int track : group.second)
                    Hand::click(tracks, tracks->model()->index(track, 1));
                pick(box, QStringLiteral("Save As"), [this, name = group.first](QWidget* asks) {
                    Hand::type(asks->findChild<QLineEdit*>(QStringLiteral("GroupName")), name);
                    Hand::click(&button(*asks, "OK"));
                });
            }
            Hand::click(&button(*dialog, "m_save"));
        });
        Hand::click(&button(*m_window, "ATGbtn"));
    }

    /// Chooses source, mode, language, region and kind of a row of the mapping.
    void map(const QWidget& row, const QStringList& choices) const
    {
        pick(*row.findChild<QComboBox*>(QStringLiteral("m_TrackAndGroupCBox")), choices[0]);
        pick(*row.findChild<QComboBox*>(QStringLiteral("m_mapToCBox")), choices[1]);
        Hand::whenOpen([choices](QWidget* dialog) {
            const auto fields = dialog->findChildren<ViewDeckQt::PWDiscrete*>();
            for (const auto* field : fields) {
                const bool isLanguage = field->getId() == QLatin1String("id_mca_language");
                pick(*field->findChild<QComboBox*>(), choices[isLanguage ? 2 : 4]);
            }
            pick(*dialog->findChild<QComboBox*>(QString(), Qt::FindDirectChildrenOnly), choices[3]);
            Hand::key(dialog, Qt::Key_Return);
        });
        Hand::click(&button(row, "m_metadataButton"));
    }

public slots:

    void takeUrl(const QUrl& url) { m_openedUrl = url; }

private slots:

    void initTestCase()
    {
        m_clip = support::makeClip(path(QStringLiteral("reel.mov")), Clip());
        const auto made = support::desk({"new", "original", "From the shell", "--profile", profile()});
        QCOMPARE(made.exitCode, 0);
        QCOMPARE(support::desk({"add", "1.1", m_clip, "--profile", profile()}).exitCode, 0);
        desk::services::SettingsStorage settings(profile() + QStringLiteral("/packages.json"));
        settings.set("VISITED_IMF_SETTINGS_KEY", {path(QStringLiteral("no disk/Harbour"))});
        m_host = std::make_unique<Host>(profile());
        QVERIFY(m_host->claim().ok());
        DeskWindow::prepareLook(m_host->profile());
        {
            ModalAnswer told(QMessageBox::Ok);
            m_host->load();
            QVERIFY2(told.text.contains(path("no disk/Harbour")), qPrintable(told.text));
        }
        m_host->output().setDefaultFolder(m_folder.path());
    }

    void init() { openWindow(); }

    void cleanup() { m_window.reset(); }

    void theWindowShowsWhatTheCommandLineHasMade()
    {
        QCOMPARE(model().index(0, 0).data().toString(), QStringLiteral("From the shell"));
        QCOMPARE(bin().rowCount(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(!bin().index(0, 0).data(Qt::DecorationRole).value<QImage>().isNull(), 60000);
        // The clip is even grey: its picture is.
        const QColor middle = bin().index(0, 0).data(Qt::DecorationRole).value<QImage>().pixelColor(100, 60);
        QVERIFY(std::abs(middle.red() - middle.blue()) <= 2 && std::abs(middle.red() - 126) < 8);
    }

    void droppedFilesFillTheBinAndOthersAreToldOf()
    {
        const QString good = support::makeClip(path(QStringLiteral("another.mov")), Clip());
        QFile bad(path(QStringLiteral("letter.txt")));
        QVERIFY(bad.open(QIODevice::WriteOnly) && bad.write("no media") > 0);
        bad.close();
        QMimeData files;
        files.setUrls({QUrl::fromLocalFile(bad.fileName()), QUrl::fromLocalFile(good)});
        ModalAnswer told(QMessageBox::Ok);
        // A file manager that offers to move its files keeps them.
        QVERIFY(Hand::drop(&m_window->bin(), files, QPoint(50, 200), Qt::CopyAction));
        QTRY_VERIFY_WITH_TIMEOUT(told.answered, 60000);
        QVERIFY2(told.text.contains(bad.fileName()), qPrintable(told.text));
        QCOMPARE(bin().rowCount(), 2);
        Hand::click(&m_window->bin().view(), bin().index(rowOf(QStringLiteral("another")), 0));
        QTest::keyClick(&m_window->bin().view(), Qt::Key_Delete);
        QCOMPARE(bin().rowCount(), 1);
        QVERIFY(QFileInfo::exists(good));
    }

    void aDragLeavesTheBinAsItIs()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Dragged"));
        QCOMPARE(model().rowCount(made), 1);
        QCOMPARE(model().rowCount(model().index(0, 0, made)), 1);
        QCOMPARE(bin().rowCount(), 1);
        QVERIFY(m_host->library().exists(bin().index(0, 0).data(Qt::UserRole + 1).toString()));
    }

    void theKeyboardAddsWhatTheMouseDrags()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Typed"));
        const QModelIndex imp = model().index(0, 0, made);
        m_window->tree().select(model().index(0, 0, imp));
        trigger("addSequence");
        QCOMPARE(model().rowCount(imp), 2);
        m_window->tree().select(made);
        trigger("addSequence");
        QCOMPARE(model().rowCount(made), 2);
        trigger("newImp");
        QCOMPARE(model().rowCount(made), 3);
    }

    void noTwoActionsShareAKey()
    {
        QStringList keys;
        const auto actions = m_window->findChildren<QAction*>();
        for (const QAction* action : actions) {
            if (!action->shortcut().isEmpty())
                keys += action->shortcut().toString();
        }
        QVERIFY(keys.size() > 12);
        QCOMPARE(keys.removeDuplicates(), 0);
        const auto menus = m_window->menuBar()->findChildren<QMenu*>();
        for (const QMenu* menu : menus) {
            QStringList letters;
            const auto entries = menu->actions();
            for (const QAction* entry : entries)
                letters += entry->isSeparator() ? QString() : QKeySequence::mnemonic(entry->text()).toString();
            letters.removeAll({});
            QVERIFY2(letters.removeDuplicates() == 0, qPrintable(menu->title()));
        }
    }

    void theFocusIsSeenOnTheSelectionUpToItsEnd()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Seen"));
        for (const char* skin : {"light", "dark"}) {
            trigger(skin);
            const QRect end = m_window->tree().visualRect(made.sibling(made.row(), 1));
            const QColor frame = m_window->tree().viewport()->grab(end).toImage().pixelColor(end.width() - 2, 12);
            QVERIFY(frame.lightness() > m_window->palette().highlight().color().lightness() + 60);
        }
    }

    void aChangeIsKeptBeforeAnybodyQuits()
    {
        QSignalSpy saved(m_window.get(), &DeskWindow::saved);
        delivery(QStringLiteral("Kept meanwhile"));
        QVERIFY(saved.wait(2 * DeskWindow::saveDelay + 5000));
        // What a crash at this moment would leave.
        const QString copy = path(QStringLiteral("copy"));
        QVERIFY(QDir().mkpath(copy));
        for (const char* file : {"/packages.json", "/bin.json"})
            QVERIFY(QFile::copy(profile() + QLatin1String(file), copy + QLatin1String(file)));
        const auto listed = support::desk({"list", "--profile", copy});
        QVERIFY2(listed.output.contains(QLatin1String("\"Kept meanwhile\"")), qPrintable(listed.output));
        const auto refused = support::desk({"list", "--profile", profile()});
        QCOMPARE(refused.exitCode, 1);
    }

    void aKilledDeskLeavesItsBinAndItsProfileFree()
    {
        const QStringList killed{"--profile", path(QStringLiteral("killed"))};
        QProcess process;
        process.start(QStringLiteral(STRATACUT_DESK), QStringList{"window", m_clip} + killed);
        const auto isKept = [this] {
            QFile file(path(QStringLiteral("killed/bin.json")));
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("reel.mov");
        };
        QTRY_VERIFY_WITH_TIMEOUT(isKept(), 60000);
        QCOMPARE(process.state(), QProcess::Running);
        process.kill();
        QVERIFY(process.waitForFinished());
        const auto bin = support::desk(QStringList{"bin"} + killed);
        QCOMPARE(bin.exitCode, 0);
        QVERIFY(bin.output.startsWith(QLatin1String("reel")));
    }

    void anExportThatEndsWellOffersItsFolder()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Written"));
        Hand::click(&button(*m_window, "m_burn"));
        QCOMPARE(m_window->jobs().rows().size(), 1);
        JobRow* job = m_window->jobs().rows().first();
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), JobRow::State::Done, 60000);
        QCOMPARE(Model::StatusFromIndex(made), IMF_PackageMgr::Committed);
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "takeUrl");
        Hand::click(&button(*job, "m_openFolder"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(m_openedUrl.toLocalFile(), path(QStringLiteral("Written")));
        // A written IMP takes no more, and the desk says where sequences can go.
        m_window->tree().select(model().index(0, 0, made));
        ModalAnswer told(QMessageBox::Ok);
        trigger("addSequence");
        QVERIFY(told.text.contains(QLatin1String("takes no sequences")));
        Hand::click(&button(m_window->jobs(), "m_clearJobs"));
        QCOMPARE(m_window->jobs().rows().size(), 0);
    }

    void whatAnExploredDeliveryMissesIsAskedFor()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Whole"));
        Hand::click(&button(*m_window, "m_burn"));
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(made), IMF_PackageMgr::Committed, 60000);
        const QString part = path(QStringLiteral("Part"));
        support::run(QStringLiteral("cp"), {"-r", path(QStringLiteral("Whole")), part});
        const QStringList files = QDir(part).entryList({"*.mxf"});
        QVERIFY(!files.isEmpty());
        for (const QString& file : files)
            QVERIFY(QFile::remove(part + '/' + file));
        // Forgotten, without a question: its files stay.
        m_window->tree().select(made);
        trigger("remove");
        QVERIFY(!made.isValid());
        const int rows = model().rowCount();
        support::FolderAnswer explored(part);
        ModalAnswer load(QMessageBox::Yes);
        support::FolderAnswer whole(path(QStringLiteral("Whole")));
        trigger("explore");
        QTRY_VERIFY_WITH_TIMEOUT(whole.answered, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(model().rowCount(), rows + 2, 60000);
        QVERIFY(load.text.contains(QLatin1String("dependent IMF deliverable")));
        QVERIFY(!m_host->controller().hasMissingAssets(model().index(rows, 0)));
    }

    void anExportThatFailsShowsWhy()
    {
        const QString file = support::makeClip(path(QStringLiteral("broken.mov")), Clip());
        addMedia(file);
        const QPersistentModelIndex made = delivery(QStringLiteral("Failing"), QStringLiteral("broken"));
        QFile media(file);
        QVERIFY(media.open(QIODevice::WriteOnly) && media.write("gone bad") > 0);
        media.close();
        ModalAnswer told(QMessageBox::Ok);
        Hand::click(&button(*m_window, "m_burn"));
        JobRow* job = m_window->jobs().rows().value(0);
        QVERIFY(job);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), JobRow::State::Failed, 60000);
        QTRY_VERIFY_WITH_TIMEOUT(told.answered, 60000);
        QVERIFY2(told.text.contains(file), qPrintable(told.text));
        QCOMPARE(Model::StatusFromIndex(made), IMF_PackageMgr::Uncommitted);
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Failing"))));
    }

    void quittingDuringAnExportCancelsItWhenAsked()
    {
        addMedia(slowClip(QStringLiteral("slow.mov")));
        const QPersistentModelIndex made = delivery(QStringLiteral("Cancelled"), QStringLiteral("slow"));
        Hand::click(&button(*m_window, "m_burn"));
        JobRow* job = m_window->jobs().rows().value(0);
        QVERIFY(job);
        {
            Choice stay(QStringLiteral("Do Not Quit"));
            QVERIFY(!m_window->close());
        }
        QVERIFY(!job->isOver());
        Choice quit(QStringLiteral("Cancel and Quit"));
        m_window->close();
        ModalAnswer told(QMessageBox::Ok);
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isVisible(), 60000);
        QCOMPARE(job->state(), JobRow::State::Cancelled);
        QCOMPARE(Model::StatusFromIndex(made), IMF_PackageMgr::Uncommitted);
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Cancelled"))));
    }

    void quittingWhenFinishedWaitsForTheExport()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Awaited"));
        Hand::click(&button(*m_window, "m_burn"));
        Choice quit(QStringLiteral("Quit When Finished"));
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isVisible(), 60000);
        QCOMPARE(Model::StatusFromIndex(made), IMF_PackageMgr::Committed);
    }

    void theMenuExportsANewImpOfAWrittenDelivery()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Grows"));
        trigger("export");
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(made), IMF_PackageMgr::Committed, 60000);
        Hand::drag(&m_window->bin().view(), &m_window->tree(), made);
        const QPersistentModelIndex imp = model().index(1, 0, made);
        Hand::click(&m_window->tree(), imp);
        QVERIFY(!button(*m_window, "m_burn").isEnabled());
        trigger("export");
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(model().index(1, 0, made)), IMF_PackageMgr::Committed, 60000);
        QCOMPARE(QDir(path(QStringLiteral("Grows"))).entryList({"PKL_*.xml"}).size(), 2);
    }

    void aFolderThatHoldsADeliveryIsNotTaken()
    {
        const QPersistentModelIndex written = delivery(QStringLiteral("There"));
        trigger("export");
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(written), IMF_PackageMgr::Committed, 60000);
        QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("elsewhere/Second/held")));
        const QPersistentModelIndex made = delivery(QStringLiteral("Second"));
        support::FolderAnswer inside(path(QStringLiteral("There")));
        ModalAnswer refused(QMessageBox::Ok);
        support::FolderAnswer taken(path(QStringLiteral("elsewhere")));
        ModalAnswer again(QMessageBox::Cancel);
        trigger("chooseFolder");
        QVERIFY2(refused.text.contains(path("There") + ": a delivery cannot be made inside"), qPrintable(refused.text));
        QVERIFY2(again.text.contains(path("elsewhere")), qPrintable(again.text));
        QCOMPARE(made.data(Model::PathRole).toString(), path(QStringLiteral("Second")));
    }

    void aWindowThatGoesBeforeItsExportLosesNothing()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Left alone"));
        Hand::click(&button(*m_window, "m_burn"));
        QCOMPARE(m_window->jobs().active(), 1);
        m_window.reset();
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(made), IMF_PackageMgr::Committed, 60000);
    }

    void aDeliveryThatNothingKeepsIsNotLetGoInSilence()
    {
        trigger("newOriginal");
        const int rows = model().rowCount();
        {
            Choice stay(QStringLiteral("Do Not Quit"));
            QVERIFY(!m_window->close());
            QVERIFY2(stay.text.contains(QLatin1String("holds no IMP")), qPrintable(stay.text));
        }
        {
            Choice keep(QStringLiteral("Keep"));
            QTest::keyClick(&m_window->tree(), Qt::Key_Delete);
            QCOMPARE(model().rowCount(), rows);
        }
        Choice remove(QStringLiteral("Remove"));
        trigger("remove");
        QCOMPARE(model().rowCount(), rows - 1);
        QVERIFY(m_window->close());
    }

    void aNameThatIsBeingTypedIsKeptAsTheWindowCloses()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Before"));
        const auto fields = m_window->findChildren<QLineEdit*>();
        const auto name = std::find_if(fields.begin(), fields.end(), [](const QLineEdit* field) {
            return field->isVisible() && field->text() == QLatin1String("Before");
        });
        QVERIFY(name != fields.end());
        Hand::type(*name, QStringLiteral("After"));
        QCOMPARE(made.data().toString(), QStringLiteral("Before"));
        QVERIFY(m_window->close());
        QFile saved(profile() + QStringLiteral("/packages.json"));
        QVERIFY(saved.open(QIODevice::ReadOnly) && saved.readAll().contains("After"));
    }

    void whatIsRenamedIsADeliveryInSight()
    {
        const QPersistentModelIndex made = delivery(QStringLiteral("Named"));
        m_window->tree().select(model().index(0, 0, made));
        QVERIFY(!m_window->action(QStringLiteral("rename"))->isEnabled());
        m_window->tree().select(made);
        trigger("focusTranscript");
        trigger("rename");
        const auto* editor = m_window->tree().findChild<QLineEdit*>();
        QVERIFY(editor && editor->isVisible());
    }

    void anAbsentDeliveryIsForgottenOnceTheUserSaysSo()
    {
        for (const QString& answer : {QStringLiteral("Keep"), QStringLiteral("Forget")}) {
            QVERIFY(m_window->action(QStringLiteral("forgetAbsent"))->isEnabled());
            Choice choice(answer);
            trigger("forgetAbsent");
            QVERIFY2(choice.text.contains(path("no disk/Harbour")), qPrintable(choice.text));
        }
        QVERIFY(!m_window->action(QStringLiteral("forgetAbsent"))->isEnabled());
        QVERIFY(m_host->save().ok());
        QFile saved(profile() + QStringLiteral("/packages.json"));
        QVERIFY(saved.open(QIODevice::ReadOnly) && !saved.readAll().contains("Harbour"));
    }

    void workThatCannotBeSavedIsNotLetGoInSilence()
    {
        delivery(QStringLiteral("Unsaved"));
        const QString file = profile() + QStringLiteral("/packages.json");
        QVERIFY(!QFile::exists(file) || QFile::remove(file));
        QVERIFY(QDir().mkpath(file));
        {
            Choice stay(QStringLiteral("Do Not Quit"));
            QVERIFY(!m_window->close());
            QVERIFY2(stay.text.contains(file), qPrintable(stay.text));
        }
        QVERIFY(QDir().rmdir(file));
        QVERIFY(m_window->close());
        QVERIFY(support::fileBytes(file).contains("\"Unsaved\""));
    }

    void soundIsMappedUnlessTheUserTurnsItOff()
    {
        const char variable[] = "TGL_Stratacut_IMFMultipleAudioMix";
        for (const bool off : {false, true}) {
            if (off)
                qputenv(variable, "off");
            openWindow();
            QCOMPARE(m_window->findChild<QPushButton*>(QStringLiteral("ATGbtn")) == nullptr, off);
        }
        qunsetenv(variable);
    }

    void theMappingThatIsShownIsTheOneThatIsWrittenUnasked()
    {
        Clip eight;
        eight.tracks = 8;
        addMedia(support::makeClip(path(QStringLiteral("eight.mov")), eight));
        const QPersistentModelIndex made = delivery(QStringLiteral("Sound"), QStringLiteral("eight"));
        Hand::click(&m_window->tree(), model().index(0, 0, model().index(0, 0, made)));
        const auto* mapping = m_window->findChild<AudioMappingWidget*>();
        const QJsonArray rows = mapping->getValue().toJsonObject()["AudioMapping"].toArray();
        QStringList shown;
        for (const QJsonValue& row : rows)
            shown += row["SourceTracksGroups"].toString() + ' ' + row["MixMode"].toString();
        QCOMPARE(shown, QStringList({"A1-A6 5.1", "A7-A8 Stereo"}));
    }

    void threeMixesOfSixteenTracksAreMadeByHand()
    {
        Clip sixteen;
        sixteen.tracks = 16;
        const QString media = support::makeClip(path(QStringLiteral("sixteen.mov")), sixteen);
        addMedia(media);
        const QPersistentModelIndex made = delivery(QStringLiteral("Mixes"), QStringLiteral("sixteen"));
        Hand::click(&m_window->tree(), model().index(0, 0, model().index(0, 0, made)));
        const QVector<int> six{10, 11, 12, 13, 14, 15};
        group({{"Dialogue", {0, 1}}, {"M&E", {2, 3}}, {"Full mix", six}});
        const auto* mapping = m_window->findChild<AudioMappingWidget*>();
        // Four files are proposed.
        Hand::click(&button(*mapping, "m_minusButton"));

        const struct {
            QStringList choices;
            QVector<int> tracks;
            QString layout;
            QString language;
        } mixes[]{{{"Dialogue", "Stereo", "en (", "AU", "DXC"}, {0, 1}, "L R", "English (AU)"},
                  {{"M&E", "Stereo", "zxx (", "", "MEC"}, {2, 3}, "L R", "zxx"},
                  {{"Full mix", "5.1", "en (", "GB", "PRM"}, six, "L R C LFE Ls Rs", "English (GB)"}};

        for (int row = 0; row < 3; ++row)
            map(*mapping->layout()->itemAt(row)->widget(), mixes[row].choices);
        Hand::click(&m_window->tree(), made);
        Hand::click(&button(*m_window, "m_burn"));
        QTRY_COMPARE_WITH_TIMEOUT(Model::StatusFromIndex(made), IMF_PackageMgr::Committed, 60000);
        const QStringList files = support::soundFiles(path(QStringLiteral("Mixes")));
        QCOMPARE(files.size(), 3);
        for (int file = 0; file < 3; ++file) {
            const QVector<qint32> written = support::samplesOf({"-i", files[file]});
            const QVector<int>& tracks = mixes[file].tracks;
            for (int channel = 0; channel < tracks.size(); ++channel) {
                const auto source =
                    support::samplesOf({"-i", media, "-map", "0:a:" + QString::number(tracks[channel])});
                for (int i = 0; i < 4000; ++i)
                    QCOMPARE(written.value(i * tracks.size() + channel), source[i]);
            }
            const QString facts = QString::fromUtf8(support::run("mediainfo", {files[file]})).simplified();
            QVERIFY2(facts.contains("Channel layout : " + mixes[file].layout + " Sampling"), qPrintable(facts));
            QVERIFY2(facts.contains("Language : " + mixes[file].language + " "), qPrintable(facts));
            QVERIFY2(facts.contains("Content Kind : " + mixes[file].choices.last()), qPrintable(facts));
        }
    }

    void theLookSurvivesARestart()
    {
        m_window->resize(1100, 700);
        auto* across = m_window->findChild<QSplitter*>(QStringLiteral("m_acrossSplitter"));
        across->setSizes({400, 700});
        trigger("light");
        const QList<int> sizes = across->sizes();
        const QMap<QString, QSize> dialogs{{QStringLiteral("Some dialog"), QSize(321, 234)}};
        ViewDeckQt::ManagedWindow::setRememberedSizes(dialogs);
        QVERIFY(m_window->close());
        ViewDeckQt::ManagedWindow::setRememberedSizes({});
        Palette::PaletteManager::Instance().setSkin(Palette::Skin::Dark);
        DeskWindow::prepareLook(m_host->profile());
        openWindow();
        QCOMPARE(m_window->size(), QSize(1100, 700));
        QCOMPARE(m_window->findChild<QSplitter*>(QStringLiteral("m_acrossSplitter"))->sizes(), sizes);
        QCOMPARE(ViewDeckQt::ManagedWindow::rememberedSizes(), dialogs);
        QCOMPARE(Palette::PaletteManager::Instance().skin(), Palette::Skin::Light);
        QVERIFY(m_window->action(QStringLiteral("light"))->isChecked());
        trigger("dark");
    }
};

STRATACUT_TEST_MAIN(TestDeskWindow)
#include "tst_desk_window.moc"
