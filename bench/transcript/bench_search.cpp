// A search with 10,000 hits in 200,000 words: against a short transcript, and against handing the hits to the text
// edit.

#include "StratacutUI/STT_SearchWidget.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "support/RecordingTranscriptInfo.h"
#include "support/Turns.h"

#include <QApplication>
#include <QLineEdit>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace
{
constexpr int wordsASegment = 10;
const QLatin1String needle("needle");

/// Without what it leaves to the event loop.
double milliseconds(const std::function<void()>& action)
{
    const double start = turns::now();
    action();
    return turns::now() - start;
}

void print(const char* question, double measured, double peer, const char* limit)
{
    turns::print(question, {measured, peer}, limit);
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
        return typeOneMore();
    }

    /// The same when nobody has typed for so long that all hits of the text before have their highlights.
    double typeAfterAPause() const
    {
        line->setText(needle.chopped(1));
        const int hits = text->toPlainText().count(needle);
        while (text->extraSelections().size() < hits)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return typeOneMore();
    }

    double typeOneMore() const
    {
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

/// The shortest of some times: what else the machine does only adds to them.
template <class Action>
double shortest(int rounds, const Action& action)
{
    double time = action();
    while (--rounds > 0)
        time = std::min(time, double(action()));
    return time;
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Transcript small(2000);
    const Transcript large(200000);

    const double first = shortest(31, [&] { return large.typeLastLetter(); });
    print("search 200,000 words, 10,000 hits: key to first hits, against 2,000 words", first,
          shortest(31, [&] { return small.typeLastLetter(); }), "1.5 x");
    const double set = shortest(9, [&] { return large.setAllHighlights(); });
    print("the same once all former hits are highlighted, against one setExtraSelections",
          shortest(9, [&] { return large.typeAfterAPause(); }), set, "no limit: once after a pause");
    const double pause = shortest(15, [&] {
        large.typeLastLetter();
        return large.finish();
    });
    print("the same: longest pause while the rest follows, against one setExtraSelections", pause, set, "none");
    for (const auto& [name, slot] : {std::pair("next", &STT_SearchWidget::onNextClicked),
                                     std::pair("previous", &STT_SearchWidget::onPreviousClicked)}) {
        constexpr int steps = 200; // some of them scroll
        double time = 0;
        for (int round = 0; round < steps; ++round) {
            time += milliseconds([&, slot = slot] { (large.bar->*slot)(); });
            QCoreApplication::processEvents();
        }
        print((std::string("the same: ") + name + ", against one setExtraSelections").c_str(), time / steps, set,
              "1 x");
    }
    return 0;
}
