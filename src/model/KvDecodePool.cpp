#include <model/KvDecodePool.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

namespace Kv {

namespace {

// Text that does not repeat after all must not make the pool grow with the reply.
constexpr int maxPooled = 4096;
constexpr int dateSlots = 1024; // a power of two

template<class T>
T pooled(QSet<T>& pool, const T& value)
{
    const auto known = pool.constFind(value);
    if (known != pool.constEnd())
        return *known;
    if (pool.size() < maxPooled)
        pool.insert(value);
    return value;
}

} // namespace

QString KvDecodePool::text(const QJsonValue& value)
{
    const QString read = value.toString();
    return read.isEmpty() ? read : pooled(m_texts, read);
}

QDateTime KvDecodePool::dateTime(const QJsonValue& value)
{
    const QString text = value.toString();
    if (text.isEmpty())
        return KvPub::getDateTimeByQString(text);
    if (m_dates.isEmpty())
        m_dates.resize(dateSlots);
    KnownDate& slot = m_dates[int(qHash(text) & uint(dateSlots - 1))];
    if (slot.text != text) {
        slot.text = text;
        slot.dateTime = KvPub::getDateTimeByQString(text);
    }
    return slot.dateTime;
}

QStringList KvDecodePool::idList(const QJsonValue& value)
{
    const QStringList read = idListFromJson(value);
    return read.isEmpty() ? read : pooled(m_lists, read);
}

QStringList idListFromJson(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    return array.isEmpty() ? QStringList() : KvPub::getStrListFromVarList(array.toVariantList());
}

} // namespace Kv
