#include "desk/speech/formats/Captions.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace desk::speech
{

namespace
{

/// A pause after which a caption ends although it has room.
constexpr int longPauseMs = 1200;
/// No caption lasts longer by its words, nor shorter where there is room after it.
constexpr int longestMs = 7000;
constexpr int shortestMs = 1000;

qint64 frameOfMs(qint64 ms, Rational rate)
{
    return (ms * rate.num + 500 * rate.den) / (1000 * rate.den);
}

/// Parts of at most `columns` characters.
QStringList cutWord(const QString& text, int columns)
{
    QStringList parts;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int start = 0;
    int count = 0;
    for (int end = finder.toNextBoundary(); end > 0; end = finder.toNextBoundary()) {
        if (++count == columns || end == text.size()) {
            parts.append(text.mid(start, end - start));
            start = end;
            count = 0;
        }
    }
    return parts;
}

/// The words with those that exceed a line cut.
QVector<Word> fittingWords(const QVector<Word>& words, int columns)
{
    QVector<Word> fitting;
    for (const Word& word : words) {
        const QString text = word.text.simplified();
        if (text.isEmpty())
            continue;
        if (countOfCharacters(text) <= columns)
            fitting.append({word.startMs, word.endMs, text, word.confidence});
        else
            fitting += spreadWords(cutWord(text, columns), word.startMs, word.endMs);
    }
    return fitting;
}

/// How good a place after this word is to end a line or a caption.
int weightOfEnd(const Word& word)
{
    static const QString sentence = QStringLiteral(".?!\u2026\u3002\uff01\uff1f");
    static const QString phrase = QStringLiteral(",;:\u2013\u2014\u3001\uff0c");
    const QChar last = word.text.back();
    return sentence.contains(last) ? 2 : phrase.contains(last) ? 1 : 0;
}

/// A run of words becoming captions.
class Filler
{
public:
    Filler(QVector<Word> words, const CaptionRules& rules)
        : m_words(std::move(words)), m_rules(rules), m_block(blockText(m_words))
    {
    }

    /// The words [first, end) of the next caption: as many as fit, fewer where a sentence or phrase ends late enough.
    int endOfCaption(int first) const
    {
        int end = first + 1;
        while (end < m_words.size() && belongs(first, end))
            ++end;
        if (end == m_words.size())
            return end;
        for (const int weight : {2, 1}) {
            for (int i = end; i > first + (end - first) * (weight == 2 ? 2 : 3) / 5 && i > first + 1; --i) {
                if (weightOfEnd(m_words[i - 1]) >= weight)
                    return i;
            }
        }
        return end;
    }

    /// The lines of words [first, end), as even as they go; a line end after a phrase is preferred.
    QStringList lines(int first, int end) const
    {
        if (countOfCharacters(text(first, end)) <= m_rules.columns || m_rules.lines < 2)
            return {text(first, end)};
        int best = -1;
        int bestCost = 0;
        for (int i = first + 1; i < end; ++i) {
            const int upper = countOfCharacters(text(first, i));
            const int lower = countOfCharacters(text(i, end));
            if (upper > m_rules.columns || lower > m_rules.columns)
                continue;
            const int cost = std::abs(lower - upper) - 8 * weightOfEnd(m_words[i - 1]);
            if (best < 0 || cost < bestCost) {
                best = i;
                bestCost = cost;
            }
        }
        return best < 0 ? QStringList{text(first, end)} : QStringList{text(first, best), text(best, end)};
    }

    const Word& word(int i) const { return m_words[i]; }

    int count() const { return m_words.size(); }

private:
    QString text(int first, int end) const
    {
        const int from = m_block.starts[std::size_t(first)];
        return m_block.text.mid(from, m_block.ends[std::size_t(end - 1)] - from);
    }

    /// Whether word `next` may stand in the caption that starts with word `first`.
    bool belongs(int first, int next) const
    {
        return m_words[next].startMs - m_words[next - 1].endMs < longPauseMs &&
               m_words[next].endMs - m_words[first].startMs <= longestMs && fits(first, next + 1);
    }

    /// Filling line after line says whether any way of breaking fits.
    bool fits(int first, int end) const
    {
        int line = first;
        for (int count = 0; count < m_rules.lines; ++count) {
            int to = line;
            while (to < end && countOfCharacters(text(line, to + 1)) <= m_rules.columns)
                ++to;
            if (to == end)
                return true;
            line = to;
        }
        return false;
    }

    QVector<Word> m_words;
    CaptionRules m_rules;
    BlockText m_block;
};

/// A caption with the time that its words take.
struct Draft {
    Caption caption;
    int startMs = 0;
    int endMs = 0;
    /// The fewest frames in which it can be read.
    qint64 length = 1;
};

qint64 readingFrames(const QStringList& lines, const CaptionRules& rules)
{
    // A reader takes the line's end for a blank.
    const qint64 characters = countOfCharacters(lines.join(QLatin1Char(' ')));
    const qint64 perFrames = characters * rules.frameRate.num;
    const qint64 divisor = rules.charactersPerSecond * rules.frameRate.den;
    return std::max<qint64>(1, (perFrames + divisor - 1) / divisor);
}

void addDrafts(const Segment& segment, const CaptionRules& rules, std::vector<Draft>& drafts)
{
    const Filler filler(fittingWords(segment.words, rules.columns), rules);
    int previousStart = 0;
    for (int first = 0; first < filler.count();) {
        const int end = filler.endOfCaption(first);
        Draft draft;
        draft.caption.speaker = segment.speaker;
        draft.caption.lines = filler.lines(first, end);
        // Within a segment captions never change places, whatever its times are.
        draft.startMs = std::max(previousStart, filler.word(first).startMs);
        draft.endMs = std::max(draft.startMs, filler.word(end - 1).endMs);
        draft.length = readingFrames(draft.caption.lines, rules);
        previousStart = draft.startMs;
        drafts.push_back(std::move(draft));
        first = end;
    }
}

/// How many whole frames there are in a clip whose milliseconds were cut to whole ones.
qint64 framesOfClip(const CaptionRules& rules)
{
    if (rules.clipMs <= 0)
        return INT64_MAX;
    const Rational rate = rules.frameRate;
    return std::max<qint64>(1, ((rules.clipMs + 1LL) * rate.num - 1) / (1000 * rate.den));
}

/// Joins neighbours, so that so many are left.
void joinDrafts(std::vector<Draft>& drafts, qint64 count)
{
    const auto former = std::exchange(drafts, {});
    const auto placeOf = [&](std::size_t i) { return qint64(i) * count / qint64(former.size()); };
    for (std::size_t i = 0; i < former.size(); ++i) {
        if (i == 0 || placeOf(i) != placeOf(i - 1)) {
            drafts.push_back(former[i]);
            continue;
        }
        drafts.back().caption.lines += former[i].caption.lines;
        drafts.back().endMs = std::max(drafts.back().endMs, former[i].endMs);
        drafts.back().length += former[i].length;
    }
}

/// Makes room for all captions in a clip that is too short for them.
/// @return frames between captions.
qint64 squeeze(std::vector<Draft>& drafts, const CaptionRules& rules)
{
    const qint64 end = framesOfClip(rules);
    const auto needed = [&](qint64 gap) {
        const auto add = [gap](qint64 sum, const Draft& draft) { return sum + draft.length + gap; };
        return std::accumulate(drafts.begin(), drafts.end(), -gap, add);
    };
    if (drafts.empty() || needed(rules.gapFrames) <= end)
        return rules.gapFrames;
    if (qint64(drafts.size()) > end)
        joinDrafts(drafts, end);
    const auto count = qint64(drafts.size());
    const qint64 gap = count < 2 ? 0 : std::min<qint64>(rules.gapFrames, (end - count) / (count - 1));
    // Each has one frame; the others are shared out by what each one lacks.
    const qint64 spare = end - count - (count - 1) * gap;
    const qint64 lacking = needed(0) - count;
    qint64 sum = 0;
    for (Draft& draft : drafts) {
        const qint64 before = lacking > 0 ? sum * spare / lacking : 0;
        sum += draft.length - 1;
        const qint64 after = lacking > 0 ? sum * spare / lacking : 0;
        draft.length = std::min(draft.length, 1 + after - before);
    }
    return gap;
}

/// Starts with the least squared distance from the words' starts such that no caption begins before the one before it
/// was read and the gap has passed: isotonic regression by pooling neighbours that are in each other's way.
std::vector<qint64> settledStarts(const std::vector<Draft>& drafts, qint64 gap, const CaptionRules& rules)
{
    struct Pool {
        double sum = 0;
        int count = 0;

        double mean() const { return sum / count; }
    };

    std::vector<qint64> offsets;
    std::vector<Pool> pools;
    qint64 offset = 0;
    for (const Draft& draft : drafts) {
        offsets.push_back(offset);
        pools.push_back({double(frameOfMs(draft.startMs, rules.frameRate) - offset), 1});
        while (pools.size() > 1 && pools[pools.size() - 2].mean() >= pools.back().mean()) {
            const Pool last = pools.back();
            pools.pop_back();
            pools.back().sum += last.sum;
            pools.back().count += last.count;
        }
        offset += draft.length + gap;
    }
    const qint64 latest = std::max<qint64>(0, framesOfClip(rules) - (offset - gap));
    std::vector<qint64> starts;
    for (const Pool& pool : pools) {
        const qint64 start = std::clamp<qint64>(qint64(std::floor(pool.mean())), 0, latest);
        for (int i = 0; i < pool.count; ++i)
            starts.push_back(start + offsets[starts.size()]);
    }
    return starts;
}

} // namespace

int countOfCharacters(const QString& text)
{
    const bool isPlain = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x300; });
    if (isPlain)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

QVector<Caption> makeCaptions(const Transcript& transcript, const CaptionRules& rules)
{
    std::vector<Draft> drafts;
    for (const Segment& segment : transcript.segments)
        addDrafts(segment, rules, drafts);
    std::stable_sort(drafts.begin(), drafts.end(),
                     [](const Draft& a, const Draft& b) { return a.startMs < b.startMs; });
    const qint64 gap = squeeze(drafts, rules);
    const std::vector<qint64> starts = settledStarts(drafts, gap, rules);
    const qint64 clipEnd = framesOfClip(rules);
    QVector<Caption> captions;
    for (std::size_t i = 0; i < drafts.size(); ++i) {
        Caption caption = drafts[i].caption;
        caption.startFrame = starts[i];
        const qint64 spoken = frameOfMs(drafts[i].endMs, rules.frameRate);
        const qint64 wanted = std::clamp(spoken, starts[i] + frameOfMs(shortestMs, rules.frameRate),
                                         starts[i] + frameOfMs(longestMs, rules.frameRate));
        const qint64 latest = i + 1 < drafts.size() ? starts[i + 1] - gap : clipEnd;
        caption.endFrame = std::max(starts[i] + drafts[i].length, std::min(wanted, latest));
        captions.append(caption);
    }
    return captions;
}

int countOfBreaches(const QVector<Caption>& captions, const CaptionRules& rules)
{
    int count = 0;
    qint64 free = 0;
    for (const Caption& caption : captions) {
        const bool isFast = caption.endFrame - caption.startFrame < readingFrames(caption.lines, rules);
        count += isFast || caption.startFrame < free || caption.lines.size() > rules.lines ? 1 : 0;
        free = caption.endFrame + rules.gapFrames;
    }
    return count;
}

} // namespace desk::speech
