#include "BoldReserve.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace
{
// Widths are rounded to this by the text engine.
constexpr qreal leastRoom = 1.0 / 64;

QFont inBold(QFont font)
{
    font.setBold(true);
    return font;
}

int startOfLastLetter(const QString& text, int start, int end)
{
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, text.constData() + start, end - start);
    letters.toEnd();
    return start + std::max(letters.toPreviousBoundary(), 0);
}

bool joinsToTheLetterBefore(QChar letter)
{
    const QChar::JoiningType type = letter.joiningType();
    return type == QChar::Joining_Dual || type == QChar::Joining_Right || type == QChar::Joining_Causing;
}
} // namespace

BoldReserve::BoldReserve(const QFont& font) : m_normal(font), m_bold(inBold(font))
{
    const QString sample = QStringLiteral("The quick brown fox jumps over 1,234,567,890 lazy dogs");
    m_isNeeded = m_bold.horizontalAdvance(sample) - m_normal.horizontalAdvance(sample) >= leastRoom;
}

QVector<QTextLayout::FormatRange> BoldReserve::rangesFor(const QTextBlock& block) const
{
    QVector<QTextLayout::FormatRange> ranges;
    const QString text = block.text();
    int start = 0;
    while (start < text.size()) {
        const auto isBlank = [](QChar c) { return c.isSpace(); };
        const auto* first = std::find_if_not(text.constBegin() + start, text.constEnd(), isBlank);
        const auto* last = std::find_if(first, text.constEnd(), isBlank);
        const Token word{int(first - text.constBegin()), int(last - text.constBegin())};
        if (word.end > word.start)
            reserve(block, text, word, ranges);
        start = word.end;
    }
    return ranges;
}

void BoldReserve::reserve(const QTextBlock& block, const QString& text, const Token& word,
                          QVector<QTextLayout::FormatRange>& ranges) const
{
    Token place{startOfLastLetter(text, word.start, word.end), word.end};
    qreal present = width(block, {word.start, place.start}) + width(block, place);
    if (joinsToTheLetterBefore(text.at(place.start))) {
        place = {word.end, word.end + 1};
        present = width(block, word);
    }
    const qreal missing = m_bold.horizontalAdvance(text.mid(word.start, word.end - word.start)) - present;
    if (missing < leastRoom || place.end > text.size())
        return;
    QTextLayout::FormatRange range;
    range.start = place.start;
    range.length = place.end - place.start;
    range.format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
    range.format.setFontLetterSpacing(missing);
    ranges.append(range);
}

/// How wide a part of the text is as it stands now, partly bold perhaps.
qreal BoldReserve::width(const QTextBlock& block, const Token& part) const
{
    qreal sum = 0;
    for (auto at = block.begin(); !at.atEnd(); ++at) {
        const QTextFragment fragment = at.fragment();
        const int offset = fragment.position() - block.position();
        const int start = std::max(part.start, offset);
        const int end = std::min(part.end, offset + fragment.length());
        if (start >= end)
            continue;
        const QFontMetricsF& metrics = fragment.charFormat().fontWeight() > QFont::Normal ? m_bold : m_normal;
        sum += metrics.horizontalAdvance(fragment.text().mid(start - offset, end - start));
    }
    return sum;
}
