#pragma once

#include "desk/speech/store/StoreDatabase.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace desk::speech
{

/// The thread that reads and writes a store's file. Works are done in their order; one that fails stays first and is
/// tried again, by itself every half second while another process holds the lock or the disk is full, else after
/// retry(). So nothing is lost and no caller ever waits for the file.
class StoreThread
{
public:
    struct Work {
        Sql::Access access = Sql::Access::Write;
        std::function<void(StoreDatabase&)> run;
        /// Called on the thread once the work is in the file; may be empty.
        std::function<void()> done;
    };

    /// Both are called on the thread.
    struct Events {
        std::function<void(const StoreContents&)> opened;
        /// Whenever works start to fail or go well again.
        std::function<void(const std::optional<StoreProblem>&)> problemChanged;
    };

    StoreThread(QString path, Events events);
    /// Does what waits; what fails now is given up with a warning.
    ~StoreThread();
    StoreThread(const StoreThread&) = delete;
    StoreThread& operator=(const StoreThread&) = delete;

    void add(Work work);
    void retry();
    /// Waits until everything is in the file. @return false where that takes longer or works fail.
    bool waitUntilIdle(int ms);

private:
    void loop();
    bool hasSomethingToDo() const;
    std::optional<StoreProblem> tryNext();
    std::optional<StoreProblem> tryOpen();
    std::optional<StoreProblem> tryWork(const Work& work);
    void noteProblem(const std::optional<StoreProblem>& problem);

    const QString m_path;
    const Events m_events;
    std::unique_ptr<StoreDatabase> m_database;
    /// Tells the open file from another of its name.
    quint64 m_fileNumber = 0;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::deque<Work> m_works;
    std::optional<StoreProblem> m_problem;
    bool m_isOpen = false;
    bool m_retries = false;
    bool m_ends = false;
    std::thread m_thread;
};

} // namespace desk::speech
