#include "TranscriptLayout.h"

#include <QPainter>
#include <QStyle>
#include <QTextDocument>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace
{
// How many blocks keep their lines. More than any view shows.
constexpr std::size_t mostMeasured = 1024;
// Up to so many blocks are measured again at once after an edit; more wait until they are drawn.
constexpr int measuredAtOnce = 4;
constexpr qreal widthBeforeShown = 600;

qreal onGrid(qreal value)
{
    constexpr qreal grid = 4096;
    return std::round(value * grid) / grid;
}

qreal heightOf(const QTextLine& line)
{
    return std::ceil(line.ascent() + line.descent() + line.leading());
}

QTextLine lineAt(const QTextLayout& layout, qreal y)
{
    for (int number = 0; number < layout.lineCount(); ++number) {
        const QTextLine line = layout.lineAt(number);
        if (y < line.y() + heightOf(line))
            return line;
    }
    return layout.lineAt(layout.lineCount() - 1);
}

bool overlaps(const QAbstractTextDocumentLayout::Selection& selection, int from, int to)
{
    return selection.cursor.hasSelection() && selection.cursor.selectionStart() < to &&
           selection.cursor.selectionEnd() > from;
}

/// The word that is spoken is black where it stands on a highlight; the highlight must leave it so.
void keepBlackWords(const QTextBlock& block, QVector<QTextLayout::FormatRange>& ranges)
{
    const QVector<QTextLayout::FormatRange> selected = ranges;
    for (auto at = block.begin(); !at.atEnd(); ++at) {
        const QTextFragment fragment = at.fragment();
        if (fragment.charFormat().foreground() != QBrush(Qt::black))
            continue;
        const int start = fragment.position() - block.position();
        for (QTextLayout::FormatRange range : selected) {
            const int end = std::min(range.start + range.length, start + fragment.length());
            range.start = std::max(range.start, start);
            range.length = end - range.start;
            range.format.setForeground(Qt::black);
            if (range.length > 0)
                ranges.append(range);
        }
    }
}
} // namespace

TranscriptLayout::TranscriptLayout(QTextDocument* document)
    : QAbstractTextDocumentLayout(document), m_reserve(document->defaultFont())
{
    forgetHeights();
}

void TranscriptLayout::setHiddenBlocks(const std::vector<int>& blocks)
{
    m_hidden = blocks;
    forgetHeights();
    publishSize();
    emit update();
}

bool TranscriptLayout::isHidden(int block) const
{
    return std::binary_search(m_hidden.begin(), m_hidden.end(), block);
}

bool TranscriptLayout::setEstimating(bool on)
{
    return std::exchange(m_estimating, on);
}

void TranscriptLayout::beginReplacement()
{
    m_isReplacing = true;
    m_hidden.clear();
}

void TranscriptLayout::endReplacement()
{
    m_isReplacing = false;
    forgetHeights();
    publishSize();
    emit update();
}

void TranscriptLayout::expectFormat(int from, int to)
{
    m_expected.push_back({from, to});
}

/// Lines that nobody has looked at need not be known; those that are stay, unless words lack room for their bold form.
void TranscriptLayout::changeFormats(const std::vector<Span>& words)
{
    for (const Span& word : words) {
        const QTextBlock block = document()->findBlock(word.from);
        const QTextLayout& layout = *block.layout();
        if (layout.lineCount() == 0)
            continue;
        const int number = block.blockNumber();
        if (m_reserve.rangesFor(block) != layout.formats()) {
            forgetLines(number, number);
            measure(block);
        }
        // A letter may reach into the lines beside its own.
        const QTextLine first = layout.lineForTextPosition(word.from - block.position());
        const QTextLine last = layout.lineForTextPosition(word.to - block.position());
        if (!first.isValid() || !last.isValid())
            continue;
        const qreal top = originOf(block).y() + first.y() - heightOf(first);
        const qreal bottom = originOf(block).y() + last.y() + 2 * heightOf(last);
        const QRectF all(0, topOf(number), documentSize().width(), topOf(number + 1) - topOf(number));
        emit update(all.intersected(QRectF(0, top, all.width(), bottom - top)));
    }
    publishSize();
}

void TranscriptLayout::forgetHeights()
{
    const int count = document()->blockCount();
    m_differences.reset(count);
    m_difference.assign(std::size_t(count), 0);
    forgetLines(0, std::numeric_limits<int>::max());
    m_hidden.erase(std::lower_bound(m_hidden.begin(), m_hidden.end(), count), m_hidden.end());
    m_hidden.erase(m_hidden.begin(), std::lower_bound(m_hidden.begin(), m_hidden.end(), 0));
    if (m_reserve.font() != document()->defaultFont())
        m_reserve = BoldReserve(document()->defaultFont());
    readEstimate();
    for (const int hidden : m_hidden)
        setHeight(document()->findBlockByNumber(hidden), 0);
}

/// Blocks were added behind all others, whose heights stay.
void TranscriptLayout::growTo(int count)
{
    const int former = int(m_difference.size());
    m_difference.resize(std::size_t(count), 0);
    m_differences.reset(count);
    for (int block = 0; block < former; ++block) {
        if (m_difference[std::size_t(block)] != 0)
            m_differences.add(block, m_difference[std::size_t(block)]);
    }
}

void TranscriptLayout::readEstimate()
{
    const QTextBlock first = document()->firstBlock();
    const QFontMetricsF metrics(document()->defaultFont(), paintDevice());
    m_estimate.line = std::ceil(metrics.height() + std::max(metrics.leading(), 0.0));
    m_estimate.advance = std::max(metrics.averageCharWidth(), 1.0);
    const QTextBlockFormat format = first.blockFormat();
    m_estimate.block = onGrid(format.topMargin() + format.bottomMargin() + m_estimate.line / 2);
    m_estimate.character = onGrid(m_estimate.line * m_estimate.advance / textWidth(first));
}

/// Forgets the lines of the measured blocks between two numbers, both inside.
void TranscriptLayout::forgetLines(int from, int to)
{
    const auto isInside = [from, to](int block) { return block >= from && block <= to; };
    const auto forgotten = std::stable_partition(m_measured.begin(), m_measured.end(), std::not_fn(isInside));
    for (auto at = forgotten; at != m_measured.end(); ++at) {
        const QTextBlock block = document()->findBlockByNumber(*at);
        if (block.isValid())
            block.layout()->clearLayout();
    }
    m_measured.erase(forgotten, m_measured.end());
}

qreal TranscriptLayout::textWidth(const QTextBlock& block) const
{
    const qreal page = document()->pageSize().width() > 0 ? document()->pageSize().width() : widthBeforeShown;
    const QTextBlockFormat format = block.blockFormat();
    const qreal width = page - 2 * document()->documentMargin() - format.leftMargin() - format.rightMargin();
    // A window may be narrower than what stands beside the text.
    return std::max(width, 4 * m_estimate.advance);
}

qreal TranscriptLayout::estimatedHeight(const QTextBlock& block) const
{
    return m_estimate.block + block.length() * m_estimate.character;
}

qreal TranscriptLayout::topOf(int block) const
{
    const QTextBlock found = document()->findBlockByNumber(block);
    const int position = found.isValid() ? found.position() : document()->characterCount();
    const qreal estimated = block * m_estimate.block + position * m_estimate.character;
    return std::floor(document()->documentMargin() + estimated + m_differences.sumBefore(block));
}

int TranscriptLayout::blockAt(qreal y) const
{
    int first = 0;
    int end = document()->blockCount();
    while (end - first > 1) {
        const int middle = (first + end) / 2;
        (topOf(middle) <= y ? first : end) = middle;
    }
    while (first > 0 && isHidden(first))
        --first;
    while (isHidden(first) && first + 1 < document()->blockCount())
        ++first;
    return first;
}

void TranscriptLayout::setHeight(const QTextBlock& block, qreal height) const
{
    qreal& difference = m_difference[std::size_t(block.blockNumber())];
    const qreal now = height - estimatedHeight(block);
    m_differences.add(block.blockNumber(), now - difference);
    difference = now;
}

void TranscriptLayout::measure(const QTextBlock& block) const
{
    const int number = block.blockNumber();
    // During an edit Qt asks for blocks that have not been announced yet.
    if (m_isReplacing || number < 0 || number >= int(m_difference.size()) || isHidden(number) ||
        block.layout()->lineCount() > 0)
        return;
    if (m_measured.size() >= mostMeasured) {
        const QTextBlock oldest = document()->findBlockByNumber(m_measured.front());
        if (oldest.isValid())
            oldest.layout()->clearLayout();
        m_measured.pop_front();
    }
    const QTextBlockFormat format = block.blockFormat();
    setHeight(block, format.topMargin() + createLines(block) + format.bottomMargin());
    m_measured.push_back(number);
}

void TranscriptLayout::measureBetween(qreal top, qreal bottom) const
{
    int number = blockAt(top);
    for (QTextBlock block = document()->findBlockByNumber(number); block.isValid() && topOf(number) < bottom;
         block = block.next(), ++number)
        measure(block);
}

qreal TranscriptLayout::createLines(const QTextBlock& block) const
{
    QTextLayout& layout = *block.layout();
    QTextOption option = document()->defaultTextOption();
    option.setTextDirection(block.textDirection());
    option.setAlignment(QStyle::visualAlignment(block.textDirection(), block.blockFormat().alignment()));
    layout.setTextOption(option);
    // Setting formats reports the block as changed with the next edit, so only where they differ.
    const Ranges reserved = m_reserve.rangesFor(block);
    if (reserved != layout.formats())
        layout.setFormats(reserved);
    const qreal width = textWidth(block);
    qreal y = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += heightOf(line);
    }
    layout.endLayout();
    const QTextBlockFormat format = block.blockFormat();
    return format.lineHeightType() == QTextBlockFormat::MinimumHeight ? std::max(y, format.lineHeight()) : y;
}

void TranscriptLayout::publishSize()
{
    const QSizeF size = documentSize();
    if (size == m_publishedSize)
        return;
    m_publishedSize = size;
    emit documentSizeChanged(size);
}

/// The place of a block's first line. It moves with the heights above, so it is told to the block at each use: not
/// only the view reads it there.
QPointF TranscriptLayout::originOf(const QTextBlock& block) const
{
    const QTextBlockFormat format = block.blockFormat();
    const QPointF origin(document()->documentMargin() + format.leftMargin(),
                         topOf(block.blockNumber()) + format.topMargin());
    block.layout()->setPosition(origin);
    return origin;
}

QRectF TranscriptLayout::estimatedPlace(const QTextBlock& block, int offset) const
{
    const QTextBlockFormat format = block.blockFormat();
    const int charactersALine = std::max(1, int(textWidth(block) / m_estimate.advance));
    const qreal left = document()->documentMargin() + format.leftMargin();
    const qreal top = topOf(block.blockNumber()) + format.topMargin();
    return {left + offset % charactersALine * m_estimate.advance,
            top + std::floor(qreal(offset) / charactersALine) * m_estimate.line, m_estimate.advance, m_estimate.line};
}

QRectF TranscriptLayout::placeOf(int from, int to) const
{
    const QTextBlock block = document()->findBlock(from);
    if (!block.isValid() || isHidden(block.blockNumber()))
        return {};
    if (!m_estimating)
        measure(block);
    const int offset = from - block.position();
    const QTextLine line = block.layout()->lineForTextPosition(offset);
    if (!line.isValid())
        return estimatedPlace(block, offset);
    const int end = std::min(to - block.position(), line.textStart() + line.textLength());
    const qreal left = line.cursorToX(offset);
    const qreal right = line.cursorToX(std::max(offset, end));
    return QRectF(QPointF(std::min(left, right), line.y()), QPointF(std::max(left, right), line.y() + heightOf(line)))
        .translated(originOf(block));
}

QRectF TranscriptLayout::blockBoundingRect(const QTextBlock& block) const
{
    // Qt asks for the place of every cursor and highlight that is set and needs it only where it is in view.
    if (!block.isValid() || (m_estimating && block.layout()->lineCount() == 0))
        return {};
    if (block.blockNumber() >= int(m_difference.size()))
        return {};
    measure(block);
    const QTextBlockFormat format = block.blockFormat();
    const qreal height = isHidden(block.blockNumber())
                             ? 0
                             : estimatedHeight(block) - format.topMargin() - format.bottomMargin() +
                                   m_difference[std::size_t(block.blockNumber())];
    return {originOf(block), QSizeF(textWidth(block), height)};
}

QRectF TranscriptLayout::frameBoundingRect(QTextFrame*) const
{
    return {QPointF(), documentSize()};
}

QSizeF TranscriptLayout::documentSize() const
{
    const qreal width = document()->pageSize().width() > 0 ? document()->pageSize().width() : widthBeforeShown;
    return {width, topOf(document()->blockCount()) + document()->documentMargin()};
}

int TranscriptLayout::pageCount() const
{
    return 1;
}

int TranscriptLayout::hitTest(const QPointF& point, Qt::HitTestAccuracy accuracy) const
{
    const QTextBlock block = document()->findBlockByNumber(blockAt(point.y()));
    measure(block);
    const QTextLayout& layout = *block.layout();
    if (layout.lineCount() == 0)
        return accuracy == Qt::ExactHit ? -1 : block.position();
    const QPointF inside = point - originOf(block);
    const QTextLine line = lineAt(layout, inside.y());
    if (accuracy == Qt::ExactHit && !line.naturalTextRect().contains(inside))
        return -1;
    return block.position() + line.xToCursor(inside.x());
}

void TranscriptLayout::draw(QPainter* painter, const PaintContext& context)
{
    const QRectF clip = context.clip.isValid() ? context.clip : QRectF(QPointF(), documentSize());
    measureBetween(clip.top(), clip.bottom());
    const int first = blockAt(clip.top());
    const QTextBlock firstBlock = document()->findBlockByNumber(first);
    const QTextBlock lastBlock = document()->findBlockByNumber(blockAt(clip.bottom()));
    QVector<Selection> selections;
    const auto isDrawn = [&](const Selection& selection) {
        return overlaps(selection, firstBlock.position(), lastBlock.position() + lastBlock.length());
    };
    std::copy_if(context.selections.begin(), context.selections.end(), std::back_inserter(selections), isDrawn);
    // What is searched for shows on what is selected too: the later of two is seen.
    const QBrush selected = context.palette.highlight();
    std::stable_partition(selections.begin(), selections.end(), [&selected](const Selection& selection) {
        return selection.format.background() == selected;
    });

    painter->save();
    painter->setPen(context.palette.color(QPalette::Text));
    // Selections of right-to-left text would run out to the left.
    const qreal left = document()->documentMargin() + firstBlock.blockFormat().leftMargin();
    painter->setClipRect(QRectF(left, clip.top(), textWidth(firstBlock) + 1, clip.height()), Qt::IntersectClip);
    int number = first;
    for (QTextBlock block = firstBlock; block.isValid() && topOf(number) < clip.bottom();
         block = block.next(), ++number) {
        if (isHidden(number))
            continue;
        drawBlock(painter, clip, block, selections);
        const int cursor = context.cursorPosition - block.position();
        if (cursor >= 0 && cursor < block.length())
            drawCursor(painter, clip, block, cursor);
    }
    painter->restore();
    // Sizes are told after the painting, which the view must not be changed by.
    if (documentSize() != m_publishedSize)
        QMetaObject::invokeMethod(this, &TranscriptLayout::publishSize, Qt::QueuedConnection);
}

void TranscriptLayout::drawBlock(QPainter* painter, const QRectF& clip, const QTextBlock& block,
                                 const QVector<Selection>& selections) const
{
    const int length = block.length() - 1;
    QVector<QTextLayout::FormatRange> ranges;
    for (const Selection& selection : selections) {
        QTextLayout::FormatRange range;
        range.start = std::max(selection.cursor.selectionStart() - block.position(), 0);
        range.length = std::min(selection.cursor.selectionEnd() - block.position(), length) - range.start;
        range.format = selection.format;
        if (range.length > 0)
            ranges.append(range);
    }
    if (!ranges.isEmpty())
        keepBlackWords(block, ranges);
    originOf(block);
    block.layout()->draw(painter, {}, ranges, clip);
}

/// The place of a cursor in its line is costly in a long block, so only where the line is in view.
void TranscriptLayout::drawCursor(QPainter* painter, const QRectF& clip, const QTextBlock& block, int offset) const
{
    const QTextLayout& layout = *block.layout();
    const QTextLine line = layout.lineForTextPosition(offset);
    const qreal top = originOf(block).y() + line.y();
    if (top < clip.bottom() && top + heightOf(line) > clip.top())
        layout.drawCursor(painter, {}, offset, std::max(property("cursorWidth").toInt(), 1));
}

void TranscriptLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    if (m_isReplacing)
        return;
    const std::vector<Span> words = std::exchange(m_expected, {});
    const int former = int(m_difference.size());
    const int count = document()->blockCount();
    const QTextBlock lastKept = document()->findBlockByNumber(former - 1);
    if (count > former && charsRemoved == 0 && from == lastKept.position() + lastKept.length() - 1) {
        growTo(count);
        publishSize();
        emit update(QRectF(0, topOf(former), documentSize().width(), documentSize().height() - topOf(former)));
        return;
    }
    if (count != former || charsRemoved != charsAdded) {
        forgetHeights();
        publishSize();
        emit update();
        return;
    }
    if (!words.empty())
        return changeFormats(words);
    const int first = document()->findBlock(from).blockNumber();
    const QTextBlock lastChanged = document()->findBlock(from + std::max(charsAdded - 1, 0));
    const int last = lastChanged.isValid() ? lastChanged.blockNumber() : document()->blockCount() - 1;
    // Lines that nobody has looked at need not be measured for a word that becomes bold.
    const bool wasMeasured = std::any_of(m_measured.begin(), m_measured.end(),
                                         [first, last](int block) { return block >= first && block <= last; });
    forgetLines(first, last);
    for (int number = first; wasMeasured && number <= last && last - first < measuredAtOnce; ++number)
        measure(document()->findBlockByNumber(number));
    if (documentSize() != m_publishedSize || last - first >= measuredAtOnce) {
        publishSize();
        emit update();
    } else {
        const qreal top = topOf(first);
        emit update(QRectF(0, top, documentSize().width(), topOf(last + 1) - top));
    }
}
