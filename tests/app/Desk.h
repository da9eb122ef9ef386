#pragma once

#include <QDir>
#include <QProcess>
#include <QStringList>

namespace support
{

/// What a run of the command line has answered.
struct DeskRun {
    int exitCode = -1;
    QString output;
    QString errors;
};

inline DeskRun desk(const QStringList& arguments, const QStringList& wrapper = {})
{
    QStringList command = wrapper + QStringList{QStringLiteral(STRATACUT_DESK)} + arguments;
    QProcess process;
    const QString program = command.takeFirst();
    process.start(program, command);
    if (!process.waitForFinished(600000))
        process.kill();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

/// The only file in the folder that fits the pattern; empty when there is none or there are several.
inline QString onlyFile(const QString& folder, const QString& pattern)
{
    const QStringList found = QDir(folder).entryList({pattern}, QDir::Files);
    return found.size() == 1 ? folder + QLatin1Char('/') + found.first() : QString();
}

} // namespace support
