#include "StratacutUI/SCUI_Resource.h"

#include <mutex>

namespace
{
std::once_flag providerOnce;
SCUI::IResourceProvider* storedProvider = nullptr;
} // namespace

SCUI::IResourceProvider::~IResourceProvider() = default;

void SCUI::Resource::Initialize(std::unique_ptr<IResourceProvider> provider)
{
    // Kept for the life of the process on purpose: views may still draw while static objects are destroyed.
    std::call_once(providerOnce, [&provider] { storedProvider = provider.release(); });
}

SCUI::IResourceProvider* SCUI::Resource::Instance()
{
    return storedProvider;
}
