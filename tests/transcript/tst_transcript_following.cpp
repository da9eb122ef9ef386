#include "NaiveLookup.h"
#include "TranscriptFixture.h"
#include "support/TestMain.h"

#include <QLineEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>

using support::segmentOf;
using support::transcriptOf;

namespace
{
/// Bold words as the document has them, in its order.
QStringList boldWords(const ShownTranscript& shown)
{
    QStringList words;
    for (QTextBlock block = shown.text().document()->begin(); block.isValid(); block = block.next()) {
        for (auto at = block.begin(); !at.atEnd(); ++at) {
            if (at.fragment().charFormat().fontWeight() == 75)
                words += at.fragment().text();
        }
    }
    return words;
}

QColor colorOf(const QTextCursor& cursor)
{
    return cursor.charFormat().foreground().color();
}

QString wordOf(const ShownTranscript& shown, int segment, int word)
{
    const STT_TranscriptSegment& spoken = shown.info->shown().segments[std::size_t(segment)];
    return QString::fromStdString(spoken.text).split(' ').at(word);
}

QPoint middleOf(const ShownTranscript& shown, int segment, int word)
{
    QTextCursor cursor(shown.text().document());
    int start = 0;
    int end = 0;
    shown.window->findWordPosFromWordIndex(segment, word, &start, &end);
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    const QPoint scrolled(0, shown.text().verticalScrollBar()->value());
    return shown.text().getTranscriptRectForCursor(cursor).center().toPoint() - scrolled;
}

QStringList spokenWords(const ShownTranscript& shown, int frame)
{
    const NaiveLookup naive(*shown.info);
    QStringList words;
    NaiveLookup::Word word = naive.wordAt(frame, false, 0);
    for (int asked = 0; word.segment >= asked;) {
        words += wordOf(shown, word.segment, word.index);
        asked = word.segment + 1;
        word = naive.wordAt(frame, false, asked);
    }
    return words;
}

/// Every other segment overlaps the next; some have no words.
std::vector<STT_TranscriptSegment> randomTranscript(QRandomGenerator& random)
{
    std::vector<STT_TranscriptSegment> segments;
    for (int number = random.bounded(40); number > 0; --number) {
        const QString text = QStringLiteral("some words that are spoken").section(' ', 0, random.bounded(5));
        segments.push_back(segmentOf(int(segments.size()), 830 * int(segments.size()), text));
        if (random.bounded(9) == 0)
            segments.back() = STT_TranscriptSegment();
    }
    return segments;
}

ShownTranscript longTranscript()
{
    return ShownTranscript({transcriptOf(500, 10)});
}
} // namespace

/// The window follows the monitor, and the monitor what the user does in the window.
class TestTranscriptFollowing : public QObject
{
    Q_OBJECT

private slots:

    void theWordsThatAreSpokenAreBoldAtEveryFrame()
    {
        const ShownTranscript shown({{segmentOf(0, 200, "one two three four"), segmentOf(1, 1000, "AND ALSO"),
                                      segmentOf(2, 1100, "um"), segmentOf(3, 4000, "five six")}});
        for (int frame = 0; frame < 130; ++frame) {
            shown.window->NowPlayingSlot(frame);
            QCOMPARE(boldWords(shown), spokenWords(shown, frame));
        }
        shown.window->NowPlayingSlot(30);
        QCOMPARE(boldWords(shown), QStringList({"three", "AND", "um"}));
    }

    void aWordThatIsOverLooksAsBefore()
    {
        const ShownTranscript shown({{segmentOf(0, 0, "one two three")}});
        const QTextBlock block = shown.text().document()->firstBlock();
        for (int frame = 0; frame < 38; ++frame)
            shown.window->NowPlayingSlot(frame);
        shown.window->GangButtonClickedSlot();
        const QTextFragment only = block.begin().fragment();
        QCOMPARE(only.text(), QStringLiteral("one two three"));
        QCOMPARE(only.charFormat().fontWeight(), 50);
        QCOMPARE(only.charFormat().foreground(), QBrush(Qt::NoBrush));
        QVERIFY(!shown.text().document()->isUndoAvailable());
    }

    void followingBringsTheWordToTheMiddle()
    {
        const ShownTranscript shown = longTranscript();
        shown.window->AboutToPlaySlot(25 * 5 * 300);
        const QRectF word = shown.text().getTranscriptRectForCursor(shown.window->getBoldedCursor());
        const int scrolled = shown.text().verticalScrollBar()->value();
        QCOMPARE(scrolled, int(word.top()) - shown.text().height() / 2);
        // A word that is in view does not scroll, even at its edge.
        shown.window->AboutToPlaySlot(25 * 5 * 303);
        QCOMPARE(shown.text().verticalScrollBar()->value(), scrolled);
    }

    void playbackLeavesTheViewWhereTheUserPutIt()
    {
        const ShownTranscript shown = longTranscript();
        QScrollBar* bar = shown.text().verticalScrollBar();
        shown.window->AboutToPlaySlot(0);
        bar->setValue(bar->maximum() / 2);
        const int left = bar->value();
        shown.window->NowPlayingSlot(20);
        shown.window->DonePlayingSlot(25);
        shown.window->MonPosChangedSlot(25);
        QCOMPARE(bar->value(), left);
        QCOMPARE(boldWords(shown), QStringList(wordOf(shown, 0, 2)));
        // The frame at which playback stopped is forgotten.
        shown.window->MonPosChangedSlot(25);
        QCOMPARE(bar->value(), 0);
    }

    void withoutGangNothingFollows()
    {
        const ShownTranscript shown = longTranscript();
        shown.window->NowPlayingSlot(0);
        QCOMPARE(boldWords(shown).size(), 1);
        QTest::mouseClick(shown.window->findChild<QWidget*>("m_gangButton"), Qt::LeftButton);
        QVERIFY(!shown.window->isGangActive());
        QCOMPARE(boldWords(shown), QStringList());
        shown.window->NowPlayingSlot(50);
        shown.window->MonPosChangedSlot(50);
        shown.window->MarkInChangedSlot(0);
        shown.window->MarkOutChangedSlot(50);
        QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, middleOf(shown, 1, 1));
        QTest::keyClick(&shown.text(), Qt::Key_Right);
        QCOMPARE(boldWords(shown), QStringList());
        QVERIFY(!shown.text().textCursor().hasSelection());
        QCOMPARE(shown.info->takeCalls(), QStringList());
        shown.info->source.position = 60;
        shown.window->TranscriptInfoChangedSlot(false); // other material: what the monitor told before is void
        QTest::keyClick(&shown.text(), Qt::Key_I);
        QCOMPARE(shown.info->takeCalls(), QStringList({"refreshTranscript()", "setMarkIn(60)"}));
        shown.window->handleShortcuts("GangMode");
        QCOMPARE(boldWords(shown), QStringList(wordOf(shown, 0, 4)));
    }

    void suspendedOrHiddenNothingFollows()
    {
        const ShownTranscript shown = longTranscript();
        shown.window->NowPlayingSlot(0);
        for (const bool isHidden : {false, true}) {
            shown.window->setSuspendGanging(!isHidden);
            shown.window->setVisible(!isHidden);
            shown.window->NowPlayingSlot(50);
            shown.window->MonPosChangedSlot(50);
            QCOMPARE(boldWords(shown), QStringList(wordOf(shown, 0, 0)));
        }
    }

    void theOtherMonitorHasOtherColours()
    {
        const ShownTranscript shown = longTranscript();
        shown.info->record.segments = {segmentOf(0, 0, "cut here")};
        shown.window->setLightSkin(false);
        shown.window->NowPlayingSlot(0);
        QCOMPARE(colorOf(shown.window->getBoldedCursor()), QColor(0, 216, 255));
        QCOMPARE(shown.text().palette().color(QPalette::Inactive, QPalette::Highlight), QColor(43, 130, 180));
        QSignalSpy changed(shown.window.get(), &STT_TranscriptManagerWindow::monChanged);
        QTest::mouseClick(shown.window->findChild<QWidget*>("m_monitorButton"), Qt::LeftButton);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(boldWords(shown), QStringList("cut"));
        QCOMPARE(colorOf(shown.window->getBoldedCursor()), QColor(0, 255, 148));
        QCOMPARE(shown.text().palette().color(QPalette::Inactive, QPalette::Highlight), QColor(0, 114, 90));
        shown.window->setLightSkin(true);
        QCOMPARE(shown.text().palette().color(QPalette::Disabled, QPalette::Highlight), QColor(0, 165, 131));
        shown.window->hide();
        shown.window->handleShortcuts("ToggleSourceRecord");
        QCOMPARE(colorOf(shown.window->getBoldedCursor()), QColor(0, 216, 255));
        shown.window->handleShortcuts("Anything");
        QCOMPARE(shown.info->takeCalls(), QStringList({"showMonitor(record)", "showMonitor(source)"}));
    }

    void aWordOnTheHighlightIsBlack()
    {
        const ShownTranscript shown = longTranscript();
        shown.window->NowPlayingSlot(0);
        QTextCursor all(shown.text().document());
        all.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        shown.text().setTextCursor(all);
        QCOMPARE(colorOf(shown.window->getBoldedCursor()), QColor(Qt::black));
        const QImage picture = shown.text().grab().toImage();
        const QRect word(middleOf(shown, 0, 0) - QPoint(20, 6), QSize(40, 12));
        int blackPixels = 0;
        for (int y = word.top(); y <= word.bottom(); ++y) {
            for (int x = word.left(); x <= word.right(); ++x)
                blackPixels += picture.pixelColor(x, y).lightness() < 40;
        }
        QVERIFY2(blackPixels > 20, "the highlight's own text colour is drawn over the word");
        shown.text().setTextCursor(QTextCursor(shown.text().document()));
        QCOMPARE(colorOf(shown.window->getBoldedCursor()), shown.window->GetBoldColor());
    }

    void aClickOnAWordGoesThere()
    {
        const ShownTranscript shown = longTranscript();
        bool isSuspended = false;
        shown.info->onCall = [&](const QString& call) {
            if (call == QLatin1String("stopPlayback()"))
                isSuspended = shown.window->isGangSuspended();
            else
                shown.window->MonPosChangedSlot(shown.info->source.position);
        };
        QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, middleOf(shown, 1, 3));
        QCOMPARE(shown.info->takeCalls(), QStringList({"stopPlayback()", "moveMonitor(162)"}));
        QVERIFY(isSuspended);
        QVERIFY(!shown.window->isGangSuspended());
        QCOMPARE(boldWords(shown), QStringList(wordOf(shown, 1, 3)));
        shown.window->MarkInChangedSlot(120);
        shown.window->MarkOutChangedSlot(240);
        QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, middleOf(shown, 1, 2));
        QCOMPARE(shown.info->takeCalls(), QStringList({"stopPlayback()", "moveMonitor(150)"}));
        QVERIFY(shown.text().textCursor().hasSelection());
        // Beside the text, in the gap between two lines, and at the end of a drag.
        const QPoint line = middleOf(shown, 1, 3);
        QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {},
                          {shown.text().viewport()->width() - 2, line.y()});
        QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, line - QPoint(0, 14));
        QTest::mousePress(shown.text().viewport(), Qt::LeftButton, {}, line);
        QTest::mouseMove(shown.text().viewport(), line + QPoint(90, 0));
        QTest::mouseRelease(shown.text().viewport(), Qt::LeftButton, {}, line + QPoint(90, 0));
        QCOMPARE(shown.info->takeCalls(), QStringList());
    }

    void aClickMeansTheCharacterUnderIt()
    {
        STT_TranscriptSegment segment = segmentOf(0, 0, "a b c d");
        segment.text = QStringLiteral("今日天気").toStdString();
        segment.wordStartOffsets = {0, 1, 2, 3};
        segment.wordEndOffsets = {1, 2, 3, 4};
        const ShownTranscript shown({{segment}});
        QStringList moves;
        for (int word = 0; word < 4; ++word) {
            for (const int side : {-1, 1})
                QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {},
                                  middleOf(shown, 0, word) + QPoint(4 * side, 0));
            const QString frame = QString::number(word * 25 / 2);
            moves += {QStringLiteral("moveMonitor(%1)").arg(frame), QStringLiteral("moveMonitor(%1)").arg(frame)};
        }
        QCOMPARE(shown.info->calls.filter("moveMonitor"), moves);
    }

    void arrowKeysGoFromWordToWord()
    {
        const ShownTranscript shown({{segmentOf(0, 0, "a b"), segmentOf(1, 1000, "c"), segmentOf(2, 3000, "d")}});
        const auto press = [&shown](Qt::Key key) {
            QTest::keyClick(&shown.text(), key);
            return boldWords(shown).join(' ') + ' ' + shown.info->takeCalls().join(' ');
        };
        shown.window->MonPosChangedSlot(0);
        QCOMPARE(press(Qt::Key_Left), QStringLiteral("a "));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("b stopPlayback() moveMonitor(12)"));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("c stopPlayback() moveMonitor(25)"));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("d stopPlayback() moveMonitor(75)"));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("d "));
        QCOMPARE(press(Qt::Key_Left), QStringLiteral("c stopPlayback() moveMonitor(25)"));
        QCOMPARE(press(Qt::Key_Left), QStringLiteral("b stopPlayback() moveMonitor(12)"));
    }

    void arrowKeysPassWordsWithoutAPlace()
    {
        std::vector<STT_TranscriptSegment> segments{segmentOf(0, 0, "a b"), segmentOf(1, 1000, "c d")};
        segments[1].wordEndOffsets[0] = 900;
        const ShownTranscript shown({segments});
        QStringList visited;
        for (const int key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Left, Qt::Key_Left}) {
            QTest::keyClick(&shown.text(), Qt::Key(key));
            visited += boldWords(shown);
        }
        QCOMPARE(visited, QStringList({"b", "d", "d", "b", "a"}));
    }

    /// The host changes the transcript now and then while the window calls it.
    void whateverIsCalledTheRightWordsAreBold()
    {
        using Window = STT_TranscriptManagerWindow;
        QRandomGenerator random(support::seed());
        const ShownTranscript shown({randomTranscript(random), {}, {{"guid", "clip", 2000}}}, {transcriptOf(30, 3)});
        Window& window = *shown.window;
        bool isGangOn = true;
        bool isInside = false;
        const auto change = [&] {
            shown.info->shown().segments = randomTranscript(random);
            shown.info->shown().missing.resize(std::size_t(random.bounded(3)));
            window.TranscriptInfoChangedSlot(random.bounded(2) == 0);
        };
        const auto changeNowAndThen = [&](int times) {
            if (isInside || random.bounded(times) != 0)
                return;
            const QScopedValueRollback<bool> inside(isInside, true);
            change();
        };
        shown.info->onCall = [&](const QString&) { changeNowAndThen(3); };
        shown.info->onQuestion = [&] { changeNowAndThen(40); };
        const auto frame = [&random] { return random.bounded(900); };
        const std::function<void()> actions[] = {
            change,
            [&] { window.NowPlayingSlot(frame()); },
            [&] { window.AboutToPlaySlot(frame()); },
            [&] { window.DonePlayingSlot(frame()); },
            [&] { window.MarkInChangedSlot(frame()); },
            [&] { window.MarkOutChangedSlot(frame()); },
            [&] { window.ArrowKeyPressedSlot(random.bounded(2) == 0); },
            [&] {
                QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, {frame(), frame() / 2});
            },
            [&] { shown.text().selectAll(); },
            [&] { window.setMarksFromSelection(); },
            [&] { window.SpacebarPressedSlot(); },
            [&] { window.SpeakerNameChangedSlot(random.bounded(-1, 40), QStringLiteral("Ada")); },
            [&] { window.TranscribeAllMissingSlot(); },
            [&] { window.SetMissingVisibilitySlot(); },
            [&] { window.SourceRecordMonChange(); },
            [&] { window.setLightSkin(random.bounded(2) == 0); },
            [&] { window.resize(300 + frame(), 200 + frame()); },
            [&] { window.setVisible(false), window.setVisible(true); },
            [&] { window.findChild<QLineEdit*>()->setText(random.bounded(2) ? "words" : QString()); },
            [&] { window.GangButtonClickedSlot(), isGangOn = !isGangOn; },
        };
        for (int round = 0; round < 600; ++round) {
            actions[random.bounded(int(std::size(actions)))]();
            const int shownFrame = frame();
            shown.info->shown().position = shownFrame;
            window.MonPosChangedSlot(shownFrame);
            const QStringList spoken = spokenWords(shown, shownFrame);
            if (!isGangOn || !spoken.isEmpty())
                QCOMPARE(boldWords(shown), isGangOn ? spoken : QStringList());
        }
    }

    void marksSelectTheirWordsAndTheSelectionSetsThem_data()
    {
        const support::Rows<double> row;
        for (const double rate : {24.0, 25.0, 24000 / 1001.0, 60000 / 1001.0})
            row(qPrintable(QString::number(rate)), rate);
    }

    void marksSelectTheirWordsAndTheSelectionSetsThem()
    {
        const auto [rate] = support::fetched<double>();
        std::vector<STT_TranscriptSegment> segments = transcriptOf(6, 8);
        for (STT_TranscriptSegment& segment : segments) {
            // Without pauses between words: there a mark is out by one word soonest.
            if (segment.number % 2)
                std::transform(segment.wordStarts.begin(), segment.wordStarts.end(), segment.wordEnds.begin(),
                               [](int start) { return start + 500; });
        }
        const ShownTranscript shown({segments});
        shown.info->framesPerSecond = rate;
        for (int first = 0; first < 48; first += 3) {
            for (int last = first; last < 48; last += 5) {
                int start = 0;
                int end = 0;
                shown.window->findWordPosFromWordIndex(first / 8, first % 8, &start, nullptr);
                shown.window->findWordPosFromWordIndex(last / 8, last % 8, nullptr, &end);
                QTextCursor words(shown.text().document());
                words.setPosition(start);
                words.setPosition(end, QTextCursor::KeepAnchor);
                shown.text().selectInPlace(words);
                QTest::keyClick(shown.window.get(), Qt::Key_X);
                shown.text().selectInPlace(QTextCursor(shown.text().document()));
                shown.window->MarkInChangedSlot(shown.info->markIn());
                shown.window->MarkOutChangedSlot(shown.info->markOut());
                QCOMPARE(shown.text().textCursor().selectedText(), words.selectedText());
            }
        }
        QTest::keyClick(shown.window.get(), Qt::Key_X, Qt::AltModifier);
        shown.window->MarkOutChangedSlot(shown.info->markOut());
        QVERIFY(!shown.text().textCursor().hasSelection());
    }

    void keysReachTheMonitor_data()
    {
        const support::Rows<Qt::Key, Qt::KeyboardModifiers, QStringList> row;
        row("mark in", Qt::Key_I, Qt::KeyboardModifiers(), QStringList("setMarkIn(7)"));
        row("mark out", Qt::Key_O, Qt::KeyboardModifiers(), QStringList("setMarks(2, 7)"));
        row("to mark in", Qt::Key_I, Qt::KeyboardModifiers(Qt::ShiftModifier), QStringList("goToMarkIn()"));
        row("to mark out", Qt::Key_O, Qt::KeyboardModifiers(Qt::ShiftModifier), QStringList("goToMarkOut()"));
        row("play", Qt::Key_Space, Qt::KeyboardModifiers(), QStringList("togglePlayback()"));
        row("not ours", Qt::Key_J, Qt::KeyboardModifiers(), {});
    }

    void keysReachTheMonitor()
    {
        const auto [key, modifiers, calls] = support::fetched<Qt::Key, Qt::KeyboardModifiers, QStringList>();
        const ShownTranscript shown = longTranscript();
        shown.window->MonPosChangedSlot(7);
        shown.info->source.markIn = 2;
        QTest::keyClick(&shown.text(), key, modifiers);
        QCOMPARE(shown.info->takeCalls(), calls);
        shown.window->SwitchEditModeSlot();
        QTest::keyClick(&shown.text(), key, modifiers);
        QCOMPARE(shown.info->takeCalls(), QStringList());
    }
};

STRATACUT_TEST_MAIN(TestTranscriptFollowing)
#include "tst_transcript_following.moc"
