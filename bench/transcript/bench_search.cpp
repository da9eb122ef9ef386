// A search with 10,000 hits in 200,000 words: against a short transcript, and against handing the hits to the text
// edit.

#include "StratacutUI/STT_SearchWidget.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "support/RecordingTranscriptInfo.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr int wordsASegment = 10;
const QString needle = QStringLiteral("needle");

double milliseconds(const std::function<void()>& action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    return double(timer.nsecsElapsed()) / 1e6;
}

double medianOf(std::vector<double> times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

void print(const char* question, double measured, double peer, const char* limit)
{
    std::printf("%s | %.2f x (%.2f against %.2f ms) | %s\n", question, measured / peer, measured, peer, limit);
}

/// Every twentieth word is the one that is searched for.
struct Transcript {
    explicit Transcript(int words)
    {
        auto info = std::make_unique<support::RecordingTranscriptInfo>();
        info->source.segments = support::transcriptOf(words / wordsASegment, wordsASegment);
        for (size_t number = 0; number < info->source.segments.size(); number += 2) {
            STT_TranscriptSegment& segment = info->source.segments[number];
            const QString text = QString::fromStdString(segment.text);
            segment =
                support::segmentOf(segment.number, segment.wordStarts.front(), needle + text.mid(text.indexOf(' ')));
        }
        window = std::make_unique<STT_TranscriptManagerWindow>(std::move(info));
        window->resize(1000, 760);
        window->show();
        window->UpdateTranscriptWindow();
        QCoreApplication::processEvents();
        bar = window->findChild<STT_SearchWidget*>();
        line = bar->findChild<QLineEdit*>();
        text = window->getTranscriptTextEdit();
    }

    /// Types the last letter. @return from the key to the painted hits in view.
    double typeLastLetter() const
    {
        line->setText(needle.chopped(1));
        finish();
        return milliseconds([this] {
            line->setText(needle);
            text->viewport()->repaint();
        });
    }

    /// Lets the rest of a search follow. @return the longest time in which no key would have been heard.
    double finish() const
    {
        double longest = 0;
        while (bar->isSearching())
            longest = std::max(longest, milliseconds([] { QCoreApplication::processEvents(); }));
        return longest;
    }

    /// All hits set as highlights in one call on an edit that has none.
    double setAllHighlights() const
    {
        const STT_TranscriptTextEdit::Estimates estimates(*text);
        QList<QTextEdit::ExtraSelection> selections;
        for (QTextCursor hit = text->document()->find(needle); !hit.isNull(); hit = text->document()->find(needle, hit))
            selections.append({hit, {}});
        text->setExtraSelections({});
        const double time = milliseconds([&] { text->setExtraSelections(selections); });
        text->setExtraSelections({});
        return time;
    }

    std::unique_ptr<STT_TranscriptManagerWindow> window;
    STT_SearchWidget* bar = nullptr;
    QLineEdit* line = nullptr;
    STT_TranscriptTextEdit* text = nullptr;
};

template <class Action>
double median(int rounds, const Action& action)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round)
        times.push_back(action());
    return medianOf(times);
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Transcript small(2000);
    const Transcript large(200000);

    std::vector<double> pauses;
    const double first = median(15, [&] {
        const double time = large.typeLastLetter();
        pauses.push_back(large.finish());
        return time;
    });
    print("search 200,000 words, 10,000 hits: key to first hits, against 2,000 words", first,
          median(15, [&] { return small.typeLastLetter(); }), "1.5 x");
    const double set = median(5, [&] { return large.setAllHighlights(); });
    print("the same: longest pause while the rest follows, against one setExtraSelections", medianOf(pauses), set,
          "none");
    for (const auto& [name, slot] : {std::pair("next", &STT_SearchWidget::onNextClicked),
                                     std::pair("previous", &STT_SearchWidget::onPreviousClicked)}) {
        const double step = median(101, [&, slot = slot] {
            const double time = milliseconds([&] { (large.bar->*slot)(); });
            QCoreApplication::processEvents();
            return time;
        });
        print((std::string("the same: ") + name + ", against one setExtraSelections").c_str(), step, set, "1 x");
    }
    return 0;
}
