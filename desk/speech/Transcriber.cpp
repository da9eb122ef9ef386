#include "desk/speech/Transcriber.h"

#include <algorithm>

namespace desk::speech
{

struct Transcriber::Task {
    QString clip;
    RecognitionJob job;
    Recognised former;
    /// Whether the worker took it up; under the mutex.
    bool hasRun = false;
    std::atomic<bool> isCancelled{false};
};

/// Runs a function on the transcriber's thread unless the task was cancelled by then.
template <class Function>
void Transcriber::post(const std::shared_ptr<Task>& task, Function function)
{
    const auto guarded = [task, function = std::move(function)] {
        if (!task->isCancelled)
            function();
    };
    QMetaObject::invokeMethod(this, guarded, Qt::QueuedConnection);
}

class Transcriber::TaskEvents : public RecognitionEvents
{
public:
    TaskEvents(Transcriber& owner, std::shared_ptr<Task> task, QString origin)
        : m_owner(owner), m_task(std::move(task)), m_origin(std::move(origin))
    {
    }

    void progress(int percent) override
    {
        m_owner.post(m_task, [store = &m_owner.m_store, clip = m_task->clip, percent] {
            store->setClipState(clip, {ClipState::Stage::Running, percent, QString()});
        });
    }

    void recognised(int track, const Batch& batch) override
    {
        m_owner.post(m_task, [store = &m_owner.m_store, clip = m_task->clip, origin = m_origin, track, batch] {
            store->addRecognised(clip, track, origin, batch);
        });
    }

private:
    Transcriber& m_owner;
    std::shared_ptr<Task> m_task;
    QString m_origin;
};

Transcriber::Transcriber(TranscriptStore& store, RecogniserMaker maker, QObject* parent)
    : QObject(parent), m_store(store), m_maker(std::move(maker)), m_thread([this] { loop(); })
{
}

Transcriber::~Transcriber()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
        for (const auto& task : m_tasks)
            task->isCancelled = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void Transcriber::add(const QString& clip, const RecognitionJob& job)
{
    if (isBusy(clip))
        return;
    auto task = std::make_shared<Task>();
    task->clip = clip;
    task->job = job;
    task->former = m_store.recognised(clip);
    m_store.setClipState(clip, isIdle() ? ClipState::preparing() : ClipState{ClipState::Stage::Waiting, 0, QString()});
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
    m_wake.notify_all();
}

void Transcriber::cancel(const QString& clip)
{
    std::unique_lock lock(m_mutex);
    const auto found =
        std::find_if(m_tasks.begin(), m_tasks.end(), [&](const auto& task) { return task->clip == clip; });
    if (found == m_tasks.end())
        return;
    (*found)->isCancelled = true;
    m_tasks.erase(found);
    lock.unlock();
    m_store.setClipState(clip, {});
}

void Transcriber::use(RecogniserMaker maker)
{
    const std::lock_guard lock(m_mutex);
    for (const auto& task : m_tasks)
        task->isCancelled = true;
    m_tasks.clear();
    m_maker = std::move(maker);
    m_isOutdated = true;
}

bool Transcriber::isBusy(const QString& clip) const
{
    const std::lock_guard lock(m_mutex);
    return std::any_of(m_tasks.begin(), m_tasks.end(), [&](const auto& task) { return task->clip == clip; });
}

bool Transcriber::isIdle() const
{
    const std::lock_guard lock(m_mutex);
    return m_tasks.empty();
}

void Transcriber::loop()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        const auto isFresh = [](const std::shared_ptr<Task>& task) { return !task->hasRun; };
        m_wake.wait(lock, [&] { return m_ends || std::any_of(m_tasks.begin(), m_tasks.end(), isFresh); });
        if (m_ends)
            return;
        const std::shared_ptr<Task> task = *std::find_if(m_tasks.begin(), m_tasks.end(), isFresh);
        task->hasRun = true;
        lock.unlock();
        end(task, run(task));
        lock.lock();
    }
}

Result<RecognitionResult> Transcriber::run(const std::shared_ptr<Task>& task)
{
    // Loading a model and opening the media take a while.
    post(task, [this, task] { m_store.setClipState(task->clip, ClipState::preparing()); });
    std::unique_lock lock(m_mutex);
    if (std::exchange(m_isOutdated, false))
        m_recogniser.reset();
    const RecogniserMaker make = m_maker;
    lock.unlock();
    if (!m_recogniser) {
        auto made = make();
        if (!made)
            return made.error();
        m_recogniser = std::move(*made);
    }
    const QString origin = m_recogniser->name() + QStringLiteral(", ") + task->job.media;
    QHash<int, RecognisedPart> former;
    for (auto track = task->former.cbegin(); track != task->former.cend(); ++track) {
        if (track->origin == origin)
            former[track.key()] = {track->utterances, track->resumeAt};
    }
    TaskEvents events(*this, task, origin);
    return recogniseClip(task->job, *m_recogniser, former, events, task->isCancelled);
}

void Transcriber::end(const std::shared_ptr<Task>& task, const Result<RecognitionResult>& result)
{
    post(task, [this, task, result] {
        {
            const std::lock_guard lock(m_mutex);
            m_tasks.erase(std::remove(m_tasks.begin(), m_tasks.end(), task), m_tasks.end());
        }
        if (result) {
            m_store.putTranscript(task->clip, result->transcript);
            Q_EMIT finished(task->clip, result->repairs);
            return;
        }
        const Recognised found = m_store.recognised(task->clip);
        if (std::all_of(found.begin(), found.end(), [](const auto& track) { return track.utterances.isEmpty(); }))
            m_store.forgetRecognised(task->clip);
        m_store.setClipState(task->clip, {ClipState::Stage::Failed, 0, result.error().sentence()});
        Q_EMIT failed(task->clip, result.error());
    });
}

} // namespace desk::speech
