#include "desk/services/TranscriptExport.h"

#include "desk/media/Timecode.h"
#include "desk/services/SpeechSound.h"

#include <QFileInfo>

namespace desk::services
{

speech::ExportSettings exportSettings(const media::Sequence& sequence)
{
    speech::ExportSettings settings;
    // What has no picture plays at the rate that captions have anyhow.
    if (sequence.frameRate.isValid())
        settings.captions.frameRate = sequence.frameRate;
    settings.captions.clipMs = lengthMs(sequence);
    const auto timecode = media::Timecode::startingAt(sequence.startTimecode, settings.captions.frameRate);
    settings.firstFrame = timecode.start;
    settings.timecode =
        timecode.count == media::Timecode::Count::Drop ? speech::TimecodeCount::Drop : speech::TimecodeCount::NonDrop;
    settings.title = sequence.name;
    return settings;
}

std::optional<speech::ExportFormat> exportFormatOf(const QString& file)
{
    const QString suffix = QFileInfo(file).suffix().toLower();
    for (const speech::ExportFormatInfo& info : speech::exportFormats()) {
        if (suffix == QLatin1String(info.suffix))
            return info.format;
    }
    return {};
}

Result<QString> writeTranscript(const speech::Transcript& transcript, const media::Sequence& sequence,
                                const QStringList& files)
{
    const speech::ExportSettings settings = exportSettings(sequence);
    QString note;
    for (const QString& file : files) {
        const auto format = exportFormatOf(file);
        if (!format)
            return Error{file,
                         {},
                         {},
                         QStringLiteral("its name ending is that of no known format"),
                         QStringLiteral("end it with .srt, .vtt, .ttml, .txt, .csv or .json")};
        if (Status written = speech::exportTranscriptFile(file, transcript, *format, settings); !written)
            return written.error();
        const QString told = speech::exportNote(transcript, *format, settings);
        note = told.isEmpty() ? note : told;
    }
    return note;
}

} // namespace desk::services
