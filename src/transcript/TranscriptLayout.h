#pragma once

#include "BoldReserve.h"
#include "HeightTree.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>

#include <deque>
#include <vector>

/// Lays out a document of plain blocks, each only when it is needed, so that neither an edit nor a change of width
/// costs more in a long document than in a short one.
///
/// A block that has not been measured counts with an estimate that is linear in its length, so that a sum of estimates
/// needs no walk over blocks; what measured blocks differ from theirs is kept in a tree of sums. Lines are kept for the
/// blocks that were measured last. All blocks are taken to have the margins of the first one until they are measured.
class TranscriptLayout : public QAbstractTextDocumentLayout
{
    Q_OBJECT

public:
    explicit TranscriptLayout(QTextDocument* document);

    /// Blocks that take no room, in ascending order.
    void setHiddenBlocks(const std::vector<int>& blocks);
    bool isHidden(int block) const;

    /// While estimating, nothing is measured. @return whether it estimated before.
    bool setEstimating(bool on);

    /// Between the two, edits are not looked at: the whole text is being replaced.
    void beginReplacement();
    void endReplacement();

    /// The next edit changes, among others, the format of the text between two positions of one block, which keeps its
    /// width: then no line is made anew.
    void expectFormat(int from, int to);

    /// Forgets all heights: margins or fonts of all blocks have changed.
    void forgetHeights();
    void measure(const QTextBlock& block) const;
    /// Measures what lies between two heights.
    void measureBetween(qreal top, qreal bottom) const;
    /// Tells the view about heights that have changed.
    void publishSize();

    /// The upper edge of a block's margin; a whole number.
    qreal topOf(int block) const;
    /// The block at a height that is not hidden; the first or the last one outside.
    int blockAt(qreal y) const;
    /// Where the text between two positions of one block stands; of several lines, the part in the first one.
    QRectF placeOf(int from, int to) const;

    void draw(QPainter* painter, const PaintContext& context) override;
    int hitTest(const QPointF& point, Qt::HitTestAccuracy accuracy) const override;
    int pageCount() const override;
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame* frame) const override;
    /// The lines of a block without its margins.
    QRectF blockBoundingRect(const QTextBlock& block) const override;

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    using Ranges = QVector<QTextLayout::FormatRange>;

    /// All multiples of a power of two, so that sums are exact.
    struct Estimate {
        qreal block = 0;
        qreal character = 0;
        qreal line = 1;
        qreal advance = 1;
    };

    /// Positions in the document, the end excluded.
    struct Span {
        int from;
        int to;
    };

    void growTo(int count);
    void changeFormats(const std::vector<Span>& words);
    void readEstimate();
    qreal estimatedHeight(const QTextBlock& block) const;
    qreal textWidth(const QTextBlock& block) const;
    qreal createLines(const QTextBlock& block) const;
    void setHeight(const QTextBlock& block, qreal height) const;
    void forgetLines(int from, int to);
    QPointF originOf(const QTextBlock& block) const;
    QRectF estimatedPlace(const QTextBlock& block, int offset) const;
    void drawBlock(QPainter* painter, const QRectF& clip, const QTextBlock& block,
                   const QVector<Selection>& selections) const;
    void drawCursor(QPainter* painter, const QRectF& clip, const QTextBlock& block, int offset) const;

    std::vector<int> m_hidden;
    Estimate m_estimate;
    BoldReserve m_reserve;
    QSizeF m_publishedSize;
    bool m_estimating = false;
    bool m_isReplacing = false;
    std::vector<Span> m_expected;
    // What measuring leaves; it is asked for by functions that Qt declares const.
    mutable HeightTree m_differences;
    mutable std::vector<qreal> m_difference;
    /// Blocks that have lines, the ones measured last at the end.
    mutable std::deque<int> m_measured;
};
