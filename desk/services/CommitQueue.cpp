#include "desk/services/CommitQueue.h"

#include "desk/base/LowPriority.h"

#include <QDir>
#include <QElapsedTimer>

namespace desk::services
{

/// Counts frames and tells how fast they go, at most every `interval` milliseconds.
class ProgressMeter
{
public:
    explicit ProgressMeter(qint64 totalFrames) { m_progress.totalFrames = totalFrames, m_timer.start(); }

    /// True when it is time to report.
    bool frameWritten(qint64 bytes)
    {
        ++m_progress.frames;
        m_progress.bytes += bytes;
        const double seconds = double(m_timer.elapsed()) / 1000;
        m_progress.framesPerSecond = seconds > 0 ? double(m_progress.frames) / seconds : 0;
        if (m_progress.framesPerSecond > 0)
            m_progress.secondsLeft = double(m_progress.totalFrames - m_progress.frames) / m_progress.framesPerSecond;
        const bool due = m_timer.elapsed() - m_reported >= interval || m_progress.frames == m_progress.totalFrames;
        if (due)
            m_reported = m_timer.elapsed();
        return due;
    }

    const ExportProgress& progress() const { return m_progress; }

private:
    static constexpr qint64 interval = 200;

    ExportProgress m_progress;
    QElapsedTimer m_timer;
    qint64 m_reported = 0;
};

struct CommitQueue::Job {
    CommitPlan plan;
    IMFO_CommitCallback done;
    std::atomic<bool> cancelled{false};
};

CommitQueue::CommitQueue(Progress progress, Noted noted)
    : m_progress(std::move(progress)), m_noted(std::move(noted)), m_thread([this] { loop(); })
{
}

CommitQueue::~CommitQueue()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        for (const auto& job : m_jobs)
            job->cancelled = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void CommitQueue::add(const CommitPlan& plan, IMFO_CommitCallback done)
{
    auto job = std::make_shared<Job>();
    job->plan = plan;
    job->done = std::move(done);
    {
        const std::lock_guard lock(m_mutex);
        job->cancelled = m_ending;
        m_jobs.push_back(std::move(job));
    }
    m_wake.notify_all();
}

void CommitQueue::cancel(const QByteArray& deliveryId)
{
    const std::lock_guard lock(m_mutex);
    for (const auto& job : m_jobs) {
        if (job->plan.deliveryId == deliveryId)
            job->cancelled = true;
    }
}

bool CommitQueue::isBusy(const QByteArray& deliveryId) const
{
    const std::lock_guard lock(m_mutex);
    return std::any_of(m_jobs.begin(), m_jobs.end(),
                       [&](const auto& job) { return job->plan.deliveryId == deliveryId; });
}

void CommitQueue::loop()
{
    for (;;) {
        std::shared_ptr<Job> job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_ending || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            job = m_jobs.front();
        }
        // With it, of all threads that decode, encode and mix for this one.
        if (m_yields)
            lowerPriority(5);
        const IMFO_Bridge::Error outcome = run(*job);
        {
            // Before the completion: whoever hears of it may start the next commit of the same delivery at once.
            const std::lock_guard lock(m_mutex);
            m_jobs.pop_front();
        }
        job->done(outcome);
    }
}

Status CommitQueue::write(Job& job) const
{
    auto transaction = imf::PackageTransaction::begin(job.plan.folder, job.plan.delivery);
    if (!transaction)
        return transaction.error();
    ProgressMeter meter(job.plan.totalFrames);
    const auto frameWritten = [this, &job, &meter](qint64 bytes) {
        if (meter.frameWritten(bytes))
            m_progress(job.plan.deliveryId, meter.progress());
    };
    const QVector<PackagePlan>& packages = job.plan.packages;
    for (const PackagePlan& package : packages) {
        transaction->setPackage(package.package);
        for (const CompositionOrder& order : package.compositions) {
            ExportJob composition(order, job.cancelled, frameWritten);
            if (Status written = composition.run(*transaction); !written)
                return written;
            for (const QString& note : composition.notes())
                m_noted(job.plan.deliveryId, note);
        }
        const Status closed = &package == &packages.last() ? transaction->commit() : transaction->nextPackage();
        if (!closed)
            return closed;
    }
    return {};
}

IMFO_Bridge::Error CommitQueue::run(Job& job) const
{
    const Status outcome = write(job);
    if (outcome)
        return {};
    const quint8 code = job.cancelled ? quint8(IMFO_Bridge::Error::WarningOnly) : quint8(1);
    return {code, outcome.error().sentence()};
}

} // namespace desk::services
