#pragma once

#include <QtCore/QtAlgorithms>
#include <QtCore/QtGlobal>

#include <cstddef>
#include <vector>

namespace Kv {

/// A set of numbers 0 to size-1 that finds the next member from any number on in a few steps, however sparse
/// it is: a bit for each number, above it a bit for each word that is not empty, and so on up to one word.
class KvReadySet
{
public:
    explicit KvReadySet(int size)
    {
        std::size_t bits = static_cast<std::size_t>(qMax(size, 1));
        do {
            bits = (bits - 1) / 64 + 1;
            m_levels.emplace_back(bits, 0);
        } while (bits > 1);
    }

    void insert(int number)
    {
        std::size_t at = static_cast<std::size_t>(number);
        for (std::vector<quint64>& level : m_levels) {
            quint64& word = level[at / 64];
            const bool wasEmpty = word == 0;
            word |= quint64(1) << (at % 64);
            if (!wasEmpty)
                return;
            at /= 64;
        }
    }

    void remove(int number)
    {
        std::size_t at = static_cast<std::size_t>(number);
        for (std::vector<quint64>& level : m_levels) {
            quint64& word = level[at / 64];
            word &= ~(quint64(1) << (at % 64));
            if (word != 0)
                return;
            at /= 64;
        }
    }

    /// The lowest member that is not below `from`; -1 when there is none.
    int next(int from) const
    {
        std::size_t at = static_cast<std::size_t>(from);
        for (std::size_t height = 0; height < m_levels.size(); ++height) {
            const std::vector<quint64>& level = m_levels[height];
            if (at / 64 >= level.size())
                return -1;
            const quint64 rest = level[at / 64] >> (at % 64);
            if (rest != 0)
                return lowestBelow(height, at + qCountTrailingZeroBits(rest));
            at = at / 64 + 1;
        }
        return -1;
    }

private:
    int lowestBelow(std::size_t height, std::size_t at) const
    {
        while (height > 0) {
            --height;
            at = at * 64 + qCountTrailingZeroBits(m_levels[height][at]);
        }
        return static_cast<int>(at);
    }

    std::vector<std::vector<quint64>> m_levels;
};

} // namespace Kv
