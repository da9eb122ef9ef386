#include "desk/media/SoundFeed.h"

#include "desk/media/SoundOutput.h"
#include "desk/media/SoundReader.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace desk::media
{

namespace
{

constexpr int portion = 2048;
constexpr std::size_t capacity = soundRate;
/// Pairs that a run starts with.
constexpr std::size_t enough = soundRate / 5;
constexpr float lowered = 0.70710678F;

} // namespace

SoundFeed::SoundFeed(const Sequence& sequence, std::shared_ptr<SoundOutput> output, std::function<void()> ready)
    : m_sequence(sequence),
      m_output(std::move(output)),
      m_ready(std::move(ready)),
      m_ring(capacity * 2),
      m_thread([this] { loop(); })
{
}

SoundFeed::~SoundFeed()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void SoundFeed::run(qint64 sample)
{
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
        m_told = false;
        m_next = sample;
        m_begin = m_held = 0;
        ++m_number;
    }
    m_wake.notify_all();
}

void SoundFeed::rest()
{
    const std::lock_guard lock(m_mutex);
    m_running = false;
    m_held = 0;
    ++m_number;
}

bool SoundFeed::isPrimed() const
{
    const std::lock_guard lock(m_mutex);
    return !m_running || m_told;
}

QString SoundFeed::problem() const
{
    const std::lock_guard lock(m_mutex);
    return m_problem;
}

int SoundFeed::pull(float* pairs, int frames)
{
    int got = 0;
    {
        const std::lock_guard lock(m_mutex);
        got = int(std::min<std::size_t>(m_held, std::size_t(frames)));
        for (int i = 0; i < got * 2; ++i)
            pairs[i] = m_ring[(m_begin * 2 + std::size_t(i)) % m_ring.size()];
        m_begin = (m_begin + std::size_t(got)) % capacity;
        m_held -= std::size_t(got);
    }
    m_wake.notify_all();
    return got;
}

void SoundFeed::makeGains()
{
    static const QHash<QString, Gains> places{{"L", {1, 0}},
                                              {"R", {0, 1}},
                                              {"Lt", {1, 0}},
                                              {"Rt", {0, 1}},
                                              {"C", {lowered, lowered}},
                                              {"LFE", {0, 0}},
                                              {"Ls", {lowered, 0}},
                                              {"Rs", {0, lowered}},
                                              {"Lrs", {lowered, 0}},
                                              {"Rrs", {0, lowered}},
                                              {"Lc", {lowered, 0}},
                                              {"Rc", {0, lowered}}};
    const QVector<AudioTrackInfo>& audio = m_sequence.audio;
    // Many tracks at once would clip.
    const auto placeless = std::count_if(audio.begin(), audio.end(),
                                         [&](const AudioTrackInfo& track) { return !places.contains(track.label); });
    const float share = 1 / std::sqrt(float(std::max<qint64>(2, placeless)));
    for (const AudioTrackInfo& track : audio)
        m_gains.push_back(audio.size() == 1 ? Gains() : places.value(track.label, {share, share}));
}

Status SoundFeed::open()
{
    if (m_reader || m_gains.empty())
        return {};
    QVector<int> all(m_sequence.audio.size());
    std::iota(all.begin(), all.end(), 0);
    auto opened = SoundReader::open(m_sequence, all);
    if (!opened)
        return opened.error();
    m_reader = std::move(*opened);
    return {};
}

/// Mixed pairs; silence where the sound cannot be read.
std::vector<float> SoundFeed::read(qint64 first, int count)
{
    std::vector<float> pairs(std::size_t(count) * 2, 0.0F);
    if (m_gains.empty())
        return pairs;
    const auto fail = [&](const Error& error) {
        const std::lock_guard lock(m_mutex);
        m_problem = error.sentence();
    };
    const Status opened = open();
    if (!opened)
        return fail(opened.error()), pairs;
    const auto block = m_reader->read(first, count);
    if (!block) {
        // The file may be another one by now; the next portion opens it anew.
        m_reader.reset();
        return fail(block.error()), pairs;
    }
    for (std::size_t track = 0; track < m_gains.size(); ++track) {
        const float left = m_gains[track].left / 8388608.0F;
        const float right = m_gains[track].right / 8388608.0F;
        for (std::size_t i = 0; i < std::size_t(count); ++i) {
            const auto sample = float(block->tracks[track][i]);
            pairs[2 * i] += left * sample;
            pairs[2 * i + 1] += right * sample;
        }
    }
    for (float& value : pairs)
        value = std::clamp(value, -1.0F, 1.0F);
    return pairs;
}

/// Adds a portion to the ring; true when the run may start because of it.
bool SoundFeed::fill()
{
    qint64 first = 0;
    int number = 0;
    {
        const std::lock_guard lock(m_mutex);
        first = m_next;
        number = m_number;
    }
    const std::vector<float> pairs = read(first, portion);
    const std::lock_guard lock(m_mutex);
    if (number != m_number)
        return false;
    const std::size_t end = (m_begin + m_held) * 2;
    for (std::size_t i = 0; i < pairs.size(); ++i)
        m_ring[(end + i) % m_ring.size()] = pairs[i];
    m_held += portion;
    m_next += portion;
    const bool primed = !m_told && m_held >= enough;
    m_told = m_told || primed;
    return primed;
}

void SoundFeed::loop()
{
    makeGains();
    // Files with many tracks take their time. What is wrong with them is told when they are to be heard.
    (void)open();
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_ending || (m_running && m_held + portion <= capacity); });
        if (m_ending)
            return;
        lock.unlock();
        m_output->prepare();
        if (fill())
            m_ready();
        lock.lock();
    }
}

} // namespace desk::media
