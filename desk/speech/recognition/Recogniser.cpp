#include "desk/speech/recognition/Recogniser.h"

#include "desk/speech/recognition/SphinxRecogniser.h"
#include "desk/speech/recognition/WhisperRecogniser.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace desk::speech
{

namespace
{

QString setting(const QString& value, const char* variable, const QString& otherwise = QString())
{
    if (!value.isEmpty())
        return value;
    const QString fromOutside = qEnvironmentVariable(variable);
    return fromOutside.isEmpty() ? otherwise : fromOutside;
}

Error notThere(const QString& file, const QString& what)
{
    return {file, QString(), QString(), what, QStringLiteral("correct the path in the settings of the recogniser")};
}

std::chrono::seconds patienceOf(const RecogniserSettings& settings)
{
    const int fromOutside = qEnvironmentVariableIntValue("STRATACUT_WHISPER_PATIENCE");
    for (const int seconds : {settings.whisperPatience, fromOutside}) {
        if (seconds > 0)
            return std::chrono::seconds(seconds);
    }
    return std::chrono::seconds(RecogniserSettings::defaultPatience);
}

Result<std::unique_ptr<Recogniser>> makeWhisper(WhisperCommand command)
{
    const QString found = QStandardPaths::findExecutable(command.program);
    if (found.isEmpty())
        return notThere(command.program,
                        QStringLiteral("the speech recognition program is not there or cannot be run"));
    if (!QFileInfo(command.model).isFile())
        return notThere(command.model, QStringLiteral("the speech recognition model is not there"));
    command.program = found;
    return std::unique_ptr<Recogniser>(std::make_unique<WhisperRecogniser>(std::move(command)));
}

} // namespace

Result<std::unique_ptr<Recogniser>> makeRecogniser(const RecogniserSettings& settings)
{
    const QString program = setting(settings.whisperProgram, "STRATACUT_WHISPER");
    const QString model = setting(settings.whisperModel, "STRATACUT_WHISPER_MODEL");
    if (!program.isEmpty() && !model.isEmpty()) {
        return makeWhisper({program, model,
                            setting(settings.whisperLanguage, "STRATACUT_WHISPER_LANGUAGE", QStringLiteral("auto")),
                            patienceOf(settings)});
    }
    const QString folder =
        setting(settings.sphinxModel, "STRATACUT_SPEECH_MODEL", QStringLiteral(STRATACUT_SPHINX_MODELS "/en-us"));
    for (const char* part : {"/en-us/mdef", "/en-us.lm.bin", "/cmudict-en-us.dict"}) {
        if (!QFileInfo(folder + QLatin1String(part)).isFile()) {
            return Error{folder + QLatin1String(part), QString(), QString(),
                         QStringLiteral("the speech recognition model is not installed"),
                         QStringLiteral("install the package \"pocketsphinx-en-us\"")};
        }
    }
    return std::unique_ptr<Recogniser>(std::make_unique<SphinxRecogniser>(folder));
}

} // namespace desk::speech
