#pragma once

#include "desk/media/Sequence.h"
#include "desk/speech/formats/Export.h"

#include <optional>

namespace desk::services
{

/// Frame rate, timecode, length and name of a sequence for what is exported of its transcript.
speech::ExportSettings exportSettings(const media::Sequence& sequence);

/// The format that the name ending of a file asks for.
std::optional<speech::ExportFormat> exportFormatOf(const QString& file);

/// Writes the transcript of a sequence into files, each in the format that its name ending asks for. Ends with the
/// first that fails.
/// @return what must be told of the captions among them, as speech::exportNote() has it.
Result<QString> writeTranscript(const speech::Transcript& transcript, const media::Sequence& sequence,
                                const QStringList& files);

} // namespace desk::services
