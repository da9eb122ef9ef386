#pragma once

#include "desk/base/Result.h"
#include "desk/imf/mxf/IndexTable.h"
#include "desk/imf/mxf/InputFile.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/MetadataSets.h"

#include <QVector>

namespace desk::imf
{

/// A partition pack where it stands in the file.
struct FoundPartition {
    PartitionKey key;
    PartitionPack pack;
    qint64 offset = 0;
    /// Where the pack and the fill that aligns what follows end: header metadata, index or essence start here.
    qint64 contents = 0;
    /// Start of the next partition, of the random index pack or of nothing.
    qint64 end = 0;

    qint64 index() const { return contents + pack.headerByteCount; }

    qint64 essence() const { return index() + pack.indexByteCount; }
};

/// Every partition in the file's order, by the random index pack, or by walking from item to item where there is none.
Result<QVector<FoundPartition>> findPartitions(InputFile& file);

/// The header metadata: the footer's where the header's is open or incomplete and the footer repeats it.
Result<MetadataSets> readHeaderMetadata(InputFile& file, const QVector<FoundPartition>& partitions);

/// All segments of the file, in the order of their start.
Result<QVector<IndexSegment>> readIndexSegments(InputFile& file, const QVector<FoundPartition>& partitions);

} // namespace desk::imf
