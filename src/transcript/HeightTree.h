#pragma once

#include <QtGlobal>

#include <vector>

/// Sums over the first entries of a long row of numbers, where changing one and asking for a sum both cost a logarithm
/// (a Fenwick tree).
class HeightTree
{
public:
    /// All entries become 0.
    void reset(int count) { m_tree.assign(std::size_t(count) + 1, 0); }

    void add(int entry, qreal change)
    {
        for (auto at = std::size_t(entry) + 1; at < m_tree.size(); at += at & (~at + 1))
            m_tree[at] += change;
    }

    /// The sum of the entries before this one.
    qreal sumBefore(int entry) const
    {
        qreal sum = 0;
        for (auto at = std::size_t(entry); at > 0; at &= at - 1)
            sum += m_tree[at];
        return sum;
    }

private:
    std::vector<qreal> m_tree;
};
