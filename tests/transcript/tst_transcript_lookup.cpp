#include "NaiveLookup.h"
#include "TranscriptFixture.h"
#include "support/TestMain.h"

#include <QTextBlock>

#include <set>

using support::segmentOf;

namespace
{
using Segments = std::vector<STT_TranscriptSegment>;

/// Words at given times. The text is "a a a ...".
STT_TranscriptSegment segmentAt(int number, const std::vector<std::pair<int, int>>& times)
{
    QStringList words;
    for (std::size_t word = 0; word < times.size(); ++word)
        words += QStringLiteral("a");
    STT_TranscriptSegment segment = times.empty() ? STT_TranscriptSegment() : segmentOf(number, 0, words.join(' '));
    segment.number = number;
    for (std::size_t word = 0; word < times.size(); ++word) {
        segment.wordStarts[word] = times[word].first;
        segment.wordEnds[word] = times[word].second;
    }
    return segment;
}

/// Overlaps, gaps, segments without words and words of no length. No two segments end at the same time.
Segments randomSegments(QRandomGenerator& random)
{
    Segments segments;
    std::set<int> ends;
    int start = random.bounded(300);
    for (int number = 0; number < 25; ++number) {
        std::vector<std::pair<int, int>> times;
        int at = start;
        for (int words = random.bounded(6); words > 0; --words) {
            const int end = at + random.bounded(150);
            times.emplace_back(at, end);
            at = end + (random.bounded(2) ? random.bounded(200) : 0);
        }
        while (!times.empty() && !ends.insert(times.back().second).second)
            ++times.back().second;
        segments.push_back(segmentAt(number, times));
        start += random.bounded(3) ? random.bounded(400) : 0;
    }
    return segments;
}

std::pair<int, int> pairOf(const NaiveLookup::Word& word)
{
    return {word.segment, word.index};
}
} // namespace

/// From frames to words, between words, and between words and positions.
class TestTranscriptLookup : public QObject
{
    Q_OBJECT

private slots:

    void randomTranscriptsAnswerLikeALookAtEveryWord()
    {
        QRandomGenerator random(support::seed());
        for (int round = 0; round < 30; ++round) {
            const ShownTranscript shown({randomSegments(random)});
            shown.info->framesPerSecond = QVector<double>{24000 / 1001.0, 25, 60}.at(round % 3);
            const NaiveLookup naive(*shown.info);
            for (int minSegment : {0, 1, 7, 24}) {
                for (int ms = 0; ms < 6000; ms += 1 + random.bounded(4))
                    QCOMPARE(shown.window->findSegmentFromMS(ms, minSegment), naive.segmentAt(ms, minSegment));
                for (int frame = 0; frame < 200; ++frame) {
                    for (const bool previous : {false, true}) {
                        std::pair<int, int> found{-1, -1};
                        const bool isFound = shown.window->findWordIndexFromFrame(frame, previous, minSegment,
                                                                                  found.first, found.second);
                        const auto expected = pairOf(naive.wordAt(frame, previous, minSegment));
                        QCOMPARE(isFound, expected.first >= 0);
                        if (isFound)
                            QCOMPARE(found, expected);
                    }
                }
            }
            for (std::size_t at = 0; at + 1 < naive.words.size(); ++at) {
                std::pair<int, int> found;
                int ms = 0;
                const bool hasNext = shown.window->getNextWordInfo(naive.words[at].segment, naive.words[at].index,
                                                                   &found.first, &found.second, &ms);
                QCOMPARE(hasNext, naive.areNeighbours(at, at + 1));
                if (!hasNext)
                    continue;
                QCOMPARE(found, pairOf(naive.words[at + 1]));
                QCOMPARE(ms, naive.words[at + 1].start);
                QVERIFY(shown.window->getPrevWordInfo(found.first, found.second, &found.first, &found.second, &ms));
                QCOMPARE(found, pairOf(naive.words[at]));
                QCOMPARE(ms, naive.words[at].end);
            }
        }
    }

    void aFrameBetweenTwoWordsShows_data()
    {
        const support::Rows<int, int, int, std::pair<int, int>> row;
        using Pair = std::pair<int, int>;
        // Words from 1000 to 1400 and from nextStart on, 40 ms a frame.
        row("before the first word", 1400, 0, 0, Pair(0, 0));
        row("the frame ends inside the word", 1401, 33, 0, Pair(0, 0));
        row("the frame ends where the next word starts", 1400, 34, 0, Pair(0, 1));
        row("the frame ends a millisecond before", 1401, 34, 0, Pair(0, 0));
        row("in a pause, a frame away", 1800, 44, 0, Pair(0, 0));
        row("in a pause, less than a frame away", 1799, 44, 0, Pair(0, 1));
        row("in the pause between segments", 1500, 60, 0, Pair(0, 1));
        row("nobody speaks from that segment on", 1500, 60, 1, Pair(-1, -1));
    }

    void aFrameBetweenTwoWordsShows()
    {
        const auto [nextStart, frame, minSegment, expected] = support::fetched<int, int, int, std::pair<int, int>>();
        const ShownTranscript shown({{segmentAt(0, {{1000, 1400}, {nextStart, 2200}}), segmentAt(1, {{5000, 6000}})}});
        std::pair<int, int> word{-1, -1};
        shown.window->findWordIndexFromFrame(frame, false, minSegment, word.first, word.second);
        QCOMPARE(word, expected);
    }

    void neighboursStopAtTheEnds()
    {
        const ShownTranscript shown(
            {{segmentOf(0, 0, "a b"), segmentAt(1, {}), segmentOf(2, 2000, "c d e"), segmentOf(3, 4000, "f")}});
        int segment = -1;
        int word = -1;
        QVERIFY(!shown.window->getPrevWordInfo(0, 0, nullptr, nullptr, nullptr));
        QVERIFY(!shown.window->getNextWordInfo(3, 0, nullptr, nullptr, nullptr));
        QVERIFY(shown.window->getPrevWordInfo(3, 0, &segment, &word, nullptr));
        QCOMPARE(std::make_pair(segment, word), std::make_pair(2, 2));
        QVERIFY(!shown.window->getNextWordInfo(0, 1, nullptr, nullptr, nullptr));
        QVERIFY(!shown.window->getPrevWordInfo(2, 0, nullptr, nullptr, nullptr));
        for (const auto& missing : {std::make_pair(-1, 0), {4, 0}, {0, -1}, {0, 2}, {1, 0}}) {
            QVERIFY(!shown.window->getPrevWordInfo(missing.first, missing.second, &segment, &word, nullptr));
            QVERIFY(!shown.window->getNextWordInfo(missing.first, missing.second, &segment, &word, nullptr));
            QVERIFY(!shown.window->findWordPosFromWordIndex(missing.first, missing.second, nullptr, nullptr));
        }
    }

    void aPositionBelongsToTheWordBeforeIt()
    {
        STT_TranscriptSegment quoted = segmentOf(1, 1000, "\"ab cd");
        quoted.wordStartOffsets[0] = 1;
        const ShownTranscript shown({{segmentOf(0, 0, "x"), quoted}, {}, {{"guid", "clip", 500}}});
        const int block = shown.window->getBlockNumberForSegment(1);
        QCOMPARE(block, 2);
        const int start = shown.text().document()->findBlockByNumber(block).position();
        const QVector<int> expected{0, 0, 0, 0, 1, 1, 1};
        for (int offset = 0; offset < expected.size(); ++offset) {
            int segment = -1;
            int word = -1;
            QVERIFY(shown.window->findWordIndexFromPosition(start + offset, segment, word));
            QCOMPARE(std::make_pair(segment, word), std::make_pair(1, expected[offset]));
        }
        int segment = -1;
        int word = -1;
        const int clip = shown.text().document()->findBlockByNumber(1).position();
        for (const int elsewhere : {clip, -1, start + 100})
            QVERIFY(!shown.window->findWordIndexFromPosition(elsewhere, segment, word));
    }

    void damageCostsNoMoreThanTheDamagedWords_data()
    {
        const support::Rows<QString, std::function<void(Segments&)>> row;
        row("no times", "a b c d e f", [](Segments& all) { all[1].wordStarts = all[1].wordEnds = {}; });
        row("no ends", "a b c d e f", [](Segments& all) { all[1].wordEnds.clear(); });
        row("times that run backwards", "a b c d e f",
            [](Segments& all) { std::reverse(all[1].wordStarts.begin(), all[1].wordStarts.end()); });
        row("enormous times", "a b c d e f",
            [](Segments& all) { all[2].wordStarts[0] = all[2].wordEnds[1] = 2147483647; });
        row("offsets past the block", "a b c e f", [](Segments& all) { all[1].wordEndOffsets[1] = 900; });
        row("offsets before the block", "a b d e f", [](Segments& all) { all[1].wordStartOffsets[0] = -3; });
        row("an end before its start", "a b c e f", [](Segments& all) { all[1].wordEndOffsets[1] = 1; });
        row("too few offsets", "a b c e f", [](Segments& all) { all[1].wordEndOffsets.pop_back(); });
        row("no words", "a b e f", [](Segments& all) { all[1] = segmentAt(1, {}); });
        row("line breaks", "a b c d e f", [](Segments& all) { all[1].text = "c\nd"; });
        row("emoji and combining marks", QStringLiteral("a b 👩‍🚀 é́ e f"),
            [](Segments& all) { all[1] = segmentOf(1, 1000, QStringLiteral("👩‍🚀 é́")); });
        row("inside an emoji", QStringLiteral("a b ? d e f"), [](Segments& all) {
            all[1] = segmentOf(1, 1000, QStringLiteral("😀 d"));
            all[1].wordEndOffsets[0] = 1;
        });
        row("not UTF-8", "a b c d e f", [](Segments& all) {
            all[1].text = "c\xff"
                          "d";
        });
    }

    void damageCostsNoMoreThanTheDamagedWords()
    {
        const auto [expected, damage] = support::fetched<QString, std::function<void(Segments&)>>();
        Segments segments{segmentOf(0, 0, "a b"), segmentOf(1, 1000, "c d"), segmentOf(2, 2000, "e f")};
        damage(segments);
        const ShownTranscript shown({segments});
        QStringList found;
        for (int segment = -1; segment < 4; ++segment) {
            for (int word = -1; word < 3; ++word) {
                int start = -1;
                int end = -1;
                if (!shown.window->findWordPosFromWordIndex(segment, word, &start, &end))
                    continue;
                QTextCursor cursor(shown.text().document());
                cursor.setPosition(start);
                cursor.setPosition(end, QTextCursor::KeepAnchor);
                found += cursor.selectedText().isValidUtf16() ? cursor.selectedText() : QStringLiteral("?");
            }
        }
        QCOMPARE(found.join(' '), expected);
        for (const bool converts : {true, false}) {
            shown.info->convertsNothing = !converts;
            for (int frame = -2; frame < 100; ++frame)
                shown.window->MonPosChangedSlot(frame);
            for (const int key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Left})
                QTest::keyClick(&shown.text(), Qt::Key(key));
            for (int x = 0; x < 800; x += 30)
                QTest::mouseClick(shown.text().viewport(), Qt::LeftButton, {}, {x, 60});
            shown.text().selectAll();
            shown.window->setMarksFromSelection();
        }
    }

    void speakersAreOrderedAndNamedOnce()
    {
        const ShownTranscript shown(
            {{segmentOf(0, 0, "a")}, {{"3", "", "Zoe"}, {"10", "", ""}, {"4", "", "Zoe"}, {"2", "", "Ada"}}});
        QStringList names;
        for (const STT_SpeakerInfo& speaker : shown.window->getSpeakersInfo(true))
            names += speaker.displayName();
        QCOMPARE(names, QStringList({"Ada", "Speaker 10", "Zoe"}));
    }
};

STRATACUT_TEST_MAIN(TestTranscriptLookup)
#include "tst_transcript_lookup.moc"
