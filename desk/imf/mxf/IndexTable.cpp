#include "desk/imf/mxf/IndexTable.h"

#include "desk/imf/mxf/ByteOrder.h"
#include "desk/imf/mxf/Klv.h"

#include <algorithm>

namespace desk::imf
{

namespace
{

constexpr int entriesPerSegment = 5000;
constexpr int entrySize = 11;
/// With every slice and position table that a segment can have.
constexpr qint64 largestEntry = 11 + 4 * 255 + 8 * 255;

QByteArray entryArray(const QVector<qint64>& offsets)
{
    QVector<QByteArray> entries;
    entries.reserve(offsets.size());
    for (const qint64 offset : offsets) {
        // No reordering, no distance to a key frame, and the flag of a random access point.
        QByteArray entry("\0\0\x80", 3);
        putBig(entry, offset);
        entries.append(entry);
    }
    return value::batch(entries, entrySize);
}

} // namespace

QByteArray IndexSegment::serialise() const
{
    MetadataSet set("IndexTableSegment");
    set.set("IndexEditRate", value::rational(editRate));
    set.set("IndexStartPosition", value::i64(start));
    set.set("IndexDuration", value::i64(duration));
    set.set("EditUnitByteCount", value::u32(editUnitByteCount));
    set.set("IndexStreamID", value::u32(indexSid));
    set.set("EssenceStreamID", value::u32(bodySid));
    set.set("SliceCount", value::u8(0));
    set.set("PositionTableCount", value::u8(0));
    if (!offsets.isEmpty()) {
        set.set("DeltaEntryArray", value::batch({QByteArray(6, '\0')}));
        set.set("IndexEntryArray", entryArray(offsets));
    }
    QByteArray local;
    for (const MetadataItem& item : qAsConst(set.items))
        local += value::u16(item.info->tag) + value::u16(quint16(item.bytes.size())) + item.bytes;
    return klv(keys::indexSegment, local);
}

std::optional<IndexSegment> IndexSegment::parse(const MetadataSet& set)
{
    IndexSegment segment;
    segment.editRate = set.ratio("IndexEditRate");
    segment.start = qint64(set.number("IndexStartPosition"));
    segment.duration = qint64(set.number("IndexDuration"));
    segment.editUnitByteCount = quint32(set.number("EditUnitByteCount"));
    segment.indexSid = quint32(set.number("IndexStreamID"));
    segment.bodySid = quint32(set.number("EssenceStreamID"));
    const QByteArray entries = set.bytes("IndexEntryArray");
    BigReader reader(entries);
    const qint64 count = entries.isEmpty() ? 0 : reader.get<quint32>();
    const qint64 size = entries.isEmpty() ? entrySize : reader.get<quint32>();
    if (size < entrySize || size > largestEntry || reader.left() < count * size || segment.start < 0 ||
        segment.duration < 0)
        return std::nullopt;
    segment.offsets.reserve(int(count));
    for (qint64 i = 0; i < count; ++i) {
        reader.take(3);
        segment.offsets.append(reader.get<qint64>());
        reader.take(size - entrySize);
    }
    return segment;
}

QByteArray serialiseIndex(IndexSegment prototype, const QVector<qint64>& offsets)
{
    QByteArray bytes;
    for (int done = 0; done < offsets.size(); done += entriesPerSegment) {
        prototype.offsets = offsets.mid(done, entriesPerSegment);
        prototype.duration = prototype.offsets.size();
        bytes += prototype.serialise();
        prototype.start += prototype.duration;
    }
    return bytes;
}

} // namespace desk::imf
