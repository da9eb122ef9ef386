#include "desk/imf/j2k/J2kEncoderPool.h"

#include "desk/base/LowPriority.h"
#include "desk/imf/j2k/J2kEncoder.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace desk::imf
{

namespace
{

/// One frame inside the pool: first its picture, then its codestream or error.
struct Frame {
    Picture picture;
    bool done = false;
    std::optional<Result<QByteArray>> outcome;
};

/// Nobody tells when the pace changes.
constexpr auto paceInterval = std::chrono::milliseconds(100);

Error cancelled()
{
    return {{}, QStringLiteral("JPEG 2000 encoding"), {}, QStringLiteral("it was cancelled"), {}};
}

} // namespace

struct J2kEncoderPool::State {
    PictureFormat format;
    J2kProfile profile;
    PaceNow pace;
    /// Frames that are encoded at a time.
    int width = 0;
    int capacity = 0;

    mutable std::mutex mutex;
    std::condition_variable roomMade;
    std::condition_variable workAdded;
    std::condition_variable frameDone;
    /// In the order of the pictures; the first is the next to be taken. References stay valid while others come and go.
    std::deque<Frame> frames;
    /// How many frames, from the front, the workers have begun.
    std::size_t begun = 0;
    int busy = 0;
    bool ended = false;
    std::optional<Error> failed;
    /// A crew of threads for each pace, since a thread that has stepped back may not step forward again.
    std::vector<std::thread> workers;

    bool full() const { return frames.size() >= std::size_t(capacity); }

    bool mayBegin(Pace crew) const { return busy < width && (pace ? pace() : Pace::Full) == crew; }

    void fail(const Error& error)
    {
        if (!failed)
            failed = error;
        for (std::condition_variable* waiting : {&roomMade, &workAdded, &frameDone})
            waiting->notify_all();
    }

    void work(Pace crew);
};

void J2kEncoderPool::State::work(Pace crew)
{
    if (crew == Pace::Spare)
        runOnSpareTime();
    std::unique_lock lock(mutex);
    for (;;) {
        const auto isDue = [this, crew] { return failed || (begun < frames.size() ? mayBegin(crew) : ended); };
        while (!workAdded.wait_for(lock, paceInterval, isDue)) {
        }
        if (failed || begun >= frames.size())
            return;
        Frame& frame = frames[begun++];
        const Picture picture = std::move(frame.picture);
        ++busy;
        lock.unlock();
        auto outcome = encodeFrame(picture, format, profile);
        lock.lock();
        frame.outcome = std::move(outcome);
        frame.done = true;
        --busy;
        frameDone.notify_all();
        workAdded.notify_all();
    }
}

J2kEncoderPool::J2kEncoderPool(const PictureFormat& format, const J2kProfile& profile, int workers, PaceNow pace)
    : m_state(std::make_unique<State>())
{
    State& state = *m_state;
    state.format = format;
    state.profile = profile;
    state.pace = std::move(pace);
    state.width = workers > 0 ? workers : std::max(1, int(std::thread::hardware_concurrency()));
    state.capacity = 2 * state.width;
    for (int i = 0; i < state.width; ++i) {
        state.workers.emplace_back([&state] { state.work(Pace::Full); });
        if (state.pace)
            state.workers.emplace_back([&state] { state.work(Pace::Spare); });
    }
}

J2kEncoderPool::~J2kEncoderPool()
{
    cancel();
    for (std::thread& worker : m_state->workers)
        worker.join();
}

int J2kEncoderPool::capacity() const
{
    return m_state->capacity;
}

bool J2kEncoderPool::hasRoom() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->failed || !m_state->full();
}

Status J2kEncoderPool::push(Picture picture)
{
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    state.roomMade.wait(lock, [&state] { return state.failed || !state.full(); });
    if (state.failed)
        return *state.failed;
    state.frames.push_back({std::move(picture), false, std::nullopt});
    state.workAdded.notify_all();
    return {};
}

void J2kEncoderPool::endOfInput()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->ended = true;
    m_state->workAdded.notify_all();
    m_state->frameDone.notify_all();
}

Result<std::optional<QByteArray>> J2kEncoderPool::take()
{
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    state.frameDone.wait(
        lock, [&state] { return state.failed || (state.frames.empty() ? state.ended : state.frames.front().done); });
    if (state.failed)
        return *state.failed;
    if (state.frames.empty())
        return std::optional<QByteArray>();
    const Result<QByteArray> outcome = std::move(*state.frames.front().outcome);
    state.frames.pop_front();
    --state.begun;
    state.roomMade.notify_one();
    if (!outcome) {
        state.fail(outcome.error());
        return outcome.error();
    }
    return std::optional<QByteArray>(*outcome);
}

void J2kEncoderPool::cancel()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->fail(cancelled());
}

} // namespace desk::imf
