#pragma once

#include "desk/media/SoundReader.h"
#include "desk/media/SoundStream.h"

namespace desk::media
{

/// Samples resampled at a time.
constexpr qint64 soundPortion = 16384;

/// A sound stream at soundRate. Resampling always starts at the same phase, so that a sample does not depend on where
/// reading began.
class ResampledStream
{
public:
    /// As SoundStream has it.
    ResampledStream(std::shared_ptr<SoundPackets> packets, int stream, double zero)
        : m_stream(std::move(packets), stream, zero)
    {
    }

    Status open();
    /// As SoundStream has it.
    Status read(qint64 first, qint64 count, const Planes<std::int32_t>& out);
    /// Samples of the stretch that the file holds, among those read.
    qint64 held(qint64 first, qint64 count) const;

    int channels() const { return m_stream.channels(); }

    /// Whether something that was read may be above full scale.
    bool mayExceed() const { return m_in != m_out || m_stream.hasFloats(); }

private:
    Status restart(qint64 first);
    /// `count` samples from `first` on, at most soundPortion, to place `at` of the planes.
    Status take(qint64 first, qint64 count, qint64 at, const Planes<std::int32_t>& out);
    Status refill();

    SoundStream m_stream;
    qint64 m_in = 1;
    qint64 m_out = 1;
    SwrPtr m_resampler;
    /// Next sample of the stream to go into the resampler, and of the output at the front of m_ready.
    qint64 m_source = 0;
    qint64 m_position = 0;
    std::vector<std::vector<float>> m_ready;
};

} // namespace desk::media
