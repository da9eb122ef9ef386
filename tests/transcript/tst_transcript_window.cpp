#include "TranscriptFixture.h"
#include "support/TestMain.h"

#include <QFontDatabase>
#include <QFontDialog>
#include <QMenu>
#include <QMetaMethod>
#include <QScrollBar>
#include <QTextBlock>

using support::segmentOf;
using support::transcriptOf;

namespace
{
constexpr const char* slotsInOrder =
    "MonPosChangedSlot NowPlayingSlot AboutToPlaySlot DonePlayingSlot TranscriptTextDoubleClickedSlot "
    "TranscriptTextClickedSlot SpacebarPressedSlot SwitchGangModeSlot SwitchEditModeSlot "
    "TranscriptInfoChangedSlot MarkInSlot MarkOutSlot MarkInChangedSlot MarkOutChangedSlot "
    "GangButtonClickedSlot ArrowKeyPressedSlot SpeakerNameChangedSlot TranscribeSlot DocumentSizeChangedSlot "
    "refreshSlot setFontSlot FastMenuSlot TranscribeAllMissingSlot SetTimecodeVisibilitySlot "
    "SetSpeakerVisibilitySlot SetMissingVisibilitySlot scriptFromClipSlot exportTranscriptSlot "
    "exportSubcapSlot createSubcapSlot UpdateTranscriptWindow SourceRecordMonChange onTrackSelectionClicked "
    "handleShortcuts";

QAction* actionOf(const ShownTranscript& shown, const QString& text)
{
    const QList<QAction*> actions = shown.window->findChild<QMenu*>()->actions();
    const auto found = std::find_if(actions.begin(), actions.end(), [&](QAction* a) { return a->text() == text; });
    return found == actions.end() ? nullptr : *found;
}

QTextBlock blockOf(const ShownTranscript& shown, int number)
{
    return shown.text().document()->findBlockByNumber(number);
}

/// Where each character of a block stands, line by line.
QVector<QPointF> placesIn(const QTextBlock& block)
{
    QVector<QPointF> places;
    for (int at = 0; at < block.length(); ++at) {
        const QTextLine line = block.layout()->lineForTextPosition(at);
        places += QPointF(line.cursorToX(at), line.y());
    }
    return places;
}

/// What the window shows when the transcript is painted for the first time.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(const ShownTranscript& watched) : m_shown(watched)
    {
        watched.text().viewport()->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::Paint || blocks > 0)
            return false;
        blocks = m_shown.text().document()->blockCount();
        boldWord = m_shown.window->getBoldedCursor().selectedText();
        const QTextBlock bold = m_shown.window->getBoldedCursor().block();
        top = bold.layout()->position().y() - m_shown.text().verticalScrollBar()->value();
        const QList<STT_EntryWidget*> beside = m_shown.window->entryWidgets();
        for (const STT_EntryWidget* entry : beside)
            entries += entry->segment();
        m_shown.info->source.position += 25; // it plays on while the text grows
        return false;
    }

    int blocks = 0;
    QString boldWord;
    qreal top = 0;
    QVector<int> entries;

private:
    const ShownTranscript& m_shown;
};
} // namespace

/// The window's menu, and a text that is laid out as it comes into view.
class TestTranscriptWindow : public QObject
{
    Q_OBJECT

private slots:

    void theTabKeyGoesAlongTheToolBarAndThenIntoTheText()
    {
        const ShownTranscript shown({transcriptOf(1, 3)});
        int last = -1;
        for (QWidget* at = shown.window.get(); at != &shown.text(); at = at->nextInFocusChain()) {
            if (!at->isVisible() || !(at->focusPolicy() & Qt::TabFocus))
                continue;
            const int here = at->mapTo(shown.window.get(), QPoint()).x();
            QVERIFY2(here > last, qPrintable(at->objectName()));
            last = here;
        }
        QVERIFY(last > shown.window->width() / 2);
    }

    void slotsAreListedInTheirOrder()
    {
        QStringList listed;
        const QMetaObject& meta = STT_TranscriptManagerWindow::staticMetaObject;
        for (int at = meta.methodOffset(); at < meta.methodCount(); ++at) {
            if (meta.method(at).methodType() == QMetaMethod::Slot)
                listed += QString::fromLatin1(meta.method(at).name());
        }
        QCOMPARE(listed.join(' '), QLatin1String(slotsInOrder));
    }

    void theMenuHandsRequestsToTheHost_data()
    {
        const support::Rows<QStringList> row;
        row("Transcribe Remaining Clips", {"transcribe(ALL)", "refreshTranscript()"});
        row("Create Script from Clip", QStringList("createScriptFromClip()"));
        row("Create SubCap...", QStringList("createSubcaptions()"));
        row("Export Transcript", QStringList("exportTranscript()"));
        row("Export SubCap", QStringList("exportSubcaptions()"));
    }

    void theMenuHandsRequestsToTheHost()
    {
        const auto [calls] = support::fetched<QStringList>();
        const ShownTranscript shown({{segmentOf(0, 0, "a")}, {}, {{"guid", "clip", 900}}});
        QTest::mouseClick(shown.window->findChild<QWidget*>("m_menuButton"), Qt::LeftButton);
        auto* menu = shown.window->findChild<QMenu*>();
        QTRY_VERIFY(menu->isVisible());
        QAction* action = actionOf(shown, QString::fromLatin1(QTest::currentDataTag()));
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        QCOMPARE(shown.info->takeCalls(), calls);
    }

    void theChecksShowAndStoreWhatIsVisible()
    {
        const ShownTranscript shown({transcriptOf(20, 10)});
        const qreal both = blockOf(shown, 0).blockFormat().leftMargin();
        actionOf(shown, "Show Timecode")->trigger();
        const qreal speaker = blockOf(shown, 19).blockFormat().leftMargin();
        actionOf(shown, "Show Speaker")->trigger();
        const qreal none = blockOf(shown, 7).blockFormat().leftMargin();
        QVERIFY(none < speaker && speaker < both);
        QVERIFY(!shown.entry(0)->isVisible());
        actionOf(shown, "Show Timecode")->trigger();
        QVERIFY(shown.entry(0)->isVisible());
        QCOMPARE(shown.info->takeCalls(),
                 QStringList({"storeTimecodeVisibility(hidden)", "storeSpeakerVisibility(hidden)",
                              "storeTimecodeVisibility(shown)"}));
    }

    void theTrackButtonIsTheParentOfWhatItAsksFor()
    {
        const ShownTranscript shown({transcriptOf(3, 4)});
        QSignalSpy asked(shown.window.get(), &STT_TranscriptManagerWindow::selectTracks);
        auto* button = shown.window->findChild<QWidget*>("m_trackButton");
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(asked.value(0).value(0).value<QWidget*>(), button);
    }

    void hiddenClipsTakeNoRoom()
    {
        const ShownTranscript shown(
            {transcriptOf(3, 4), {}, {{"a", "first", 0}, {"b", "between", 2500}, {"c", "last", 9000}}});
        QCOMPARE(shown.window->missingWidgets().size(), 3);
        QCOMPARE(shown.window->getBlockNumberForSegment(2), 4);
        QCOMPARE(shown.window->getBlockNumberForSegment(3), -1);
        actionOf(shown, "Show Not Transcribed")->trigger();
        QCOMPARE(shown.window->missingWidgets().size(), 0);
        QCOMPARE(shown.window->entryWidgets().size(), 3);
        const auto topOf = [&shown](int block) { return shown.text().blockRect(blockOf(shown, block)).top(); };
        QCOMPARE(topOf(4) - topOf(2), topOf(2) - topOf(1));
        QCOMPARE(shown.text().visibleBlocks().first, 1);
        QCOMPARE(shown.text().visibleBlocks().last, 4);
        actionOf(shown, "Show Not Transcribed")->trigger();
        QCOMPARE(shown.window->missingWidgets().size(), 3);
        QCOMPARE(shown.info->takeCalls(),
                 QStringList({"storeNotTranscribedVisibility(hidden)", "storeNotTranscribedVisibility(shown)"}));
    }

    void aFontIsAskedForOnceAndStored()
    {
        auto owned = std::make_unique<support::RecordingTranscriptInfo>();
        support::RecordingTranscriptInfo& host = *owned;
        STT_TranscriptManagerWindow window(std::move(owned));
        QCOMPARE(host.takeCalls(), QStringList("storeFont(Courier New, 12)"));
        window.show();
        window.setFontSlot();
        auto* dialog = window.findChild<QFontDialog*>();
        QVERIFY(dialog);
        dialog->setCurrentFont(QFont("DejaVu Serif", 20));
        host.takeCalls();
        dialog->accept();
        QCOMPARE(host.takeCalls(), QStringList("storeFont(DejaVu Serif, 20)"));
        QCOMPARE(window.getTranscriptTextEdit()->document()->defaultFont().family(), QStringLiteral("DejaVu Serif"));
    }

    void linesLieOneBelowTheOther_data()
    {
        const support::Rows<QString> row;
        row("latin", QString());
        row("right to left", QStringLiteral("שלום עולם זה תמליל מימין לשמאל עם כמה מילים"));
        row("without blanks", QString(400, QChar(0x4eca)));
        row("emoji", QStringLiteral("👩‍🚀👩‍🚀👩‍🚀 é́ 😀😀 ").repeated(20));
        row("nothing", QString(""));
    }

    void linesLieOneBelowTheOther()
    {
        const auto [text] = support::fetched<QString>();
        std::vector<STT_TranscriptSegment> segments = transcriptOf(300, 14);
        for (STT_TranscriptSegment& segment : segments) {
            if (!text.isNull())
                segment.text = text.toStdString();
        }
        const ShownTranscript shown({segments});
        STT_TranscriptTextEdit& edit = shown.text();
        QScrollBar* bar = edit.verticalScrollBar();
        // Jumps first, so that what lies between is estimated while its neighbours are measured.
        bar->setValue(bar->maximum() / 2);
        bar->setValue(bar->maximum());
        QCOMPARE(bar->value(), bar->maximum());
        QCOMPARE(edit.visibleBlocks().last, 299);
        bar->setValue(bar->maximum() / 3);
        bar->setValue(0);
        for (int scrolled = -1; scrolled != bar->value();) {
            scrolled = bar->value();
            const auto view = edit.visibleBlocks();
            const QPoint below(edit.viewport()->width() / 2, edit.blockRect(blockOf(shown, view.last)).top() + 1);
            if (below.y() < edit.viewport()->height())
                QCOMPARE(edit.cursorForPosition(below).blockNumber(), view.last);
            for (int number = view.first; number < view.last; ++number) {
                const int gap =
                    edit.blockRect(blockOf(shown, number + 1)).top() - edit.blockRect(blockOf(shown, number)).bottom();
                QCOMPARE(gap, 11);
            }
            bar->setValue(scrolled + edit.viewport()->height() - 40);
        }
        QCOMPARE(edit.visibleBlocks().last, 299);
        QVERIFY(edit.isInView(edit.getTranscriptRectForCursor(QTextCursor(blockOf(shown, 299)))));
    }

    void aLongTextIsPaintedBeforeItIsWhole_data()
    {
        const support::Rows<int> row;
        row("at its beginning", 0);
        row("in its middle", 1500);
        row("at its end", 2999); // whole: all lines above it are needed
    }

    void aLongTextIsPaintedBeforeItIsWhole()
    {
        const auto [segment] = support::fetched<int>();
        const ShownTranscript shown({support::transcriptOf(5, 10)});
        shown.info->source.segments = support::transcriptOf(3000, 10);
        shown.info->source.position = shown.info->frameFromMs(segment * 5000 + 100);
        FirstPaint painted(shown);
        shown.window->UpdateTranscriptWindow();
        QCoreApplication::processEvents();
        QCOMPARE(painted.blocks < 3000, segment < 2999);
        QVERIFY(painted.entries.contains(segment));
        QCOMPARE(painted.boldWord, blockOf(shown, segment).text().section(' ', 0, 0));
        int boldWords = 0;
        for (auto at = blockOf(shown, segment).begin(); !at.atEnd(); ++at)
            boldWords += at.fragment().charFormat().fontWeight() == QFont::Bold;
        QCOMPARE(boldWords, 1);
        QCOMPARE(painted.top,
                 blockOf(shown, segment).layout()->position().y() - shown.text().verticalScrollBar()->value());
        QCOMPARE(blockOf(shown, 2999).userState(), 2999);
        QCOMPARE(blockOf(shown, 2999).blockFormat(), blockOf(shown, 0).blockFormat());
        QCOMPARE(shown.text().document()->blockCount(), 3000);
    }

    void aStepLaysNoLineOutAnew()
    {
        const ShownTranscript shown({support::transcriptOf(1, 2000)});
        shown.text().setTranscriptFont(QFont(QStringLiteral("DejaVu Sans Mono"))); // its bold letters are as wide
        const QTextLayout* layout = blockOf(shown, 0).layout();
        shown.window->MonPosChangedSlot(20);
        const QVector<QPointF> places = placesIn(blockOf(shown, 0));
        const QPointF place = layout->lineAt(1).position();
        layout->lineAt(1).setPosition({0, 7}); // what is laid out anew stands elsewhere
        shown.window->MonPosChangedSlot(33);
        QCOMPARE(shown.window->getBoldedCursor().charFormat().fontWeight(), int(QFont::Bold));
        QCOMPARE(layout->lineAt(1).y(), 7.0);
        layout->lineAt(1).setPosition(place);
        QCOMPARE(placesIn(blockOf(shown, 0)), places);
    }

    void theTextInViewStaysThroughAChangeOfWidth()
    {
        const ShownTranscript shown({transcriptOf(2000, 14)});
        QScrollBar* bar = shown.text().verticalScrollBar();
        bar->setValue(bar->maximum() / 2);
        const int first = shown.text().visibleBlocks().first;
        for (const int width : {700, 560, 900, 801, 800}) {
            shown.window->resize(width, 500);
            QCOMPARE(shown.text().visibleBlocks().first, first);
        }
    }

    void aRefreshKeepsThePlaceIfAsked()
    {
        const ShownTranscript shown({transcriptOf(2000, 14)});
        shown.window->GangButtonClickedSlot();
        QScrollBar* bar = shown.text().verticalScrollBar();
        bar->setValue(bar->maximum() / 2);
        const int first = shown.text().visibleBlocks().first;
        const int top = shown.text().blockRect(blockOf(shown, first)).top();
        QSignalSpy done(shown.window.get(), &STT_TranscriptManagerWindow::refreshDoneSignal);
        shown.window->TranscriptInfoChangedSlot(true);
        QCOMPARE(done.size(), 1);
        QCOMPARE(shown.text().visibleBlocks().first, first);
        QCOMPARE(shown.text().blockRect(blockOf(shown, first)).top(), top);
        shown.window->TranscriptInfoChangedSlot(false);
        QCOMPARE(bar->value(), 0);
    }

    void aBoldWordMovesNoOther_data()
    {
        const support::Rows<QString, QString> row;
        const QString latin =
            QStringLiteral("Waves will AVAIL, \"office\" fjord minimum; illicit (wax) WWW mmm iii end");
        for (const char* family : {"DejaVu Sans", "DejaVu Serif", "Courier New"}) {
            row(family, family, latin.repeated(3));
            row(qPrintable(QString(family) + ", right to left"), family,
                QStringLiteral("שלום עולם, זה תמליל מימין לשמאל ").repeated(6));
        }
        row("joined letters", "DejaVu Sans", QStringLiteral("مرحبا بالعالم هذا نص"));
    }

    void aBoldWordMovesNoOther()
    {
        const auto [family, text] = support::fetched<QString, QString>();
        const ShownTranscript shown({{segmentOf(0, 0, text.simplified()), segmentOf(1, 90000, "end")}});
        shown.text().setTranscriptFont(QFont(family, 13));
        QCoreApplication::processEvents();
        shown.window->clearWordBolding();
        const QTextBlock block = blockOf(shown, 0);
        shown.text().blockRect(block);
        const QVector<QPointF> before = placesIn(block);
        const STT_TranscriptSegment& segment = shown.info->source.segments[0];
        for (std::size_t word = 0; word < segment.wordStarts.size(); ++word) {
            shown.window->moveBoldText(segment.wordStartOffsets[word], segment.wordEndOffsets[word], false);
            shown.text().blockRect(block);
            const QVector<QPointF> now = placesIn(block);
            for (int at = 0; at < now.size(); ++at) {
                const bool isInside = at > segment.wordStartOffsets[word] && at <= segment.wordEndOffsets[word];
                QCOMPARE(now[at].y(), before[at].y());
                if (!isInside)
                    QVERIFY2(
                        qAbs(now[at].x() - before[at].x()) < 0.5,
                        qPrintable(
                            QString("word %1, character %2: %3").arg(word).arg(at).arg(now[at].x() - before[at].x())));
            }
        }
    }

    void aMarkedSelectionDoesNotScroll()
    {
        const ShownTranscript shown({transcriptOf(2000, 14)});
        QScrollBar* bar = shown.text().verticalScrollBar();
        bar->setValue(1234);
        shown.window->MarkInChangedSlot(100000);
        shown.window->MarkOutChangedSlot(100500);
        QVERIFY(shown.text().textCursor().hasSelection());
        QCOMPARE(bar->value(), 1234);
    }
};

STRATACUT_TEST_MAIN(TestTranscriptWindow)
#include "tst_transcript_window.moc"
