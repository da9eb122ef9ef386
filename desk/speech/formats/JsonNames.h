#pragma once

namespace desk::speech
{

/// Members of what whisper.cpp writes.
namespace whisper
{

constexpr const char* segments = "transcription";
constexpr const char* offsets = "offsets";
constexpr const char* from = "from";
constexpr const char* to = "to";
constexpr const char* text = "text";
constexpr const char* tokens = "tokens";
constexpr const char* probability = "p";

} // namespace whisper

/// Members of the desk's own transcript file.
namespace own
{

constexpr const char* format = "format";
constexpr const char* formatName = "stratacut-transcript";
constexpr const char* version = "version";
constexpr int currentVersion = 1;
constexpr const char* title = "title";
constexpr const char* speakers = "speakers";
constexpr const char* id = "id";
constexpr const char* name = "name";
constexpr const char* segments = "segments";
constexpr const char* speaker = "speaker";
constexpr const char* words = "words";
constexpr const char* track = "track";
constexpr const char* text = "text";
constexpr const char* start = "start";
constexpr const char* end = "end";
constexpr const char* confidence = "confidence";

} // namespace own

} // namespace desk::speech
