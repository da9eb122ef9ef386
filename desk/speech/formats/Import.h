#pragma once

#include "desk/base/Result.h"
#include "desk/speech/model/Repair.h"

#include <QByteArray>

namespace desk::speech
{

/// A transcript from outside.
struct Imported {
    Transcript transcript;
    /// What had to be repaired.
    RepairReport repairs;
};

enum class ImportFormat { Unknown, SubRip, WebVtt, WhisperJson, TranscriptJson };

/// By the content; a name ending that says otherwise is not believed.
ImportFormat formatOf(const QByteArray& bytes);

/// Reads a transcript that anybody may have written. The words of a cue or segment without times of their own share out
/// its time. Fails, with file and line, at the first thing that cannot be read, and where the file has no word at all.
/// @param fileName for messages.
/// @param clipMs the clip's length: times past it are repaired; 0 where it is not known.
Result<Imported> importTranscript(const QByteArray& bytes, const QString& fileName, int clipMs);

/// The same of a file on disk, of 64 MiB at most.
Result<Imported> importTranscriptFile(const QString& path, int clipMs);

} // namespace desk::speech
