#pragma once

#include "desk/base/Rational.h"
#include "desk/imf/mxf/SetDictionary.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUuid>
#include <QVector>

#include <optional>

namespace desk::imf
{

/// Values as the file has them, big-endian (ST 377-1:2019, 4.2).
namespace value
{

QByteArray u8(quint8 number);
QByteArray u16(quint16 number);
QByteArray u32(quint32 number);
QByteArray i64(qint64 number);
QByteArray rational(Rational ratio);
QByteArray text(const QString& text);
QByteArray uuid(const QUuid& id);
QByteArray ul(const Ul& label);
/// The basic UMID of a package (ST 330) whose material number is the UUID.
QByteArray umid(const QUuid& id);
/// A batch of items of equal size; an empty one has the given item size.
QByteArray batch(const QVector<QByteArray>& items, int itemSize = 16);
/// Now, in UTC.
QByteArray timeStamp();

} // namespace value

/// One item of a set: what the dictionary knows of it, its label from the primer and its bytes.
struct MetadataItem {
    /// Null where the dictionary does not know the label.
    const ItemInfo* info = nullptr;
    Ul label;
    QByteArray bytes;
};

/// One header metadata set. Getters of an absent item, or of one with too few bytes, give zero or nothing.
class MetadataSet
{
public:
    MetadataSet() = default;
    /// A new set of the dictionary with a random InstanceID.
    explicit MetadataSet(const char* name);

    /// Null where the dictionary does not know the key.
    const SetInfo* info = nullptr;
    Ul key;
    QVector<MetadataItem> items;
    /// Bytes from the start of the file, for messages.
    qint64 offset = 0;

    /// Adds an item of the dictionary by its symbol.
    MetadataSet& set(const char* symbol, const QByteArray& bytes);

    bool has(const char* symbol) const;
    QByteArray bytes(const char* symbol) const;
    /// Unsigned numbers of 1, 2, 4 or 8 bytes.
    quint64 number(const char* symbol) const;
    Rational ratio(const char* symbol) const;
    QString text(const char* symbol) const;
    Ul label(const char* symbol) const;
    QUuid uuid(const char* symbol) const;
    QVector<QUuid> references(const char* symbol) const;

    QUuid instanceId() const { return uuid("InstanceID"); }
};

/// All header metadata of a file.
class MetadataSets
{
public:
    void append(const MetadataSet& set);

    const QVector<MetadataSet>& all() const { return m_sets; }

    /// By InstanceID; null where there is none.
    const MetadataSet* find(const QUuid& instanceId) const;
    /// The first set of the group or of one of its descendants.
    const MetadataSet* first(const char* group) const;
    /// The sets that a reference or a batch of references names, without dangling ones.
    QVector<const MetadataSet*> referenced(const MetadataSet& from, const char* symbol) const;

    /// Primer pack and sets as they stand in the file (ST 377-1:2019, 9).
    QByteArray serialise() const;

private:
    QVector<MetadataSet> m_sets;
    QHash<QUuid, int> m_byInstance;
};

/// Local tags of one header partition and the labels they stand for.
using Primer = QHash<quint16, Ul>;
/// Nothing where the pack is malformed.
std::optional<Primer> parsePrimer(const QByteArray& value);
/// A local set with 2-byte tags and lengths; nothing where an item reaches past its end.
std::optional<MetadataSet> parseSet(const Ul& key, const QByteArray& value, const Primer& primer);

} // namespace desk::imf
