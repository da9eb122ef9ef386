#pragma once

#include "desk/base/Rational.h"

#include <QByteArray>
#include <QString>

namespace desk::services
{

/// What the essence descriptor of a track says, in the words in which people read it ("Unknown" where it says nothing
/// that is known). Read from the composition, so also for tracks whose file is not there.
struct DescriptorFacts {
    enum class Kind { Picture, Sound, Other };
    Kind kind = Kind::Other;

    // Picture
    QString resolution;
    QString frameRate;
    QString compression;
    QString profile;
    QString colour;
    QString depth;

    // Sound
    QString format;
    QString sampleRate;
    QString bits;
    /// A mix mode of the output, or the soundfield's own name.
    QString mix;
    QString language;
    QString contentKind;
};

/// `regXml` as EssenceDescriptor of a composition holds it (ST 2001-1). An unreadable text gives Kind::Other.
DescriptorFacts readDescriptor(const QByteArray& regXml);

} // namespace desk::services
