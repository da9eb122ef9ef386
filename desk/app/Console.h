#pragma once

#include <QString>
#include <QStringList>

namespace desk::app
{

/// What the program answers to its caller.
namespace exitCode
{
inline constexpr int success = 0;
/// The command could not do its work.
inline constexpr int failure = 1;
/// The command line itself is wrong.
inline constexpr int usage = 2;
/// verify has found errors.
inline constexpr int findings = 3;
/// Stopped by an interrupt.
inline constexpr int cancelled = 130;
} // namespace exitCode

/// Results go to the standard output, everything about how the work goes to the standard error stream.
namespace console
{
void out(const QString& text);
void note(const QString& text);
void error(const QString& text);
/// Overwrites the line that the last call has written. Only on a terminal.
void statusLine(const QString& text);
/// Leaves the status line standing and goes on below it.
void endStatusLine();
/// Whether the standard error stream is a terminal.
bool isTerminal();
} // namespace console

} // namespace desk::app
