#include "audio/IMFAudioGroupDialog.h"
#include "audio/IMFAudioTrackView.h"
#include "audio/IMF_TrackGroupingManager.h"
#include "manager/ManagerFixture.h"
#include "support/ModalAnswer.h"
#include "support/RecordingMediaEngine.h"
#include "support/TestMain.h"

#include "NvCore/NvText.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QScopeGuard>
#include <QStandardItemModel>

using support::ModalAnswer;

namespace
{
QJsonObject profile(const QString& name, const QStringList& tracks, bool fader = false)
{
    return {{"Name", name}, {"Include Master Fader", fader}, {"Tracks", QJsonArray::fromStringList(tracks)}};
}

/// The tracks A1 to A4 of a sequence; tracks of none where `mobId` is unknown to the engine.
struct Tracks {
    explicit Tracks(const QString& mobId = "m") : engine(support::RecordingMediaEngine::installed())
    {
        engine.addSequence("m", "Sequence");
        engine.sequences["m"].tracks = QStringList{"A1", "A2", "A3", "A4"};
        engine.addSequence("silent", "Sequence");
        engine.sequences["silent"].tracks.clear();
        engine.fillAudioGroupingModel(&model, mobId);
        for (int row = 0; row < model.rowCount(); ++row)
            model.setData(model.index(row, 2), "%2 title");
    }

    support::RecordingMediaEngine& engine;
    QStandardItemModel model{0, 3};
};

/// The dialog over these tracks, shown and active.
struct Shown : Tracks {
    explicit Shown(const QJsonArray& groups = {}, const QString& mobId = "m")
        : Tracks(mobId), dialog(nullptr, &model, groups)
    {
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        (void)QTest::qWaitForWindowExposed(&dialog);
    }

    template <typename Widget>
    Widget* child(const char* name) const
    {
        return dialog.findChild<Widget*>(QLatin1String(name));
    }

    IMFAudioGroupComboBox& groups() const { return *child<IMFAudioGroupComboBox>("m_groups"); }

    IMFAudioTrackView& view() const { return *child<IMFAudioTrackView>("m_tracks"); }

    QString remark() const { return child<QLabel>("m_remark")->text(); }

    void press(const char* button) const { QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton); }

    /// Chooses from the opened list.
    void pick(const QString& entry) const
    {
        groups().showPopup();
        QAbstractItemView* list = groups().view();
        list->setCurrentIndex(list->model()->index(groups().findText(entry), 0));
        QTest::keyClick(list, Qt::Key_Return);
    }

    void tick(int row) const
    {
        const QRect cell = view().visualRect(view().model()->index(row, 1));
        QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, cell.center());
    }

    /// Saves the ticked tracks under a name; an empty one keeps what is offered.
    QString saveAs(const QString& name, const std::function<void(QWidget&)>& confirm = WhenOpened::clicking("OK")) const
    {
        QString offered;
        const WhenOpened naming([&](QWidget& asks) {
            auto* line = asks.findChild<QLineEdit*>("GroupName");
            offered = line->text();
            if (!name.isEmpty())
                line->clear();
            QTest::keyClicks(line, name);
            confirm(asks);
        });
        pick("Save As...");
        return offered;
    }

    QString kept() const { return QJsonDocument(dialog.profiles()).toJson(QJsonDocument::Compact); }

    static QString text(const QJsonArray& profiles) { return QJsonDocument(profiles).toJson(QJsonDocument::Compact); }

    IMFAudioGroupDialog dialog;
};
} // namespace

/// Groups of a sequence's tracks: what is offered of them and how a user edits them.
class TestAudioGroups : public QObject
{
    Q_OBJECT
private slots:

    void sourcesAreAllTracksThenEachTrackThenTheGroups_data()
    {
        const support::Rows<QString, QStringList> row;
        row("tracks", "m", {"A1 Mono0 %2 title", "A2 Mono1 %2 title", "A3 Mono2 %2 title", "A4 Mono3 %2 title"});
        row("no sound", "silent", {});
    }

    void sourcesAreAllTracksThenEachTrackThenTheGroups()
    {
        const auto [mobId, tracks] = support::fetched<QString, QStringList>();
        Tracks t(mobId);
        const QJsonArray groups{profile("Music", {"A1"}), profile("Voice", {})};
        IMF_TrackGroupingManager manager(&t.model, groups);
        const QStringList above{"All Active Tracks", "----------"};
        const QStringList below{"----------", "Music", "Voice"};
        QCOMPARE(manager.getSourceList(), above + tracks + below);
        QCOMPARE(manager.getAllActiveTracks(), t.engine.sequences[mobId].tracks);
        QCOMPARE(manager.getAudioMixList(), (QStringList{"Direct", "Stereo", "5.1"}));
        IMF_TrackGroupingManager bare(nullptr, groups);
        QCOMPARE(bare.getSourceList() + bare.getAudioMixList() + bare.getAllActiveTracks(), QStringList());
        QCOMPARE(bare.getTrackGroups(), groups);
    }

    void savingAsOffersTheNextFreeName_data()
    {
        const support::Rows<QStringList, QString, QString> row;
        row("default", {}, "Untitled Group", "Untitled Group.1");
        row("default again", {"Untitled Group.1"}, "Untitled Group", "Untitled Group.2");
        row("plain", {"Mix"}, "Mix", "Mix.1");
        row("numbered", {"Mix.9"}, "Mix.9", "Mix.10");
        row("two points", {"Mix.1.7"}, "Mix.1.7", "Mix.2");
        row("no number behind it", {"Mix.b"}, "Mix.b", "Mix.1");
        row("largest number", {"Mix.2147483647"}, "Mix.2147483647", "Mix.2147483648");
    }

    void savingAsOffersTheNextFreeName()
    {
        const auto [existing, current, offered] = support::fetched<QStringList, QString, QString>();
        QJsonArray groups;
        for (const QString& name : existing)
            groups.append(profile(name, {"A1"}));
        const Shown s(groups);
        s.pick(current);
        QCOMPARE(s.saveAs({}, WhenOpened::clicking("Cancel")), offered);
        QCOMPARE(s.groups().current().name, current);
    }

    void aGroupIsMadeChangedAndKept()
    {
        const Shown s;
        s.tick(2);
        s.tick(0);
        s.saveAs("Music");
        QCOMPARE(s.groups().currentText(), QString("Music"));
        s.pick("Untitled Group");
        QCOMPARE(s.view().selectedTracks(), QStringList());
        s.pick("Music");
        QCOMPARE(s.view().selectedTracks(), (QStringList{"A1", "A3"}));
        s.tick(0);
        QTest::mouseClick(s.child<QCheckBox>("m_includeMasterFader"), Qt::LeftButton, {}, QPoint(8, 8));
        // Leaving out the command: the dialog's own button saves the current group first.
        s.press("m_save");
        QCOMPARE(s.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(s.kept(), Shown::text({profile("Music", {"A3"}, true)}));
    }

    void changesGoWithACancelledNameAndWithAnotherChoice()
    {
        const Shown s({profile("Music", {"A1"}), profile("Voice", {"A2"})});
        s.pick("Music");
        s.tick(3);
        s.saveAs("Other", WhenOpened::clicking("Cancel"));
        QCOMPARE(s.view().selectedTracks(), QStringList{"A1"});
        s.tick(3);
        s.pick("Voice");
        s.press("m_save");
        QCOMPARE(s.kept(), Shown::text({profile("Music", {"A1"}), profile("Voice", {"A2"})}));
    }

    void aNameIsReplacedOnlyAfterAQuestion()
    {
        const Shown s({profile("Music", {"A1"}), profile("Voice", {"A2"})});
        s.tick(3);
        s.saveAs("Voice", [](QWidget& asks) {
            auto* ok = asks.findChild<QPushButton*>("OK");
            for (const auto choice : {QMessageBox::Cancel, QMessageBox::Ok}) {
                QVERIFY(asks.isVisible());
                const ModalAnswer answer(choice);
                QTest::mouseClick(ok, Qt::LeftButton);
                QCOMPARE(answer.text, QString("Replace existing \"Voice\"?"));
                QCOMPARE(answer.icon, QMessageBox::Question);
                QCOMPARE(answer.buttons, QMessageBox::Ok | QMessageBox::Cancel);
            }
        });
        QCOMPARE(s.groups().profiles(), (QJsonArray{profile("Music", {"A1"}), profile("Voice", {"A4"})}));
        QCOMPARE(s.groups().currentText(), QString("Voice"));
    }

    void namesThatMeanSomethingElseAreRefused()
    {
        NvTextTranslation::install(
            [](const QByteArray& key) { return key == "Untitled Group" ? QStringLiteral("Neue Gruppe") : QString(); });
        const auto restore = qScopeGuard([] { NvTextTranslation::install({}); });
        const Shown s;
        for (const char* name :
             {"Untitled Group", "Neue Gruppe", "All Active Tracks", "----------", "A3 Mono2 %2 title"}) {
            s.saveAs(name, [name](QWidget& asks) {
                {
                    const ModalAnswer answer(QMessageBox::Ok);
                    QTest::mouseClick(asks.findChild<QPushButton*>("OK"), Qt::LeftButton);
                    QCOMPARE(answer.text, QString("\"%1\" cannot be used as profile name").arg(QLatin1String(name)));
                }
                QVERIFY(asks.isVisible());
                asks.findChild<QLineEdit*>("GroupName")->setText("  ");
                QTest::keyClick(&asks, Qt::Key_Return);
                QVERIFY(asks.isVisible());
                QTest::keyClick(&asks, Qt::Key_Escape);
            });
        }
        QCOMPARE(s.groups().profiles(), QJsonArray());
    }

    void theDefaultGroupIsProtected()
    {
        const Shown s({profile("Music", {"A1"})});
        for (const auto& [command, said] :
             {std::pair<const char*, const char*>{"Save", "Cannot override default group"},
              {"Remove Current...", "Cannot remove default group"}}) {
            const ModalAnswer answer(QMessageBox::Ok);
            s.pick(command);
            QCOMPARE(answer.text, QString(said));
            QCOMPARE(answer.icon, QMessageBox::Information);
            QCOMPARE(s.groups().currentText(), QString("Untitled Group"));
        }
        s.pick("Music");
        s.pick("Remove Current...");
        QCOMPARE(s.groups().currentText(), QString("Untitled Group"));
        QCOMPARE(s.view().selectedTracks(), QStringList());
        const ModalAnswer answer(QMessageBox::Ok);
        s.press("m_save");
        QCOMPARE(answer.text, QString("Cannot override default group"));
        QCOMPARE(s.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(s.kept(), QString("[]"));
    }

    void closingWithoutSavingAsks()
    {
        const Shown s;
        const auto close = [&s](int way) {
            if (way == 0)
                s.press("m_cancel");
            else if (way == 1)
                QTest::keyClick(s.groups().window(), Qt::Key_Escape);
            else
                s.groups().window()->close();
        };
        for (int way = 0; way < 3; ++way) {
            const ModalAnswer answer(QMessageBox::No);
            close(way);
            QCOMPARE(answer.text, QString("Are you sure you want to close this window without saving?"));
            QCOMPARE(answer.defaultButton, QMessageBox::No);
            QVERIFY(s.dialog.isVisible());
        }
        const ModalAnswer answer(QMessageBox::Yes);
        close(0);
        QVERIFY(!s.dialog.isVisible());
        QCOMPARE(s.dialog.result(), int(QDialog::Rejected));
    }

    void tracksThatHaveGoneAreNamedAndLeftOutOnSaving()
    {
        const Shown s({profile("Music", {"A9", "A2", "a1"})});
        s.pick("Music");
        QCOMPARE(s.view().selectedTracks(), QStringList{"A2"});
        QVERIFY2(s.remark().contains("A9, a1"), qPrintable(s.remark()));
        QCOMPARE(s.groups().profiles(), QJsonArray{profile("Music", {"A9", "A2", "a1"})});
        s.press("m_save");
        QCOMPARE(s.kept(), Shown::text({profile("Music", {"A2"})}));
    }

    void tracksThatAreFilledAnewStayInTheGroup()
    {
        Shown s({profile("Music", {"A1", "A3"})});
        s.pick("Music");
        s.tick(1);
        s.engine.sequences["m"].tracks = QStringList{"A0", "A1", "A2"};
        s.engine.fillAudioGroupingModel(&s.model, "m");
        QCOMPARE(s.view().selectedTracks(), (QStringList{"A1", "A2"}));
        QVERIFY2(s.remark().contains(": A3."), qPrintable(s.remark()));
    }

    void whateverTheArrayHoldsNoGroupIsLost()
    {
        const Shown s({profile("Music", {"A1"}), profile("Music", {"A2"}), 7, QJsonArray(), QJsonObject(),
                       profile("Untitled Group", {"A3"}), QJsonObject{{"Tracks", QJsonArray{1, "A4"}}},
                       QJsonObject{{"Name", "Bare"}, {"Include Master Fader", "yes"}, {"Tracks", "A1"}},
                       profile("All Active Tracks", {"A2"})});
        QCOMPARE(s.groups().profiles(),
                 (QJsonArray{profile("Music", {"A1"}), profile("Music.1", {"A2"}), profile("Untitled Group.1", {"A3"}),
                             profile("Untitled Group.2", {"A4"}), profile("Bare", {}),
                             profile("All Active Tracks.1", {"A2"})}));
        for (const char* part : {"\"Music.1\"", "\"Untitled Group.1\"", "\"Untitled Group.2\"", "left out: 3"})
            QVERIFY2(s.remark().contains(part), qPrintable(s.remark()));
    }

    void withoutASequenceTheListIsEmptyAndSaysSo()
    {
        const ModalAnswer answer(QMessageBox::Ok);
        const Shown s({profile("Music", {"A1"})}, "gone");
        QTRY_VERIFY(answer.answered);
        QCOMPARE(answer.text, QString("Sequence for this CPL was not found. Track list is empty."));
        QCOMPARE(answer.icon, QMessageBox::Warning);
        QCOMPARE(s.view().model()->rowCount(), 0);
        s.pick("Music");
        QVERIFY(s.remark().contains("A1"));
    }

    void hiddenColumnsStayHiddenAndTracksAreFoundAllTheSame()
    {
        support::RecordingMediaEngine& engine = support::RecordingMediaEngine::installed();
        Tracks t;
        engine.hiddenColumn = 0;
        IMFAudioGroupDialog dialog(nullptr, &t.model, {});
        auto* view = dialog.findChild<IMFAudioTrackView*>();
        QCOMPARE(view->model()->columnCount(), 2);
        QCOMPARE(view->selectTracks({"A3", "A8"}), QStringList{"A8"});
        QCOMPARE(view->selectedTracks(), QStringList{"A3"});
        // Whatever cell a screen reader reads, it names the track.
        const QStringList sources = IMF_TrackGroupingManager(&t.model, {}).getSourceList();
        for (int column = 0; column < 2; ++column)
            QCOMPARE(view->model()->index(2, column).data(Qt::AccessibleTextRole).toString(), sources.at(4));
    }

    void everythingIsReachedByKeys()
    {
        const Shown s({profile("Music", {"A1"}), profile("Voice", {"A2"})});
        const auto focus = [] { return QApplication::focusWidget(); };
        QCOMPARE(focus(), &s.groups());
        // Keys and wheel on the closed box move among the groups and stop before the commands.
        for (const int key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_S, Qt::Key_R})
            QTest::keyClick(focus(), Qt::Key(key));
        QCOMPARE(s.groups().current().name, QString("Voice"));
        QTest::keyClick(focus(), Qt::Key_Tab);
        QVERIFY(s.view().hasFocus());
        QTest::keyClick(focus(), Qt::Key_A);
        QCOMPARE(s.view().selectedTracks(), QStringList{"A2"});
        QTest::keyClick(focus(), Qt::Key_Home, Qt::ControlModifier);
        for (const int key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Space})
            QTest::keyClick(focus(), Qt::Key(key));
        QCOMPARE(s.view().selectedTracks(), (QStringList{"A2", "A3"}));
        QStringList visited;
        for (int stop = 0; stop < 4; ++stop) {
            QTest::keyClick(focus(), Qt::Key_Tab);
            visited += focus()->objectName();
        }
        QCOMPARE(visited, (QStringList{"m_includeMasterFader", "m_cancel", "m_save", "m_groups"}));
        QTest::keyClick(focus(), Qt::Key_Backtab);
        QTest::keyClick(focus(), Qt::Key_Space);
        QCOMPARE(s.kept(), Shown::text({profile("Music", {"A1"}), profile("Voice", {"A2", "A3"})}));
    }

    void theSizeIsRemembered()
    {
        {
            Shown s({profile("Music", {"A1"})});
            s.dialog.resize(611, 433);
            s.dialog.hide();
        }
        const Shown again;
        QCOMPARE(again.dialog.size(), QSize(611, 433));
    }
};

STRATACUT_TEST_MAIN(TestAudioGroups)
#include "tst_audio_groups.moc"
