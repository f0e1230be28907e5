#pragma once

#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace Kv {

/// Numbers the different values of a list 0, 1, 2 … in ascending order and finds the number of a value: by a
/// table where the values lie close together, as they do in most plans, else by halving.
class KvNumberRanks
{
public:
    /// @p values must not be empty.
    explicit KvNumberRanks(std::vector<int> values)
    {
        const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
        m_lowest = *lowest;
        const qint64 span = qint64(*highest) - m_lowest + 1;
        if (span <= 4 * static_cast<qint64>(values.size()) + 1024)
            fillTable(values, static_cast<std::size_t>(span));
        else
            sort(std::move(values));
    }

    int count() const { return m_count; }

    /// -1 when the value is not in the list.
    int rankOf(int value) const
    {
        if (!m_table.empty()) {
            const quint64 slot = static_cast<quint64>(qint64(value) - m_lowest);
            return slot < m_table.size() ? m_table[slot] : -1;
        }
        const auto found = std::lower_bound(m_sorted.begin(), m_sorted.end(), value);
        return found != m_sorted.end() && *found == value ? static_cast<int>(found - m_sorted.begin()) : -1;
    }

private:
    void fillTable(const std::vector<int>& values, std::size_t span)
    {
        m_table.assign(span, -1);
        for (const int value : values)
            m_table[static_cast<std::size_t>(qint64(value) - m_lowest)] = 0;
        for (int& rank : m_table) {
            if (rank == 0)
                rank = m_count++;
        }
    }

    void sort(std::vector<int> values)
    {
        std::sort(values.begin(), values.end());
        values.erase(std::unique(values.begin(), values.end()), values.end());
        m_sorted = std::move(values);
        m_count = static_cast<int>(m_sorted.size());
    }

    qint64 m_lowest = 0;
    int m_count = 0;
    std::vector<int> m_table;  ///< by distance from the lowest value; empty when values lie far apart
    std::vector<int> m_sorted; ///< empty when there is a table
};

} // namespace Kv
