#pragma once

#include "desk/base/Result.h"
#include "desk/imf/SoundFormat.h"
#include "desk/media/SoundReader.h"
#include "desk/services/OutputFormat.h"

#include <QVector>

#include <vector>

namespace desk::services
{

/// One sound track file of a composition: which tracks of the sequence go into which of its channels.
///
/// As many sources as channels are routed one to one, by label where the labels name just these channels and in order
/// otherwise. Any other number is mixed by place: a source sounds where its label says, one without a telling label in
/// the middle when it is alone and on alternating sides when it is not. Centre and surrounds enter a stereo mix 3 dB
/// down, the LFE channel enters none; a single source fills both sides of stereo unchanged. Where gains could add up to
/// more than one, all are lowered alike.
struct SoundPlan {
    imf::SoundFormat format;
    /// Places in Sequence::audio.
    QVector<int> sources;
    /// For each channel, the gain of each source.
    std::vector<std::vector<double>> gains;

    /// Appends the block's samples, interleaved and limited to 24 bits.
    void mix(const media::SoundBlock& block, std::vector<std::int32_t>& interleaved) const;
};

/// One plan for each row of the audio mapping. Without a mapping the mode of "Audio Mix" decides: tracks that have a
/// place in it go unchanged into as many track files as they fill, the rest into files of smaller modes (eight tracks
/// without labels and "5.1": one of 5.1 and one of stereo; two of different languages and "Stereo": two of mono); fewer
/// tracks than the mode has channels, and tracks with a place that it lacks, are mixed into one file of it. Empty for a
/// sequence without sound. Fails, naming the row, for a mode that the output cannot make and for tracks that the
/// sequence does not have.
Result<QVector<SoundPlan>> planSound(const media::Sequence& sequence, const OutputFormat& format);

/// Places in Sequence::audio of the tracks that sound in none of these.
QVector<int> silentTracks(const media::Sequence& sequence, const QVector<SoundPlan>& plans);

/// The mix mode that suits a number of tracks: "Mono" for one, "5.1" from six on, otherwise "Stereo".
QString defaultMixMode(int tracks);

} // namespace desk::services
