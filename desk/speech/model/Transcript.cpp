#include "desk/speech/model/Transcript.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace desk::speech
{

namespace
{

bool isWrittenWithoutBlanks(uint character)
{
    switch (QChar::script(character)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Thai:
    case QChar::Script_Lao:
    case QChar::Script_Khmer:
    case QChar::Script_Myanmar:
        return true;
    default:
        // Full stop, comma and brackets of these scripts belong to none of them.
        return character >= 0x3001 && character <= 0x3020;
    }
}

uint firstCharacter(const QString& text)
{
    return text.size() > 1 && text[0].isHighSurrogate() ? QChar::surrogateToUcs4(text[0], text[1]) : text[0].unicode();
}

uint lastCharacter(const QString& text)
{
    const int last = text.size() - 1;
    return last > 0 && text[last].isLowSurrogate() ? QChar::surrogateToUcs4(text[last - 1], text[last])
                                                   : text[last].unicode();
}

bool standApart(const QString& before, const QString& after)
{
    return !isWrittenWithoutBlanks(lastCharacter(before)) || !isWrittenWithoutBlanks(firstCharacter(after));
}

/// White space and what ends a block of a text document.
QString oneLine(const QString& text)
{
    return text.simplified();
}

bool isPunctuation(const QString& cluster)
{
    return QChar::isPunct(firstCharacter(cluster));
}

/// Parts a run without white space at the characters of scripts without blanks.
void splitRun(const QString& run, QStringList& words)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, run);
    bool goesOn = false;
    int start = 0;
    for (int end = finder.toNextBoundary(); end > start; end = finder.toNextBoundary()) {
        const QString cluster = run.mid(start, end - start);
        const bool standsAlone = isWrittenWithoutBlanks(firstCharacter(cluster)) && !isPunctuation(cluster);
        if (start > 0 && ((goesOn && !standsAlone) || isPunctuation(cluster)))
            words.last() += cluster;
        else
            words.append(cluster);
        goesOn = !standsAlone;
        start = end;
    }
}

} // namespace

int Transcript::countOfWords() const
{
    int count = 0;
    for (const Segment& segment : segments)
        count += segment.words.size();
    return count;
}

BlockText blockText(const QVector<Word>& words)
{
    BlockText block;
    block.starts.reserve(std::size_t(words.size()));
    block.ends.reserve(std::size_t(words.size()));
    QString before;
    for (const Word& word : words) {
        const QString text = oneLine(word.text);
        if (!before.isEmpty() && !text.isEmpty() && standApart(before, text))
            block.text += QLatin1Char(' ');
        block.starts.push_back(block.text.size());
        block.text += text;
        block.ends.push_back(block.text.size());
        if (!text.isEmpty())
            before = text;
    }
    return block;
}

QStringList splitWords(const QString& text)
{
    QStringList words;
    const QStringList runs = oneLine(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& run : runs)
        splitRun(run, words);
    return words;
}

QVector<Word> spreadWords(const QStringList& texts, int startMs, int endMs)
{
    qint64 length = 0;
    for (const QString& text : texts)
        length += text.size() + 1;
    const qint64 span = std::max(0, endMs - startMs);
    QVector<Word> words;
    qint64 before = 0;
    for (const QString& text : texts) {
        const qint64 after = before + text.size() + 1;
        words.append({startMs + int(span * before / length), startMs + int(span * after / length), text, -1});
        before = after;
    }
    return words;
}

QString displayName(const Transcript& transcript, int speaker)
{
    for (const Speaker& known : transcript.speakers) {
        if (known.id == speaker)
            return known.name.isEmpty() ? QStringLiteral("Speaker %1").arg(known.id) : known.name;
    }
    return QString();
}

} // namespace desk::speech
