#pragma once

#include <QtGlobal>

/// Marks the classes and functions that a host may use. Everything else stays hidden inside the library.
#if defined(STRATACUTUI_BUILDING)
#define STRATACUTUI_EXPORT Q_DECL_EXPORT
#else
#define STRATACUTUI_EXPORT Q_DECL_IMPORT
#endif
