#pragma once

#include "desk/speech/recognition/Recogniser.h"

#include <QProcess>
#include <QStringList>

#include <chrono>

namespace desk::speech
{

/// A program in a process group of its own that is run to its end and not trusted to come to one. Ends with the desk,
/// whatever ends that. Used by one thread.
class WatchedProgram
{
public:
    enum class End { Done, Failed, Crashed, NotStarted, Stopped, Silent, Flooding };

    struct Call {
        QString program;
        QStringList arguments;
        /// A file that grows while the program is at work.
        QString result;
        /// How long it may show no sign of life: no output, no growth of its file, hardly any data read and hardly any
        /// time of the processor.
        std::chrono::milliseconds patience;
    };

    explicit WatchedProgram(Call call);

    /// Blocks. Nothing of the group is left running when it returns.
    /// @param goOn asked several times a second.
    End run(const std::function<Go()>& goOn);

    /// The end of what it has printed so far, on both of its streams.
    const QByteArray& tail() const { return m_tail; }

    /// Why it did not start; after End::NotStarted.
    QString problem() const { return m_process.errorString(); }

    /// What output and file may have in bytes; far above what minutes of sound make.
    static constexpr qint64 mostWritten = 64 * 1024 * 1024;

private:
    class Watch;

    /// Runs in the process that becomes the program.
    class Child : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    End watch(const std::function<Go()>& goOn);
    void keepTail();
    qint64 sizeOfResult() const;
    void sendAll(int signal) const;
    void end();

    Call m_call;
    Child m_process;
    qint64 m_group = 0;
    qint64 m_printed = 0;
    QByteArray m_tail;
};

} // namespace desk::speech
