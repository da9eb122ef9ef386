#pragma once

#include "desk/speech/recognition/Recogniser.h"

namespace desk::speech
{

/// PocketSphinx with its model of US English. One utterance goes from pause to pause.
class SphinxRecogniser : public Recogniser
{
public:
    /// @param modelFolder as in RecogniserSettings::sphinxModel.
    explicit SphinxRecogniser(QString modelFolder);
    ~SphinxRecogniser() override;

    QString name() const override;
    Status recognise(SoundSource& sound, qint64 first, RecognitionSink& sink) override;

private:
    class Decoder;

    QString m_folder;
    std::unique_ptr<Decoder> m_decoder;
};

} // namespace desk::speech
