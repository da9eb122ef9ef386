#pragma once

#include "NvCore/NvUnit.h"
#include "StratacutUI/Export.h"
#include "StratacutUI/STT_TranscriptData.h"

#include <string>
#include <vector>

class QFont;

/// What the transcript window knows of media, time, playback and the transcript: all of it comes from the host.
///
/// The host implements this class and hands an instance to the window, which owns it. All calls come from the
/// user-interface thread and must neither throw nor block. "The material" is the clip or sequence that is loaded in the
/// monitor which the window shows (slot 40); "frames" are counted from 0 at its start. Text is UTF-8.
/// The order of the declarations is the binary interface.
///
/// What changed outside comes to the window through its slots: TranscriptInfoChangedSlot after the transcript, the
/// speakers or the state of a transcription changed or other material was loaded, MarkInChangedSlot and
/// MarkOutChangedSlot after a mark moved, and the four slots of playback.
class STRATACUTUI_EXPORT ITranscriptWindowInfo
{
public:
    /// Slot 0.
    virtual ~ITranscriptWindowInfo();
    /// Slot 1. Reserved: the window does not call it.
    virtual void reserved1() = 0;
    /// Slot 2. The transcript of the material, in the order of its segments' numbers: a segment's number is its
    /// place.
    /// @param track the transcript's track, counted from 0; the window asks for 0.
    /// @return valid until the host calls TranscriptInfoChangedSlot or slot 3, 40 or 44 is called.
    virtual const std::vector<STT_TranscriptSegment>& segments(int track) = 0;
    /// Slot 3. The window is about to be shown: have the transcript of the material ready.
    virtual void prepareTranscript() = 0;
    /// Slot 4. The speaker of a segment; with an empty identification when the segment is unknown.
    virtual STT_SpeakerInfo speakerOfSegment(int segment) = 0;
    /// Slot 5. Whether a transcript is loaded, be it empty; without one the window does not follow the monitor.
    virtual bool isTranscriptLoaded() = 0;
    /// Slot 6. The monitor's mark in as a frame; -1 when there is none.
    virtual long markIn() = 0;
    /// Slot 7. The monitor's mark out as a frame, itself inside the marked span; -1 when there is none.
    virtual long markOut() = 0;
    /// Slot 8. The monitor's current frame.
    virtual NvUnit_t position() = 0;
    /// Slot 9. Moves the monitor to its mark in; nothing without one.
    virtual void goToMarkIn() = 0;
    /// Slot 10. Moves the monitor to its mark out; nothing without one.
    virtual void goToMarkOut() = 0;
    /// Slot 11. Moves the monitor to a frame.
    virtual void moveMonitor(NvUnit_t frame) = 0;
    /// Slot 12. Starts playback, or stops it when it runs.
    virtual void togglePlayback() = 0;
    /// Slot 13. Stops playback; nothing when it does not run.
    virtual void stopPlayback() = 0;
    /// Slot 14. Sets the monitor's mark in.
    virtual void setMarkIn(NvUnit_t frame) = 0;
    /// Slot 15. Reserved: the window does not call it.
    virtual void reserved15() = 0;
    /// Slot 16. Sets both marks of the monitor; -1 clears a mark.
    virtual void setMarks(NvUnit_t in, NvUnit_t out) = 0;
    /// Slot 17. The time of a frame in milliseconds; -1 when the frame cannot be converted. Frame 1 gives the length
    /// of a frame.
    /// @param previous the caller looks for the word before the frame: a time that falls between two milliseconds is
    ///        rounded down then, and up otherwise.
    virtual int msFromFrame(int frame, bool previous) = 0;
    /// Slot 18. The frame that shows a millisecond; -1 when none does.
    virtual int frameFromMs(int ms) = 0;
    /// Slot 19. The timecode of the material at a time, as the user shall read it. @param ms milliseconds.
    virtual std::string timecodeText(int ms) = 0;
    /// Slot 20. Moves a segment to another speaker. @param speaker one that slot 25 answered, or slot 22's.
    virtual void correctSpeaker(int segment, const STT_SpeakerInfo& speaker) = 0;
    /// Slot 21. Stores a speaker's name for all of its segments; an empty name clears it.
    virtual void storeSpeakerName(const STT_SpeakerInfo& speaker, const std::string& newName) = 0;
    /// Slot 22. Adds a speaker without a name. @return its number.
    virtual int addSpeaker() = 0;
    /// Slot 23. Reserved: the window does not call it.
    virtual void reserved23() = 0;
    /// Slot 24. Reserved: the window does not call it.
    virtual void reserved24() = 0;
    /// Slot 25. The speakers of the material, in any order, duplicates allowed.
    /// @param withUnnamed false: only speakers that have a name are of interest.
    virtual std::vector<STT_SpeakerInfo> speakers(bool withUnnamed) = 0;
    /// Slot 26. Whether the transcript database can be read; if not, the window says so and shows no transcript.
    virtual bool isDatabaseOnline() = 0;
    /// Slot 27. The clips of the material that have no transcript, in the order of their start.
    virtual std::vector<STT_MissingTranscript> missingTranscripts() = 0;
    /// Slot 28. What to show as the speaker of segments with this key. @param key STT_TranscriptSegment::speakerKey.
    virtual std::string speakerText(int key) = 0;
    /// Slot 29. Transcribe a clip; returns at once. @param mediaGuid the clip's, or "ALL" for every clip of the
    /// material that has no transcript.
    virtual void transcribe(const std::string& mediaGuid) = 0;
    /// Slot 30. Stores the transcript's font for later sessions.
    virtual void storeFont(const QFont& font) = 0;
    /// Slot 31. Reads the stored font. @param font out: left alone when none was stored. @return whether one was.
    virtual bool storedFont(QFont& font) = 0;
    /// Slot 32. Stores for later sessions whether speakers are shown.
    virtual void storeSpeakerVisibility(bool visible) = 0;
    /// Slot 33. Stores for later sessions whether timecodes are shown.
    virtual void storeTimecodeVisibility(bool visible) = 0;
    /// Slot 34. Stores for later sessions whether clips without a transcript are shown.
    virtual void storeNotTranscribedVisibility(bool visible) = 0;
    /// Slot 35. The three stored visibilities; the defaults of STT_Visibilities where none was stored.
    virtual STT_Visibilities storedVisibilities() = 0;
    /// Slot 36. Exports subcaptions of the material; the host asks for format and destination.
    virtual void exportSubcaptions() = 0;
    /// Slot 37. Makes subcaptions of the material in the project.
    virtual void createSubcaptions() = 0;
    /// Slot 38. Exports the transcript of the material; the host asks for format and destination.
    virtual void exportTranscript() = 0;
    /// Slot 39. Makes a script of the material in the project.
    virtual void createScriptFromClip() = 0;
    /// Slot 40. Which monitor's material all slots speak of from now on. @param record false: the source monitor.
    virtual void showMonitor(bool record) = 0;
    /// Slot 41. Whether the monitor holds a clip or a sequence, be it silent.
    virtual bool isMaterialLoaded() = 0;
    /// Slot 42. Reserved: the window does not call it.
    virtual void reserved42() = 0;
    /// Slot 43. The menu is about to open: how many clips of the material "Transcribe Remaining Clips" would take.
    virtual int countOfRemainingClips() = 0;
    /// Slot 44. The window is about to show everything anew: forget what was kept of the transcript.
    virtual void refreshTranscript() = 0;
};
