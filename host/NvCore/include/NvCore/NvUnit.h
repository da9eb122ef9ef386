#pragma once

#include <QMetaType>
#include <QtGlobal>

/// A position or a length on a timeline, counted in edit units (frames) of its sequence.
using NvUnit_t = qint64;
