#include "desk/speech/formats/Export.h"

#include "desk/base/WholeFile.h"
#include "desk/speech/formats/Writers.h"

#include <algorithm>

namespace desk::speech
{

namespace
{

struct Writer {
    ExportFormat format;
    QByteArray (*write)(const Transcript&, const ExportSettings&);
};

const Writer writers[] = {{ExportFormat::SubRip, writeSubRip}, {ExportFormat::WebVtt, writeWebVtt},
                          {ExportFormat::Imsc, writeImsc},     {ExportFormat::PlainText, writePlainText},
                          {ExportFormat::Csv, writeCsv},       {ExportFormat::TranscriptJson, writeTranscriptJson}};

} // namespace

const QVector<ExportFormatInfo>& exportFormats()
{
    static const QVector<ExportFormatInfo> formats{
        {ExportFormat::SubRip, "SubRip", "srt", true},
        {ExportFormat::WebVtt, "WebVTT", "vtt", true},
        {ExportFormat::Imsc, "IMSC 1.1 Text", "ttml", true},
        {ExportFormat::PlainText, "Plain Text", "txt", false},
        {ExportFormat::Csv, "CSV", "csv", false},
        {ExportFormat::TranscriptJson, "JSON", "json", false},
    };
    return formats;
}

QString timecodeText(qint64 frame, Rational rate, TimecodeCount count)
{
    const qint64 base = std::max<qint64>(1, (rate.num + rate.den / 2) / std::max<qint64>(1, rate.den));
    qint64 label = std::max<qint64>(0, frame);
    const bool drops = count == TimecodeCount::Drop && base % 30 == 0;
    if (drops) {
        // Two labels in thirty are left out at each minute but every tenth.
        const qint64 dropped = base / 15;
        const qint64 minute = base * 60 - dropped;
        const qint64 tenMinutes = 10 * minute + dropped;
        const qint64 rest = label % tenMinutes;
        label += dropped * (9 * (label / tenMinutes) + std::max<qint64>(0, (rest - dropped) / minute));
    }
    const auto two = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const qint64 seconds = label / base;
    return two(seconds / 3600 % 24) + QLatin1Char(':') + two(seconds / 60 % 60) + QLatin1Char(':') + two(seconds % 60) +
           QLatin1Char(drops ? ';' : ':') + two(label % base);
}

QByteArray exportTranscript(const Transcript& transcript, ExportFormat format, const ExportSettings& settings)
{
    const auto* writer = std::find_if(std::begin(writers), std::end(writers),
                                      [&](const Writer& known) { return known.format == format; });
    return writer->write(transcript, settings);
}

QString exportNote(const Transcript& transcript, ExportFormat format, const ExportSettings& settings)
{
    const auto& formats = exportFormats();
    const bool hasCaptions = std::any_of(formats.begin(), formats.end(), [&](const ExportFormatInfo& info) {
        return info.format == format && info.hasCaptions;
    });
    return hasCaptions ? noteOfBreaches(makeCaptions(transcript, settings.captions), settings.captions) : QString();
}

Status exportTranscriptFile(const QString& path, const Transcript& transcript, ExportFormat format,
                            const ExportSettings& settings)
{
    return writeWhole(path, exportTranscript(transcript, format, settings),
                      QStringLiteral("the file cannot be written"),
                      QStringLiteral("check the folder's permissions and the free space, then export again"));
}

} // namespace desk::speech
