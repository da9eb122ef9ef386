#include "desk/app/Console.h"

#include <cstdio>
#include <unistd.h>

namespace desk::app::console
{

namespace
{
bool statusShown = false;

void write(FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stream);
    std::fflush(stream);
}

void line(FILE* stream, const QString& text)
{
    endStatusLine();
    write(stream, text + QLatin1Char('\n'));
}
} // namespace

void out(const QString& text)
{
    line(stdout, text);
}

void note(const QString& text)
{
    line(stderr, text);
}

void error(const QString& text)
{
    line(stderr, QStringLiteral("stratacut-desk: ") + text);
}

void statusLine(const QString& text)
{
    // Return to the first column, write, clear what is left of the former text.
    write(stderr, QLatin1Char('\r') + text + QStringLiteral("\033[K"));
    statusShown = true;
}

void endStatusLine()
{
    if (statusShown)
        write(stderr, QStringLiteral("\n"));
    statusShown = false;
}

bool isTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

} // namespace desk::app::console
