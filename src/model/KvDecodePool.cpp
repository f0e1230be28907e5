#include <model/KvDecodePool.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborValue>

namespace Kv {

QString KvDecodePool::shared(const QString& text)
{
    if (text.isEmpty())
        return text;
    return m_texts.find(text, [](const QString& first) { return first; });
}

QDateTime KvDecodePool::dateTime(const QString& text)
{
    if (text.isEmpty())
        return KvPub::getDateTimeByQString(text);
    return m_dates.find(text, KvPub::getDateTimeByQString);
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
    return single.isEmpty() ? read() : m_singles.find(single, [&](const QString&) { return read(); });
}

} // namespace Kv
