#pragma once

#include "desk/base/Result.h"
#include "desk/imf/SoundFormat.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/MixGains.h"
#include "desk/services/OutputFormat.h"

#include <QVector>

namespace desk::services
{

/// One sound track file of a composition: which tracks of the sequence go into which of its channels.
struct SoundPlan {
    /// "IMF track A1".
    QString name;
    imf::SoundFormat format;
    /// Places in BinItem::audio.
    QVector<int> sources;
    MixGains gains;
    /// The mix mode's name.
    QString mode;
    /// What the user should know: that tracks are mixed though nobody has asked for it. Empty otherwise.
    QString remark;
};

/// One plan for each row of the audio mapping, in the order of their numbers; see mappedGains(). Without a mapping the
/// mode of "Audio Mix" decides: tracks that have a place in it go unchanged into as many track files as they fill, the
/// rest into files of smaller modes (eight tracks without labels and "5.1": one of 5.1 and one of stereo; two of
/// different languages and "Stereo": two of mono); tracks with a place that it lacks are mixed into one file of it, see
/// unmappedGains(). Empty for a sequence without sound of which nothing is wanted. Fails, naming the row and the next
/// step, for what the output cannot make.
Result<QVector<SoundPlan>> planSound(const BinItem& sequence, const OutputFormat& format);

/// Places in BinItem::audio of the tracks that sound in none of these.
QVector<int> silentTracks(const BinItem& sequence, const QVector<SoundPlan>& plans);

/// The layout that suits the tracks: the largest surround that the labels of the first of them name, otherwise "Mono"
/// for one, "5.1" from six on, "7.1" from eight on where there are rear surrounds, else "Stereo".
QString defaultMixMode(const QVector<BinTrack>& tracks);

/// The mix mode that takes all of the tracks one to one: their layout where they fill it, otherwise "Discrete".
QString losslessMixMode(const QVector<BinTrack>& tracks);

} // namespace desk::services
