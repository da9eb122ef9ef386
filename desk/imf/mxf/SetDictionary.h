#pragma once

#include "desk/imf/mxf/Ul.h"

#include <QByteArray>

namespace desk::imf
{

/// How the value of a header metadata item is laid out in the file and written as XML.
enum class ItemType {
    Opaque, // never written as XML
    UInt8,
    UInt16,
    UInt32,
    UInt64,
    Int8,
    Int16,
    Int32,
    Int64,
    Boolean,
    Rational,
    TimeStamp,
    Version,
    ProductVersion,
    Uuid,
    Auid,
    Umid,
    Utf16,
    Iso7,
    DataValue,
    StrongRef,
    StrongRefBatch,
    AuidBatch,
    UuidBatch,
    UInt16Batch,
    UInt32Batch,
    Int32Batch,
    RgbaLayout,
    ComponentSizing,
    ColorPrimary,
    ThreeColorPrimaries,
    FrameLayout,
    FieldNumber,
    ColorSiting,
    ScanningDirection,
    SignalStandard,
    AlphaTransparency,
};

/// A group of the register: local set with its key (registry version and coding as in the file).
struct SetInfo {
    const char* name;
    Ul key;
    /// Name of the parent set; empty at the root.
    const char* parent;
};

/// An item of a set.
struct ItemInfo {
    const char* set;
    const char* symbol;
    /// Static local tag; 0: given by the primer.
    quint16 tag;
    Ul label;
    ItemType type;
};

extern const SetInfo setTable[];
extern const int setTableSize;
extern const ItemInfo itemTable[];
extern const int itemTableSize;

/// By name, or by the key of a local set; null where the table has none.
const SetInfo* findSet(const QByteArray& name);
const SetInfo* findSet(const Ul& key);
/// Whether `set` is `ancestor` or descends from it.
bool isA(const SetInfo* set, const QByteArray& ancestor);
/// An item of `set` or of one of its parents, by symbol.
const ItemInfo* findItem(const SetInfo* set, const QByteArray& symbol);
/// Any item by label; the registry version does not count.
const ItemInfo* findItem(const Ul& label);
/// Any item by static tag.
const ItemInfo* findItem(quint16 tag);

} // namespace desk::imf
