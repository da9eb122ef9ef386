#pragma once

#include "AudioChoiceBox.h"

class ITrackGroupingManger;

/// What a grouping manager offers, asked for once for all rows of a mapping.
class MappingChoices
{
public:
    /// Asks the manager again. Choices that have not changed stay the same object. @param manager may be null: nothing.
    void update(ITrackGroupingManger* manager);

    const AudioChoices& sources() const { return m_sources.choices; }

    const AudioChoices& mixModes() const { return m_mixModes.choices; }

private:
    struct Offer {
        void set(const QStringList& entries);

        QStringList entries;
        AudioChoices choices = AudioChoiceBox::makeChoices({});
    };

    Offer m_sources;
    Offer m_mixModes;
};
