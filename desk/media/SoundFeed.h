#pragma once

#include "desk/media/Sequence.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace desk::media
{

class SoundOutput;
class SoundReader;

/// Reads and mixes the sound that a player needs next on a thread of its own, up to a second ahead. Every call but
/// pull() comes from one thread and returns at once.
///
/// All tracks sound: left and right channels on their side, centre and tracks without a place on both, the LFE channel
/// on neither. Tracks without a place are the quieter the more of them there are.
class SoundFeed
{
public:
    /// `ready` is called on the feed's thread when a run can start and the device is ready for it.
    SoundFeed(const Sequence& sequence, std::shared_ptr<SoundOutput> output, std::function<void()> ready);
    ~SoundFeed();
    SoundFeed(const SoundFeed&) = delete;
    SoundFeed& operator=(const SoundFeed&) = delete;

    /// Sound from this sample at 48 kHz on, until the next call or rest().
    void run(qint64 sample);
    void rest();
    bool isPrimed() const;
    /// As SoundOutput::Pull has it. Any thread.
    int pull(float* pairs, int frames);

    /// Why there is no sound; empty where nothing is wrong.
    QString problem() const;

private:
    struct Gains {
        float left = 1;
        float right = 1;
    };

    void loop();
    void makeGains();
    Status open();
    bool fill();
    std::vector<float> read(qint64 first, int count);

    Sequence m_sequence;
    std::shared_ptr<SoundOutput> m_output;
    std::function<void()> m_ready;
    std::unique_ptr<SoundReader> m_reader;
    std::vector<Gains> m_gains;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    /// Pairs that lie ready, in a ring.
    std::vector<float> m_ring;
    std::size_t m_begin = 0;
    std::size_t m_held = 0;
    qint64 m_next = 0;
    int m_number = 0;
    bool m_running = false;
    bool m_told = false;
    bool m_ending = false;
    QString m_problem;
    std::thread m_thread;
};

} // namespace desk::media
