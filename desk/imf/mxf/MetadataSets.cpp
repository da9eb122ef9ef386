#include "desk/imf/mxf/MetadataSets.h"

#include "desk/imf/mxf/ByteOrder.h"
#include "desk/imf/mxf/Klv.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

namespace desk::imf
{

namespace value
{

namespace
{

template <class T>
QByteArray big(T number)
{
    QByteArray bytes;
    putBig(bytes, number);
    return bytes;
}

} // namespace

QByteArray u8(quint8 number)
{
    return big(number);
}

QByteArray u16(quint16 number)
{
    return big(number);
}

QByteArray u32(quint32 number)
{
    return big(number);
}

QByteArray i64(qint64 number)
{
    return big(number);
}

QByteArray rational(Rational ratio)
{
    return big(qint32(ratio.num)) + big(qint32(ratio.den));
}

QByteArray text(const QString& text)
{
    QByteArray bytes;
    for (const QChar unit : text)
        putBig(bytes, unit.unicode());
    return bytes;
}

QByteArray uuid(const QUuid& id)
{
    return id.toRfc4122();
}

QByteArray ul(const Ul& label)
{
    return label.toBytes();
}

QByteArray umid(const QUuid& id)
{
    static const Ul head(0x060a2b3401010105, 0x01010f2013000000);
    return head.toBytes() + id.toRfc4122();
}

QByteArray batch(const QVector<QByteArray>& items, int itemSize)
{
    QByteArray bytes = big(quint32(items.size())) + big(quint32(items.isEmpty() ? itemSize : items.first().size()));
    for (const QByteArray& item : items)
        bytes += item;
    return bytes;
}

QByteArray timeStamp()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QDate date = now.date();
    const QTime time = now.time();
    QByteArray bytes = big(qint16(date.year()));
    for (const int part : {date.month(), date.day(), time.hour(), time.minute(), time.second(), time.msec() / 4})
        bytes += u8(quint8(part));
    return bytes;
}

} // namespace value

MetadataSet::MetadataSet(const char* name) : info(findSet(QByteArray(name)))
{
    Q_ASSERT(info != nullptr);
    key = info->key;
    set("InstanceID", value::uuid(QUuid::createUuid()));
}

MetadataSet& MetadataSet::set(const char* symbol, const QByteArray& bytes)
{
    const ItemInfo* item = findItem(info, QByteArray(symbol));
    Q_ASSERT(item != nullptr);
    items.append({item, item->label, bytes});
    return *this;
}

bool MetadataSet::has(const char* symbol) const
{
    return std::any_of(items.begin(), items.end(), [symbol](const MetadataItem& item) {
        return item.info != nullptr && qstrcmp(item.info->symbol, symbol) == 0;
    });
}

QByteArray MetadataSet::bytes(const char* symbol) const
{
    for (const MetadataItem& item : items) {
        if (item.info != nullptr && qstrcmp(item.info->symbol, symbol) == 0)
            return item.bytes;
    }
    return {};
}

quint64 MetadataSet::number(const char* symbol) const
{
    quint64 number = 0;
    const QByteArray digits = bytes(symbol).left(8);
    for (const char byte : digits)
        number = number << 8 | quint8(byte);
    return number;
}

Rational MetadataSet::ratio(const char* symbol) const
{
    BigReader reader(bytes(symbol));
    const auto numerator = reader.get<qint32>();
    const auto denominator = reader.get<qint32>();
    return reader.ok() ? Rational(numerator, denominator) : Rational();
}

QString MetadataSet::text(const char* symbol) const
{
    const QByteArray raw = bytes(symbol);
    const bool wide = std::any_of(items.begin(), items.end(), [symbol](const MetadataItem& item) {
        return item.info != nullptr && qstrcmp(item.info->symbol, symbol) == 0 && item.info->type == ItemType::Utf16;
    });
    QString text = wide ? QString() : QString::fromLatin1(raw);
    for (BigReader reader(raw); wide && reader.left() >= 2;)
        text += QChar(reader.get<quint16>());
    const int end = text.indexOf(QChar(0));
    return end < 0 ? text : text.left(end);
}

Ul MetadataSet::label(const char* symbol) const
{
    return BigReader(bytes(symbol)).ul();
}

QUuid MetadataSet::uuid(const char* symbol) const
{
    return QUuid::fromRfc4122(bytes(symbol).left(16));
}

QVector<QUuid> MetadataSet::references(const char* symbol) const
{
    const QByteArray raw = bytes(symbol);
    if (raw.size() == 16)
        return {QUuid::fromRfc4122(raw)};
    QVector<QUuid> ids;
    // The batch's own count is not trusted: what the bytes hold counts.
    for (int at = 8; at + 16 <= raw.size(); at += 16)
        ids.append(QUuid::fromRfc4122(raw.mid(at, 16)));
    return ids;
}

void MetadataSets::append(const MetadataSet& set)
{
    m_byInstance.insert(set.instanceId(), m_sets.size());
    m_sets.append(set);
}

const MetadataSet* MetadataSets::find(const QUuid& instanceId) const
{
    const auto found = m_byInstance.constFind(instanceId);
    return found == m_byInstance.constEnd() ? nullptr : &m_sets.at(*found);
}

const MetadataSet* MetadataSets::first(const char* group) const
{
    for (const MetadataSet& set : m_sets) {
        if (isA(set.info, group))
            return &set;
    }
    return nullptr;
}

QVector<const MetadataSet*> MetadataSets::referenced(const MetadataSet& from, const char* symbol) const
{
    QVector<const MetadataSet*> found;
    const auto ids = from.references(symbol);
    for (const QUuid& id : ids) {
        if (const MetadataSet* set = find(id))
            found.append(set);
    }
    return found;
}

QByteArray MetadataSets::serialise() const
{
    QHash<QByteArray, quint16> tags;
    QVector<QByteArray> primer;
    QByteArray sets;
    quint16 nextTag = 0x8000;
    for (const MetadataSet& set : m_sets) {
        QByteArray local;
        for (const MetadataItem& item : set.items) {
            const QByteArray label = item.label.toBytes();
            if (!tags.contains(label)) {
                tags.insert(label, item.info->tag != 0 ? item.info->tag : nextTag++);
                primer.append(value::u16(tags.value(label)) + label);
            }
            local += value::u16(tags.value(label)) + value::u16(quint16(item.bytes.size())) + item.bytes;
        }
        sets += klv(set.key, local);
    }
    return klv(keys::primer, value::batch(primer, 18)) + sets;
}

std::optional<Primer> parsePrimer(const QByteArray& bytes)
{
    BigReader reader(bytes);
    const auto count = reader.get<quint32>();
    if (reader.get<quint32>() != 18 || reader.left() < qint64(count) * 18)
        return std::nullopt;
    Primer primer;
    for (quint32 i = 0; i < count; ++i) {
        const auto tag = reader.get<quint16>();
        primer.insert(tag, reader.ul());
    }
    return primer;
}

std::optional<MetadataSet> parseSet(const Ul& key, const QByteArray& bytes, const Primer& primer)
{
    MetadataSet set;
    set.key = key;
    set.info = findSet(key);
    BigReader reader(bytes);
    while (reader.left() > 0) {
        const auto tag = reader.get<quint16>();
        const auto size = reader.get<quint16>();
        MetadataItem item;
        item.bytes = reader.take(size);
        const auto label = primer.constFind(tag);
        item.info = label != primer.constEnd() ? findItem(*label) : findItem(tag);
        item.label = label != primer.constEnd() ? *label : item.info != nullptr ? item.info->label : Ul();
        if (!reader.ok())
            return std::nullopt;
        set.items.append(item);
    }
    return set;
}

} // namespace desk::imf
