#include "NvCore/NvText.h"
#include "StratacutUI/ITranscriptWindowInfo.h"

ITranscriptWindowInfo::~ITranscriptWindowInfo() = default;

QString STT_SpeakerInfo::displayName() const
{
    return name.empty() ? stx_func("Speaker ") + QString::fromStdString(id) : QString::fromStdString(name);
}
