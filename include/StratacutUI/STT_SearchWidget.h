#pragma once

#include "StratacutUI/Export.h"

#include <QRegularExpression>
#include <QTextEdit>
#include <QTimer>
#include <QWidget>

#include <tuple>
#include <vector>

class QAction;
class QLabel;
class QLineEdit;
class STT_TranscriptManagerWindow;
class STT_TranscriptTextEdit;

/// The search bar of a transcript window, its parent: highlights every occurrence of a word or phrase in the transcript
/// and steps from one to the next in reading order. The window makes its own. With any other parent it does nothing.
///
/// Case and punctuation do not matter, and an occurrence may lie inside a word. What is in view is highlighted at once;
/// the rest of a long transcript is searched in slices from the event loop. User-interface thread only.
class STRATACUTUI_EXPORT STT_SearchWidget : public QWidget
{
    Q_OBJECT

public:
    enum Direction {
        next = 0,
        previous = 1,
    };
    Q_ENUM(Direction)

    explicit STT_SearchWidget(QWidget* parent = nullptr);

    /// What is highlighted for a text that a user typed: its words in their order with any blanks and punctuation
    /// between them. An empty pattern for a text without words.
    static QRegularExpression expressionFor(const QString& typed);

    /// Whether occurrences further down are still being looked for.
    bool isSearching() const { return m_rest.isActive(); }

Q_SIGNALS:
    /// The user asks for the next or the previous occurrence.
    void searchText(STT_SearchWidget::Direction direction);

public Q_SLOTS:
    void onSearchLabelTextChanged();
    void onPreviousClicked();
    void onNextClicked();
    /// Searches for what is selected in the transcript.
    void onSetSelectedClicked();
    /// Highlights anew after the window rebuilt its text.
    void onRefreshDone();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Command;

    struct Match {
        int start = 0;
        int end = 0;
    };

    static bool startsBefore(const Match& match, int position) { return match.start < position; }

    /// A place in reading order. Relative to its block it holds while blocks above turn out higher or lower.
    struct ReadingPoint {
        int block = 0;
        qreal y = 0;
        qreal x = 0;

        bool operator<(const ReadingPoint& other) const
        {
            return std::tie(block, y, x) < std::tie(other.block, other.y, other.x);
        }
    };

    /// A place in the transcript that outlives a rebuild of the text.
    struct Place {
        int segment = -1;
        int offset = 0;
    };

    /// Indexes into the matches, the end excluded.
    struct Range {
        int from = 0;
        int to = 0;

        bool holds(int match) const { return match >= from && match < to; }
    };

    void createWidgets();
    QAction* createAction(const Command& command);
    void layOut();
    void connectAll();
    void showImages();
    void focusLine();

    STT_TranscriptManagerWindow* transcriptWindow() const;
    STT_TranscriptTextEdit* transcriptText() const;

    // Finding
    void startWhereTheUserReads();
    void highlight();
    void searchSlice();
    void readText();
    void finishSearch();
    void takeMatches(int milliseconds);

    // Showing
    void dropHighlights();
    void lay(Range matches);
    void layMore();
    Range withNeighbours(Range matches, int count) const;
    void showSelections();
    void layFirstHits();
    void layInView();
    void showCount();
    QList<QTextEdit::ExtraSelection> selectionsOf(Range matches) const;
    QTextCursor cursorOf(const Match& match) const;
    Range matchesOfBlocks(int first, int last) const;

    ReadingPoint topOfView() const;
    ReadingPoint pointOf(const QTextCursor& cursor) const;
    ReadingPoint pointOf(int match) const;

    // Stepping
    void step(Direction direction);
    void makeCurrent(int match);
    void findCurrentAgain();
    int firstAfter(const ReadingPoint& point) const;
    int lastBefore(const ReadingPoint& point) const;
    std::vector<int> inReadingOrder(Range matches) const;
    Range lineOf(int match) const;
    Range lineFrom(const ReadingPoint& point) const;

    ReadingPoint m_position;
    int m_current = -1;
    Place m_currentPlace;
    STT_TranscriptTextEdit* m_textEdit = nullptr;
    QLineEdit* m_line = nullptr;
    std::vector<Match> m_matches;
    bool m_isActive = false;

    QRegularExpression m_expression;
    QString m_text;
    QRegularExpressionMatchIterator m_found;
    QTimer m_rest;
    QTimer m_spread;
    /// The text was replaced since it was searched.
    bool m_isOutdated = false;
    /// The matches that have a highlight; m_selections has one for each of them.
    Range m_laid;
    QList<QTextEdit::ExtraSelection> m_selections;

    QAction* m_next = nullptr;
    QAction* m_previous = nullptr;
    QLabel* m_count = nullptr;
};
