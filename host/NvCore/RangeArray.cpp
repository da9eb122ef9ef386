#include "NvCore/RangeArray.h"

#include <algorithm>
#include <iterator>
#include <limits>

std::unique_ptr<RangeArray> RangeArray::New()
{
    return std::make_unique<RangeArray>();
}

int RangeArray::valueBefore(Starts::const_iterator at) const
{
    return at == m_starts.begin() ? Unset : std::prev(at)->second;
}

void RangeArray::SetRange(qint64 first, qint64 end, int value)
{
    if (first >= end)
        return;
    // Behind all others, where most ranges are set, no search is needed.
    if (value != Unset && (m_starts.empty() || m_starts.rbegin()->first < first)) {
        m_starts.emplace_hint(m_starts.end(), first, value);
        m_starts.emplace_hint(m_starts.end(), end, Unset);
        return;
    }
    const int after = GetRange(end);
    auto at = m_starts.erase(m_starts.lower_bound(first), m_starts.upper_bound(end));
    const int before = valueBefore(at);
    if (after != value)
        at = m_starts.emplace_hint(at, end, after);
    if (before != value)
        m_starts.emplace_hint(at, first, value);
}

int RangeArray::GetRange(qint64 position) const
{
    return valueBefore(m_starts.upper_bound(position));
}

RangeArray::Range RangeArray::rangeAt(qint64 position) const
{
    using Limits = std::numeric_limits<qint64>;
    const auto next = m_starts.upper_bound(position);
    return {next == m_starts.begin() ? Limits::min() : std::prev(next)->first,
            next == m_starts.end() ? Limits::max() : next->first, valueBefore(next)};
}

int RangeArray::count() const
{
    return int(
        std::count_if(m_starts.begin(), m_starts.end(), [](const auto& entry) { return entry.second != Unset; }));
}
