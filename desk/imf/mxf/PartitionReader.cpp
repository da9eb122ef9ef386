#include "desk/imf/mxf/PartitionReader.h"

#include "desk/imf/mxf/ByteOrder.h"

#include <algorithm>

namespace desk::imf
{

namespace
{

constexpr qint64 largestPack = 1 << 16;
/// Header metadata that counts, without fill; far more than any real file has.
constexpr qint64 largestMetadata = 16 << 20;
constexpr qint64 largestIndexSegment = 1 << 20;

Result<FoundPartition> readPartition(InputFile& file, qint64 offset)
{
    const auto head = file.readHead(offset);
    if (!head)
        return head.error();
    const auto key = partitionKey(head->key);
    if (!key || head->size > largestPack)
        return file.damage(offset, QStringLiteral("there is no partition where one should be"));
    const auto value = file.readValue(*head);
    if (!value)
        return value.error();
    const auto pack = PartitionPack::parse(*value);
    if (!pack || pack->thisPartition != offset)
        return file.damage(offset, QStringLiteral("the partition pack is damaged"));
    FoundPartition found{*key, *pack, offset, head->end(), file.size()};
    // Fill that aligns the contents is not counted; without alignment any fill belongs to the contents.
    if (pack->alignment > 1 && head->end() < file.size()) {
        const auto next = file.readHead(head->end());
        if (next && isFill(next->key))
            found.contents = next->end();
    }
    return found;
}

/// Offsets of the partitions by the random index pack at the file's end; nothing where there is none.
QVector<qint64> offsetsByRandomIndex(InputFile& file)
{
    const auto tail = file.read(file.size() - 4, 4);
    if (!tail)
        return {};
    const auto length = BigReader(*tail).get<quint32>();
    const auto head = file.readHead(file.size() - length);
    if (!head || !head->key.matches(keys::randomIndex) || head->end() != file.size())
        return {};
    const auto value = file.readValue(*head);
    if (!value)
        return {};
    QVector<qint64> offsets;
    for (BigReader reader(*value); reader.left() >= 12 + 4;) {
        reader.get<quint32>();
        offsets.append(reader.get<qint64>());
    }
    return offsets;
}

Result<QVector<qint64>> offsetsByWalking(InputFile& file)
{
    QVector<qint64> offsets;
    for (qint64 at = 0; at < file.size();) {
        const auto head = file.readHead(at);
        if (!head)
            return head.error();
        if (partitionKey(head->key))
            offsets.append(at);
        at = head->end();
    }
    return offsets;
}

Status checkOrder(InputFile& file, const QVector<FoundPartition>& partitions)
{
    for (const FoundPartition& partition : partitions) {
        if (partition.contents > partition.end || partition.pack.headerByteCount > partition.end - partition.contents ||
            partition.pack.indexByteCount > partition.end - partition.index())
            return file.damage(partition.offset, QStringLiteral("the partition's byte counts reach beyond its end"));
    }
    const PartitionPack& header = partitions.first().pack;
    if (header.footerPartition >= file.size())
        return file.damage(header.footerPartition, QStringLiteral("the file is cut: its footer is missing"));
    return {};
}

Result<QVector<FoundPartition>> readPartitions(InputFile& file, const QVector<qint64>& offsets)
{
    QVector<FoundPartition> partitions;
    for (const qint64 offset : offsets) {
        const auto partition = readPartition(file, offset);
        if (!partition)
            return partition.error();
        if (!partitions.isEmpty() && partitions.last().offset >= offset)
            return file.damage(offset, QStringLiteral("the partitions are not in order"));
        if (!partitions.isEmpty())
            partitions.last().end = offset;
        partitions.append(*partition);
    }
    if (partitions.isEmpty() || partitions.first().offset != 0)
        return file.damage(0, QStringLiteral("the file does not start with its header partition"));
    if (const Status status = checkOrder(file, partitions); !status)
        return status.error();
    return partitions;
}

bool isLocalSet(const Ul& key)
{
    Ul head = key;
    head.bytes[13] = head.bytes[14] = 0;
    return head.matches(Ul(0x060e2b3402530101, 0x0d01010101000000));
}

Status readItem(InputFile& file, const KlvHead& head, Primer& primer, MetadataSets& sets)
{
    const bool isPrimer = head.key.matches(keys::primer);
    if (!isPrimer && !isLocalSet(head.key))
        return {};
    const auto value = head.size > largestMetadata
                           ? Result<QByteArray>(file.damage(head.offset, QStringLiteral("a metadata set is too large")))
                           : file.readValue(head);
    if (!value)
        return value.error();
    if (isPrimer) {
        const auto parsed = parsePrimer(*value);
        primer = parsed.value_or(Primer());
        return parsed ? Status() : file.damage(head.offset, QStringLiteral("the primer pack is damaged"));
    }
    auto set = parseSet(head.key, *value, primer);
    if (!set)
        return file.damage(head.offset, QStringLiteral("a metadata set is damaged"));
    set->offset = head.offset;
    sets.append(*set);
    return {};
}

const FoundPartition& metadataPartition(const QVector<FoundPartition>& partitions)
{
    const FoundPartition& header = partitions.first();
    const FoundPartition& footer = partitions.last();
    const bool headerIsFinal = header.key.status == 4;
    return !headerIsFinal && footer.key.kind == 4 && footer.pack.headerByteCount > 0 ? footer : header;
}

} // namespace

Result<QVector<FoundPartition>> findPartitions(InputFile& file)
{
    const auto first = file.readHead(0);
    const auto key = first ? partitionKey(first->key) : std::nullopt;
    if (!key || key->kind != 2) {
        Error error = file.damage(0, QStringLiteral("it is no MXF file"));
        error.next = QStringLiteral("choose an MXF track file");
        return error;
    }
    QVector<qint64> offsets = offsetsByRandomIndex(file);
    if (offsets.isEmpty()) {
        const auto walked = offsetsByWalking(file);
        if (!walked)
            return walked.error();
        offsets = *walked;
    }
    return readPartitions(file, offsets);
}

Result<MetadataSets> readHeaderMetadata(InputFile& file, const QVector<FoundPartition>& partitions)
{
    const FoundPartition& partition = metadataPartition(partitions);
    const qint64 end = partition.index();
    Primer primer;
    MetadataSets sets;
    qint64 counted = 0;
    for (qint64 at = partition.contents; at < end;) {
        const auto head = file.readHead(at, end);
        if (!head)
            return head.error();
        counted += isFill(head->key) ? 0 : head->size;
        if (counted > largestMetadata)
            return file.damage(at, QStringLiteral("the header metadata is too large"));
        if (const Status status = readItem(file, *head, primer, sets); !status)
            return status.error();
        at = head->end();
    }
    if (sets.all().isEmpty())
        return file.damage(partition.offset, QStringLiteral("the file has no header metadata"));
    return sets;
}

Result<QVector<IndexSegment>> readIndexSegments(InputFile& file, const QVector<FoundPartition>& partitions)
{
    QVector<IndexSegment> segments;
    for (const FoundPartition& partition : partitions) {
        for (qint64 at = partition.index(); at < partition.essence();) {
            const auto head = file.readHead(at, partition.essence());
            if (!head)
                return head.error();
            at = head->end();
            if (!head->key.matches(keys::indexSegment))
                continue;
            const auto value =
                head->size > largestIndexSegment ? Result<QByteArray>(QByteArray()) : file.readValue(*head);
            if (!value)
                return value.error();
            const auto set = parseSet(head->key, *value, {});
            const auto segment = set ? IndexSegment::parse(*set) : std::nullopt;
            if (!segment)
                return file.damage(head->offset, QStringLiteral("an index table segment is damaged"));
            segments.append(*segment);
        }
    }
    std::stable_sort(segments.begin(), segments.end(),
                     [](const IndexSegment& a, const IndexSegment& b) { return a.start < b.start; });
    return segments;
}

} // namespace desk::imf
