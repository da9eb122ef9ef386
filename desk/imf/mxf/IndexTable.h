#pragma once

#include "desk/base/Rational.h"
#include "desk/imf/mxf/MetadataSets.h"

#include <QByteArray>
#include <QVector>

#include <optional>

namespace desk::imf
{

/// One index table segment (ST 377-1:2019, 11.2).
struct IndexSegment {
    Rational editRate;
    qint64 start = 0;
    /// Edit units; 0 with a constant byte count: as many as there are.
    qint64 duration = 0;
    /// 0: every edit unit has its entry.
    quint32 editUnitByteCount = 0;
    quint32 indexSid = 0;
    quint32 bodySid = 0;
    /// Stream offsets of the entries: bytes over the essence of the body stream alone.
    QVector<qint64> offsets;

    QByteArray serialise() const;
    /// Nothing where the entry array is malformed.
    static std::optional<IndexSegment> parse(const MetadataSet& set);
};

/// Segments that together index the offsets from edit unit `start` on; a local set holds 65,535 bytes an item, so
/// there is more than one from 5,000 entries on.
QByteArray serialiseIndex(IndexSegment prototype, const QVector<qint64>& offsets);

} // namespace desk::imf
