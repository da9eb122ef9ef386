#include "StratacutUI/STT_MissingTranscriptWidget.h"
#include "TranscriptFixture.h"
#include "support/TestMain.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBlock>

using support::RecordingTranscriptInfo;
using support::segmentOf;

namespace
{
/// Segments 0 and 2 are Ada's, 1 is that of a speaker without a name.
RecordingTranscriptInfo::Material conversation()
{
    RecordingTranscriptInfo::Material material;
    material.segments = {segmentOf(0, 0, QStringLiteral("first words"), 1),
                         segmentOf(1, 2000, QStringLiteral("second"), 2),
                         segmentOf(2, 4000, QStringLiteral("third"), 1)};
    material.speakers = {{"1", "", "Ada"}, {"2", "", ""}, {"-3", "", "Tom & Co"}};
    return material;
}

RecordingTranscriptInfo::Material longTalk(int segments)
{
    RecordingTranscriptInfo::Material material;
    material.segments = support::transcriptOf(segments, 10);
    return material;
}

QStringList textsOf(const QMenu* menu)
{
    QStringList texts;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions)
        texts += action->isSeparator() ? QStringLiteral("-") : action->text();
    return texts;
}

QStringList requests(RecordingTranscriptInfo& info)
{
    return info.takeCalls().filter(QRegularExpression(QStringLiteral("peaker")));
}
} // namespace

/// What stands beside the text of the lines, used with real events.
class TestTranscriptLines : public QObject
{
    Q_OBJECT

private slots:

    void aSpeakerFieldTakesOrDropsWhatWasTyped_data()
    {
        const support::Rows<QString, int, QStringList, QStringList> row;
        const QStringList none;
        const QStringList former{"Ada", "Speaker 2", "Ada"};
        row("Return", " Eve ", int(Qt::Key_Return), {"storeSpeakerName(1, Eve)"}, {"Eve", "Speaker 2", "Eve"});
        row("Enter", "Eve", int(Qt::Key_Enter), {"storeSpeakerName(1, Eve)"}, {"Eve", "Speaker 2", "Eve"});
        row("focus loss", "Eve", 0, {"storeSpeakerName(1, Eve)"}, {"Eve", "Speaker 2", "Eve"});
        row("blanks", "  ", int(Qt::Key_Return), {"storeSpeakerName(1, )"}, {"Speaker 1", "Speaker 2", "Speaker 1"});
        row("the same", "Ada ", int(Qt::Key_Return), none, former);
        row("Escape", "Eve", int(Qt::Key_Escape), none, former);
    }

    void aSpeakerFieldTakesOrDropsWhatWasTyped()
    {
        const auto [typed, key, asked, names] = support::fetched<QString, int, QStringList, QStringList>();
        const ShownTranscript shown(conversation());
        STT_SpeakerTextEdit* field = shown.speaker(0);
        QTest::keyClicks(field, QStringLiteral("ignored"));
        QTest::mouseDClick(field->viewport(), Qt::LeftButton);
        QVERIFY(field->hasFocus() && !field->isReadOnly());
        QTest::keyClicks(field, typed);
        if (key)
            QTest::keyClick(field, Qt::Key(key));
        else
            shown.text().setFocus();
        QVERIFY(field->isReadOnly() && !field->textCursor().hasSelection());
        QVERIFY(shown.text().hasFocus());
        QCOMPARE(requests(*shown.info), asked);
        QCOMPARE(speakers(shown), names);
    }

    void aFieldTakesPlainTextOnly()
    {
        const ShownTranscript shown(conversation());
        STT_SpeakerTextEdit* field = shown.speaker(1);
        field->beginEditing();
        auto* picture = new QMimeData;
        picture->setImageData(QImage(2, 2, QImage::Format_RGB32));
        QGuiApplication::clipboard()->setMimeData(picture);
        field->paste();
        QCOMPARE(field->toPlainText(), QStringLiteral("Speaker 2"));
        auto* rich = new QMimeData;
        rich->setHtml(QStringLiteral("<b>Eve</b>"));
        rich->setText(QStringLiteral("Eve\nSmith"));
        QGuiApplication::clipboard()->setMimeData(rich);
        QTest::keySequence(field, QKeySequence::Paste);
        QCOMPARE(field->toPlainText(), QStringLiteral("Eve Smith"));
        QVERIFY(field->currentCharFormat().fontWeight() != QFont::Bold);
    }

    void theSpeakerMenuListsWhoCanBeMeant()
    {
        const ShownTranscript shown(conversation());
        openMenu(shown, 1);
        QMenu* menu = STT_TranscriptManagerWindow::GetSpeakerMenu();
        QCOMPARE(textsOf(menu), (QStringList{"Identify Speaker", "Correct Speaker ID"}));
        QCOMPARE(textsOf(menu->actions().at(0)->menu()),
                 (QStringList{"Ada", "Tom && Co", "-", "Clear Name", "Rename"}));
        QCOMPARE(textsOf(menu->actions().at(1)->menu()),
                 (QStringList{"Ada", "Speaker 2", "Tom && Co", "-", "Add New Speaker"}));
        menu->close();
    }

    void theSpeakerMenuAsksTheHost_data()
    {
        const support::Rows<int, QString, QStringList, QStringList> row;
        const QStringList former{"Ada", "Speaker 2", "Ada"};
        row("identify", 1, "0/Tom && Co", {"storeSpeakerName(2, Tom & Co)"}, {"Ada", "Tom & Co", "Ada"});
        row("identify as before", 2, "0/Ada", {}, former);
        row("clear", 2, "0/Clear Name", {"storeSpeakerName(1, )"}, {"Speaker 1", "Speaker 2", "Speaker 1"});
        row("correct", 2, "1/Speaker 2", {"correctSpeaker(2, 2)"}, {"Ada", "Speaker 2", "Speaker 2"});
        row("a negative one", 0, "1/Tom && Co", {"correctSpeaker(0, -3)"}, {"Tom & Co", "Speaker 2", "Ada"});
        row("new", 2, "1/Add New Speaker", {"addSpeaker()", "correctSpeaker(2, 3)"}, {"Ada", "Speaker 2", "Speaker 3"});
    }

    void theSpeakerMenuAsksTheHost()
    {
        const auto [segment, choice, asked, names] = support::fetched<int, QString, QStringList, QStringList>();
        const ShownTranscript shown(conversation());
        openMenu(shown, segment);
        choose(choice);
        QCOMPARE(requests(*shown.info), asked);
        QCOMPARE(speakers(shown), names);
    }

    void theMenuKeyOpensTheMenuForTheLineOfTheBoldWord()
    {
        const ShownTranscript shown(conversation());
        shown.window->followMonitor(60, false);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {});
        QCoreApplication::sendEvent(&shown.text(), &event);
        QVERIFY(STT_TranscriptManagerWindow::GetSpeakerMenu()->isVisible());
        choose(QStringLiteral("0/Ada"));
        QCOMPARE(requests(*shown.info), QStringList{"storeSpeakerName(2, Ada)"});
    }

    void renameEditsTheLineOfTheMenuAlsoWhenItIsNotToBeSeen()
    {
        const ShownTranscript shown(longTalk(500));
        trigger(shown, QStringLiteral("Show Speaker"));
        openMenu(shown, 3);
        QScrollBar* bar = shown.text().verticalScrollBar();
        bar->setValue(bar->maximum());
        QVERIFY(!shown.entry(3));
        choose(QStringLiteral("0/Rename"));
        QVERIFY(shown.entry(3));
        QVERIFY(shown.speaker(3)->isEditing() && shown.speaker(3)->hasFocus());
        QVERIFY(!shown.speaker(3)->viewport()->visibleRegion().isEmpty());
    }

    void linesShareFewWidgetsAndEachShowsItsOwnSegment()
    {
        const ShownTranscript shown(longTalk(20000));
        QScrollBar* bar = shown.text().verticalScrollBar();
        QSet<int> seen;
        for (int round = 0; round <= 40; ++round) {
            bar->setValue(int(qint64(bar->maximum()) * round / 40));
            QCoreApplication::processEvents();
            const QList<STT_EntryWidget*> entries = shown.window->entryWidgets();
            QVERIFY(!entries.isEmpty());
            for (STT_EntryWidget* entry : entries) {
                seen += entry->segment();
                const int key = shown.info->source.segments[size_t(entry->segment())].speakerKey;
                QCOMPARE(entry->speakerEdit()->toPlainText(), QString::fromStdString(shown.info->speakerText(key)));
                const QTextBlock block = shown.text().document()->findBlockByNumber(
                    shown.window->getBlockNumberForSegment(entry->segment()));
                const int apart = entry->y() - shown.text().blockRect(block).top();
                QVERIFY2(std::abs(apart) <= 2, qPrintable(QString::number(apart)));
            }
        }
        QVERIFY(seen.size() > 500);
        const int live = shown.window->findChildren<STT_EntryWidget*>().size();
        QVERIFY2(live < 60, qPrintable(QString::number(live)));
    }

    void aNameAndAVisibilityHoldForLinesThatComeIntoViewLater()
    {
        const ShownTranscript shown(longTalk(2000));
        shown.window->SpeakerNameChangedSlot(0, QStringLiteral("Eve"));
        trigger(shown, QStringLiteral("Show Timecode"));
        shown.text().verticalScrollBar()->setValue(shown.text().verticalScrollBar()->maximum() / 2);
        const QList<STT_EntryWidget*> entries = shown.window->entryWidgets();
        QVERIFY(!entries.isEmpty());
        for (STT_EntryWidget* entry : entries) {
            QVERIFY(entry->findChild<QLabel*>()->isHidden());
            if (entry->segment() % 4 == 0)
                QCOMPARE(entry->speakerEdit()->toPlainText(), QStringLiteral("Eve"));
        }
    }

    void whatIsBeingTypedSurvivesScrollingAndARebuild()
    {
        const ShownTranscript shown(longTalk(2000));
        STT_SpeakerTextEdit* field = shown.speaker(2);
        field->beginEditing();
        QTest::keyClicks(field, QStringLiteral("Ev"));
        shown.text().verticalScrollBar()->setValue(5000);
        shown.window->TranscriptInfoChangedSlot(true);
        QCoreApplication::processEvents();
        QVERIFY(field->isEditing());
        QTest::keyClicks(field, QStringLiteral("e"));
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(requests(*shown.info), QStringList{"storeSpeakerName(3, Eve)"});
        // Not what was typed for a segment whose place has another one now.
        shown.info->calls.clear();
        shown.text().verticalScrollBar()->setValue(0);
        shown.speaker(2)->beginEditing();
        QTest::keyClicks(shown.speaker(2), QStringLiteral("Tom"));
        shown.info->source.segments.erase(shown.info->source.segments.begin());
        shown.window->TranscriptInfoChangedSlot(true);
        QVERIFY(!shown.speaker(2)->isEditing());
        QVERIFY(requests(*shown.info).isEmpty());
    }

    void aClipWithoutTranscriptSaysHowFarItIs()
    {
        RecordingTranscriptInfo::Material material = conversation();
        material.missing = {{"guid-a", "A.mov", 0, STT_Transcription::Missing, 0, {}},
                            {"guid-b", "B.mov", 3000, STT_Transcription::Running, 40, {}},
                            {"guid-c", "C.mov", 9000, STT_Transcription::Failed, 0, "C.mov is gone."},
                            {"guid-d", "D.mov", 9000, STT_Transcription::Running, -1, {}}};
        const ShownTranscript shown(std::move(material));
        const QList<STT_MissingTranscriptWidget*> lines = shown.window->missingWidgets();
        QCOMPARE(lines.size(), 4);
        const QVector<QPair<QString, bool>> expected{{"Not transcribed yet", true},
                                                     {"Transcribing, 40 %", false},
                                                     {"C.mov is gone.", true},
                                                     {"Getting ready to transcribe", false}};
        for (int line = 0; line < lines.size(); ++line) {
            const QStringList texts = labelsIn(*lines[line]);
            QVERIFY2(texts.contains(expected[line].first), qPrintable(texts.join('|')));
            QCOMPARE(lines[line]->findChild<QPushButton*>()->isVisible(), expected[line].second);
        }
        QTest::mouseClick(lines[2]->findChild<QPushButton*>(), Qt::LeftButton);
        QCOMPARE(shown.info->calls.filter(QStringLiteral("transcribe(")), QStringList{"transcribe(guid-c)"});
    }

    void aLargerFontOfTheWindowLeavesTheTextItsOwn()
    {
        RecordingTranscriptInfo::Material material = conversation();
        material.missing = {{"guid-a", "A.mov", 0, STT_Transcription::Missing, 0, {}}};
        const ShownTranscript shown(std::move(material));
        const QFont own = shown.text().document()->defaultFont();
        shown.window->setFont(QFont(QStringLiteral("DejaVu Sans"), 28));
        QCOMPARE(shown.text().document()->defaultFont(), own);
        const STT_EntryWidget* entry = shown.window->entryWidgets().constFirst();
        const auto* timecode = entry->findChild<QLabel*>();
        QVERIFY(timecode->width() >= timecode->sizeHint().width());
        QVERIFY(entry->sizeHint().width() <= entry->width() + entry->contentsMargins().right() + 20);
        const STT_MissingTranscriptWidget* clip = shown.window->missingWidgets().constFirst();
        QVERIFY2(clip->height() >= clip->sizeHint().height(), qPrintable(QString::number(clip->height())));
    }

    void progressIsShownWithoutANewText()
    {
        RecordingTranscriptInfo::Material material = conversation();
        material.missing = {{"guid", "A.mov", 0, STT_Transcription::Running, 40, {}}};
        const ShownTranscript shown(material);
        QSignalSpy replaced(&shown.text(), &STT_TranscriptTextEdit::aboutToBeReplaced);
        shown.info->source.missing[0].percent = 41;
        shown.window->TranscriptInfoChangedSlot(true);
        QVERIFY(labelsIn(*shown.window->missingWidgets().constFirst()).contains("Transcribing, 41 %"));
        QVERIFY(replaced.isEmpty());
        shown.info->source.segments[2].text = "other";
        shown.window->TranscriptInfoChangedSlot(true);
        QCOMPARE(replaced.size(), 1);
        QCOMPARE(shown.text().document()->lastBlock().text(), QStringLiteral("other"));
    }

    void anotherTranscriptClosesTheSpeakerMenu()
    {
        const ShownTranscript shown(conversation());
        QContextMenuEvent key(QContextMenuEvent::Keyboard, {});
        QCoreApplication::sendEvent(&shown.text(), &key);
        QMenu* menu = STT_TranscriptManagerWindow::GetSpeakerMenu();
        QTRY_VERIFY(menu->isVisible());
        shown.window->TranscriptInfoChangedSlot(true); // a speaker got a name
        QVERIFY(menu->isVisible());
        shown.info->source.segments.erase(shown.info->source.segments.begin());
        shown.window->TranscriptInfoChangedSlot(true);
        QVERIFY(!menu->isVisible());
        shown.window->AddNewSpeakerAction();
        QVERIFY(requests(*shown.info).isEmpty());
    }

    void clipsAloneNeedNoOtherLine()
    {
        RecordingTranscriptInfo::Material material;
        material.missing = {{"guid-a", "A.mov", 0, STT_Transcription::Missing, 0, {}}};
        const ShownTranscript shown(std::move(material));
        QCOMPARE(shown.window->missingWidgets().size(), 1);
        QVERIFY(shown.window->missingWidgets().constFirst()->y() < 20);
        QVERIFY(!labelsIn(*shown.window).contains(QStringLiteral("Empty transcript")));
        for (const bool online : {false, true}) {
            shown.info->databaseOnline = online;
            shown.window->TranscriptInfoChangedSlot(true);
            QCOMPARE(shown.window->missingWidgets().size(), int(online));
        }
        trigger(shown, QStringLiteral("Show Not Transcribed"));
        QTRY_VERIFY(shown.window->missingWidgets().isEmpty());
        QVERIFY(labelsIn(*shown.window).contains(QStringLiteral("Empty transcript")));
    }

    void withoutAnythingToReadThePageSaysWhy_data()
    {
        const support::Rows<bool, bool, QString> row;
        row("nothing loaded", false, true, "Nothing Loaded");
        row("no segments", true, true, "Empty transcript");
        row("database", true, false, "Database Offline");
    }

    void withoutAnythingToReadThePageSaysWhy()
    {
        const auto [loaded, online, title] = support::fetched<bool, bool, QString>();
        const ShownTranscript shown({});
        shown.info->source.loaded = loaded;
        shown.info->databaseOnline = online;
        shown.window->UpdateTranscriptWindow();
        const QStringList visible = labelsIn(*shown.window);
        QVERIFY2(visible.contains(title), qPrintable(visible.join('|')));
        shown.info->source = conversation();
        shown.info->databaseOnline = true;
        shown.window->UpdateTranscriptWindow();
        QVERIFY(!labelsIn(*shown.window).contains(title));
        QTRY_COMPARE(speakers(shown), (QStringList{"Ada", "Speaker 2", "Ada"}));
    }

private:
    static QStringList speakers(const ShownTranscript& shown)
    {
        QStringList names;
        const QList<STT_EntryWidget*> entries = shown.window->entryWidgets();
        for (STT_EntryWidget* entry : entries)
            names += entry->speakerEdit()->toPlainText();
        return names;
    }

    /// The visible ones.
    static QStringList labelsIn(const QWidget& widget)
    {
        QStringList visible;
        const QList<QLabel*> labels = widget.findChildren<QLabel*>();
        for (const QLabel* label : labels) {
            if (label->isVisible())
                visible += label->text();
        }
        return visible;
    }

    static void openMenu(const ShownTranscript& shown, int segment)
    {
        QWidget* field = shown.speaker(segment)->viewport();
        const QPoint middle = field->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, middle, field->mapToGlobal(middle));
        QCoreApplication::sendEvent(field, &event);
        QVERIFY(STT_TranscriptManagerWindow::GetSpeakerMenu()->isVisible());
    }

    /// @param choice the submenu's number and the action's text
    static void choose(const QString& choice)
    {
        QMenu* menu = STT_TranscriptManagerWindow::GetSpeakerMenu();
        const QList<QAction*> actions = menu->actions().at(choice.section('/', 0, 0).toInt())->menu()->actions();
        for (QAction* action : actions) {
            if (action->text() == choice.section('/', 1)) {
                menu->close();
                return action->trigger();
            }
        }
        QFAIL(qPrintable(choice));
    }

    static void trigger(const ShownTranscript& shown, const QString& text)
    {
        const QList<QAction*> actions = shown.window->findChildren<QAction*>();
        for (QAction* action : actions) {
            if (action->text() == text)
                return action->trigger();
        }
        QFAIL(qPrintable(text));
    }
};

STRATACUT_TEST_MAIN(TestTranscriptLines)
#include "tst_transcript_lines.moc"
