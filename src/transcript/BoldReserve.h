#pragma once

#include <QFont>
#include <QHash>
#include <QTextBlock>
#include <QTextLayout>

/// Keeps a line from moving when a word of it becomes bold: every word takes the width that it has in bold.
///
/// The room that a word lacks follows its last letter, or goes before its first one where text runs from right to left.
/// Where letters join, as in Arabic, it is added to the blank after the word: at the end of a line such a word may
/// still not fit in bold.
class BoldReserve
{
public:
    explicit BoldReserve(const QFont& font);

    const QFont& font() const { return m_font; }

    /// What to add to the formats of the block's text. Nothing, and at no cost, for Latin text in a font whose bold
    /// letters are as wide as the others.
    QVector<QTextLayout::FormatRange> rangesFor(const QTextBlock& block) const;

private:
    using Ranges = QVector<QTextLayout::FormatRange>;

    struct Token {
        int start;
        int end;
    };

    qreal missingWidth(const QString& word, const Token& spaced, Ranges bold) const;
    qreal widthOf(const QString& word, const Ranges& formats) const;
    void reserve(const QTextBlock& block, const QString& text, const Token& word, Ranges& ranges) const;

    QFont m_font;
    bool m_isLatinWider;
    /// What plain words lack: the same words come again and again.
    mutable QHash<QString, qreal> m_missing;
};
