#pragma once

#include "desk/base/Result.h"

#include <utility>

namespace support
{

/// What a step that must succeed gives; ends the test program with the sentence of its error where it does not.
template <class Value>
Value valueOf(desk::Result<Value> result)
{
    if (!result)
        qFatal("%s", qPrintable(result.error().sentence()));
    return std::move(*result);
}

} // namespace support
