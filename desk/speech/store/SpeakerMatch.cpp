#include "desk/speech/store/SpeakerMatch.h"

#include <QMap>
#include <QSet>

#include <algorithm>

namespace desk::speech
{

namespace
{

int sharedMs(const Segment& segment, TimeSpan span)
{
    return std::max(0, std::min(segment.endMs(), span.endMs) - std::max(segment.startMs(), span.startMs));
}

struct Pair {
    qint64 ms = 0;
    int fresh = -1;
    int former = -1;
};

/// How long each new speaker speaks while each former one was heard, the longest first.
std::vector<Pair> sharedTimes(const QVector<Segment>& fresh, const QVector<KeptSegment>& former)
{
    QMap<std::pair<int, int>, qint64> times;
    int first = 0;
    int longest = 0;
    for (const KeptSegment& old : former)
        longest = std::max(longest, old.segment.endMs() - old.segment.startMs());
    for (const Segment& segment : fresh) {
        while (first < former.size() && former[first].segment.startMs() + longest < segment.startMs())
            ++first;
        for (int i = first; i < former.size() && former[i].segment.startMs() < segment.endMs(); ++i) {
            const int ms = sharedMs(former[i].segment, {segment.startMs(), segment.endMs()});
            if (ms > 0 && former[i].heard >= 0 && segment.speaker >= 0)
                times[{segment.speaker, former[i].heard}] += ms;
        }
    }
    std::vector<Pair> pairs;
    for (auto time = times.cbegin(); time != times.cend(); ++time)
        pairs.push_back({time.value(), time.key().first, time.key().second});
    std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) { return a.ms > b.ms; });
    return pairs;
}

} // namespace

QHash<int, int> matchSpeakers(const Transcript& fresh, const QVector<KeptSegment>& former,
                              const QVector<Speaker>& known)
{
    QHash<int, QString> names;
    QHash<QString, int> idOfName;
    for (const Speaker& speaker : known) {
        names[speaker.id] = speaker.name;
        if (!speaker.name.isEmpty())
            idOfName[speaker.name] = speaker.id;
    }
    QHash<int, int> match;
    QHash<int, QString> freshNames;
    QSet<int> given;
    for (const Speaker& speaker : fresh.speakers) {
        match[speaker.id] = idOfName.value(speaker.name, -1);
        given.insert(match[speaker.id]);
        freshNames[speaker.id] = speaker.name;
    }
    const auto pairs = sharedTimes(fresh.segments, former);
    for (const Pair& pair : pairs) {
        const bool mayBe = freshNames.value(pair.fresh).isEmpty() || names.value(pair.former).isEmpty();
        if (mayBe && names.contains(pair.former) && match.value(pair.fresh, 0) < 0 && !given.contains(pair.former)) {
            match[pair.fresh] = pair.former;
            given.insert(pair.former);
        }
    }
    return match;
}

void applyCorrections(QVector<KeptSegment>& segments, const QVector<Correction>& corrections)
{
    for (const Correction& correction : corrections) {
        QVector<int> covered;
        bool isHeard = false;
        for (int i = 0; i < segments.size() && segments[i].segment.startMs() <= correction.span.endMs; ++i) {
            const Segment& segment = segments[i].segment;
            const int length = segment.endMs() - segment.startMs();
            const bool isSameInstant = length == 0 && segment.startMs() == correction.span.startMs;
            if (!isSameInstant && (length == 0 || 2 * sharedMs(segment, correction.span) < length))
                continue;
            covered.append(i);
            isHeard = isHeard || segments[i].heard == correction.heard;
        }
        for (const int i : qAsConst(covered)) {
            if (!isHeard || segments[i].heard == correction.heard)
                segments[i].segment.speaker = correction.speaker;
        }
    }
}

} // namespace desk::speech
