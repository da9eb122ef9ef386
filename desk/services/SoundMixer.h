#pragma once

#include "desk/media/SoundReader.h"
#include "desk/services/SoundPlan.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
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

/// The loudest sample of a source among those that are above full scale and reach a channel so.
struct Excess {
    /// Counted over all blocks.
    qint64 sample = 0;
    /// 1 being full scale.
    double level = 1;
};

/// By place in BinItem::audio.
using Excesses = std::map<int, Excess>;

/// Keeps the louder one of each source, the earlier one of two that are alike.
void keepLoudest(int source, const Excess& excess, Excesses& all);

/// Mixes the blocks of one reader into one plan's channels, in double precision; a channel that takes one track as it
/// is gets its very samples. One thread at a time.
///
/// Sources above full scale are limited after their gains, where it is needed. That is no overload: a mix is too loud
/// where it is so with each source at full scale at most.
class SoundMixer
{
public:
    /// `tracks` are the tracks of the blocks to come, as given to SoundReader::open(); the plan's are among them.
    SoundMixer(const SoundPlan& plan, const QVector<int>& tracks);

    /// For each channel of the plan as many samples as the block has, 24 bits wide: the block's own ones or some that
    /// are here until the next call. What is too loud is limited, and told by overload() or excesses().
    const std::vector<const std::int32_t*>& mix(const media::SoundBlock& block);

    const std::optional<Overload>& overload() const { return m_overload; }

    const Excesses& excesses() const { return m_excesses; }

private:
    struct Input {
        /// Place in SoundBlock::tracks.
        std::size_t track;
        double gain;
        /// Place in BinItem::audio.
        int source;
    };

    void findLoudTracks(const media::SoundBlock& block);
    bool hasLoudInput(std::size_t channel) const;
    void sum(const media::SoundBlock& block, std::size_t channel);
    void limit(const media::SoundBlock& block, std::size_t channel);
    bool isTooLoudAnyway(const media::SoundBlock& block, std::size_t channel, std::size_t i) const;
    void noteExcess(const media::SoundBlock& block, std::size_t channel, std::size_t i);

    /// For each channel.
    std::vector<std::vector<Input>> m_inputs;
    std::vector<std::vector<std::int32_t>> m_mixed;
    std::vector<const std::int32_t*> m_channels;
    std::vector<double> m_sums;
    /// Places in SoundBlock::tracks, and for each track of the block whether some of it is beyond 24 bits.
    std::set<std::size_t> m_used;
    std::vector<char> m_isLoud;
    std::optional<Overload> m_overload;
    Excesses m_excesses;
    qint64 m_position = 0;
};

} // namespace desk::services
