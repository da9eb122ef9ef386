#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>

#include <boost/optional.hpp>

/// A key/value store for JSON arrays in the host's settings. The host hands it over as a unique owner; the controller
/// keeps it and destroys it with itself. Used on the user-interface thread; nothing here throws or reports an error.
/// Keys are ASCII and valid for the length of the call. The order of the declarations is the binary interface.
///
/// | key                        | what the array holds                                                          |
/// |----------------------------|-------------------------------------------------------------------------------|
/// | "VISITED_IMF_SETTINGS_KEY" | the folders of the deliveries on disk that are in the tree, as text           |
/// | "UNBURNED_ITEMS_KEY"       | the documents of what is not committed                                        |
///
/// Both are read when the controller is made and written by IMF_Controller::onSaveSettings alone. A folder that could
/// not be read is not in the tree, so it is not written again: a host that wants it back keeps it.
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
