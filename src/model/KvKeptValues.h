#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtCore/qmath.h>
#include <QtCore/qnumeric.h>

#include <utility>

namespace Kv {

/// What a date-time's text is made of; that of a valid one equals no default-made one.
using KvWallClock = std::pair<QDate, QTime>;
inline KvWallClock wallClock(const QDateTime& dateTime)
{
    return {dateTime.date(), dateTime.time()};
}

using KvTextLists = QMap<QString, QStringList>;

struct KvAmount
{
    double value = qQNaN(); // which equals nothing
    int units = 0;
};

inline bool operator==(const KvAmount& a, const KvAmount& b)
{
    return a.value == b.value && a.units == b.units;
}

uint keptHash(const QString& text);
uint keptHash(const QStringList& texts); ///< by the first of them
uint keptHash(const KvTextLists& map);   ///< by the first key
uint keptHash(const KvWallClock& time);
uint keptHash(const KvAmount& amount);

struct KvNoValue
{
};

/// What was made of a key and is likely asked for again, so that it is made once. One entry a place: a
/// newcomer takes over the place that its hash gives it, so the size is fixed, and so is the cost of any key.
template<class Key, class Value = KvNoValue>
class KvKeptValues
{
public:
    /// @p recordCount how many records of a list will ask; it decides the size.
    explicit KvKeptValues(int recordCount)
        : m_placeCount(placesFor(recordCount))
    {
    }

    /// What @p make makes of @p key, which must not equal a default-made key: this is what a free place
    /// holds.
    template<class Make>
    const Value& of(const Key& key, Make make)
    {
        Entry& entry = at(keptHash(key));
        if (!(entry.key == key)) {
            entry.value = make(key);
            entry.key = key;
        }
        return entry.value;
    }

    /// @p key itself, sharing its data with an equal one; for those that nothing is made of.
    const Key& one(const Key& key)
    {
        Entry& entry = at(keptHash(key));
        if (!(entry.key == key))
            entry.key = key;
        return entry.key;
    }

private:
    struct Entry
    {
        Key key{};
        Value value{};
    };

    // Four places a record, so that few keys meet in one; no more than fit into a processor's cache.
    static int placesFor(int recordCount)
    {
        return int(qNextPowerOfTwo(uint(qBound(16, recordCount, 2048)) * 4 - 1));
    }

    Entry& at(uint hash)
    {
        if (m_entries.isEmpty())
            m_entries.resize(m_placeCount);
        return m_entries[int(hash & uint(m_placeCount - 1))];
    }

    int m_placeCount; // a power of two
    QVector<Entry> m_entries;
};

} // namespace Kv
