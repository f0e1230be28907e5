#include <model/KvDecodePool.h>

#include <model/KvExchangeDate.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborValue>
#include <QtCore/qmath.h>

#include <cstring>

namespace Kv {

namespace {

// Four places a record, so that few texts meet in one; no more than fit into a processor's cache.
int placesFor(int recordCount)
{
    return int(qNextPowerOfTwo(uint(qBound(16, recordCount, 2048)) * 4 - 1));
}

} // namespace

// Four characters at a time: qHash takes one, which is a good part of what reading a text costs. Texts that
// meet in one place only displace each other.
uint KvDecodePool::placeOf(const QString& text)
{
    constexpr quint64 factor = 0x9e3779b97f4a7c15; // 2^64 divided by the golden ratio
    const QChar* rest = text.constData();
    int left = text.size();
    quint64 hash = quint64(left);
    for (; left >= 4; left -= 4, rest += 4) {
        quint64 four = 0;
        std::memcpy(&four, rest, sizeof four);
        hash = (hash ^ four) * factor;
        hash ^= hash >> 32;
    }
    for (; left > 0; --left, ++rest)
        hash = (hash ^ rest->unicode()) * factor;
    return uint(hash >> 32);
}

KvDecodePool::KvDecodePool(int recordCount)
    : m_placeCount(placesFor(recordCount))
{
}

QString KvDecodePool::shared(const QString& text)
{
    if (text.isEmpty())
        return text;
    return find(m_texts, text, [](const QString& first) { return first; });
}

// The latest of those with the same first key is kept, as the next one most likely equals it.
QMap<QString, QStringList> KvDecodePool::shared(const QMap<QString, QStringList>& map)
{
    if (map.isEmpty())
        return map;
    QMap<QString, QStringList>& known = place(m_maps, map.firstKey()).value;
    if (known != map)
        known = map;
    return known;
}

// In place, as taking a key out and putting its equal in would cost a node of the map.
void KvDecodePool::shareKeys(QMap<QString, QStringList>& map)
{
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        const_cast<QString&>(entry.key()) = shared(entry.key());
}

QString KvDecodePool::repeated(const KvJsonMember& member)
{
    return repeated(m_lastTexts, member,
                    [this](const QCborValue& value) { return shared(value.toString()); });
}

QDateTime KvDecodePool::repeatedDateTime(const KvJsonMember& member)
{
    return repeated(m_lastDates, member,
                    [this](const QCborValue& value) { return dateTime(value.toString()); });
}

QDateTime KvDecodePool::dateTime(const QString& text)
{
    if (text.isEmpty())
        return KvPub::getDateTimeByQString(text);
    return find(m_dates, text, KvPub::getDateTimeByQString);
}

QDateTime KvDecodePool::exchangeDateTime(const QString& text)
{
    if (text.isEmpty())
        return QDateTime();
    return find(m_exchangeDates, text, Kv::exchangeDateTime);
}

QStringList KvDecodePool::idList(const QCborArray& array)
{
    if (array.isEmpty())
        return QStringList();
    const auto read = [&] {
        return KvPub::getStrListFromVarList(array.toVariantList());
    };
    // Most lists name one person or one document; those of the same one share their data.
    const QString single = array.size() == 1 ? array.first().toString() : QString();
    return single.isEmpty() ? read() : find(m_singles, single, [&](const QString&) { return read(); });
}

QStringList KvDecodePool::repeatedIdList(const QCborValue& value)
{
    return m_lastList.of(value, [this](const QCborValue& array) { return idList(array.toArray()); });
}

} // namespace Kv
