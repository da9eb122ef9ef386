#include "MappingChoices.h"

#include "StratacutUI/ITrackGroupingManger.h"

void MappingChoices::update(ITrackGroupingManger* manager)
{
    m_sources.set(manager ? manager->getSourceList() : QStringList());
    m_mixModes.set(manager ? manager->getAudioMixList() : QStringList());
}

void MappingChoices::Offer::set(const QStringList& offered)
{
    if (offered == entries)
        return;
    entries = offered;
    choices = AudioChoiceBox::makeChoices(offered);
}
