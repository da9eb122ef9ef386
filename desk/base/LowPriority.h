#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#endif

namespace desk
{

/// Lowers the calling thread, and those that it starts from now on, by so many steps of Unix niceness.
inline void lowerPriority([[maybe_unused]] int steps)
{
#ifdef Q_OS_LINUX
    setpriority(PRIO_PROCESS, 0, steps);
#endif
}

/// The calling thread, and those that it starts from now on, run where a processor has nothing else to do; whatever
/// else wakes up takes their place at once. There is no way back: raising a thread again is a privilege.
inline void runOnSpareTime()
{
#ifdef Q_OS_LINUX
    const sched_param none{};
    pthread_setschedparam(pthread_self(), SCHED_IDLE, &none);
#endif
}

} // namespace desk
