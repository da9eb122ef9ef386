#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

/// Programs that are not ours, which look at what we wrote.
namespace programs
{

inline bool exists(const QString& program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

/// Standard output; a message in place of it when the program fails or complains.
inline QByteArray run(const QString& program, const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return "FAILED: " + process.readAllStandardError();
    const QByteArray complaints = process.readAllStandardError();
    return complaints.isEmpty() ? process.readAllStandardOutput() : "COMPLAINED: " + complaints;
}

} // namespace programs
