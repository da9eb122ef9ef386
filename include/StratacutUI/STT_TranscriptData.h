#pragma once

#include "StratacutUI/Export.h"

#include <QString>

#include <string>
#include <vector>

/// One spoken segment of a transcript, shown as one block of text. The host owns it; the window only reads.
///
/// The four vectors describe the segment's words in order and have one entry a word. Nothing of this is trusted: words
/// without times, times that run backwards and offsets outside the text cost the word its place, never more.
struct STT_TranscriptSegment {
    /// The segment's own index in the host's array.
    int number = -1;
    /// UTF-8, without line breaks.
    std::string text;
    /// What the host answers the speaker's text for (ITranscriptWindowInfo::speakerText).
    int speakerKey = -1;
    /// Milliseconds from the start of the media, ascending.
    std::vector<int> wordStarts;
    std::vector<int> wordEnds;
    /// Positions in the segment's block in UTF-16 code units, as QTextDocument counts them; the end is just past the
    /// word.
    std::vector<int> wordStartOffsets;
    std::vector<int> wordEndOffsets;
};

/// A speaker as the host knows it. A value.
struct STT_SpeakerInfo {
    /// The speaker's identification: decimal digits, with a leading "-" when negative.
    std::string id;
    /// Kept as the host gives it and handed back unchanged.
    std::string detail;
    /// Empty while the speaker has none.
    std::string name;

    /// The name, or without one the translated "Speaker " and the identification.
    STRATACUTUI_EXPORT QString displayName() const;
};

/// How far the transcription of a clip is.
enum class STT_Transcription {
    Missing,
    Waiting,
    Running,
    Failed,
};

/// A clip of the shown material that has no transcript.
struct STT_MissingTranscript {
    /// The identifier that a request to transcribe the clip names.
    std::string mediaGuid;
    /// UTF-8.
    std::string clipName;
    /// Where the clip starts in the shown material, in milliseconds.
    int startMs = 0;
    STT_Transcription state = STT_Transcription::Missing;
    /// 0 to 100, while the transcription runs; below 0 while it is under way, but has not come to the words.
    int percent = 0;
    /// Why it failed and what to do, one sentence; empty otherwise.
    std::string failure{};
};

/// Which parts of a line are shown.
struct STT_Visibilities {
    bool speaker = true;
    bool timecode = true;
    /// Lines of clips that have no transcript.
    bool notTranscribed = true;
};
