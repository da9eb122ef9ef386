#include "desk/speech/store/StoreThread.h"

#include "desk/speech/store/StoreFile.h"

#include <chrono>

namespace desk::speech
{

namespace
{

constexpr auto retryInterval = std::chrono::milliseconds(500);

} // namespace

StoreThread::StoreThread(QString path, Events events)
    : m_path(std::move(path)), m_events(std::move(events)), m_thread([this] { loop(); })
{
}

StoreThread::~StoreThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_wake.notify_all();
    m_thread.join();
    if (!m_works.empty())
        qWarning("%s: changes of transcripts that could not be stored: %d", qPrintable(m_path), int(m_works.size()));
}

void StoreThread::add(Work work)
{
    const std::lock_guard lock(m_mutex);
    m_works.push_back(std::move(work));
    m_wake.notify_all();
}

void StoreThread::retry()
{
    const std::lock_guard lock(m_mutex);
    m_retries = true;
    m_wake.notify_all();
}

bool StoreThread::waitUntilIdle(int ms)
{
    std::unique_lock lock(m_mutex);
    return m_idle.wait_for(lock, std::chrono::milliseconds(ms),
                           [this] { return m_isOpen && m_works.empty() && !m_problem; });
}

bool StoreThread::hasSomethingToDo() const
{
    return m_ends || m_retries || (!m_problem && (!m_isOpen || !m_works.empty()));
}

void StoreThread::loop()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_problem && m_problem->passes)
            m_wake.wait_for(lock, retryInterval, [this] { return hasSomethingToDo(); });
        else
            m_wake.wait(lock, [this] { return hasSomethingToDo(); });
        const bool isLast = m_ends && (m_problem || (m_isOpen && m_works.empty()));
        if (m_ends && m_works.empty())
            break;
        m_retries = false;
        lock.unlock();
        const auto problem = tryNext();
        noteProblem(problem);
        lock.lock();
        m_idle.notify_all();
        if (isLast && problem)
            break;
    }
    m_database.reset();
}

/// Opens the file, or does the first work; the latter leaves the queue where it succeeds.
std::optional<StoreProblem> StoreThread::tryNext()
{
    if (!m_database)
        return tryOpen();
    // What is written into a file without a name is lost, and nobody would hear of it.
    if (fileNumber(m_path) != m_fileNumber)
        return movedAway(m_path);
    std::unique_lock lock(m_mutex);
    if (m_works.empty())
        return std::nullopt;
    // Only this thread takes from the queue, and its elements do not move.
    const Work& work = m_works.front();
    lock.unlock();
    auto problem = tryWork(work);
    if (problem)
        return problem;
    if (work.done)
        work.done();
    lock.lock();
    m_works.pop_front();
    return std::nullopt;
}

std::optional<StoreProblem> StoreThread::tryOpen()
{
    StoreProblem problem;
    auto database = StoreDatabase::open(m_path, problem);
    if (!database)
        return problem;
    database->sql().begin(Sql::Access::Read);
    const StoreContents contents = database->contents();
    if (!database->sql().commit())
        return storeProblem(m_path, database->sql());
    m_database = std::move(database);
    m_fileNumber = fileNumber(m_path);
    m_events.opened(contents);
    const std::lock_guard lock(m_mutex);
    m_isOpen = true;
    return std::nullopt;
}

std::optional<StoreProblem> StoreThread::tryWork(const Work& work)
{
    Sql& sql = m_database->sql();
    if (sql.begin(work.access))
        work.run(*m_database);
    if (sql.commit())
        return std::nullopt;
    return storeProblem(m_path, sql);
}

void StoreThread::noteProblem(const std::optional<StoreProblem>& problem)
{
    std::unique_lock lock(m_mutex);
    const bool isNew = problem.has_value() != m_problem.has_value() ||
                       (problem && problem->error.sentence() != m_problem->error.sentence());
    m_problem = problem;
    lock.unlock();
    if (isNew)
        m_events.problemChanged(problem);
}

} // namespace desk::speech
