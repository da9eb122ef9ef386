#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextLayout>

/// Keeps a line from moving when a word of it becomes bold: every word takes the width that it has in bold.
///
/// The room that a word lacks follows its last letter; where letters join, as in Arabic, the blank after the word.
class BoldReserve
{
public:
    explicit BoldReserve(const QFont& font);

    /// Whether bold letters are wider in this font at all.
    bool isNeeded() const { return m_isNeeded; }

    /// What to add to the formats of the block's text.
    QVector<QTextLayout::FormatRange> rangesFor(const QTextBlock& block) const;

private:
    struct Token {
        int start;
        int end;
    };

    qreal width(const QTextBlock& block, const Token& part) const;
    void reserve(const QTextBlock& block, const QString& text, const Token& word,
                 QVector<QTextLayout::FormatRange>& ranges) const;

    QFontMetricsF m_normal;
    QFontMetricsF m_bold;
    bool m_isNeeded;
};
