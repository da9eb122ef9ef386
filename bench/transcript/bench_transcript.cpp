// The transcript window at 2,000 to 1,000,000 words: opening against the mere filling of a document with the same text;
// a step of playback and a change of width against the shortest transcript, and against a text edit with Qt's layout.

#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "support/RecordingTranscriptInfo.h"
#include "support/Turns.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStaticText>
#include <QTextBlock>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr int wordsASegment = 10;
constexpr int fewest = 2000;
constexpr int compared = 200000;
constexpr int most = 1000000;
const QSize windowSize(1000, 760);
using turns::Pair;
using turns::timed;

/// Notes when the viewport of a text, with all that stands on it, has been painted for the first time.
class PaintClock : public QApplication
{
public:
    using QApplication::QApplication;

    void watch(const QWidget* viewport)
    {
        m_viewport = viewport;
        m_paints = 0;
    }

    double painted() const { return m_painted; }

    bool notify(QObject* receiver, QEvent* event) override
    {
        const bool isPaint = event->type() == QEvent::Paint && m_viewport && receiver->isWidgetType();
        const bool result = QApplication::notify(receiver, event);
        if (!isPaint || (receiver != m_viewport && !m_viewport->isAncestorOf(static_cast<QWidget*>(receiver))))
            return result;
        m_paints += receiver == m_viewport;
        if (m_paints == 1)
            m_painted = turns::now();
        return result;
    }

private:
    const QWidget* m_viewport = nullptr;
    int m_paints = 0;
    double m_painted = 0;
};

struct Opening {
    double firstPaint = 0;
    double whole = 0;
};

Opening timesOf(PaintClock& clock, const QWidget* viewport, const std::function<void()>& open)
{
    clock.watch(viewport);
    const double start = turns::now();
    const double whole = turns::milliseconds(open);
    clock.watch(nullptr);
    return {clock.painted() - start, whole};
}

void print(const char* question, int words, const Pair& times, const char* limit)
{
    turns::print((question + (", " + std::to_string(words)) + " words").c_str(), times, limit);
}

QString textOf(const std::vector<STT_TranscriptSegment>& segments)
{
    QString text;
    for (const STT_TranscriptSegment& segment : segments)
        text += QString::fromStdString(segment.text) + '\n';
    text.chop(1);
    return text;
}

/// As long, with other words in other lines and other speakers.
std::vector<STT_TranscriptSegment> otherThan(std::vector<STT_TranscriptSegment> segments)
{
    const int count = int(segments.size());
    for (int number = 0; number < count / 2; ++number) {
        std::swap(segments[std::size_t(number)].text, segments[std::size_t(count - 1 - number)].text);
        std::swap(segments[std::size_t(number)].wordStartOffsets,
                  segments[std::size_t(count - 1 - number)].wordStartOffsets);
        std::swap(segments[std::size_t(number)].wordEndOffsets,
                  segments[std::size_t(count - 1 - number)].wordEndOffsets);
    }
    for (STT_TranscriptSegment& segment : segments)
        segment.speakerKey += 10;
    return segments;
}

struct Transcript {
    Transcript(PaintClock& clock, int count) : words(count)
    {
        auto info = std::make_unique<support::RecordingTranscriptInfo>();
        host = info.get();
        host->source.segments = support::transcriptOf(words / wordsASegment, wordsASegment);
        const double start = turns::now();
        window = std::make_unique<STT_TranscriptManagerWindow>(std::move(info));
        clock.watch(text()->viewport());
        window->resize(windowSize);
        window->show();
        for (int round = 0; round < 5; ++round)
            QCoreApplication::processEvents();
        clock.watch(nullptr);
        opening = clock.painted() - start;
    }

    STT_TranscriptTextEdit* text() const { return window->getTranscriptTextEdit(); }

    /// From the middle on, a word a round.
    void step(int round) const { window->NowPlayingSlot((words / 2 + round) * 500L / 40); }

    void changeWidth(int round) const { window->resize(windowSize - QSize(round % 2 ? 0 : 150, 0)); }

    int words;
    /// The window's too.
    double opening = 0;
    support::RecordingTranscriptInfo* host = nullptr;
    std::unique_ptr<STT_TranscriptManagerWindow> window;
};

/// The same text and the same step in a text edit as Qt makes it.
struct Stock {
    explicit Stock(const Transcript& transcript)
    {
        edit.setFont(transcript.text()->document()->defaultFont());
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

/// A view of that size with the first lines of a text, all laid out before: what no view of a text can do without.
class LaidOut : public QWidget
{
public:
    LaidOut(const QString& text, const QFont& font)
    {
        setFont(font);
        resize(windowSize);
        const QStringList lines = text.split('\n').mid(0, height() / fontMetrics().height());
        for (const QString& line : lines) {
            m_lines.append(QStaticText(line));
            m_lines.last().setTextFormat(Qt::PlainText);
            m_lines.last().prepare({}, font);
        }
        show();
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QPainter painter(this);
        painter.fillRect(event->rect(), palette().base());
        for (int line = 0; line < m_lines.size(); ++line)
            painter.drawStaticText(0, line * fontMetrics().height(), m_lines[line]);
    }

private:
    QVector<QStaticText> m_lines;
};

/// Another transcript than the one that is shown, as when the user takes another clip; and the same text in Qt's own
/// widget for long texts, which lays out what is in view too.
void measureOpening(PaintClock& clock, Transcript& transcript)
{
    const int rounds = transcript.words >= compared ? 9 : 61;
    std::vector<STT_TranscriptSegment> other = otherThan(transcript.host->source.segments);
    QPlainTextEdit plain;
    plain.setFont(transcript.text()->document()->defaultFont());
    plain.setReadOnly(true);
    plain.setUndoRedoEnabled(false);
    plain.resize(windowSize);
    plain.show();
    std::vector<double> firstPaints;
    std::vector<double> wholes;
    std::vector<double> plains;
    std::vector<double> bares;
    LaidOut laidOut(textOf(other), plain.font());
    for (int round = 0; round < rounds; ++round) {
        transcript.host->source.segments.swap(other);
        const QString text = textOf(transcript.host->source.segments);
        const Opening opening =
            timesOf(clock, transcript.text()->viewport(), [&] { transcript.window->UpdateTranscriptWindow(); });
        firstPaints.push_back(opening.firstPaint);
        wholes.push_back(opening.whole);
        plains.push_back(timesOf(clock, plain.viewport(), [&] { plain.setPlainText(text); }).firstPaint);
        bares.push_back(turns::milliseconds([&text] {
            QTextDocument bare;
            bare.setUndoRedoEnabled(false);
            bare.setPlainText(text);
        }));
    }
    const double bare = turns::medianOf(bares);
    const double plainPaint = turns::medianOf(plains);
    print("open a transcript up to its first paint, against filling a bare document", transcript.words,
          {turns::medianOf(firstPaints), bare}, "1.5 x");
    print("the same in Qt's plain text edit, without speakers and times", transcript.words, {plainPaint, bare},
          "no limit: for comparison");
    print("only to paint a view that is laid out already", transcript.words,
          {turns::median(rounds, timed([&](int) { laidOut.repaint(); })), bare}, "no limit: for comparison");
    print("open a transcript to the end, against Qt's plain text edit up to its first paint", transcript.words,
          {turns::medianOf(wholes), plainPaint}, "1.5 x");
}

void measureSteps(const Transcript& few, const Transcript& transcript)
{
    constexpr int rounds = 400;
    print("step of playback, against the same at 2,000 words", transcript.words,
          turns::medians(rounds, timed([&](int round) { transcript.step(round); }),
                         timed([&](int round) { few.step(round); })),
          "1.5 x");
    print("change of width, against the same at 2,000 words", transcript.words,
          turns::medians(61, timed([&](int round) { transcript.changeWidth(round); }),
                         timed([&](int round) { few.changeWidth(round); })),
          "1.5 x");
}

/// One after the other: Qt's layout goes on in the background for a while, which the turn after it would pay for.
void compareWithStock(const Transcript& transcript)
{
    const double step = turns::median(100, timed([&](int round) { transcript.step(round); }));
    const double width = turns::median(9, timed([&](int round) { transcript.changeWidth(round); }));
    Stock stock(transcript);
    print("step of playback, against Qt's layout", transcript.words,
          {step, turns::median(100, timed([&](int round) { stock.step(round); }))}, "0.05 x");
    print("change of width, against Qt's layout", transcript.words,
          {width, turns::median(9, timed([&](int round) { stock.changeWidth(round); }))}, "0.05 x");
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    PaintClock clock(argc, argv);
    const Transcript cold(clock, fewest);
    const Transcript few(clock, fewest);
    turns::print("first window of a process up to its first paint, against the second", {cold.opening, few.opening},
                 "no limit: fonts and images");
    for (const int words : {fewest, 20000, compared, most}) {
        Transcript transcript(clock, words);
        measureOpening(clock, transcript);
        measureSteps(few, transcript);
        if (words == compared)
            compareWithStock(transcript);
    }
    return 0;
}
