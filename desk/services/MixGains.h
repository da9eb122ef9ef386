#pragma once

#include "desk/base/Result.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/MixMode.h"

#include <vector>

namespace desk::services
{

/// For each channel of a track file, the gain of each of its sources.
using MixGains = std::vector<std::vector<double>>;

/// The MCATagSymbol of the channel that a track's label stands for; empty where it names no place.
QString placeOf(const QString& label);

/// Whether the mode has a channel for that place.
bool hasPlaceFor(const MixMode& mode, const QString& place);

/// Whether the labels of these tracks name just the mode's channels, each at least once.
bool isLabelledLike(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode);

/// What somebody has mapped, at the levels of the sources. A mode that routes takes as many tracks as it has channels,
/// or several times as many, which are then layers that are summed: by label where the labels name just its channels,
/// in order otherwise. "Mono" sums; "Stereo" takes a single track on both sides, two one to one, and places more of
/// them by their labels, those without one on alternating sides. Centre and surrounds enter two channels 3 dB down and
/// the LFE channel enters neither (ITU-R BS.775-3, annex 4); it enters "Mono" only when nothing else does.
///
/// The error, which names no file and no row, says how many tracks the mode needs. `sources` are places in `tracks`.
Result<MixGains> mappedGains(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode);

/// What nobody has mapped: places that the mode lacks are folded into those that it has, and where gains could add up
/// to more than one all are lowered alike. Fails for a mode with more channels than there are tracks.
Result<MixGains> unmappedGains(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode);

} // namespace desk::services
