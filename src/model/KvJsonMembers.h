#pragma once

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QCborValue>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtCore/QtAlgorithms>

#include <algorithm>
#include <array>

namespace Kv {

class KvDecodePool;

/// One member of a JSON object, or one that is missing, as the record readers read it: what is missing or of
/// another type reads as empty, 0, 0.0 or false, just as QJsonValue's own conversions have it.
///
/// Qt keeps a JSON object as a CBOR map, and a view of the one as the other costs nothing. The view is what
/// is read here, because a QJsonValue of each member would cost more than the reading itself.
class KvJsonMember
{
public:
    static constexpr int mostFields = 64; // of a record: those seen are kept in one 64-bit word

    KvJsonMember() = default;
    /// @p object and @p index: where the member stands; null: in an array or object inside another one.
    /// @p field: which of its record's fields it is.
    KvJsonMember(const QCborValueRef& value, const QJsonObject* object, int index, int field)
        : m_value(&value)
        , m_object(object)
        , m_index(index)
        , m_field(field)
    {
    }

    bool isMissing() const { return !m_value; }
    QCborValue value() const { return *m_value; }
    int field() const { return m_field; }

    QString text() const { return m_value ? m_value->toString() : QString(); }
    bool flag() const { return m_value && m_value->toBool(false); }
    double real() const { return m_value ? m_value->toDouble(0.0) : 0.0; }

    /// Fractions and what an int cannot hold read as 0.
    int wholeNumber() const
    {
        if (!m_value)
            return 0;
        const QCborValue value = *m_value;
        if (value.isInteger())
            return value.toInteger() == int(value.toInteger()) ? int(value.toInteger()) : 0;
        return value.isDouble() ? QJsonValue(value.toDouble()).toInt(0) : 0;
    }

    /// The member as an array; empty when it is none.
    QCborArray elements() const { return m_value ? m_value->toArray() : QCborArray(); }

    /// The same for readers outside this library. Without a copy only for a member of the outermost object.
    QJsonArray jsonArray() const
    {
        return m_object ? (m_object->constBegin() + m_index).value().toArray() : elements().toJsonArray();
    }

    /// The member as an object; empty when it is none.
    QCborMap members() const { return m_value ? m_value->toMap() : QCborMap(); }

private:
    const QCborValueRef* m_value = nullptr;
    const QJsonObject* m_object = nullptr;
    int m_index = 0;
    int m_field = 0;
};

/// How one key of an object is read into a record.
template<class Record>
struct KvField
{
    QLatin1String key;
    void (*read)(const KvJsonMember& member, Record& out, KvDecodePool& pool);
};

/// The fields of a record in ascending order of their keys, which is the order in which an object holds them:
/// it is then read in one walk, where a look-up a key would cost as much as parsing the text did.
///
/// Made once and never destroyed: static objects of hosts may still convert when the process ends.
template<class Record, std::size_t Count>
class KvFields
{
    static_assert(Count <= KvJsonMember::mostFields, "a record has more fields than can be kept track of");

public:
    explicit KvFields(const KvField<Record> (&fields)[Count])
        : m_fields(fields)
    {
        for (std::size_t i = 0; i < Count; ++i)
            m_keys[i] = QCborValue(fields[i].key);
    }

    /// Reads every field; those that @p in has no key for read as missing.
    void read(const QJsonObject& in, Record& out, KvDecodePool& pool) const
    {
        readMembers(QCborMap::fromJsonObject(in), &in, out, pool);
    }
    void read(const QCborMap& in, Record& out, KvDecodePool& pool) const
    {
        readMembers(in, nullptr, out, pool);
    }

private:
    void readMembers(const QCborMap& in, const QJsonObject* object, Record& out, KvDecodePool& pool) const
    {
        quint64 missing = allFields;
        std::size_t next = 0;
        int index = 0;
        const auto end = in.constEnd();
        for (auto entry = in.constBegin(); entry != end; ++entry, ++index) {
            const auto member = *entry;
            // As a rule the key is the one expected next.
            const std::size_t field =
                next < Count && member.first == m_keys[next] ? next : find(member.first, next + 1);
            if (field == Count)
                continue;
            m_fields[field].read(KvJsonMember(member.second, object, index, int(field)), out, pool);
            missing &= ~(quint64(1) << field);
            next = field + 1;
        }
        for (; missing != 0; missing &= missing - 1)
            m_fields[qCountTrailingZeroBits(missing)].read(KvJsonMember(), out, pool);
    }

    // The field of a key that is not the expected one: the field after it when one key is missing, else any.
    std::size_t find(const QCborValueRef& key, std::size_t next) const
    {
        if (next < Count && key == m_keys[next])
            return next;
        const QString text = key.toString();
        const auto end = m_fields + Count;
        const auto at =
            std::lower_bound(m_fields, end, text,
                             [](const KvField<Record>& field, const QString& k) { return field.key < k; });
        return at != end && at->key == text ? std::size_t(at - m_fields) : Count;
    }

    static constexpr quint64 allFields = ~quint64(0) >> (KvJsonMember::mostFields - Count);

    const KvField<Record>* m_fields;
    std::array<QCborValue, Count> m_keys;
};

} // namespace Kv
