#include "desk/services/SoundMixer.h"

#include <algorithm>
#include <cmath>

namespace desk::services
{

namespace
{
constexpr double lowest = -8388608;
constexpr double highest = 8388607;
} // namespace

SoundMixer::SoundMixer(const SoundPlan& plan, const QVector<int>& tracks)
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

void SoundMixer::note(std::size_t sample, std::size_t channel, double value)
{
    if (!m_overload)
        m_overload = Overload{m_position + qint64(sample), int(channel), 1};
    m_overload->level = std::max(m_overload->level, std::abs(value) / -lowest);
}

void SoundMixer::mixChannel(const media::SoundBlock& block, std::size_t channel, std::vector<std::int32_t>& out)
{
    const std::size_t step = m_inputs.size();
    m_sums.assign(out.size() / step, 0);
    for (const Input& input : m_inputs[channel]) {
        const std::int32_t* samples = block.tracks[input.track].data();
        for (std::size_t i = 0; i < m_sums.size(); ++i)
            m_sums[i] += input.gain * samples[i];
    }
    for (std::size_t i = 0; i < m_sums.size(); ++i) {
        const double value = std::round(m_sums[i]);
        if (value < lowest || value > highest)
            note(i, channel, value);
        out[i * step + channel] = std::int32_t(std::clamp(value, lowest, highest));
    }
}

void SoundMixer::mix(const media::SoundBlock& block, std::vector<std::int32_t>& out)
{
    const std::size_t count = block.tracks.empty() ? 0 : block.tracks.front().size();
    out.resize(count * m_inputs.size());
    for (std::size_t channel = 0; channel < m_inputs.size(); ++channel) {
        const auto& inputs = m_inputs[channel];
        if (inputs.size() != 1 || inputs.front().gain != 1) {
            mixChannel(block, channel, out);
            continue;
        }
        const std::int32_t* samples = block.tracks[inputs.front().track].data();
        for (std::size_t i = 0; i < count; ++i)
            out[i * m_inputs.size() + channel] = samples[i];
    }
    m_position += qint64(count);
}

} // namespace desk::services
