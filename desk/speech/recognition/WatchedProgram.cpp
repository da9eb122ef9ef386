#include "desk/speech/recognition/WatchedProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>

namespace desk::speech
{

namespace
{

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr milliseconds pollInterval = 100ms;
/// Looking at processes costs milliseconds, which adds up.
constexpr milliseconds longestLookInterval = 5s;
/// The time that a program which is asked to end has for it.
constexpr milliseconds grace = 3s;
/// A program that only waits wakes up now and then, too: work is more than a hundredth of a processor, or this many
/// bytes a millisecond.
constexpr int idleShare = 100;
constexpr qint64 idleBytes = 64;
constexpr int tailLength = 4096;

/// What the processes of a group have done so far.
struct Effort {
    milliseconds cpu{0};
    /// Bytes read and written, those of mapped files included.
    qint64 moved = 0;
};

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qint64 movedBy(const QString& process)
{
    qint64 moved = 0;
    const QList<QByteArray> lines = contents(process + QStringLiteral("/io")).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("rchar:") || line.startsWith("wchar:"))
            moved += line.mid(6).trimmed().toLongLong();
    }
    return moved;
}

/// The fields of proc(5) after the name, which may hold anything.
enum StatField { Group = 2, PageFaults = 9, User = 11, System, UserOfEnded, SystemOfEnded, StatFields };

Effort effortOf(qint64 group)
{
    static const qint64 ticks = std::max(1L, sysconf(_SC_CLK_TCK));
    static const qint64 page = sysconf(_SC_PAGESIZE);
    Effort effort;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    for (const QString& process : processes) {
        const QString folder = QStringLiteral("/proc/") + process;
        const QByteArray stat = contents(folder + QStringLiteral("/stat"));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < StatFields || fields[Group].toLongLong() != group)
            continue;
        for (const int field : {User, System, UserOfEnded, SystemOfEnded})
            effort.cpu += milliseconds(fields[field].toLongLong() * 1000 / ticks);
        effort.moved += fields[PageFaults].toLongLong() * page + movedBy(folder);
    }
    return effort;
}

} // namespace

/// Tells how long there has been no sign of life.
class WatchedProgram::Watch
{
public:
    Watch(qint64 group, milliseconds patience)
        : m_group(group), m_patience(patience), m_lookInterval(std::min(longestLookInterval, patience / 10))
    {
        m_clock.start();
    }

    /// @param written bytes so far.
    /// @return whether there is still hope.
    bool isAlive(qint64 written)
    {
        // A desk that was stopped for a while has not been watching.
        const milliseconds passed = std::min(milliseconds(m_clock.restart()), 1000ms);
        m_silence += passed;
        m_sinceLook += passed;
        if (m_sinceLook < m_lookInterval)
            return true;
        m_sinceLook = 0ms;
        const Effort now = effortOf(m_group);
        // Less than before: one of the processes has ended.
        const bool works = now.cpu < m_known.cpu || now.cpu > m_known.cpu + m_silence / idleShare ||
                           now.moved < m_known.moved || now.moved > m_known.moved + m_silence.count() * idleBytes;
        if (works || written != m_written) {
            m_known = now;
            m_written = written;
            m_silence = 0ms;
        }
        return m_silence < m_patience;
    }

private:
    qint64 m_group;
    milliseconds m_patience;
    milliseconds m_lookInterval;
    QElapsedTimer m_clock;
    milliseconds m_silence{0};
    milliseconds m_sinceLook{0};
    Effort m_known;
    qint64 m_written = 0;
};

void WatchedProgram::Child::setupChildProcess()
{
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

WatchedProgram::WatchedProgram(Call call) : m_call(std::move(call))
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardInputFile(QProcess::nullDevice());
}

WatchedProgram::End WatchedProgram::run(const std::function<Go()>& goOn)
{
    m_process.start(m_call.program, m_call.arguments);
    if (!m_process.waitForStarted())
        return End::NotStarted;
    m_group = m_process.processId();
    const End how = watch(goOn);
    if (how == End::Silent || how == End::Flooding)
        end();
    // Whatever it started and left behind would go on for nobody.
    sendAll(SIGKILL);
    m_process.waitForFinished();
    return how;
}

WatchedProgram::End WatchedProgram::watch(const std::function<Go()>& goOn)
{
    Watch watch(m_group, m_call.patience);
    while (!m_process.waitForFinished(int(pollInterval.count())) && m_process.state() != QProcess::NotRunning) {
        keepTail();
        if (goOn() == Go::Stop)
            return End::Stopped;
        const qint64 size = sizeOfResult();
        if (m_printed > mostWritten || size > mostWritten)
            return End::Flooding;
        if (!watch.isAlive(m_printed + size))
            return End::Silent;
    }
    keepTail();
    if (m_process.exitStatus() == QProcess::CrashExit)
        return End::Crashed;
    if (m_process.exitCode() != 0)
        return End::Failed;
    return sizeOfResult() > mostWritten ? End::Flooding : End::Done;
}

void WatchedProgram::keepTail()
{
    const QByteArray printed = m_process.readAll();
    m_printed += printed.size();
    m_tail = (m_tail + printed.right(tailLength)).right(tailLength);
}

qint64 WatchedProgram::sizeOfResult() const
{
    return QFileInfo(m_call.result).size();
}

void WatchedProgram::sendAll(int signal) const
{
    if (m_group > 0)
        kill(-pid_t(m_group), signal);
}

void WatchedProgram::end()
{
    sendAll(SIGTERM);
    m_process.waitForFinished(int(grace.count()));
}

} // namespace desk::speech
