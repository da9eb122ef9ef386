#include "StratacutUI/IMF_Bridges.h"

#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/MXE_Bridge.h"

#include <mutex>
#include <shared_mutex>

namespace
{
struct OutputHolder {
    std::shared_mutex lock;
    IMFO_Bridge* bridge = nullptr;
};

OutputHolder& outputHolder()
{
    static OutputHolder holder;
    return holder;
}

std::once_flag mediaEngineOnce;
MXE_Bridge* mediaEngine = nullptr;
} // namespace

void IMF_IMFO_bridge::Initialize(IMFO_Bridge* bridge)
{
    OutputHolder& holder = outputHolder();
    const std::unique_lock<std::shared_mutex> guard(holder.lock);
    if (!holder.bridge)
        holder.bridge = bridge;
}

IMFO_Bridge* IMF_IMFO_bridge::Instance()
{
    OutputHolder& holder = outputHolder();
    const std::shared_lock<std::shared_mutex> guard(holder.lock);
    return holder.bridge;
}

void IMF_MXE_bridge::Initialize(std::unique_ptr<MXE_Bridge> bridge)
{
    // Kept for the life of the process on purpose: views may still ask while static objects are destroyed.
    std::call_once(mediaEngineOnce, [&bridge] { mediaEngine = bridge.release(); });
}

MXE_Bridge* IMF_MXE_bridge::Instance()
{
    return mediaEngine;
}
