#pragma once

#include "desk/base/Result.h"
#include "desk/speech/model/Transcript.h"

#include <QByteArray>

namespace desk::speech
{

/// Readers of one format each. They take times as they stand; whoever calls repairs them.

/// SubRip, as players read it: counters are optional, hours too, comma or full stop before the milliseconds.
Result<Transcript> readSubRip(const QByteArray& bytes, const QString& fileName);

/// WebVTT (W3C, 4 April 2019): voices (<v Anna>) are speakers, times inside a cue part its words.
Result<Transcript> readWebVtt(const QByteArray& bytes, const QString& fileName);

/// What whisper.cpp writes with "-oj" or "-ojf". With "-ojf" words have times and confidences of their own.
Result<Transcript> readWhisperJson(const QByteArray& bytes, const QString& fileName);

/// What the desk's own JSON export wrote.
Result<Transcript> readTranscriptJson(const QByteArray& bytes, const QString& fileName);

} // namespace desk::speech
