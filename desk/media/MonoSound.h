#pragma once

#include "desk/media/SoundReader.h"

namespace desk::media
{

/// Tracks of a sequence mixed to one channel at another rate: 16 bits signed, sample 0 with the start of frame 0. Used
/// by one thread at a time.
class MonoSound
{
public:
    /// @param tracks as SoundReader::open() has them. @param rate samples a second.
    static Result<std::unique_ptr<MonoSound>> open(const Sequence& sequence, const QVector<int>& tracks, int rate);
    ~MonoSound();
    MonoSound(const MonoSound&) = delete;
    MonoSound& operator=(const MonoSound&) = delete;

    /// Samples; those of the sequence's longest sound.
    qint64 length() const;
    /// `count` samples from `first` on, fewer only at the end. Going on from where the last call ended is fast, and
    /// jumps change no sample.
    Result<QVector<qint16>> read(qint64 first, qint64 count);

private:
    class Private;
    explicit MonoSound(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};

} // namespace desk::media
