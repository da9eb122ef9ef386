#pragma once

#include "desk/speech/formats/Export.h"

namespace desk::speech
{

/// For the export's reader; empty where all captions keep the rules.
QString noteOfBreaches(const QVector<Caption>& captions, const CaptionRules& rules);

QByteArray writeSubRip(const Transcript& transcript, const ExportSettings& settings);
QByteArray writeWebVtt(const Transcript& transcript, const ExportSettings& settings);
QByteArray writeImsc(const Transcript& transcript, const ExportSettings& settings);
QByteArray writePlainText(const Transcript& transcript, const ExportSettings& settings);
QByteArray writeCsv(const Transcript& transcript, const ExportSettings& settings);
QByteArray writeTranscriptJson(const Transcript& transcript, const ExportSettings& settings);

} // namespace desk::speech
