#include "desk/imf/mxf/SetDictionary.h"

#include <QHash>

namespace desk::imf
{

namespace
{

QByteArray withoutVersion(const Ul& label)
{
    Ul plain = label;
    plain.bytes[7] = 0;
    return plain.toBytes();
}

template <class Key, class Row, class KeyOf>
QHash<Key, const Row*> indexBy(const Row* rows, int count, KeyOf keyOf)
{
    QHash<Key, const Row*> index;
    for (int i = 0; i < count; ++i) {
        const Key key = keyOf(rows[i]);
        if (!index.contains(key))
            index.insert(key, rows + i);
    }
    return index;
}

} // namespace

const SetInfo* findSet(const QByteArray& name)
{
    static const auto index =
        indexBy<QByteArray>(setTable, setTableSize, [](const SetInfo& set) { return QByteArray(set.name); });
    return index.value(name);
}

const SetInfo* findSet(const Ul& key)
{
    static const auto index =
        indexBy<QByteArray>(setTable, setTableSize, [](const SetInfo& set) { return withoutVersion(set.key); });
    return index.value(withoutVersion(key));
}

bool isA(const SetInfo* set, const QByteArray& ancestor)
{
    for (; set != nullptr; set = findSet(QByteArray(set->parent))) {
        if (ancestor == set->name)
            return true;
    }
    return false;
}

const ItemInfo* findItem(const SetInfo* set, const QByteArray& symbol)
{
    static const auto index = indexBy<QByteArray>(
        itemTable, itemTableSize, [](const ItemInfo& item) { return QByteArray(item.set) + '.' + item.symbol; });
    for (; set != nullptr; set = findSet(QByteArray(set->parent))) {
        if (const ItemInfo* item = index.value(QByteArray(set->name) + '.' + symbol))
            return item;
    }
    return nullptr;
}

const ItemInfo* findItem(const Ul& label)
{
    static const auto index =
        indexBy<QByteArray>(itemTable, itemTableSize, [](const ItemInfo& item) { return withoutVersion(item.label); });
    return index.value(withoutVersion(label));
}

const ItemInfo* findItem(quint16 tag)
{
    static const auto index = indexBy<quint16>(itemTable, itemTableSize, [](const ItemInfo& item) { return item.tag; });
    return tag == 0 ? nullptr : index.value(tag);
}

} // namespace desk::imf
