#pragma once

#include "StratacutUI/Export.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextEdit>

#include <optional>
#include <string>
#include <vector>

class TranscriptLayout;

/// The text of a transcript: read-only, one block a line, with a document layout of its own whose steps do not grow
/// with the document.
///
/// The layout measures the blocks that come into view and estimates all others. So positions in document coordinates
/// are exact for what is in view and hold until the next scroll, resize or change of the text; a line of text that
/// widgets belong to is placed anew at each visibleLinesChanged. User-interface thread only.
class STRATACUTUI_EXPORT STT_TranscriptTextEdit : public QTextEdit
{
    Q_OBJECT

public:
    /// Numbers of blocks, both inside; first is -1 when no block is in view.
    struct BlockRange {
        int first = -1;
        int last = -1;
    };

    /// A whole text, one block a line.
    class STRATACUTUI_EXPORT Lines
    {
    public:
        /// @param format of every line.
        explicit Lines(const QTextBlockFormat& format) : m_format(format) {}

        void reserve(int lines, int characters);

        /// Line breaks and other characters that would end a block become blanks, so that offsets in the line hold.
        /// @param line UTF-8. @param state the block's user state; -1 for one that is no segment.
        void add(const std::string& line, int state);

        int count() const { return int(m_states.size()); }

    private:
        friend class STT_TranscriptTextEdit;

        QString m_text;
        std::vector<int> m_states;
        QTextBlockFormat m_format;
    };

    /// While one exists, nothing is measured: thousands of cursors and highlights can be set. Places asked for are
    /// estimates; they keep the order of positions, from top to bottom and from left to right.
    class STRATACUTUI_EXPORT Estimates
    {
    public:
        explicit Estimates(const STT_TranscriptTextEdit& edit);
        ~Estimates();
        Estimates(const Estimates&) = delete;
        Estimates& operator=(const Estimates&) = delete;

    private:
        TranscriptLayout& m_layout;
        bool m_former;
    };

    explicit STT_TranscriptTextEdit(QWidget* parent = nullptr);
    ~STT_TranscriptTextEdit() override;

    /// Replaces the whole text and shows its beginning.
    void setLines(const Lines& lines);

    /// Adds those lines that were added to the ones of setLines since; the view stays where it is.
    void addLines(const Lines& lines);
    /// More lines than this are never in view at a time.
    int mostLinesInView() const;

    /// Merges a format into that of every block; the place that is in view stays.
    void mergeBlockFormats(const QTextBlockFormat& format);

    /// Merges a weight and a colour into a word, the cursor's selection, whose place holds the width of its bold form.
    void mergeWordFormat(QTextCursor& word, const QTextCharFormat& format);

    /// What is at the upper edge of the view, in a way that outlives a change of the text.
    struct View {
        int block = 0;
        /// From the edge down to the block, in pixels.
        int top = 0;
    };

    View view() const;
    void restoreView(const View& view);

    /// Blocks that take no room, in ascending order; numbers outside of the text are left out.
    void setHiddenBlocks(const std::vector<int>& blocks);

    /// Shows the text in a font; the place that is in view stays.
    void setTranscriptFont(const QFont& font);

    /// The blocks of which at least one pixel is in view; hidden ones among them do not count as first or last.
    BlockRange visibleBlocks() const;

    /// Where the text of a block stands, in viewport coordinates, over the full width of the viewport: its block
    /// format's left margin is inside, its top and bottom margins are not. Measures the block.
    QRect blockRect(const QTextBlock& block) const;

    /// The place of the cursor's selection (of its position when it selects nothing) in document coordinates; of a
    /// selection over several lines, the part in the first one.
    QRectF getTranscriptRectForCursor(const QTextCursor& cursor) const;

    /// Whether a place in document coordinates is wholly in view.
    bool isInView(const QRectF& place) const;

    /// Scrolls so that the top of the cursor's place is half this widget's height below the upper edge.
    void scrollToMiddle(const QTextCursor& cursor);

    /// Selects without moving the view.
    void selectInPlace(const QTextCursor& cursor);

    TranscriptLayout& transcriptLayout() const { return *m_layout; }

Q_SIGNALS:
    /// The left button was pressed and released on one place. @param position in viewport coordinates.
    void clicked(STT_TranscriptTextEdit* edit, const QPoint& position);
    void doubleClicked(STT_TranscriptTextEdit* edit, const QPoint& position);
    void arrowKeyPressed(bool isRightArrow);
    void spacebarPressed();
    /// Other blocks are in view, or the same ones at another place.
    void visibleLinesChanged();
    /// The whole text will be replaced. Cursors in it cost time with each line; drop them.
    void aboutToBeReplaced();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    /// What stays at its place in the view while heights above it turn out differently.
    struct Anchor {
        static constexpr int End = -1;

        /// A position in the document, or End: the view is at its lower end.
        int position = 0;
        qreal top = 0;
    };

    static void setStates(const Lines& lines, QTextBlock from);
    Anchor anchorInView() const;
    qreal topOf(int position) const;
    void settle(const Anchor& anchor);

    TranscriptLayout* m_layout;
    std::vector<int> m_hidden;
    std::optional<QPoint> m_pressed;
    bool m_settling = false;
};
