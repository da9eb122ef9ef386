#pragma once

#include "NvCore/Export.h"

#include <QtGlobal>

#include <map>
#include <memory>

/// A map from integer positions to integer values, stored as ranges: setting a range costs a logarithmic search (plus
/// the ranges that it covers, each once), reading one position a logarithmic search. A value type, not synchronised.
class NVCORE_EXPORT RangeArray
{
public:
    /// What positions answer that no range covers. Setting this value clears.
    static constexpr int Unset = -1;

    /// A run of positions with one value; `first` is inside, `end` is not.
    struct Range {
        qint64 first;
        qint64 end;
        int value;
    };

    /// An empty map, for holders that keep their maps by pointer.
    static std::unique_ptr<RangeArray> New();

    /// Gives every position from `first` up to but not including `end` the value; what was there is replaced.
    /// An empty or reversed span changes nothing.
    void SetRange(qint64 first, qint64 end, int value);

    /// The value at the position, or Unset.
    int GetRange(qint64 position) const;

    /// The longest run round the position that has its value. Where nothing bounds it, `first` is the smallest and
    /// `end` the largest qint64.
    Range rangeAt(qint64 position) const;

    bool isEmpty() const { return m_starts.empty(); }

    /// The number of runs that have a value; neighbouring runs of equal value count as one.
    int count() const;

    void clear() { m_starts.clear(); }

private:
    using Starts = std::map<qint64, int>;

    int valueBefore(Starts::const_iterator at) const;

    // Position at which a value starts, up to the next entry. Neighbours differ, and before the first entry all is
    // unset.
    Starts m_starts;
};
