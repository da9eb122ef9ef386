#pragma once

#include "desk/speech/model/Repair.h"
#include "desk/speech/recognition/SoundSource.h"

namespace desk::speech
{

/// Which speaker, counted from 0 in the order of their first words, speaks in each of the spans: mel cepstra of each
/// span are modelled by a Gaussian, and the most alike are joined for as long as the Bayesian information criterion
/// gains by it. Spans too short to tell (under 0.6 s) go to the speaker before them. Costs about a hundredth of the
/// sound's length.
/// @param goOn called often; where it answers false the result comes early and is of no use.
/// @return one number a span.
Result<QVector<int>> tellVoicesApart(SoundSource& sound, const QVector<TimeSpan>& spans,
                                     const std::function<bool()>& goOn);

/// Which tracks are voices of their own: silent tracks (peak under -60 dBFS) and steady ones (tones, hum) are left out,
/// and so are those that carry the same sound as an earlier one (a stereo pair of one mix). Reads all of the sound.
/// @return places in `tracks`, ascending; the first track alone where no track is left.
Result<QVector<int>> tracksOfTheirOwn(const QVector<SoundSource*>& tracks, const std::function<bool()>& goOn);

} // namespace desk::speech
