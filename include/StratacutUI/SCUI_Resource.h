#pragma once

#include "StratacutUI/Export.h"

#include <memory>

namespace SCUI
{

/// What the host lends the module for the life of the process. It has no operations: the module only keeps it alive.
class STRATACUTUI_EXPORT IResourceProvider
{
public:
    virtual ~IResourceProvider();
};

/// Holds and owns the process-wide resource provider.
class STRATACUTUI_EXPORT Resource
{
public:
    Resource() = delete;

    /// Takes the provider for the life of the process. Only the first call counts; a later provider is destroyed.
    static void Initialize(std::unique_ptr<IResourceProvider> provider);
    /// The stored provider, read without a lock; null before Initialize.
    static IResourceProvider* Instance();
};

} // namespace SCUI
