#pragma once

#include "desk/speech/model/Transcript.h"
#include "desk/speech/recognition/SoundSource.h"

namespace desk::speech
{

/// What a recogniser found since its last batch.
struct Batch {
    /// The words of each utterance, with times from the start of the sound. Not trusted: texts and times may be
    /// anything.
    QVector<QVector<Word>> utterances;
    /// The sample from which recognition can go on without losing or repeating a word.
    qint64 resumeAt = 0;
};

enum class Go { On, Stop };

/// Where recognition reports to; called on the thread that recognises.
class RecognitionSink
{
public:
    virtual ~RecognitionSink() = default;
    virtual void take(const Batch& batch) = 0;
    /// Called several times a second. @param sample up to which the sound has been worked on.
    /// @return Go::Stop ends recognise() soon.
    virtual Go progress(qint64 sample) = 0;
};

/// Turns sound into words. Used by one thread at a time; what a model costs to load is spent at the first use.
class Recogniser
{
public:
    virtual ~Recogniser() = default;
    /// Program and model, for the user and to know whose half-done work this is.
    virtual QString name() const = 0;
    /// Recognises from sample `first` to the end of the sound, or until the sink says stop, which is no failure.
    virtual Status recognise(SoundSource& sound, qint64 first, RecognitionSink& sink) = 0;
};

/// Which recogniser to use. Empty members are taken from the environment.
struct RecogniserSettings {
    /// The command-line program of whisper.cpp; STRATACUT_WHISPER. Used where model and program are both set.
    QString whisperProgram;
    /// Its model file; STRATACUT_WHISPER_MODEL.
    QString whisperModel;
    /// Two letters, or "auto"; STRATACUT_WHISPER_LANGUAGE, else "auto".
    QString whisperLanguage;
    /// Folder with the acoustic model "en-us", "en-us.lm.bin" and "cmudict-en-us.dict"; STRATACUT_SPEECH_MODEL, else
    /// where PocketSphinx was installed with it.
    QString sphinxModel;
    /// Seconds that whisper.cpp may show no sign of life before it is ended; 0 for STRATACUT_WHISPER_PATIENCE, else
    /// `defaultPatience`.
    int whisperPatience = 0;

    /// A program at work gives a sign every few seconds, also on a slow machine; only a model on a network may not.
    static constexpr int defaultPatience = 300;

    friend bool operator==(const RecogniserSettings& a, const RecogniserSettings& b)
    {
        return a.whisperProgram == b.whisperProgram && a.whisperModel == b.whisperModel &&
               a.whisperLanguage == b.whisperLanguage && a.sphinxModel == b.sphinxModel &&
               a.whisperPatience == b.whisperPatience;
    }
};

/// Fails where a configured program or model is not there: another recogniser's words would be a surprise.
Result<std::unique_ptr<Recogniser>> makeRecogniser(const RecogniserSettings& settings);

} // namespace desk::speech
