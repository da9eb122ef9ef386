#pragma once

#include <QFont>
#include <QTextBlock>
#include <QTextLayout>

/// Keeps a line from moving when a word of it becomes bold: every word takes the width that it has in bold.
///
/// The room that a word lacks follows its last letter; where letters join, as in Arabic, the blank after the word.
class BoldReserve
{
public:
    explicit BoldReserve(const QFont& font);

    /// What to add to the formats of the block's text. Nothing, and at no cost, for Latin text in a font whose bold
    /// letters are as wide as the others.
    QVector<QTextLayout::FormatRange> rangesFor(const QTextBlock& block) const;

private:
    using Ranges = QVector<QTextLayout::FormatRange>;

    struct Token {
        int start;
        int end;
    };

    qreal widthOf(const QString& word, const Ranges& formats) const;
    void reserve(const QTextBlock& block, const QString& text, const Token& word, Ranges& ranges) const;

    QFont m_font;
    bool m_isLatinWider;
};
