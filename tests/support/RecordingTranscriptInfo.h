#pragma once

#include "StratacutUI/ITranscriptWindowInfo.h"

#include <QFont>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>

namespace support
{

/// A segment of speaker `speakerKey` whose words are those of `text` between single spaces: each lasts 400 ms, and
/// 100 ms pass before the next.
STT_TranscriptSegment segmentOf(int number, int startMs, const QString& text, int speakerKey = 1);

/// Segments one after the other, 500 ms a word; the words repeat after some thousand, those of one segment differ.
std::vector<STT_TranscriptSegment> transcriptOf(int segments, int wordsPerSegment);

/// A host of the transcript window that writes down what it is asked to do and answers questions from its members.
/// What the window makes it do (a name, a moved segment, a mark) shows in its later answers; it never calls the window.
class RecordingTranscriptInfo : public ITranscriptWindowInfo
{
public:
    /// What a monitor holds.
    struct Material {
        std::vector<STT_TranscriptSegment> segments;
        std::vector<STT_SpeakerInfo> speakers{};
        std::vector<STT_MissingTranscript> missing{};
        bool loaded = true;
        bool hasTranscript = true;
        NvUnit_t position = 0;
        NvUnit_t markIn = -1;
        NvUnit_t markOut = -1;
    };

    Material source;
    Material record;
    bool recordShown = false;
    bool databaseOnline = true;
    double framesPerSecond = 25;
    /// Answers -1 to every conversion between frames and milliseconds.
    bool convertsNothing = false;
    std::optional<QFont> font;
    STT_Visibilities visibilities;
    /// Every request in order, questions left out: "moveMonitor(12)", "storeSpeakerName(2, Ada)".
    QStringList calls;
    /// Called with each request's text, after it was carried out.
    std::function<void(const QString&)> onCall;
    /// Called before a question is answered, look-ups of segments and times excepted.
    std::function<void()> onQuestion;

    /// The calls since the last time, which are forgotten.
    QStringList takeCalls() { return std::exchange(calls, {}); }

    Material& shown() { return recordShown ? record : source; }

    const std::vector<STT_TranscriptSegment>& segments(int) override { return shown().segments; }

    STT_SpeakerInfo speakerOfSegment(int segment) override;

    bool isTranscriptLoaded() override { return askedFor().hasTranscript; }

    long markIn() override { return long(askedFor().markIn); }

    long markOut() override { return long(askedFor().markOut); }

    NvUnit_t position() override { return askedFor().position; }

    int msFromFrame(int frame, bool previous) override;
    int frameFromMs(int ms) override;
    std::string timecodeText(int ms) override;
    std::vector<STT_SpeakerInfo> speakers(bool withUnnamed) override;

    bool isDatabaseOnline() override { return databaseOnline; }

    std::vector<STT_MissingTranscript> missingTranscripts() override { return askedFor().missing; }

    std::string speakerText(int key) override;
    bool storedFont(QFont& stored) override;

    STT_Visibilities storedVisibilities() override { return visibilities; }

    bool isMaterialLoaded() override { return askedFor().loaded; }

    int countOfRemainingClips() override { return int(shown().missing.size()); }

    void prepareTranscript() override { wasAsked("prepareTranscript"); }

    void goToMarkIn() override { wasAsked("goToMarkIn"); }

    void goToMarkOut() override { wasAsked("goToMarkOut"); }

    void moveMonitor(NvUnit_t frame) override;

    void togglePlayback() override { wasAsked("togglePlayback"); }

    void stopPlayback() override { wasAsked("stopPlayback"); }

    void setMarkIn(NvUnit_t frame) override;
    void setMarks(NvUnit_t in, NvUnit_t out) override;
    void correctSpeaker(int segment, const STT_SpeakerInfo& speaker) override;
    void storeSpeakerName(const STT_SpeakerInfo& speaker, const std::string& newName) override;
    int addSpeaker() override;
    void transcribe(const std::string& mediaGuid) override;
    void storeFont(const QFont& stored) override;
    void storeSpeakerVisibility(bool visible) override;
    void storeTimecodeVisibility(bool visible) override;
    void storeNotTranscribedVisibility(bool visible) override;

    void exportSubcaptions() override { wasAsked("exportSubcaptions"); }

    void createSubcaptions() override { wasAsked("createSubcaptions"); }

    void exportTranscript() override { wasAsked("exportTranscript"); }

    void createScriptFromClip() override { wasAsked("createScriptFromClip"); }

    void showMonitor(bool record) override;

    void refreshTranscript() override { wasAsked("refreshTranscript"); }

    void reserved1() override {}

    void reserved15() override {}

    void reserved23() override {}

    void reserved24() override {}

    void reserved42() override {}

private:
    void wasAsked(const char* operation, const QStringList& arguments = {});
    STT_SpeakerInfo speakerOfKey(int key);
    Material& askedFor();
};

} // namespace support
