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

/// Whole sums fit: a plan has at most 127 tracks, and 32 bits hold 256.
template <class Value, class Input>
void addUp(const media::SoundBlock& block, const std::vector<Input>& inputs, std::vector<Value>& sums)
{
    sums.resize(block.tracks.front().size());
    if (inputs.empty())
        std::fill(sums.begin(), sums.end(), Value(0));
    for (const Input& input : inputs) {
        const auto& samples = block.tracks[input.track];
        const auto scaled = [gain = input.gain](std::int32_t sample) {
            // Sums of integers have a gain of one.
            return std::is_same_v<Value, double> ? Value(gain * sample) : Value(sample);
        };
        if (&input == &inputs.front())
            std::transform(samples.begin(), samples.end(), sums.begin(), scaled);
        else
            std::transform(samples.begin(), samples.end(), sums.begin(), sums.begin(),
                           [&](std::int32_t sample, Value sum) { return sum + scaled(sample); });
    }
}

/// Without comparing, which a plain x86-64 does not do on several values at once.
bool leaveTheirRange(const std::vector<std::int32_t>& values)
{
    std::uint32_t bits = 0;
    for (const std::int32_t value : values)
        bits |= std::uint32_t(value) - std::uint32_t(lowest);
    return bits > std::uint32_t(highest - lowest);
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

void SoundMixer::limit(std::size_t channel)
{
    std::vector<std::int32_t>& values = m_mixed[channel];
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const double level = std::max(-double(*least), double(*most)) / -lowest;
    const auto first = std::find_if(values.begin(), values.end(),
                                    [](std::int32_t value) { return value < lowest || value > highest; });
    if (!m_overload)
        m_overload = Overload{m_position + (first - values.begin()), int(channel), 1};
    m_overload->level = std::max(m_overload->level, level);
    for (std::int32_t& value : values)
        value = std::clamp(value, lowest, highest);
}

void SoundMixer::sum(const media::SoundBlock& block, std::size_t channel)
{
    const auto& inputs = m_inputs[channel];
    std::vector<std::int32_t>& out = m_mixed[channel];
    if (std::all_of(inputs.begin(), inputs.end(), [](const Input& input) { return input.gain == 1; })) {
        addUp(block, inputs, out);
    } else {
        addUp(block, inputs, m_sums);
        out.resize(m_sums.size());
        std::transform(m_sums.begin(), m_sums.end(), out.begin(), rounded);
    }
    if (leaveTheirRange(out))
        limit(channel);
    m_channels[channel] = out.data();
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
