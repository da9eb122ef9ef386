#include "desk/services/SoundMixer.h"

#include <algorithm>
#include <cmath>

namespace desk::services
{

namespace
{
constexpr std::int32_t lowest = -8388608;
constexpr std::int32_t highest = 8388607;

std::int32_t rounded(double value)
{
    // Cut off behind a half: a call to round each would take longer than mixing.
    return std::int32_t(value + std::copysign(0.5, value));
}

std::int32_t rounded(std::int32_t value)
{
    return value;
}

/// Whole sums fit: a plan has at most 127 tracks, and 32 bits hold 256.
template <class Value, class Input>
void addUp(const media::SoundBlock& block, const std::vector<Input>& inputs, std::vector<Value>& sums)
{
    sums.assign(block.tracks.front().size(), 0);
    for (const Input& input : inputs) {
        const std::int32_t* samples = block.tracks[input.track].data();
        const auto gain = Value(input.gain);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += gain * Value(samples[i]);
    }
}
} // namespace

SoundMixer::SoundMixer(const SoundPlan& plan, const QVector<int>& tracks)
    : m_mixed(plan.gains.size()), m_channels(plan.gains.size())
{
    for (const std::vector<double>& channel : plan.gains) {
        std::vector<Input> inputs;
        for (std::size_t i = 0; i < channel.size(); ++i) {
            if (channel[i] != 0)
                inputs.push_back({std::size_t(tracks.indexOf(plan.sources[int(i)])), channel[i]});
        }
        m_inputs.push_back(inputs);
    }
}

template <class Value>
void SoundMixer::limit(const std::vector<Value>& sums, std::size_t channel)
{
    std::vector<std::int32_t>& out = m_mixed[channel];
    out.resize(sums.size());
    std::int32_t least = 0;
    std::int32_t most = 0;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const std::int32_t value = rounded(sums[i]);
        least = std::min(least, value);
        most = std::max(most, value);
        out[i] = std::clamp(value, lowest, highest);
    }
    if (least >= lowest && most <= highest)
        return;
    const auto first = std::find_if(sums.begin(), sums.end(),
                                    [](Value sum) { return rounded(sum) < lowest || rounded(sum) > highest; });
    if (!m_overload)
        m_overload = Overload{m_position + (first - sums.begin()), int(channel), 1};
    m_overload->level = std::max(m_overload->level, std::max(-double(least), double(most)) / -lowest);
}

void SoundMixer::sum(const media::SoundBlock& block, std::size_t channel)
{
    const auto& inputs = m_inputs[channel];
    if (std::all_of(inputs.begin(), inputs.end(), [](const Input& input) { return input.gain == 1; })) {
        addUp(block, inputs, m_wholeSums);
        limit(m_wholeSums, channel);
    } else {
        addUp(block, inputs, m_sums);
        limit(m_sums, channel);
    }
    m_channels[channel] = m_mixed[channel].data();
}

const std::vector<const std::int32_t*>& SoundMixer::mix(const media::SoundBlock& block)
{
    for (std::size_t channel = 0; channel < m_inputs.size(); ++channel) {
        const auto& inputs = m_inputs[channel];
        if (inputs.size() == 1 && inputs.front().gain == 1)
            m_channels[channel] = block.tracks[inputs.front().track].data();
        else
            sum(block, channel);
    }
    m_position += block.tracks.empty() ? 0 : qint64(block.tracks.front().size());
    return m_channels;
}

} // namespace desk::services
