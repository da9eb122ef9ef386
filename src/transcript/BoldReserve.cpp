#include "BoldReserve.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace
{
// Widths are rounded to this by the text engine.
constexpr qreal leastRoom = 1.0 / 64;
constexpr qreal endlessLine = 1e6;

QTextLayout::FormatRange boldRange(int start, int end)
{
    QTextLayout::FormatRange range{start, end - start, {}};
    range.format.setFontWeight(QFont::Bold);
    return range;
}

QTextLayout::FormatRange spacedRange(int start, int end, qreal room)
{
    QTextLayout::FormatRange range{start, end - start, {}};
    range.format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
    range.format.setFontLetterSpacing(room);
    return range;
}

/// The parts of a word that are bold now, counted from its start.
QVector<QTextLayout::FormatRange> boldParts(const QTextBlock& block, int start, int end)
{
    QVector<QTextLayout::FormatRange> parts;
    for (auto at = block.begin(); !at.atEnd(); ++at) {
        const QTextFragment fragment = at.fragment();
        const int offset = fragment.position() - block.position();
        const int from = std::max(start, offset);
        const int to = std::min(end, offset + fragment.length());
        if (from < to && fragment.charFormat().fontWeight() > QFont::Normal)
            parts.append(boldRange(from - start, to - start));
    }
    return parts;
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

BoldReserve::BoldReserve(const QFont& font) : m_font(font)
{
    const QString sample = QStringLiteral("The quick brown fox jumps over 1,234,567,890 lazy dogs");
    m_isLatinWider = widthOf(sample, {boldRange(0, sample.size())}) - widthOf(sample, {}) >= leastRoom;
}

QVector<QTextLayout::FormatRange> BoldReserve::rangesFor(const QTextBlock& block) const
{
    Ranges ranges;
    const QString text = block.text();
    // Other scripts may come from fonts that stand in for this one.
    constexpr ushort pastLatin = 0x250;
    const bool isLatin = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < pastLatin; });
    if (isLatin && !m_isLatinWider)
        return ranges;
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

void BoldReserve::reserve(const QTextBlock& block, const QString& text, const Token& word, Ranges& ranges) const
{
    const QString letters = text.mid(word.start, word.end - word.start);
    Ranges now = boldParts(block, word.start, word.end);
    Token place{startOfLastLetter(text, word.start, word.end), word.end};
    qreal spacing = 0;
    if (joinsToTheLetterBefore(text.at(place.start))) {
        place = {word.end, word.end + 1};
    } else {
        // Spacing parts the last letter from the others, which costs their kerning: measured as it will be.
        spacing = 1;
        now.append(spacedRange(place.start - word.start, place.end - word.start, spacing));
    }
    const qreal missing = widthOf(letters, {boldRange(0, letters.size())}) - (widthOf(letters, now) - spacing);
    if (missing >= leastRoom && place.end <= text.size())
        ranges.append(spacedRange(place.start, place.end, missing));
}

qreal BoldReserve::widthOf(const QString& word, const Ranges& formats) const
{
    QTextLayout layout(word, m_font);
    layout.setFormats(formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(endlessLine);
    layout.endLayout();
    return line.horizontalAdvance(); // the natural width also has the overhang of the last letter
}
