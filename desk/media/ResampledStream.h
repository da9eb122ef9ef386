#pragma once

#include "desk/media/SoundReader.h"
#include "desk/media/SoundStream.h"

namespace desk::media
{

/// Samples fetched at a time.
constexpr qint64 soundPortion = 16384;

/// A sound stream at soundRate. Resampling always starts at the same phase, so that a sample does not depend on where
/// reading began.
class ResampledStream
{
public:
    /// As SoundStream has it.
    ResampledStream(const QString& path, int stream, double zero) : m_stream(path, stream, zero) {}

    Status open();
    /// Appends samples as SoundStream::read() does; `count` is at most soundPortion.
    Status read(qint64 first, qint64 count, Channels& out);
    /// Samples of the stretch that the file holds, among those read.
    qint64 held(qint64 first, qint64 count) const;

    int channels() const { return m_stream.channels(); }

private:
    Status restart(qint64 first);
    Status take(qint64 first, qint64 count, Channels& out);
    Status refill();

    SoundStream m_stream;
    qint64 m_in = 1;
    qint64 m_out = 1;
    SwrPtr m_resampler;
    /// Next sample of the stream to go into the resampler, and of the output at the front of m_ready.
    qint64 m_source = 0;
    qint64 m_position = 0;
    Channels m_ready;
};

} // namespace desk::media
