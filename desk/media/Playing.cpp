#include "desk/media/Playing.h"

#include <atomic>

namespace desk::media
{

namespace
{

std::atomic<int> count{0};

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

} // namespace desk::media
