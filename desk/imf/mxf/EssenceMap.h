#pragma once

#include "desk/base/Result.h"
#include "desk/imf/mxf/IndexTable.h"
#include "desk/imf/mxf/PartitionReader.h"

#include <QVector>

namespace desk::imf
{

/// Where the essence of one body stream lies in the file, and where each edit unit starts.
class EssenceMap
{
public:
    /// Takes the index table where the file has one; a frame-wrapped track without one is walked through once.
    static Result<EssenceMap> make(InputFile& file, const QVector<FoundPartition>& partitions, quint32 bodySid,
                                   qint64 duration);

    /// The element of frame `n`, past any fill.
    Result<KlvHead> frame(InputFile& file, qint64 n) const;
    /// The first element of the stream.
    Result<KlvHead> firstElement(InputFile& file) const;

private:
    struct Region {
        qint64 streamOffset = 0;
        qint64 start = 0;
        qint64 end = 0;
    };

    Status addRegions(InputFile& file, const QVector<FoundPartition>& partitions, quint32 bodySid);
    Status addIndex(InputFile& file, const QVector<IndexSegment>& segments, qint64 duration);
    Status checkConstant(InputFile& file, qint64 duration);
    Status walk(InputFile& file, qint64 duration);
    Result<KlvHead> element(InputFile& file, qint64 streamOffset) const;

    QVector<Region> m_regions;
    quint32 m_editUnitBytes = 0;
    QVector<qint64> m_offsets;
};

} // namespace desk::imf
