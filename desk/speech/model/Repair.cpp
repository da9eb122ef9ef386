#include "desk/speech/model/Repair.h"

#include <algorithm>

namespace desk::speech
{

namespace
{

/// A word that has to be laid somewhere gets at most this long.
constexpr int usualWordMs = 300;
constexpr int shortestWordMs = 40;

bool isOutside(const Word& word, TimeSpan span)
{
    return word.startMs < span.startMs || word.startMs >= std::max(span.endMs, span.startMs + 1) ||
           word.endMs > span.endMs;
}

/// The words whose starts make the longest ascending run; only candidates take part.
std::vector<bool> longestAscending(const QVector<Word>& words, const std::vector<bool>& candidates)
{
    std::vector<int> tails;
    std::vector<int> before(candidates.size(), -1);
    for (int i = 0; i < words.size(); ++i) {
        if (!candidates[std::size_t(i)])
            continue;
        const auto place = std::upper_bound(tails.begin(), tails.end(), words[i].startMs,
                                            [&](int start, int other) { return start < words[other].startMs; });
        before[std::size_t(i)] = place == tails.begin() ? -1 : *(place - 1);
        if (place == tails.end())
            tails.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> chosen(candidates.size(), false);
    for (int i = tails.empty() ? -1 : tails.back(); i >= 0; i = before[std::size_t(i)])
        chosen[std::size_t(i)] = true;
    return chosen;
}

/// Lays the words [first, last) between two instants, in even steps.
void lay(QVector<Word>& words, int first, int last, TimeSpan room)
{
    const qint64 count = last - first;
    const qint64 span = std::clamp<qint64>(room.endMs - room.startMs, 0, count * usualWordMs);
    for (int i = first; i < last; ++i) {
        words[i].startMs = room.startMs + int(span * (i - first) / count);
        words[i].endMs = room.startMs + int(span * (i - first + 1) / count);
    }
}

/// Lays every word that is not believed between those that are. Where these leave no room, the one before gives of its
/// own.
void layUnbelieved(QVector<Word>& words, const std::vector<bool>& believed, TimeSpan span)
{
    int from = span.startMs;
    for (int i = 0; i < words.size();) {
        if (believed[std::size_t(i)]) {
            from = std::max(words[i].startMs, words[i].endMs);
            ++i;
            continue;
        }
        int next = i;
        while (next < words.size() && !believed[std::size_t(next)])
            ++next;
        const int to = next < words.size() ? words[next].startMs : span.endMs;
        from = std::min(from, to);
        const bool isTight = to - from < (next - i) * shortestWordMs && i > 0;
        lay(words, isTight ? i - 1 : i, next, {isTight ? words[i - 1].startMs : from, to});
        i = next;
    }
}

int trimOverlaps(QVector<Word>& words)
{
    int trimmed = 0;
    for (int i = 0; i + 1 < words.size(); ++i) {
        if (words[i].endMs > words[i + 1].startMs) {
            words[i].endMs = words[i + 1].startMs;
            ++trimmed;
        }
    }
    return trimmed;
}

int dropWithoutText(QVector<Word>& words)
{
    const auto blank = [](const Word& word) { return word.text.trimmed().isEmpty(); };
    const int before = words.size();
    words.erase(std::remove_if(words.begin(), words.end(), blank), words.end());
    return before - words.size();
}

} // namespace

RepairReport& RepairReport::operator+=(const RepairReport& other)
{
    backwards += other.backwards;
    overlapping += other.overlapping;
    outside += other.outside;
    withoutText += other.withoutText;
    return *this;
}

RepairReport repairWords(QVector<Word>& words, TimeSpan span)
{
    RepairReport report;
    report.withoutText = dropWithoutText(words);
    std::vector<bool> candidates(std::size_t(words.size()), true);
    std::vector<bool> wrong(candidates.size(), false);
    for (int i = 0; i < words.size(); ++i) {
        Word& word = words[i];
        // A word that only reaches over the end keeps its start.
        candidates[std::size_t(i)] = word.startMs >= span.startMs && word.startMs < span.endMs;
        const bool outside = isOutside(word, span);
        wrong[std::size_t(i)] = outside || word.endMs < word.startMs;
        report.outside += outside ? 1 : 0;
        report.backwards += !outside && word.endMs < word.startMs ? 1 : 0;
        word.endMs = std::clamp(word.endMs, word.startMs, std::max(word.startMs, span.endMs));
    }
    const std::vector<bool> believed = longestAscending(words, candidates);
    for (std::size_t i = 0; i < believed.size(); ++i)
        report.backwards += !wrong[i] && !believed[i] ? 1 : 0;
    layUnbelieved(words, believed, span);
    report.overlapping = trimOverlaps(words);
    return report;
}

RepairReport repairTranscript(Transcript& transcript, TimeSpan span)
{
    RepairReport report;
    QVector<Segment>& segments = transcript.segments;
    for (Segment& segment : segments)
        report += repairWords(segment.words, span);
    const auto blank = [](const Segment& segment) { return segment.words.isEmpty(); };
    segments.erase(std::remove_if(segments.begin(), segments.end(), blank), segments.end());
    std::stable_sort(segments.begin(), segments.end(),
                     [](const Segment& a, const Segment& b) { return a.startMs() < b.startMs(); });
    return report;
}

} // namespace desk::speech
