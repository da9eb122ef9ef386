#include "desk/speech/formats/Import.h"

#include "desk/speech/formats/JsonNames.h"
#include "desk/speech/formats/Readers.h"
#include "desk/speech/formats/TextReading.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace desk::speech
{

namespace
{

constexpr qint64 largestFile = 64LL << 20;

Error unreadable(const QString& path, const QString& what)
{
    return {path, QString(), QString(), what,
            QStringLiteral("check the file and its permissions, then import it again")};
}

struct Reader {
    ImportFormat format;
    Result<Transcript> (*read)(const QByteArray&, const QString&);
};

const Reader readers[] = {{ImportFormat::SubRip, readSubRip},
                          {ImportFormat::WebVtt, readWebVtt},
                          {ImportFormat::WhisperJson, readWhisperJson},
                          {ImportFormat::TranscriptJson, readTranscriptJson}};

Result<Imported> repaired(Transcript transcript, const QString& fileName, int clipMs)
{
    Imported imported{std::move(transcript), {}};
    const int end = clipMs > 0 ? clipMs : std::numeric_limits<int>::max();
    imported.repairs = repairTranscript(imported.transcript, {0, end});
    if (imported.transcript.segments.isEmpty()) {
        return Error{fileName, QString(), QString(), QStringLiteral("the file has no words"),
                     QStringLiteral("choose the file that holds the transcript")};
    }
    return imported;
}

} // namespace

ImportFormat formatOf(const QByteArray& bytes)
{
    const QString text = decodedText(bytes).remove(QChar::Null);
    const QString start = text.left(4096).trimmed();
    if (start.startsWith(QLatin1String("WEBVTT")))
        return ImportFormat::WebVtt;
    if (start.startsWith(QLatin1Char('{'))) {
        const bool isOwn = start.contains(QLatin1String(own::formatName));
        if (isOwn || !text.contains(QLatin1Char('"') + QLatin1String(whisper::segments) + QLatin1Char('"')))
            return isOwn ? ImportFormat::TranscriptJson : ImportFormat::Unknown;
        return ImportFormat::WhisperJson;
    }
    return text.contains(QLatin1String("-->")) ? ImportFormat::SubRip : ImportFormat::Unknown;
}

Result<Imported> importTranscript(const QByteArray& bytes, const QString& fileName, int clipMs)
{
    const ImportFormat format = formatOf(bytes);
    const auto* reader = std::find_if(std::begin(readers), std::end(readers),
                                      [&](const Reader& known) { return known.format == format; });
    if (reader == std::end(readers)) {
        return Error{fileName, QString(), QString(), QStringLiteral("the file is no transcript that the desk can read"),
                     QStringLiteral("save it as SRT, WebVTT, or the JSON of whisper.cpp")};
    }
    auto transcript = reader->read(bytes, fileName);
    if (!transcript)
        return transcript.error();
    return repaired(std::move(*transcript), fileName, clipMs);
}

Result<Imported> importTranscriptFile(const QString& path, int clipMs)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return unreadable(path, QStringLiteral("the file cannot be read"));
    if (file.size() > largestFile) {
        return Error{path, QString(), QString(), QStringLiteral("the file is larger than 64 MiB, no transcript is"),
                     QStringLiteral("choose the file that holds the transcript")};
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return unreadable(path, file.errorString());
    return importTranscript(bytes, path, clipMs);
}

} // namespace desk::speech
