#include "support/RecordingTranscriptInfo.h"

#include <QTime>

#include <algorithm>
#include <cmath>

namespace support
{

namespace
{
constexpr int wordMs = 400;
constexpr int pauseMs = 100;

QString shown(bool on)
{
    return on ? QStringLiteral("shown") : QStringLiteral("hidden");
}

/// A word that is easy to tell from its neighbours: consonants and vowels in turn, from the digits of a number.
QString wordOf(int number)
{
    static constexpr char syllables[][3] = {"ba", "de", "fi", "go", "lu", "ma", "ne", "ri", "so", "tu"};
    QString word;
    for (int rest = number % 5000 + 10; rest > 0; rest /= 10)
        word += QLatin1String(syllables[rest % 10]);
    return word;
}
} // namespace

STT_TranscriptSegment segmentOf(int number, int startMs, const QString& text, int speakerKey)
{
    STT_TranscriptSegment segment;
    segment.number = number;
    segment.text = text.toStdString();
    segment.speakerKey = speakerKey;
    int offset = 0;
    const QStringList words = text.split(' ');
    for (const QString& word : words) {
        segment.wordStarts.push_back(startMs);
        segment.wordEnds.push_back(startMs + wordMs);
        segment.wordStartOffsets.push_back(offset);
        segment.wordEndOffsets.push_back(offset + word.size());
        startMs += wordMs + pauseMs;
        offset += word.size() + 1;
    }
    return segment;
}

std::vector<STT_TranscriptSegment> transcriptOf(int segments, int wordsPerSegment)
{
    std::vector<STT_TranscriptSegment> transcript;
    transcript.reserve(size_t(segments));
    for (int number = 0; number < segments; ++number) {
        QStringList words;
        for (int word = 0; word < wordsPerSegment; ++word)
            words += wordOf(number * wordsPerSegment + word);
        const int startMs = number * wordsPerSegment * (wordMs + pauseMs);
        transcript.push_back(segmentOf(number, startMs, words.join(' '), number % 4 + 1));
    }
    return transcript;
}

void RecordingTranscriptInfo::wasAsked(const char* operation, const QStringList& arguments)
{
    const QString call = QStringLiteral("%1(%2)").arg(QLatin1String(operation), arguments.join(QStringLiteral(", ")));
    calls += call;
    if (onCall)
        onCall(call);
}

RecordingTranscriptInfo::Material& RecordingTranscriptInfo::askedFor()
{
    if (onQuestion)
        onQuestion();
    return shown();
}

STT_SpeakerInfo RecordingTranscriptInfo::speakerOfKey(int key)
{
    const std::string id = std::to_string(key);
    const std::vector<STT_SpeakerInfo>& known = askedFor().speakers;
    const auto found = std::find_if(known.begin(), known.end(), [&](const auto& speaker) { return speaker.id == id; });
    return found == known.end() ? STT_SpeakerInfo{id, {}, {}} : *found;
}

STT_SpeakerInfo RecordingTranscriptInfo::speakerOfSegment(int segment)
{
    const std::vector<STT_TranscriptSegment>& segments = askedFor().segments;
    if (segment < 0 || segment >= int(segments.size()))
        return {};
    return speakerOfKey(segments[size_t(segment)].speakerKey);
}

int RecordingTranscriptInfo::msFromFrame(int frame, bool previous)
{
    const double ms = frame * 1000.0 / framesPerSecond;
    return convertsNothing ? -1 : int(previous ? std::floor(ms) : std::ceil(ms));
}

int RecordingTranscriptInfo::frameFromMs(int ms)
{
    return convertsNothing ? -1 : int(std::floor(ms * framesPerSecond / 1000.0));
}

std::string RecordingTranscriptInfo::timecodeText(int ms)
{
    askedFor();
    const int frame = int(ms % 1000 * framesPerSecond / 1000.0);
    const QString seconds = QTime(0, 0).addMSecs(ms).toString(QStringLiteral("hh:mm:ss"));
    return QStringLiteral("%1:%2").arg(seconds).arg(frame, 2, 10, QLatin1Char('0')).toStdString();
}

std::vector<STT_SpeakerInfo> RecordingTranscriptInfo::speakers(bool withUnnamed)
{
    std::vector<STT_SpeakerInfo> wanted;
    std::copy_if(shown().speakers.begin(), shown().speakers.end(), std::back_inserter(wanted),
                 [&](const STT_SpeakerInfo& speaker) { return withUnnamed || !speaker.name.empty(); });
    return wanted;
}

std::string RecordingTranscriptInfo::speakerText(int key)
{
    return speakerOfKey(key).displayName().toStdString();
}

bool RecordingTranscriptInfo::storedFont(QFont& stored)
{
    if (font)
        stored = *font;
    return font.has_value();
}

void RecordingTranscriptInfo::moveMonitor(NvUnit_t frame)
{
    shown().position = frame;
    wasAsked("moveMonitor", {QString::number(frame)});
}

void RecordingTranscriptInfo::setMarkIn(NvUnit_t frame)
{
    shown().markIn = frame;
    wasAsked("setMarkIn", {QString::number(frame)});
}

void RecordingTranscriptInfo::setMarks(NvUnit_t in, NvUnit_t out)
{
    shown().markIn = in;
    shown().markOut = out;
    wasAsked("setMarks", {QString::number(in), QString::number(out)});
}

void RecordingTranscriptInfo::correctSpeaker(int segment, const STT_SpeakerInfo& speaker)
{
    std::vector<STT_TranscriptSegment>& segments = shown().segments;
    if (segment >= 0 && segment < int(segments.size()))
        segments[size_t(segment)].speakerKey = std::stoi(speaker.id);
    wasAsked("correctSpeaker", {QString::number(segment), QString::fromStdString(speaker.id)});
}

void RecordingTranscriptInfo::storeSpeakerName(const STT_SpeakerInfo& speaker, const std::string& newName)
{
    std::vector<STT_SpeakerInfo>& known = shown().speakers;
    const auto found =
        std::find_if(known.begin(), known.end(), [&](const auto& other) { return other.id == speaker.id; });
    if (found == known.end())
        known.push_back({speaker.id, speaker.detail, newName});
    else
        found->name = newName;
    wasAsked("storeSpeakerName", {QString::fromStdString(speaker.id), QString::fromStdString(newName)});
}

int RecordingTranscriptInfo::addSpeaker()
{
    int number = 1;
    for (const STT_SpeakerInfo& speaker : shown().speakers)
        number = std::max(number, std::stoi(speaker.id) + 1);
    shown().speakers.push_back({std::to_string(number), {}, {}});
    wasAsked("addSpeaker");
    return number;
}

void RecordingTranscriptInfo::transcribe(const std::string& mediaGuid)
{
    wasAsked("transcribe", {QString::fromStdString(mediaGuid)});
}

void RecordingTranscriptInfo::storeFont(const QFont& stored)
{
    font = stored;
    wasAsked("storeFont", {stored.family(), QString::number(stored.pointSize())});
}

void RecordingTranscriptInfo::storeSpeakerVisibility(bool visible)
{
    visibilities.speaker = visible;
    wasAsked("storeSpeakerVisibility", {support::shown(visible)});
}

void RecordingTranscriptInfo::storeTimecodeVisibility(bool visible)
{
    visibilities.timecode = visible;
    wasAsked("storeTimecodeVisibility", {support::shown(visible)});
}

void RecordingTranscriptInfo::storeNotTranscribedVisibility(bool visible)
{
    visibilities.notTranscribed = visible;
    wasAsked("storeNotTranscribedVisibility", {support::shown(visible)});
}

void RecordingTranscriptInfo::showMonitor(bool record)
{
    recordShown = record;
    wasAsked("showMonitor", {record ? QStringLiteral("record") : QStringLiteral("source")});
}

} // namespace support
