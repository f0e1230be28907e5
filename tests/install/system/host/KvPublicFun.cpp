#include <KvPublicFun/KvPub.h>

namespace KvPub {

QString getDateTimeFormat()
{
    return QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz");
}

QDateTime getDateTimeByQString(const QString& text)
{
    return QDateTime::fromString(text, Qt::ISODateWithMs);
}

QString getQStringByDateTime(const QDateTime& dateTime)
{
    return dateTime.toString(getDateTimeFormat());
}

bool naturalSort(const QString& a, const QString& b, Qt::CaseSensitivity cs)
{
    return a.compare(b, cs) < 0;
}

bool isStringListSame(const QStringList& a, const QStringList& b)
{
    return a == b;
}

void getStringListChange(const QStringList& oldList, const QStringList& newList, QStringList& added,
                         QStringList& removed)
{
    const QStringList before = oldList;
    const QStringList after = newList;
    const auto without = [](const QStringList& all, const QStringList& known) {
        QStringList rest;
        for (const QString& text : all) {
            if (!known.contains(text))
                rest.append(text);
        }
        return rest;
    };
    added = without(after, before);
    removed = without(before, after);
}

void removeCommonJsonValue(const QJsonObject& a, QJsonObject& b)
{
    for (const QString& key : a.keys()) {
        if (b.value(key) == a.value(key))
            b.remove(key);
    }
}

QStringList getStrListFromVarList(const QVariantList& list)
{
    QStringList texts;
    for (const QVariant& value : list)
        texts.append(value.toString());
    return texts;
}

QJsonArray linksEntityToJsonArray(const QMap<QString, QStringList>& links)
{
    QJsonArray array;
    for (auto link = links.constBegin(); link != links.constEnd(); ++link)
        array.append(QJsonObject{{QStringLiteral("modelId"), link.key()},
                                 {QStringLiteral("entityIds"), QJsonArray::fromStringList(link.value())}});
    return array;
}

QMap<QString, QStringList> jsonArrayToLinksEntity(const QJsonArray& array)
{
    QMap<QString, QStringList> links;
    for (const QJsonValue& link : array)
        links[link[QStringLiteral("modelId")].toString()] +=
            getStrListFromVarList(link[QStringLiteral("entityIds")].toArray().toVariantList());
    return links;
}

} // namespace KvPub
