#include "desk/imf/mxf/EssenceMap.h"

#include <algorithm>

namespace desk::imf
{

Result<EssenceMap> EssenceMap::make(InputFile& file, const QVector<FoundPartition>& partitions, quint32 bodySid,
                                    qint64 duration)
{
    EssenceMap map;
    if (const Status status = map.addRegions(file, partitions, bodySid); !status)
        return status.error();
    auto segments = readIndexSegments(file, partitions);
    if (!segments)
        return segments.error();
    const auto foreign = [&](const IndexSegment& segment) { return bodySid != 0 && segment.bodySid != bodySid; };
    segments->erase(std::remove_if(segments->begin(), segments->end(), foreign), segments->end());
    const Status status = segments->isEmpty() ? map.walk(file, duration) : map.addIndex(file, *segments, duration);
    if (!status)
        return status.error();
    return map;
}

Status EssenceMap::addRegions(InputFile& file, const QVector<FoundPartition>& partitions, quint32 bodySid)
{
    qint64 covered = 0;
    for (const FoundPartition& partition : partitions) {
        const quint32 sid = partition.pack.bodySid;
        if (sid == 0 || (bodySid != 0 && sid != bodySid))
            continue;
        if (partition.pack.bodyOffset < covered || partition.pack.bodyOffset > file.size())
            return file.damage(partition.offset, QStringLiteral("the partition's place in the essence is wrong"));
        const Region region{partition.pack.bodyOffset, partition.essence(), partition.end};
        covered = region.streamOffset + (region.end - region.start);
        m_regions.append(region);
    }
    if (m_regions.isEmpty())
        return file.damage(0, QStringLiteral("the file holds no essence"));
    return {};
}

Status EssenceMap::addIndex(InputFile& file, const QVector<IndexSegment>& segments, qint64 duration)
{
    m_editUnitBytes = segments.first().editUnitByteCount;
    if (m_editUnitBytes != 0)
        return checkConstant(file, duration);
    for (const IndexSegment& segment : segments) {
        // Some files repeat their index in the footer.
        if (segment.start < m_offsets.size())
            continue;
        if (segment.start > m_offsets.size() || segment.offsets.size() < segment.duration)
            break;
        m_offsets += segment.offsets;
    }
    if (m_offsets.size() < duration)
        return file.damage(m_regions.first().start,
                           QStringLiteral("the index table holds %1 of %2 frames").arg(m_offsets.size()).arg(duration));
    return {};
}

/// Edit units of equal size must all begin within the essence; a clip's index may say less than its duration.
Status EssenceMap::checkConstant(InputFile& file, qint64 duration)
{
    const Region& last = m_regions.last();
    const qint64 bytes = last.streamOffset + (last.end - last.start);
    if ((duration - 1) > bytes / m_editUnitBytes)
        return file.damage(
            last.start,
            QStringLiteral("the essence holds %1 of %2 edit units").arg(bytes / m_editUnitBytes).arg(duration));
    return {};
}

Status EssenceMap::walk(InputFile& file, qint64 duration)
{
    bool framed = false;
    for (const Region& region : qAsConst(m_regions)) {
        for (qint64 at = region.start; at < region.end && m_offsets.size() < duration;) {
            const auto head = file.readHead(at, region.end);
            if (!head)
                return head.error();
            if (isEssence(head->key, 0x15) || isEssence(head->key, 0x16))
                m_offsets.append(region.streamOffset + at - region.start);
            at = head->end();
            framed = framed || isEssence(head->key, 0x15);
        }
    }
    if (framed && m_offsets.size() < duration)
        return file.damage(m_regions.last().start,
                           QStringLiteral("the essence holds %1 of %2 frames").arg(m_offsets.size()).arg(duration));
    return {};
}

Result<KlvHead> EssenceMap::element(InputFile& file, qint64 streamOffset) const
{
    const auto after =
        std::upper_bound(m_regions.begin(), m_regions.end(), streamOffset,
                         [](qint64 offset, const Region& region) { return offset < region.streamOffset; });
    const Region region = after == m_regions.begin() ? Region() : *(after - 1);
    const qint64 ahead = streamOffset - region.streamOffset;
    const bool inside = streamOffset >= 0 && ahead < region.end - region.start;
    for (qint64 at = inside ? region.start + ahead : region.end; at < region.end;) {
        auto head = file.readHead(at, region.end);
        if (!head || !isFill(head->key))
            return head;
        at = head->end();
    }
    return file.damage(region.start, QStringLiteral("there is no essence at stream offset %1").arg(streamOffset));
}

Result<KlvHead> EssenceMap::frame(InputFile& file, qint64 n) const
{
    const bool constant = m_editUnitBytes != 0;
    if (n < 0 || (!constant && n >= m_offsets.size()))
        return file.damage(m_regions.first().start, QStringLiteral("there is no frame %1").arg(n));
    auto head = element(file, constant ? n * m_editUnitBytes : m_offsets[int(n)]);
    if (head && !isEssence(head->key, 0x15))
        return file.damage(head->offset, QStringLiteral("frame %1 is no picture essence").arg(n));
    return head;
}

Result<KlvHead> EssenceMap::firstElement(InputFile& file) const
{
    return element(file, m_regions.first().streamOffset);
}

} // namespace desk::imf
