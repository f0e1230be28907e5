#pragma once

#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QLatin1String>
#include <QtCore/QtAlgorithms>

namespace Kv {

class KvEncodePool;

/// How one field of a record is written: under which key, as which value, and when.
template<class Record>
struct KvWrittenField
{
    QLatin1String key;
    QJsonValue (*value)(const Record& in, KvEncodePool& pool);
    bool (*isSet)(const Record& in) = nullptr; ///< null: the field is always written
    /// Whether the field has one value in both; given for fields that are mostly the same all over a list.
    bool (*isSame)(const Record& a, const Record& b) = nullptr;
};

/// What the objects of a list begin as: the keys, and the values that mostly are the same all over the list.
///
/// Putting a key into a JSON object costs more than all else in writing it, and a text that is put in as a
/// value is copied into three blocks of memory on its way. A copy of an object that has them already needs
/// the other values only.
template<class Record>
struct KvPattern
{
    QJsonObject keys; // without values
    QJsonObject object;
    Record record; // what the values in the object are from
};

/// One for each choice of fields, of which the records of one list have but a few.
template<class Record>
using KvPatterns = QHash<quint64, KvPattern<Record>>;

/// Puts each member of @p from into @p out.
inline void addMembers(const QJsonObject& from, QJsonObject& out)
{
    for (auto member = from.constBegin(); member != from.constEnd(); ++member)
        out.insert(member.key(), member.value());
}

/// The fields of a record in ascending order of their keys, which is the order in which an object holds them.
template<class Record, std::size_t Count>
class KvObjectWriter
{
    static_assert(Count <= 64, "a record has more fields than can be kept track of");

public:
    explicit KvObjectWriter(const KvWrittenField<Record> (&fields)[Count])
        : m_fields(fields)
    {
        for (std::size_t i = 0; i < Count; ++i) {
            if (fields[i].isSame)
                m_patterned |= quint64(1) << i;
        }
    }

    /// @p in as an object. @p left: the fields that are not written even if they are set, one bit each.
    QJsonObject write(const Record& in, KvPatterns<Record>& patterns, KvEncodePool& pool,
                      quint64 left = 0) const
    {
        quint64 written = 0;
        for (std::size_t i = 0; i < Count; ++i) {
            if (!m_fields[i].isSet || m_fields[i].isSet(in))
                written |= quint64(1) << i;
        }
        written &= ~left;
        KvPattern<Record>& pattern = patterns[written];
        if (pattern.keys.isEmpty())
            setKeys(written, pattern.keys);
        if (pattern.object.isEmpty() || !isLike(pattern.record, in, written & m_patterned)) {
            pattern.object = pattern.keys;
            setValues(written, m_patterned, in, pattern.object, pool);
            pattern.record = in;
        }
        QJsonObject out = pattern.object;
        setValues(written, ~m_patterned, in, out, pool);
        return out;
    }

private:
    template<class Action>
    static void forEach(quint64 fields, Action action)
    {
        for (; fields != 0; fields &= fields - 1)
            action(qCountTrailingZeroBits(fields));
    }

    void setKeys(quint64 written, QJsonObject& out) const
    {
        forEach(written, [&](uint i) { out.insert(m_fields[i].key, QJsonValue()); });
    }

    // Of an object that has the keys of all written fields, those of the chosen ones.
    void setValues(quint64 written, quint64 chosen, const Record& in, QJsonObject& out,
                   KvEncodePool& pool) const
    {
        auto at = out.begin();
        forEach(written, [&](uint i) {
            if (chosen & (quint64(1) << i))
                *at = m_fields[i].value(in, pool);
            ++at;
        });
    }

    bool isLike(const Record& a, const Record& b, quint64 fields) const
    {
        bool same = true;
        forEach(fields, [&](uint i) { same = same && m_fields[i].isSame(a, b); });
        return same;
    }

    const KvWrittenField<Record>* m_fields;
    quint64 m_patterned = 0; // fields whose values a pattern has
};

} // namespace Kv
