#include <model/KvDecodePool.h>

#include <model/KvExchangeDate.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborValue>

namespace Kv {

KvDecodePool::KvDecodePool(int recordCount)
    : m_texts(recordCount)
    , m_dates(recordCount)
    , m_exchangeDates(recordCount)
    , m_singles(recordCount)
    , m_maps(recordCount)
{
}

QString KvDecodePool::shared(const QString& text)
{
    return text.isEmpty() ? text : m_texts.one(text);
}

KvTextLists KvDecodePool::shared(const KvTextLists& map)
{
    return map.isEmpty() ? map : m_maps.one(map);
}

// In place, as taking a key out and putting its equal in would cost a node of the map.
void KvDecodePool::shareKeys(KvTextLists& map)
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
    return m_dates.of(text, KvPub::getDateTimeByQString);
}

QDateTime KvDecodePool::exchangeDateTime(const QString& text)
{
    if (text.isEmpty())
        return QDateTime();
    return m_exchangeDates.of(text, Kv::exchangeDateTime);
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
    return single.isEmpty() ? read() : m_singles.of(single, [&](const QString&) { return read(); });
}

QStringList KvDecodePool::repeatedIdList(const QCborValue& value)
{
    return m_lastList.of(value, [this](const QCborValue& array) { return idList(array.toArray()); });
}

} // namespace Kv
