#include "desk/services/TranscriptSettings.h"

#include "desk/base/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace desk::services
{

namespace
{
const QString fontKey = QStringLiteral("font");
const QString tracksKey = QStringLiteral("tracks");
const QString patienceKey = QStringLiteral("whisperPatience");

struct TextKey {
    const char* name;
    QString speech::RecogniserSettings::*text;
};

const TextKey textKeys[] = {{"whisperProgram", &speech::RecogniserSettings::whisperProgram},
                            {"whisperModel", &speech::RecogniserSettings::whisperModel},
                            {"whisperLanguage", &speech::RecogniserSettings::whisperLanguage},
                            {"sphinxModel", &speech::RecogniserSettings::sphinxModel}};

struct FlagKey {
    const char* name;
    bool STT_Visibilities::*flag;
};

const FlagKey flagKeys[] = {{"showSpeaker", &STT_Visibilities::speaker},
                            {"showTimecode", &STT_Visibilities::timecode},
                            {"showNotTranscribed", &STT_Visibilities::notTranscribed}};
} // namespace

Result<QString> recogniserName(const speech::RecogniserSettings& settings)
{
    if (settings.whisperProgram.isEmpty() != settings.whisperModel.isEmpty())
        return Error{{},
                     {},
                     {},
                     QStringLiteral("whisper.cpp needs its program and a model"),
                     QStringLiteral("name both or neither")};
    const auto made = speech::makeRecogniser(settings);
    if (!made)
        return made.error();
    return (*made)->name();
}

TranscriptSettings TranscriptSettings::load(const QString& file)
{
    TranscriptSettings settings;
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return settings;
    const QJsonObject json = QJsonDocument::fromJson(source.readAll()).object();
    for (const TextKey& key : textKeys)
        settings.recogniser.*key.text = json[QLatin1String(key.name)].toString();
    for (const FlagKey& key : flagKeys)
        settings.visibilities.*key.flag = json[QLatin1String(key.name)].toBool(true);
    settings.recogniser.whisperPatience = json[patienceKey].toInt();
    settings.font = json[fontKey].toString();
    const QJsonObject tracks = json[tracksKey].toObject();
    for (auto sequence = tracks.begin(); sequence != tracks.end(); ++sequence) {
        const QJsonArray numbers = sequence->toArray();
        for (const QJsonValue& number : numbers)
            settings.tracks[sequence.key()] += number.toInt();
    }
    return settings;
}

Status TranscriptSettings::save(const QString& file) const
{
    QJsonObject json;
    for (const TextKey& key : textKeys)
        json[QLatin1String(key.name)] = recogniser.*key.text;
    for (const FlagKey& key : flagKeys)
        json[QLatin1String(key.name)] = visibilities.*key.flag;
    if (recogniser.whisperPatience > 0)
        json[patienceKey] = recogniser.whisperPatience;
    json[fontKey] = font;
    QJsonObject chosen;
    for (auto sequence = tracks.begin(); sequence != tracks.end(); ++sequence) {
        QJsonArray numbers;
        for (const int number : *sequence)
            numbers += number;
        chosen[sequence.key()] = numbers;
    }
    if (!chosen.isEmpty())
        json[tracksKey] = chosen;
    QDir().mkpath(QFileInfo(file).path());
    return writeWhole(file, QJsonDocument(json).toJson(), QStringLiteral("the transcript settings cannot be kept"));
}

} // namespace desk::services
