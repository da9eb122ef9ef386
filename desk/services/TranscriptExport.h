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

} // namespace desk::services
