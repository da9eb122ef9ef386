#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

/// Programs of others, which look at what was written here or make what is read.
namespace support
{

/// What a run of a program has answered; the exit code is -1 where it crashed or did not end within two minutes.
struct Ran {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

inline Ran ran(const QString& program, const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

/// Standard output; a message in place of it where the program fails or complains.
inline QByteArray run(const QString& program, const QStringList& arguments, const QByteArray& input = {})
{
    const Ran one = ran(program, arguments, input);
    return one.exitCode == 0 && one.errors.isEmpty() ? one.output : "FAILED: " + one.errors;
}

} // namespace support
