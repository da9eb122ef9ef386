#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>

#include <boost/optional.hpp>

/// A key/value store for JSON arrays in the host's settings. The host hands it over as a unique owner; the controller
/// keeps it and destroys it with itself. Used on the user-interface thread; nothing here throws or reports an error.
/// Keys are ASCII and valid for the length of the call. The order of the declarations is the binary interface.
class STRATACUTUI_EXPORT ISettingsStorage
{
public:
    /// Slot 0.
    virtual ~ISettingsStorage();
    /// Slot 1. Reserved: the module does not call it.
    virtual void reserved1() = 0;
    /// Slot 2. The array stored under the key; empty when the key holds nothing or what it holds cannot be read.
    virtual boost::optional<QJsonArray> get(const char* key) = 0;
    /// Slot 3. Reserved: the module does not call it.
    virtual void reserved3() = 0;
    /// Slot 4. Stores the array under the key, replacing what was there; get() answers it from then on. A host that
    /// cannot write it keeps the last array that it wrote and tells the user itself.
    virtual void set(const char* key, const QJsonArray& value) = 0;
};
