#pragma once

#include "NvCore/Export.h"

#include <QByteArray>

#include <functional>

/// Checks for programming errors. `NV_ASSERT(index.isValid());` evaluates the expression exactly once in every build;
/// when it is false, the handler learns the expression as written and the base name of the source file without its
/// extension ("IMF_PackageMgrQtModel"). If the handler returns, the program goes on after the check.
#define NV_ASSERT(...) ((__VA_ARGS__) ? static_cast<void>(0) : nvAssertFailed(#__VA_ARGS__, __FILE__))

/// Called on the thread whose check failed.
using NvAssertHandler = std::function<void(const QByteArray& expression, const QByteArray& source)>;

/// Replaces the process-wide handler; an empty one brings the default back, which ends a debug build (STRATACUT_DEBUG)
/// with a message and does nothing in a release build. Safe from any thread.
/// @return the handler so far; empty when it was the default.
NVCORE_EXPORT NvAssertHandler nvSetAssertHandler(NvAssertHandler handler);

/// Reports a failed check to the handler. Use NV_ASSERT.
NVCORE_EXPORT void nvAssertFailed(const char* expression, const char* fileName);
