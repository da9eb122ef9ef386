// The highlights of a search and the way from one match to the next.

#include "NvCore/NvRGBColor.h"
#include "NvCore/NvText.h"
#include "StratacutUI/STT_SearchWidget.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QAbstractTextDocumentLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QTextBlock>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace
{
// So many matches on either side of the view are highlighted with those in it: the next key takes them back.
constexpr int highlightsAtOnce = 100;
// The others get theirs when nobody has typed for a while, so many at a time.
constexpr int highlightsASlice = 500;
constexpr int typingPauseMs = 300;
// The edit looks at all highlights whenever it paints: of more matches only those round the view have one.
constexpr int mostHighlights = 20000;

QTextCharFormat highlight(NvRGBColor background)
{
    QTextCharFormat format;
    format.setBackground(background.toQColor());
    format.setForeground(RGBblack.toQColor());
    return format;
}

const QTextCharFormat& formatOf(bool isCurrent)
{
    static const QTextCharFormat current = highlight(RGBorange);
    static const QTextCharFormat match = highlight(RGByellow);
    return isCurrent ? current : match;
}

QString countText(int current, int matches)
{
    const QLocale locale;
    if (matches == 0)
        return stx_func("Not found");
    if (current < 0)
        return stx_func("%1 found").toQString().arg(locale.toString(matches));
    return stx_func("%1 of %2").toQString().arg(locale.toString(current + 1), locale.toString(matches));
}
} // namespace

QTextCursor STT_SearchWidget::cursorOf(const Match& match) const
{
    QTextCursor cursor(transcriptText()->document());
    cursor.setPosition(match.start);
    cursor.setPosition(match.end, QTextCursor::KeepAnchor);
    return cursor;
}

QList<QTextEdit::ExtraSelection> STT_SearchWidget::selectionsOf(Range matches) const
{
    const STT_TranscriptTextEdit::Estimates estimates(*transcriptText());
    QList<QTextEdit::ExtraSelection> selections;
    for (int match = matches.from; match < matches.to; ++match)
        selections += {cursorOf(m_matches[size_t(match)]), formatOf(match == m_current)};
    return selections;
}

STT_SearchWidget::Range STT_SearchWidget::withNeighbours(Range matches, int count) const
{
    return {std::max(matches.from - count, 0), std::min(matches.to + count, int(m_matches.size()))};
}

void STT_SearchWidget::lay(Range matches)
{
    m_laid = matches;
    m_selections = selectionsOf(matches);
    showSelections();
    if (int(m_matches.size()) <= mostHighlights)
        m_spread.start(typingPauseMs);
}

void STT_SearchWidget::layMore()
{
    m_spread.start(0);
    const Range wider = withNeighbours(m_laid, highlightsASlice);
    if (wider.from == m_laid.from && wider.to == m_laid.to)
        return m_spread.stop();
    m_selections = selectionsOf({wider.from, m_laid.from}) + m_selections + selectionsOf({m_laid.to, wider.to});
    m_laid = wider;
    showSelections();
}

/// The text is about to be another: each of its lines would ask every highlight where it is then.
void STT_SearchWidget::dropHighlights()
{
    m_rest.stop();
    m_spread.stop();
    m_matches.clear();
    m_selections.clear();
    m_laid = {};
    m_current = -1;
    m_isOutdated = true;
    showSelections();
}

/// The edit asks for the places of all highlights that come or go, to repaint them; they are not worth being measured.
void STT_SearchWidget::showSelections()
{
    STT_TranscriptTextEdit* text = transcriptText();
    {
        const STT_TranscriptTextEdit::Estimates estimates(*text);
        text->setExtraSelections(m_selections);
    }
    text->viewport()->update();
}

/// What is in view does not wait for the search of the whole text.
void STT_SearchWidget::layFirstHits()
{
    STT_TranscriptTextEdit* text = transcriptText();
    const STT_TranscriptTextEdit::BlockRange view = text->visibleBlocks();
    QTextBlock block = text->document()->findBlockByNumber(view.first);
    const int start = block.position();
    QString inView;
    for (; block.isValid() && block.blockNumber() <= view.last; block = block.next())
        inView += block.text() + QChar(QChar::ParagraphSeparator);
    m_laid = {};
    m_selections.clear();
    for (QRegularExpressionMatchIterator found = m_expression.globalMatch(inView); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        m_selections += {cursorOf({start + match.capturedStart(), start + match.capturedEnd()}), formatOf(false)};
    }
    showSelections();
}

void STT_SearchWidget::layInView()
{
    if (!m_isActive || m_isOutdated)
        return;
    if (isSearching())
        return layFirstHits();
    const STT_TranscriptTextEdit::BlockRange view = transcriptText()->visibleBlocks();
    if (view.first < 0 || m_matches.empty())
        return;
    const Range seen = matchesOfBlocks(view.first, view.last);
    if (m_selections.isEmpty() || seen.from < m_laid.from || seen.to > m_laid.to)
        lay(withNeighbours(seen, highlightsAtOnce));
}

void STT_SearchWidget::showCount()
{
    m_count->setText(m_isActive && !isSearching() ? countText(m_current, int(m_matches.size())) : QString());
}

STT_SearchWidget::Range STT_SearchWidget::matchesOfBlocks(int first, int last) const
{
    const QTextDocument* document = transcriptText()->document();
    const QTextBlock end = document->findBlockByNumber(last);
    const auto from = [this](int position) {
        return int(std::lower_bound(m_matches.begin(), m_matches.end(), position, startsBefore) - m_matches.begin());
    };
    return {from(document->findBlockByNumber(first).position()), from(end.position() + end.length())};
}

STT_SearchWidget::ReadingPoint STT_SearchWidget::pointOf(const QTextCursor& cursor) const
{
    const STT_TranscriptTextEdit* text = transcriptText();
    const QTextBlock block = text->document()->findBlock(cursor.selectionStart());
    text->blockRect(block); // measures it
    const qreal top = text->document()->documentLayout()->blockBoundingRect(block).top();
    const QPointF place = text->getTranscriptRectForCursor(cursor).topLeft();
    return {block.blockNumber(), std::round(place.y() - top), place.x()};
}

STT_SearchWidget::ReadingPoint STT_SearchWidget::pointOf(int match) const
{
    return pointOf(cursorOf(m_matches[size_t(match)]));
}

STT_SearchWidget::ReadingPoint STT_SearchWidget::topOfView() const
{
    const STT_TranscriptTextEdit* text = transcriptText();
    const int first = std::max(text->visibleBlocks().first, 0);
    return {first, qreal(-text->blockRect(text->document()->findBlockByNumber(first)).top()), 0};
}

/// The matches of one line need not be in the order of their positions: text may run from right to left.
std::vector<int> STT_SearchWidget::inReadingOrder(Range matches) const
{
    std::vector<std::pair<ReadingPoint, int>> points;
    for (int match = matches.from; match < matches.to; ++match)
        points.emplace_back(pointOf(match), match);
    std::sort(points.begin(), points.end());
    std::vector<int> ordered;
    for (const auto& [point, match] : points)
        ordered.push_back(match);
    return ordered;
}

/// The matches that stand on one line of text with a match.
STT_SearchWidget::Range STT_SearchWidget::lineOf(int match) const
{
    const auto isBeside = [this, line = pointOf(match)](int other) {
        const ReadingPoint point = pointOf(other);
        return point.block == line.block && point.y == line.y;
    };
    Range range{match, match + 1};
    while (range.from > 0 && isBeside(range.from - 1))
        --range.from;
    while (range.to < int(m_matches.size()) && isBeside(range.to))
        ++range.to;
    return range;
}

/// The matches of the first line that does not end above a point: lines are in the order of positions, even where text
/// on them is not.
STT_SearchWidget::Range STT_SearchWidget::lineFrom(const ReadingPoint& point) const
{
    Range block = matchesOfBlocks(point.block, point.block);
    const int end = block.to;
    while (block.from < block.to) {
        const int middle = (block.from + block.to) / 2;
        if (pointOf(middle).y < point.y)
            block.from = middle + 1;
        else
            block.to = middle;
    }
    return block.from < end ? lineOf(block.from) : Range{block.from, block.from};
}

int STT_SearchWidget::firstAfter(const ReadingPoint& point) const
{
    const Range line = lineFrom(point);
    const std::vector<int> ordered = inReadingOrder(line);
    for (const int match : ordered) {
        if (point < pointOf(match))
            return match;
    }
    return inReadingOrder(lineOf(line.to < int(m_matches.size()) ? line.to : 0)).front();
}

int STT_SearchWidget::lastBefore(const ReadingPoint& point) const
{
    const Range line = lineFrom(point);
    std::vector<int> ordered = inReadingOrder(line);
    std::reverse(ordered.begin(), ordered.end());
    for (const int match : std::as_const(ordered)) {
        if (pointOf(match) < point)
            return match;
    }
    return inReadingOrder(lineOf((line.from > 0 ? line.from : int(m_matches.size())) - 1)).back();
}

void STT_SearchWidget::step(Direction direction)
{
    auto* window = transcriptWindow();
    const bool hasLines = window && window->getBlockNumberForSegment(0) >= 0;
    if (!hasLines || m_line->text().isEmpty() || !m_isActive)
        return;
    if (isSearching())
        finishSearch();
    if (m_matches.empty())
        return;
    if (!m_textEdit)
        m_position = topOfView();
    else if (m_current >= 0)
        m_position = pointOf(m_current); // the text may have another width now
    makeCurrent(direction == next ? firstAfter(m_position) : lastBefore(m_position));
}

/// A rebuild need not have touched the match where the user is.
void STT_SearchWidget::findCurrentAgain()
{
    auto* window = transcriptWindow();
    const int number = window->getBlockNumberForSegment(m_currentPlace.segment);
    const QTextBlock block = transcriptText()->document()->findBlockByNumber(number);
    const int start = block.position() + m_currentPlace.offset;
    const auto found = std::lower_bound(m_matches.begin(), m_matches.end(), start, startsBefore);
    if (number < 0 || found == m_matches.end() || found->start != start)
        return;
    m_current = int(found - m_matches.begin());
    m_textEdit = transcriptText();
}

void STT_SearchWidget::makeCurrent(int match)
{
    const int former = std::exchange(m_current, match);
    for (const int changed : {former, match}) {
        if (m_laid.holds(changed))
            m_selections[changed - m_laid.from].format = formatOf(changed == m_current);
    }
    m_textEdit = transcriptText();
    m_textEdit->setExtraSelections(m_selections);
    const QTextCursor cursor = cursorOf(m_matches[size_t(match)]);
    m_position = pointOf(cursor);
    const QTextBlock block = m_textEdit->document()->findBlock(cursor.selectionStart());
    m_currentPlace = {block.userState(), cursor.selectionStart() - block.position()};
    if (!m_textEdit->isInView(m_textEdit->getTranscriptRectForCursor(cursor)))
        m_textEdit->scrollToMiddle(cursor);
    layInView();
    showCount();
}
