#include "BoldReserve.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace
{
// Widths are rounded to this by the text engine.
constexpr qreal leastRoom = 1.0 / 64;
constexpr qreal endlessLine = 1e6;
constexpr int mostKnown = 20000;

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

/// The letter next to which a gap belongs to the space after the word. Within a letter from right to left, the gap is
/// on the right.
std::pair<int, int> spacedLetter(const QString& word)
{
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, word);
    if (word.at(0).direction() == QChar::DirR)
        return {0, letters.toNextBoundary()};
    letters.toEnd();
    return {std::max(letters.toPreviousBoundary(), 0), word.size()};
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
    const auto [first, end] = spacedLetter(letters);
    const bool isJoined = joinsToTheLetterBefore(letters.at(first));
    const Token spaced = isJoined ? Token{letters.size(), letters.size()} : Token{first, end};
    const Token place = isJoined ? Token{word.end, word.end + 1} : Token{word.start + first, word.start + end};
    const qreal missing = missingWidth(letters, spaced, boldParts(block, word.start, word.end));
    if (missing >= leastRoom && place.end <= text.size())
        ranges.append(spacedRange(place.start, place.end, missing));
}

/// @param spaced the letter of the word that will be spaced; empty for none.
qreal BoldReserve::missingWidth(const QString& word, const Token& spaced, Ranges bold) const
{
    const bool isPlain = bold.isEmpty();
    if (const auto known = m_missing.constFind(word); isPlain && known != m_missing.constEnd())
        return *known;
    // Spacing parts a letter from the others, which costs their kerning: measured as it will be.
    const qreal spacing = spaced.end > spaced.start ? 1 : 0;
    if (spaced.end > spaced.start)
        bold.append(spacedRange(spaced.start, spaced.end, spacing));
    const qreal missing = widthOf(word, {boldRange(0, word.size())}) - (widthOf(word, bold) - spacing);
    if (m_missing.size() >= mostKnown)
        m_missing.clear();
    if (isPlain)
        m_missing.insert(word, missing);
    return missing;
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
