#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/ISettingsStorage.h"
#include "StratacutUI/ITrackGroupingManger.h"
#include "StratacutUI/MXE_Bridge.h"
#include "StratacutUI/TargetFormatBuilder.h"

// The key functions of the host interfaces: one home for each virtual table.

IMFO_Bridge::~IMFO_Bridge() = default;
ISettingsStorage::~ISettingsStorage() = default;
ITrackGroupingManger::~ITrackGroupingManger() = default;
IAudioMixDescription::~IAudioMixDescription() = default;
MXE_Bridge::~MXE_Bridge() = default;
TargetFormatBuilder::~TargetFormatBuilder() = default;

IMFO_Bridge::IMFO_Error_t::~IMFO_Error_t() = default;

bool IMFO_Bridge::IMFO_Error_t::isError() const
{
    return m_code != Success;
}

quint8 IMFO_Bridge::IMFO_Error_t::code() const
{
    return m_code;
}

QString IMFO_Bridge::IMFO_Error_t::message() const
{
    return m_message;
}
