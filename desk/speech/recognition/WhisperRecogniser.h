#pragma once

#include "desk/speech/recognition/Recogniser.h"

#include <chrono>

namespace desk::speech
{

struct WhisperCommand {
    QString program;
    QString model;
    QString language;
    /// How long the program may show no sign of life before it is ended.
    std::chrono::seconds patience;
};

/// The command-line program of whisper.cpp, run over a few minutes of sound at a time, cut where it is quiet. What it
/// writes is read as any stranger's file.
class WhisperRecogniser : public Recogniser
{
public:
    explicit WhisperRecogniser(WhisperCommand command);

    QString name() const override;
    Status recognise(SoundSource& sound, qint64 first, RecognitionSink& sink) override;

private:
    struct Part;

    /// The batch is empty where the sink said stop.
    Result<std::unique_ptr<Batch>> recognisePart(const Part& part, RecognitionSink& sink) const;
    Status run(const Part& part, const QString& base, RecognitionSink& sink, Go& go) const;
    Status failed(const QString& why) const;
    Status failure(const QString& what, const QString& next) const;

    WhisperCommand m_command;
};

} // namespace desk::speech
