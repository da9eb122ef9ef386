#pragma once

#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"

#include <QByteArray>

namespace desk::imf
{

/// What the user chooses for the pictures of a package.
struct J2kSettings {
    enum class Mode { Lossy, Reversible };
    Mode mode = Mode::Lossy;
    /// Upper limit of the picture's bit rate in Mbit/s (10^6 bits); only for Lossy. 1 to 1600 within the levels.
    double megabitsPerSecond = 150.0;
};

/// One IMF profile of ISO/IEC 15444-1 with its levels, and the limit of a frame that follows from the chosen rate.
struct J2kProfile {
    J2kSettings::Mode mode = J2kSettings::Mode::Lossy;
    /// Capability word of the SIZ marker: profile base | subLevel << 4 | mainLevel.
    quint16 rsiz = 0;
    /// 1 to 11, limits samples a second.
    int mainLevel = 0;
    /// 0 to 9, limits bits a second; 0 for the reversible profiles.
    int subLevel = 0;
    /// PictureEssenceCoding label, 16 bytes (ST 422, ST 2067-21).
    QByteArray pictureCoding;
    /// Largest codestream of one frame in bytes; 0 where the profile is reversible and nothing limits it.
    qint64 maxFrameBytes = 0;
};

/// The smallest profile and levels that hold the format at the chosen rate. Fails, naming the property and what is
/// possible instead, where Application 2E (ST 2067-21) has no such picture: size, rate, colour, depth, sampling.
Result<J2kProfile> chooseProfile(const PictureFormat& format, const J2kSettings& settings);

/// The profile that a label stands for (main level 0 included); an error where it is none of IMF. maxFrameBytes is 0.
Result<J2kProfile> profileOfLabel(const QByteArray& pictureCoding);

} // namespace desk::imf
