#pragma once

#include "desk/speech/recognition/RecognitionJob.h"
#include "desk/speech/store/TranscriptStore.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace desk::speech
{

/// Transcribes clips one after the other on a thread of its own and keeps the store told: state and percent of each
/// clip, every utterance with its position, at last the transcript. What a cancelled or crashed run recognised is there
/// when the clip is added again with the same recogniser and unchanged media.
///
/// Lives on the store's thread, which outlives it.
class Transcriber : public QObject
{
    Q_OBJECT

public:
    /// Called on the worker's thread before the first clip; again after a failure.
    using RecogniserMaker = std::function<Result<std::unique_ptr<Recogniser>>()>;

    Transcriber(TranscriptStore& store, RecogniserMaker maker, QObject* parent = nullptr);
    /// Stops at once; clips that are not done stay waiting in the store.
    ~Transcriber() override;

    /// Puts a clip at the end of the queue; nothing where it waits or runs already.
    void add(const QString& clip, const RecognitionJob& job);
    /// Takes a clip out of the queue, or stops it: its state is missing again.
    void cancel(const QString& clip);
    /// Takes another recogniser for what is added from now on. What waits or runs leaves the queue and keeps its state.
    /// Does not wait for the utterance that is being recognised.
    void use(RecogniserMaker maker);
    bool isBusy(const QString& clip) const;

Q_SIGNALS:
    /// The transcript is on its way into the store. @param repairs what the recogniser got wrong.
    void finished(const QString& clip, const desk::speech::RepairReport& repairs);
    void failed(const QString& clip, const desk::Error& error);

private:
    struct Task;
    class TaskEvents;

    bool isIdle() const;
    void loop();
    Result<RecognitionResult> run(const std::shared_ptr<Task>& task);
    void end(const std::shared_ptr<Task>& task, const Result<RecognitionResult>& result);
    template <class Function>
    void post(const std::shared_ptr<Task>& task, Function function);

    TranscriptStore& m_store;
    /// The worker's.
    std::unique_ptr<Recogniser> m_recogniser;
    mutable std::mutex m_mutex;
    RecogniserMaker m_maker;
    /// Whether the worker's recogniser is another's than the maker's.
    bool m_isOutdated = false;
    std::condition_variable m_wake;
    std::deque<std::shared_ptr<Task>> m_tasks;
    bool m_ends = false;
    std::thread m_thread;
};

} // namespace desk::speech
