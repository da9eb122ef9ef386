#pragma once

#include "StratacutUI/IMFO_Bridge.h"
#include "desk/services/CommitPlan.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace desk::services
{

/// Runs commits one after the other on a thread of its own.
class CommitQueue
{
public:
    /// Called on the queue's thread, a few times a second and after the last frame.
    using Progress = std::function<void(const QByteArray& deliveryId, const ExportProgress& progress)>;

    /// Called on the queue's thread, before the completion, for what the user should know of a composition.
    using Noted = std::function<void(const QByteArray& deliveryId, const QString& note)>;

    CommitQueue(Progress progress, Noted noted);
    /// Cancels what runs and what waits; each completion is still called.
    ~CommitQueue();
    CommitQueue(const CommitQueue&) = delete;
    CommitQueue& operator=(const CommitQueue&) = delete;

    /// Any thread. `done` is called once, on the queue's thread.
    void add(const CommitPlan& plan, IMFO_CommitCallback done);
    /// Any thread. Cancels the commit of a delivery, running or waiting. Its completion says so.
    void cancel(const QByteArray& deliveryId);

    /// Any thread. Commits that start after this leave the processor to what somebody watches or listens to.
    void yieldToPlayback() { m_yields = true; }

    /// Any thread. Whether a commit of the delivery runs or waits.
    bool isBusy(const QByteArray& deliveryId) const;

private:
    struct Job;

    void loop();
    IMFO_Bridge::Error run(Job& job) const;
    Status write(Job& job) const;

    Progress m_progress;
    Noted m_noted;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::shared_ptr<Job>> m_jobs;
    bool m_ending = false;
    std::atomic<bool> m_yields{false};
    std::thread m_thread;
};

} // namespace desk::services
