#include "desk/imf/mxf/Klv.h"

#include "desk/imf/mxf/ByteOrder.h"

namespace desk::imf
{

std::optional<PartitionKey> partitionKey(const Ul& key)
{
    Ul head = key;
    head.bytes[13] = head.bytes[14] = head.bytes[15] = 0;
    const PartitionKey found{key.bytes[13], key.bytes[14]};
    if (!head.matches(keys::partitionHead) || found.kind < 2 || found.kind > 4)
        return std::nullopt;
    return found;
}

bool isFill(const Ul& key)
{
    return key.matches(keys::fill);
}

bool isEssence(const Ul& key, std::uint8_t itemType)
{
    Ul head = key;
    for (std::size_t i = 12; i < 16; ++i)
        head.bytes[i] = 0;
    return head.matches(Ul(0x060e2b3401020101, 0x0d01030100000000)) && key.bytes[12] == itemType;
}

QByteArray berLength(qint64 length)
{
    QByteArray bytes;
    if (length < (1 << 24))
        putBig(bytes, quint32(0x83000000U | quint32(length)));
    else
        putBig(bytes, quint64(0x8700000000000000ULL | quint64(length)));
    return bytes;
}

QByteArray klv(const Ul& key, const QByteArray& value)
{
    return key.toBytes() + berLength(value.size()) + value;
}

qint64 klvHeadSize(qint64 valueSize)
{
    return valueSize < (1 << 24) ? 20 : 24;
}

QByteArray fillItem(qint64 size)
{
    const qint64 head = klvHeadSize(size);
    return klv(keys::fill, QByteArray(int(size - head), '\0'));
}

QByteArray PartitionPack::serialise(const Ul& key, const Ul& container) const
{
    QByteArray value;
    putBig(value, quint16(1));
    putBig(value, quint16(3));
    putBig(value, alignment);
    for (const qint64 number : {thisPartition, previousPartition, footerPartition, headerByteCount, indexByteCount})
        putBig(value, number);
    putBig(value, indexSid);
    putBig(value, bodyOffset);
    putBig(value, bodySid);
    putUl(value, keys::op1a);
    putBig(value, quint32(1));
    putBig(value, quint32(16));
    putUl(value, container);
    return klv(key, value);
}

std::optional<PartitionPack> PartitionPack::parse(const QByteArray& value)
{
    BigReader reader(value);
    PartitionPack pack;
    reader.take(4);
    pack.alignment = reader.get<quint32>();
    for (qint64* number : {&pack.thisPartition, &pack.previousPartition, &pack.footerPartition, &pack.headerByteCount,
                           &pack.indexByteCount})
        *number = reader.get<qint64>();
    pack.indexSid = reader.get<quint32>();
    pack.bodyOffset = reader.get<qint64>();
    pack.bodySid = reader.get<quint32>();
    const bool sane = reader.ok() && pack.headerByteCount >= 0 && pack.indexByteCount >= 0 && pack.bodyOffset >= 0;
    return sane ? std::optional(pack) : std::nullopt;
}

} // namespace desk::imf
