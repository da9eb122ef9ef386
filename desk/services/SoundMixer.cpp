#include "desk/services/SoundMixer.h"

#include <algorithm>
#include <cmath>

namespace desk::services
{

namespace
{
constexpr std::int32_t lowest = -8388608;
constexpr std::int32_t highest = 8388607;
/// What 32 bits hold, some room for rounding left.
constexpr double mostLevel = 2147483000;

std::int32_t rounded(double value)
{
    // Cut off behind a half: a call to round each would take longer than mixing.
    return std::int32_t(value + std::copysign(0.5, value));
}

bool isBeyond(std::int32_t value)
{
    return value < lowest || value > highest;
}

/// Whole sums fit, unless a track is loud: a plan has at most 127 tracks, and 32 bits hold 256.
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

void keepLoudest(int source, const Excess& excess, Excesses& all)
{
    Excess& kept = all.try_emplace(source, excess).first->second;
    if (excess.level > kept.level || (excess.level == kept.level && excess.sample < kept.sample))
        kept = excess;
}

SoundMixer::SoundMixer(const SoundPlan& plan, const QVector<int>& tracks)
    : m_mixed(plan.gains.size()), m_channels(plan.gains.size())
{
    for (const std::vector<double>& channel : plan.gains) {
        std::vector<Input> inputs;
        for (std::size_t i = 0; i < channel.size(); ++i) {
            if (channel[i] != 0)
                inputs.push_back({std::size_t(tracks.indexOf(plan.sources[int(i)])), channel[i], plan.sources[int(i)]});
        }
        for (const Input& input : inputs)
            m_used.insert(input.track);
        m_inputs.push_back(inputs);
    }
}

void SoundMixer::findLoudTracks(const media::SoundBlock& block)
{
    m_isLoud.assign(block.tracks.size(), 0);
    if (!block.mayExceed)
        return;
    for (const std::size_t track : m_used)
        m_isLoud[track] = leaveTheirRange(block.tracks[track]);
}

bool SoundMixer::hasLoudInput(std::size_t channel) const
{
    const auto& inputs = m_inputs[channel];
    return std::any_of(inputs.begin(), inputs.end(), [this](const Input& input) { return m_isLoud[input.track] != 0; });
}

/// With each source at full scale at most.
bool SoundMixer::isTooLoudAnyway(const media::SoundBlock& block, std::size_t channel, std::size_t i) const
{
    double sum = 0;
    for (const Input& input : m_inputs[channel])
        sum += input.gain * std::clamp(block.tracks[input.track][i], lowest, highest);
    return isBeyond(rounded(sum));
}

void SoundMixer::noteExcess(const media::SoundBlock& block, std::size_t channel, std::size_t i)
{
    for (const Input& input : m_inputs[channel]) {
        const double level = std::abs(double(block.tracks[input.track][i])) / -lowest;
        if (level > 1)
            keepLoudest(input.source, {m_position + qint64(i), level}, m_excesses);
    }
}

void SoundMixer::limit(const media::SoundBlock& block, std::size_t channel)
{
    std::vector<std::int32_t>& values = m_mixed[channel];
    const bool hasLoud = hasLoudInput(channel);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!isBeyond(values[i]))
            continue;
        if (hasLoud && !isTooLoudAnyway(block, channel, i)) {
            noteExcess(block, channel, i);
        } else {
            if (!m_overload)
                m_overload = Overload{m_position + qint64(i), int(channel), 1};
            m_overload->level = std::max(m_overload->level, std::abs(double(values[i])) / -lowest);
        }
        values[i] = std::clamp(values[i], lowest, highest);
    }
}

void SoundMixer::sum(const media::SoundBlock& block, std::size_t channel)
{
    const auto& inputs = m_inputs[channel];
    std::vector<std::int32_t>& out = m_mixed[channel];
    const bool hasLoud = hasLoudInput(channel);
    const bool isWhole = std::all_of(inputs.begin(), inputs.end(), [](const Input& input) { return input.gain == 1; });
    if (isWhole && !hasLoud) {
        addUp(block, inputs, out);
    } else {
        addUp(block, inputs, m_sums);
        if (hasLoud)
            std::transform(m_sums.begin(), m_sums.end(), m_sums.begin(),
                           [](double value) { return std::clamp(value, -mostLevel, mostLevel); });
        out.resize(m_sums.size());
        std::transform(m_sums.begin(), m_sums.end(), out.begin(), rounded);
    }
    if (leaveTheirRange(out))
        limit(block, channel);
    m_channels[channel] = out.data();
}

const std::vector<const std::int32_t*>& SoundMixer::mix(const media::SoundBlock& block)
{
    findLoudTracks(block);
    for (std::size_t channel = 0; channel < m_inputs.size(); ++channel) {
        const auto& inputs = m_inputs[channel];
        if (inputs.size() == 1 && inputs.front().gain == 1 && !hasLoudInput(channel))
            m_channels[channel] = block.tracks[inputs.front().track].data();
        else
            sum(block, channel);
    }
    m_position += block.tracks.empty() ? 0 : qint64(block.tracks.front().size());
    return m_channels;
}

} // namespace desk::services
