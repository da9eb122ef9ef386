#pragma once

#include "desk/base/Result.h"

#include <QVector>

#include <functional>
#include <memory>

namespace desk::speech
{

/// Samples a second of all sound that is recognised.
constexpr int soundRate = 16000;

constexpr int msOfSample(qint64 sample)
{
    return int(sample * 1000 / soundRate);
}

constexpr qint64 sampleOfMs(qint64 ms)
{
    return ms * soundRate / 1000;
}

/// Where to cut samples: the middle of the quietest fifth of a second among the last `range`.
int quietPlace(const QVector<qint16>& samples, int range);

/// One voice of a clip as mono sound, 16 bits signed, 16 kHz. Sample 0 sounds at the start of the clip. Whoever has the
/// clip implements it. Used by one thread at a time.
class SoundSource
{
public:
    virtual ~SoundSource() = default;
    /// How many samples there are.
    virtual qint64 length() const = 0;
    /// `count` samples from sample `first` on, fewer only at the end. Called in ascending order but for jumps. Fails
    /// where the sound cannot be decoded or its file is gone.
    virtual Result<QVector<qint16>> read(qint64 first, qint64 count) = 0;
};

/// Opens a source; called on the thread that reads it.
using SoundOpener = std::function<Result<std::unique_ptr<SoundSource>>()>;

} // namespace desk::speech
