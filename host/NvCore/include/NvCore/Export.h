#pragma once

#include <QtGlobal>

/// Marks what users of NvCore may call. Everything else stays hidden inside the library.
#if defined(NVCORE_BUILDING)
#define NVCORE_EXPORT Q_DECL_EXPORT
#else
#define NVCORE_EXPORT Q_DECL_IMPORT
#endif
