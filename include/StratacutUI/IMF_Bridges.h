#pragma once

#include "StratacutUI/Export.h"

#include <memory>

class IMFO_Bridge;
class MXE_Bridge;

/// Holds the process-wide package output bridge. Never owns it: the host keeps the bridge alive as long as any model.
/// Safe to call from any thread.
class STRATACUTUI_EXPORT IMF_IMFO_bridge
{
public:
    IMF_IMFO_bridge() = delete;

    /// Does nothing; there are no instances.
    IMF_IMFO_bridge& operator=(const IMF_IMFO_bridge&) = default;

    /// Does nothing; there are no instances.
    IMF_IMFO_bridge& operator=(IMF_IMFO_bridge&&) noexcept = default;

    /// Stores the bridge if none is stored yet; a later pointer is ignored. A null pointer leaves the holder empty.
    static void Initialize(IMFO_Bridge* bridge);
    /// The stored bridge; null before Initialize.
    static IMFO_Bridge* Instance();
};

/// Holds and owns the process-wide media-engine bridge. The host installs it before it constructs the item model.
class STRATACUTUI_EXPORT IMF_MXE_bridge
{
public:
    IMF_MXE_bridge() = delete;

    /// Does nothing; there are no instances.
    IMF_MXE_bridge& operator=(const IMF_MXE_bridge&) = default;

    /// Does nothing; there are no instances.
    IMF_MXE_bridge& operator=(IMF_MXE_bridge&&) noexcept = default;

    /// Takes the bridge for the life of the process. Only the first call counts; a later bridge is destroyed.
    static void Initialize(std::unique_ptr<MXE_Bridge> bridge);
    /// The stored bridge, read without a lock; null before Initialize.
    static MXE_Bridge* Instance();
};
