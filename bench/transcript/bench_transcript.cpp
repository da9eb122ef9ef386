// The transcript window at 2,000 to 1,000,000 words: opening against the mere filling of a document with the same text;
// a step of playback and a change of width against the shortest transcript, and against a text edit with Qt's layout.

#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "support/RecordingTranscriptInfo.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTextBlock>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace
{
constexpr int wordsASegment = 10;
constexpr int fewest = 2000;
constexpr int compared = 200000;
constexpr int most = 1000000;
const QSize windowSize(1000, 760);

double milliseconds(const std::function<void()>& action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    QCoreApplication::processEvents();
    return double(timer.nsecsElapsed()) / 1e6;
}

double medianOf(std::vector<double> times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

struct Pair {
    double first;
    double second;
};

/// Takes turns, so that both meet the same state of the machine.
Pair medians(int rounds, const std::function<void(int)>& first, const std::function<void(int)>& second)
{
    std::vector<double> firstTimes;
    std::vector<double> secondTimes;
    for (int round = 0; round < rounds; ++round) {
        firstTimes.push_back(milliseconds([&] { first(round); }));
        secondTimes.push_back(milliseconds([&] { second(round); }));
    }
    return {medianOf(firstTimes), medianOf(secondTimes)};
}

void print(const char* question, int words, const Pair& times, const char* limit)
{
    std::printf("%s, %d words | %.3f x (%.3f against %.3f ms) | %s\n", question, words, times.first / times.second,
                times.first, times.second, limit);
}

QString textOf(const std::vector<STT_TranscriptSegment>& segments)
{
    QString text;
    for (const STT_TranscriptSegment& segment : segments)
        text += QString::fromStdString(segment.text) + '\n';
    text.chop(1);
    return text;
}

struct Transcript {
    explicit Transcript(int count) : words(count)
    {
        auto info = std::make_unique<support::RecordingTranscriptInfo>();
        host = info.get();
        window = std::make_unique<STT_TranscriptManagerWindow>(std::move(info));
        window->resize(windowSize);
        window->show();
        host->source.segments = support::transcriptOf(words / wordsASegment, wordsASegment);
        open();
        QCoreApplication::processEvents();
    }

    /// Up to the first paint.
    void open() const
    {
        window->UpdateTranscriptWindow();
        window->getTranscriptTextEdit()->viewport()->repaint();
    }

    /// From the middle on, a word a round.
    void step(int round) const { window->NowPlayingSlot((words / 2 + round) * 500L / 40); }

    void changeWidth(int round) const { window->resize(windowSize - QSize(round % 2 ? 0 : 150, 0)); }

    int words;
    support::RecordingTranscriptInfo* host = nullptr;
    std::unique_ptr<STT_TranscriptManagerWindow> window;
};

/// The same text and the same step in a text edit as Qt makes it.
struct Stock {
    explicit Stock(const Transcript& transcript)
    {
        edit.setFont(transcript.window->getTranscriptTextEdit()->document()->defaultFont());
        edit.setReadOnly(true);
        edit.setUndoRedoEnabled(false);
        edit.setPlainText(textOf(transcript.host->source.segments));
        edit.resize(windowSize);
        edit.show();
        for (int round = 0; round < 100; ++round)
            QCoreApplication::processEvents();
        block = edit.document()->findBlockByNumber(edit.document()->blockCount() / 2);
        bold = QTextCursor(block);
        bold.movePosition(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
    }

    void step(int)
    {
        setWeight(QFont::Normal);
        bold.movePosition(QTextCursor::NextWord);
        bold.movePosition(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
        setWeight(QFont::Bold);
        const QRect place = edit.cursorRect(bold);
        QScrollBar* bar = edit.verticalScrollBar();
        if (!edit.viewport()->rect().contains(place))
            bar->setValue(bar->value() + place.top() - edit.height() / 2);
    }

    void setWeight(int weight)
    {
        QTextCharFormat format;
        format.setFontWeight(weight);
        bold.mergeCharFormat(format);
    }

    void changeWidth(int round) { edit.resize(windowSize - QSize(round % 2 ? 0 : 150, 0)); }

    QTextEdit edit;
    QTextBlock block;
    QTextCursor bold;
};

void measureOpening(const Transcript& transcript)
{
    const QString text = textOf(transcript.host->source.segments);
    const int rounds = transcript.words >= compared ? 7 : 31;
    const auto fillBare = [&text](int) {
        QTextDocument bare;
        bare.setUndoRedoEnabled(false);
        bare.setPlainText(text);
    };
    const Pair times = medians(
        rounds, [&transcript](int) { transcript.open(); }, fillBare);
    print("open a transcript up to its first paint, against filling a bare document", transcript.words, times, "1.5 x");
}

void measureSteps(const Transcript& few, const Transcript& transcript)
{
    constexpr int rounds = 400;
    print("step of playback, against the same at 2,000 words", transcript.words,
          medians(
              rounds, [&](int round) { transcript.step(round); }, [&](int round) { few.step(round); }),
          "1.5 x");
    print("change of width, against the same at 2,000 words", transcript.words,
          medians(
              61, [&](int round) { transcript.changeWidth(round); }, [&](int round) { few.changeWidth(round); }),
          "1.5 x");
}

double median(int rounds, const std::function<void(int)>& action)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round)
        times.push_back(milliseconds([&] { action(round); }));
    return medianOf(times);
}

/// One after the other: Qt's layout goes on in the background for a while, which the turn after it would pay for.
void compareWithStock(const Transcript& transcript)
{
    const double step = median(100, [&](int round) { transcript.step(round); });
    const double width = median(9, [&](int round) { transcript.changeWidth(round); });
    Stock stock(transcript);
    print("step of playback, against Qt's layout", transcript.words,
          {step, median(100, [&](int round) { stock.step(round); })}, "0.05 x");
    print("change of width, against Qt's layout", transcript.words,
          {width, median(9, [&](int round) { stock.changeWidth(round); })}, "0.05 x");
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Transcript few(fewest);
    for (const int words : {fewest, 20000, compared, most}) {
        const Transcript transcript(words);
        measureOpening(transcript);
        measureSteps(few, transcript);
        if (words == compared)
            compareWithStock(transcript);
    }
    return 0;
}
