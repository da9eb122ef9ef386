#pragma once

#include "desk/base/Result.h"
#include "desk/speech/formats/Captions.h"

#include <QByteArray>

namespace desk::speech
{

enum class ExportFormat { SubRip, WebVtt, Imsc, PlainText, Csv, TranscriptJson };

/// What a file dialog says of a format.
struct ExportFormatInfo {
    ExportFormat format;
    /// "SubRip".
    const char* name;
    /// "srt".
    const char* suffix;
    /// Whether the text is laid out as captions.
    bool hasCaptions;
};

const QVector<ExportFormatInfo>& exportFormats();

enum class TimecodeCount { NonDrop, Drop };

struct ExportSettings {
    CaptionRules captions;
    /// The clip's first frame, counted from 00:00:00:00; for the timecodes of plain text and CSV.
    qint64 firstFrame = 0;
    /// Drop counts only at multiples of 30000/1001.
    TimecodeCount timecode = TimecodeCount::NonDrop;
    /// RFC 5646; empty where it is not known.
    QString language;
    QString title;
};

/// "01:02:03:04", with ";" before the frames of a drop count (ST 12-1:2014, 5.2).
/// @param rate frames a second; timecode counts its rounded value.
QString timecodeText(qint64 frame, Rational rate, TimecodeCount count);

/// SRT, WebVTT (W3C, 4 April 2019), IMSC 1.1 text profile (W3C, 8 November 2018), plain text with timecodes and
/// speakers, CSV (RFC 4180, with a byte order mark) with a row a segment, or the desk's own JSON, which keeps
/// everything. UTF-8.
QByteArray exportTranscript(const Transcript& transcript, ExportFormat format, const ExportSettings& settings);

/// What must be told of an export: that more is said than the clip has time to read. One sentence without a full stop;
/// empty where there is nothing to say.
QString exportNote(const Transcript& transcript, ExportFormat format, const ExportSettings& settings);

/// What exportTranscript() makes, into a file, which appears whole or not at all.
Status exportTranscriptFile(const QString& path, const Transcript& transcript, ExportFormat format,
                            const ExportSettings& settings);

} // namespace desk::speech
