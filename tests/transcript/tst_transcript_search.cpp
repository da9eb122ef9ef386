#include "StratacutUI/STT_SearchWidget.h"
#include "TranscriptFixture.h"
#include "support/TestMain.h"

#include <QAction>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBlock>

using support::RecordingTranscriptInfo;
using support::segmentOf;

namespace
{
RecordingTranscriptInfo::Material threeLines()
{
    RecordingTranscriptInfo::Material material;
    material.segments = {segmentOf(0, 0, QStringLiteral("One, two; one more two's")),
                         segmentOf(1, 4000, QStringLiteral("Nothing here")),
                         segmentOf(2, 8000, QStringLiteral("the last one (of $5)"))};
    return material;
}

/// The highlighted texts, the current one in brackets.
QStringList highlighted(const STT_TranscriptTextEdit& text)
{
    QStringList shown;
    const QList<QTextEdit::ExtraSelection> selections = text.extraSelections();
    for (const QTextEdit::ExtraSelection& selection : selections) {
        const bool isCurrent = selection.format.background().color() == QColor(255, 165, 0);
        const QString plain = selection.cursor.selectedText();
        shown += isCurrent ? QStringLiteral("[%1]").arg(plain) : plain;
    }
    return shown;
}
} // namespace

/// The search bar, used with real keys.
class TestTranscriptSearch : public QObject
{
    Q_OBJECT

private slots:

    void everyOccurrenceIsHighlighted_data()
    {
        const support::Rows<QString, QStringList> row;
        row("case does not matter", "ONE", {"One", "one", "one"});
        row("phrase across punctuation", "one two", {"One, two"});
        row("typed punctuation counts as a blank", "two's", {"two's"});
        row("inside a word", "othin", {"othin"});
        row("symbols stand for themselves", "$5", {"$5"});
        row("phrase over two lines", "two's nothing", {QString("two's%1Nothing").arg(QChar(0x2029))});
        row("only punctuation", "?!", {});
        row("only blanks", "  ", {});
        row("not there", "three", {});
    }

    void everyOccurrenceIsHighlighted()
    {
        const auto [typed, expected] = support::fetched<QString, QStringList>();
        const ShownTranscript shown(threeLines());
        type(shown, typed);
        QCOMPARE(highlighted(shown.text()), expected);
        QTest::keyClick(line(shown), Qt::Key_Escape);
        QVERIFY(highlighted(shown.text()).isEmpty());
    }

    void steppingVisitsMatchesInReadingOrderAndWraps()
    {
        const ShownTranscript shown(threeLines());
        type(shown, QStringLiteral("one"));
        const QList<QStringList> onward{{"[One]", "one", "one"}, {"One", "[one]", "one"}, {"One", "one", "[one]"}};
        for (const int visited : {1, 2, 0, 1}) { // the first word is bold, so it is behind the start
            QTest::keyClick(line(shown), Qt::Key_Return);
            QCOMPARE(highlighted(shown.text()), onward[visited]);
        }
        for (const int visited : {0, 2}) {
            QTest::keyClick(&shown.text(), Qt::Key_F3, Qt::ShiftModifier);
            QCOMPARE(highlighted(shown.text()), onward[visited]);
        }
        QTest::keyClick(&shown.text(), Qt::Key_F3);
        QCOMPARE(highlighted(shown.text()), onward[0]);
    }

    void theCurrentMatchShowsWhereTheTextIsSelected()
    {
        const ShownTranscript shown(threeLines());
        shown.text().selectAll();
        type(shown, QStringLiteral("one"));
        QTest::keyClick(line(shown), Qt::Key_Return);
        const QImage image = shown.text().grab().toImage();
        int orange = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                orange += image.pixelColor(x, y) == QColor(255, 165, 0);
        }
        QVERIFY2(orange > 100, qPrintable(QString::number(orange)));
    }

    void steppingStartsAtTheBoldWord()
    {
        const ShownTranscript shown(threeLines());
        shown.window->followMonitor(25, false); // the third word
        type(shown, QStringLiteral("one"));
        QTest::keyClick(line(shown), Qt::Key_Return);
        QCOMPARE(highlighted(shown.text()), (QStringList{"One", "one", "[one]"}));
    }

    void theHighlightsReturnAfterARebuild()
    {
        const ShownTranscript shown(threeLines());
        type(shown, QStringLiteral("one"));
        shown.info->source.segments.push_back(segmentOf(3, 12000, QStringLiteral("and one")));
        shown.window->TranscriptInfoChangedSlot(true);
        QCOMPARE(highlighted(shown.text()), (QStringList{"One", "one", "one", "one"}));
        QTest::keyClick(line(shown), Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(highlighted(shown.text()), (QStringList{"One", "one", "one", "[one]"}));
        shown.info->source.missing = {{"guid", "before.mov", 0, STT_Transcription::Running, 1, {}}};
        shown.window->TranscriptInfoChangedSlot(true);
        QCOMPARE(highlighted(shown.text()), (QStringList{"One", "one", "one", "[one]"}));
    }

    /// Long enough to be searched in slices.
    void aLongTranscriptShowsFirstHitsAtOnceAndAllOfThemSoon()
    {
        RecordingTranscriptInfo::Material material;
        material.segments = support::transcriptOf(6000, 10);
        const ShownTranscript shown(std::move(material));
        type(shown, QStringLiteral("ba"));
        QVERIFY(bar(shown)->isSearching());
        const QStringList first = highlighted(shown.text());
        QVERIFY(!first.isEmpty() && first.size() < 1000);
        QTRY_VERIFY(!bar(shown)->isSearching());
        const int all = shown.text().toPlainText().count(QStringLiteral("ba"));
        QVERIFY(all > 10000);
        QTRY_COMPARE(shown.text().extraSelections().size(), all);

        QTest::keyClick(line(shown), Qt::Key_Return, Qt::ShiftModifier); // the last one
        const QStringList last = highlighted(shown.text());
        QCOMPARE(last.filter(QStringLiteral("[ba]")).size(), 1);
        const QScrollBar* bar = shown.text().verticalScrollBar();
        QVERIFY2(bar->value() > bar->maximum() * 0.9, qPrintable(QString::number(bar->value())));
    }

    /// More matches than are highlighted at a time.
    void whateverComesIntoViewIsHighlighted()
    {
        RecordingTranscriptInfo::Material material;
        const QString crowd = QStringLiteral("ba ").repeated(40).trimmed();
        for (int number = 0; number < 600; ++number)
            material.segments.push_back(segmentOf(number, number * 20000, crowd));
        const ShownTranscript shown(std::move(material));
        type(shown, QStringLiteral("ba"));
        QTRY_VERIFY(!bar(shown)->isSearching());
        QScrollBar* bar = shown.text().verticalScrollBar();
        for (int place = 0; place <= 100; ++place) {
            bar->setValue(bar->maximum() / 100 * (place * 37 % 101)); // up and down
            const STT_TranscriptTextEdit::BlockRange view = shown.text().visibleBlocks();
            const QTextDocument* document = shown.text().document();
            QSet<int> missing;
            for (int number = view.first; number <= view.last; ++number) {
                const QTextBlock block = document->findBlockByNumber(number);
                for (int at = block.text().indexOf("ba"); at >= 0; at = block.text().indexOf("ba", at + 1))
                    missing += block.position() + at;
            }
            QVERIFY(!missing.isEmpty());
            const QList<QTextEdit::ExtraSelection> selections = shown.text().extraSelections();
            QVERIFY(selections.size() < 24000);
            for (const QTextEdit::ExtraSelection& selection : selections)
                missing -= selection.cursor.selectionStart();
            QVERIFY2(missing.isEmpty(), qPrintable(QString::number(place)));
        }
    }

    void aStepWhileTheSearchRunsKnowsAllMatches()
    {
        RecordingTranscriptInfo::Material material;
        material.segments = support::transcriptOf(12000, 10);
        material.segments.push_back(segmentOf(12000, 99999999, QStringLiteral("basso profondo")));
        const ShownTranscript shown(std::move(material));
        type(shown, QStringLiteral("ba"));
        QVERIFY(bar(shown)->isSearching());
        QTest::keyClick(line(shown), Qt::Key_Return, Qt::ShiftModifier);
        const QTextBlock last = shown.text().document()->lastBlock();
        QTRY_COMPARE(currentPosition(shown), last.position());
    }

    void aBarWithoutATranscriptWindowDoesNothing()
    {
        QWidget other;
        STT_SearchWidget alone(&other);
        alone.findChild<QLineEdit*>()->setText(QStringLiteral("one"));
        alone.onNextClicked();
        alone.onRefreshDone();
        alone.onSetSelectedClicked();
        QVERIFY(!alone.isSearching());
    }

private:
    static STT_SearchWidget* bar(const ShownTranscript& shown)
    {
        return shown.window->findChild<STT_SearchWidget*>(QStringLiteral("searchWindow"));
    }

    static QLineEdit* line(const ShownTranscript& shown) { return bar(shown)->findChild<QLineEdit*>(); }

    static void type(const ShownTranscript& shown, const QString& typed)
    {
        QTest::keyClick(&shown.text(), Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(line(shown), typed);
    }

    static int currentPosition(const ShownTranscript& shown)
    {
        const QList<QTextEdit::ExtraSelection> selections = shown.text().extraSelections();
        for (const QTextEdit::ExtraSelection& selection : selections) {
            if (selection.format.background().color() == QColor(255, 165, 0))
                return selection.cursor.selectionStart();
        }
        return -1;
    }
};

STRATACUT_TEST_MAIN(TestTranscriptSearch)
#include "tst_transcript_search.moc"
