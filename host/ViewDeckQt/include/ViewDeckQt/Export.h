#pragma once

#include <QtGlobal>

/// Marks what users of ViewDeckQt may call. Everything else stays hidden inside the library.
#if defined(VIEWDECK_BUILDING)
#define VIEWDECK_EXPORT Q_DECL_EXPORT
#else
#define VIEWDECK_EXPORT Q_DECL_IMPORT
#endif
