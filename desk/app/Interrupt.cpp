#include "desk/app/Interrupt.h"

#include <atomic>
#include <csignal>

namespace desk::app
{

namespace
{
std::atomic<bool> interrupted{false};

void onInterrupt(int)
{
    interrupted = true;
}
} // namespace

void catchInterrupts()
{
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    if (std::signal(SIGHUP, onInterrupt) == SIG_IGN)
        std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

bool isInterrupted()
{
    return interrupted;
}

} // namespace desk::app
