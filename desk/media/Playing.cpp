#include "desk/media/Playing.h"

#include <atomic>
#include <chrono>

namespace desk::media
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr Clock::duration patience = std::chrono::seconds(2);

std::atomic<int> count{0};
std::atomic<Clock::rep> behindUntil{0};

} // namespace

Playing::Playing()
{
    ++count;
}

Playing::~Playing()
{
    --count;
}

bool Playing::isGoingOn()
{
    return count > 0;
}

void Playing::fallBehind()
{
    behindUntil = (Clock::now() + patience).time_since_epoch().count();
}

bool Playing::isBehind()
{
    return Clock::now().time_since_epoch().count() < behindUntil;
}

} // namespace desk::media
