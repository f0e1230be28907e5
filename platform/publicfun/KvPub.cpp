#include <KvPublicFun/KvPub.h>

#include <QtCore/QSet>

namespace {

/// The texts of `list` that `others` lacks, each once.
QStringList textsMissingIn(const QStringList& others, const QStringList& list)
{
    QStringList missing;
    QSet<QString> seen(others.begin(), others.end());
    for (const QString& text : list) {
        const int sizeBefore = seen.size();
        seen.insert(text);
        if (seen.size() != sizeBefore)
            missing.append(text);
    }
    return missing;
}

} // namespace

namespace KvPub {

bool isStringListSame(const QStringList& a, const QStringList& b)
{
    return a == b;
}

void getStringListChange(const QStringList& oldList, const QStringList& newList, QStringList& added,
                         QStringList& removed)
{
    QStringList onlyNew = textsMissingIn(oldList, newList);
    QStringList onlyOld = textsMissingIn(newList, oldList);
    added = std::move(onlyNew);
    removed = std::move(onlyOld);
}

void removeCommonJsonValue(const QJsonObject& a, QJsonObject& b)
{
    // Building what stays is linear; each removal from an object would move everything behind the key.
    QJsonObject kept;
    for (auto it = b.constBegin(), end = b.constEnd(); it != end; ++it) {
        const auto same = a.constFind(it.key());
        if (same == a.constEnd() || same.value() != it.value())
            kept.insert(it.key(), it.value());
    }
    if (kept.size() != b.size())
        b = kept;
}

QStringList getStrListFromVarList(const QVariantList& list)
{
    QStringList texts;
    texts.reserve(list.size());
    for (const QVariant& variant : list)
        texts.append(variant.toString());
    return texts;
}

QJsonArray linksEntityToJsonArray(const QMap<QString, QStringList>& links)
{
    QJsonArray array;
    for (auto it = links.constBegin(), end = links.constEnd(); it != end; ++it) {
        QJsonObject element;
        element.insert(QLatin1String("modelId"), it.key());
        element.insert(QLatin1String("entityIds"), QJsonArray::fromStringList(it.value()));
        array.append(element);
    }
    return array;
}

QMap<QString, QStringList> jsonArrayToLinksEntity(const QJsonArray& array)
{
    QMap<QString, QStringList> links;
    for (const QJsonValue element : array) {
        if (!element.isObject())
            continue;
        const QJsonObject object = element.toObject();
        const QJsonArray ids = object.value(QLatin1String("entityIds")).toArray();
        QStringList& entities = links[object.value(QLatin1String("modelId")).toString()];
        entities.reserve(entities.size() + ids.size());
        for (const QJsonValue id : ids)
            entities.append(id.isString() ? id.toString() : id.toVariant().toString());
    }
    return links;
}

} // namespace KvPub
