#pragma once

#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QLatin1String>
#include <QtCore/QtAlgorithms>

namespace Kv {

class KvEncodePool;

/// How one field of a record is written: under which key, when, and as which value.
template<class Record>
struct KvWrittenField
{
    QLatin1String key;
    QJsonValue (*value)(const Record& in, KvEncodePool& pool);
    bool (*isSet)(const Record& in) = nullptr; ///< null: the field is always written
};

/// Objects with the keys of a record and no values yet, one for each choice of fields.
///
/// Putting a key into a JSON object costs more than all else in writing it, and the records of one list have
/// but a few choices of keys: a copy of such an object needs its values only.
using KvKeyedObjects = QHash<quint64, QJsonObject>;

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
    }

    /// @p in as an object. @p left: the fields that are not written even if they are set, one bit each.
    QJsonObject write(const Record& in, KvKeyedObjects& keyed, KvEncodePool& pool, quint64 left = 0) const
    {
        quint64 written = 0;
        for (std::size_t i = 0; i < Count; ++i) {
            if (!m_fields[i].isSet || m_fields[i].isSet(in))
                written |= quint64(1) << i;
        }
        written &= ~left;
        QJsonObject out = withKeys(written, keyed);
        auto at = out.begin();
        for (; written != 0; written &= written - 1, ++at)
            *at = m_fields[qCountTrailingZeroBits(written)].value(in, pool);
        return out;
    }

private:
    QJsonObject withKeys(quint64 written, KvKeyedObjects& keyed) const
    {
        QJsonObject& object = keyed[written];
        if (object.isEmpty()) {
            for (quint64 rest = written; rest != 0; rest &= rest - 1)
                object.insert(m_fields[qCountTrailingZeroBits(rest)].key, QJsonValue());
        }
        return object;
    }

    const KvWrittenField<Record>* m_fields;
};

} // namespace Kv
