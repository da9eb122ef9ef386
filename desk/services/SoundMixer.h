#pragma once

#include "desk/media/SoundReader.h"
#include "desk/services/SoundPlan.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace desk::services
{

/// Where a mix first leaves the range of its samples.
struct Overload {
    /// Counted over all blocks.
    qint64 sample = 0;
    /// Place in the plan's channels.
    int channel = 0;
    /// The highest level so far, 1 being full scale.
    double level = 1;
};

/// Mixes the blocks of one reader into one plan's channels, in double precision; a channel that takes one track as it
/// is gets its very samples. One thread at a time.
class SoundMixer
{
public:
    /// `tracks` are the tracks of the blocks to come, as given to SoundReader::open(); the plan's are among them.
    SoundMixer(const SoundPlan& plan, const QVector<int>& tracks);

    /// For each channel of the plan as many samples as the block has, 24 bits wide: the block's own ones or some that
    /// are here until the next call. What is too loud is limited, and told by overload().
    const std::vector<const std::int32_t*>& mix(const media::SoundBlock& block);

    const std::optional<Overload>& overload() const { return m_overload; }

private:
    struct Input {
        /// Place in SoundBlock::tracks.
        std::size_t track;
        double gain;
    };

    void sum(const media::SoundBlock& block, std::size_t channel);
    void limit(std::size_t channel);

    /// For each channel.
    std::vector<std::vector<Input>> m_inputs;
    std::vector<std::vector<std::int32_t>> m_mixed;
    std::vector<const std::int32_t*> m_channels;
    std::vector<double> m_sums;
    std::optional<Overload> m_overload;
    qint64 m_position = 0;
};

} // namespace desk::services
