#pragma once

#include "StratacutUI/STT_TranscriptData.h"
#include "desk/base/Result.h"
#include "desk/speech/recognition/Recogniser.h"

#include <QHash>

namespace desk::services
{

/// The name of the recogniser that settings ask for. Fails where a file is not there, or only one of whisper.cpp's
/// program and model is named.
Result<QString> recogniserName(const speech::RecogniserSettings& settings);

/// How transcripts are made and shown, kept as a JSON file of the profile. A value.
struct TranscriptSettings {
    speech::RecogniserSettings recogniser;
    /// As QFont::toString() has it; empty for the window's own choice.
    QString font;
    STT_Visibilities visibilities;
    /// By media::Sequence::id: the numbers of the speech tracks that are transcribed and shown. A sequence that is not
    /// here has all.
    QHash<QString, QVector<int>> tracks;

    /// A file that is not there or cannot be read gives the defaults.
    static TranscriptSettings load(const QString& file);
    Status save(const QString& file) const;
};

} // namespace desk::services
