#include "RecordValues.h"

#include <KvPublicFun/KvPub.h>

#include <cmath>
#include <limits>

namespace {

QJsonValue toJson(const KvPlanPredecessor& link)
{
    return QJsonObject{
        {QStringLiteral("sourcePlanNodeName"), link.sourcePlanNodeName},
        {QStringLiteral("targetPlanNodeName"), link.targetPlanNodeName},
        {QStringLiteral("lag"), ::toJson(link.lag)},
        {QStringLiteral("type"), link.type},
        {QStringLiteral("sourcePlanNodeUniqueId"), link.sourcePlanNodeUniqueId},
        {QStringLiteral("targetPlanNodeUniqueId"), link.targetPlanNodeUniqueId},
        {QStringLiteral("sourcePlanNodeId"), link.sourcePlanNodeId},
        {QStringLiteral("targetPlanNodeId"), link.targetPlanNodeId},
    };
}

QJsonValue toJson(const KvDocument& document)
{
    return QJsonObject{
        {QStringLiteral("id"), document.id},
        {QStringLiteral("name"), document.name},
        {QStringLiteral("fileSize"), document.fileSize},
        {QStringLiteral("suffix"), document.suffix},
        {QStringLiteral("createdAt"), document.createdAt},
        {QStringLiteral("createdBy"), document.createdBy},
    };
}

QJsonValue toJson(const KvMedia& media)
{
    return QJsonObject{
        {QStringLiteral("fileId"), media.fileId},
        {QStringLiteral("thumbnail"), media.thumbnail},
        {QStringLiteral("time"), media.time},
    };
}

template<class Record>
QJsonValue arrayOf(const QList<Record>& records)
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(toJson(record));
    return array;
}

// Reads the members of an object one by one and counts those that it knew.
class Members
{
public:
    explicit Members(const QJsonValue& json)
        : m_object(json.toObject())
        , m_isGood(json.isObject())
    {
    }

    template<class Value>
    Members& read(const char* key, Value& value)
    {
        const auto member = m_object.constFind(QLatin1String(key));
        if (member == m_object.constEnd())
            return *this;
        ++m_known;
        m_isGood = m_isGood && fromJson(*member, value);
        return *this;
    }

    bool isGood() const { return m_isGood && m_known == m_object.size(); }

private:
    QJsonObject m_object;
    int m_known = 0;
    bool m_isGood;
};

bool fromJson(const QJsonValue& json, KvPlanPredecessor& link)
{
    return Members(json)
        .read("sourcePlanNodeName", link.sourcePlanNodeName)
        .read("targetPlanNodeName", link.targetPlanNodeName)
        .read("lag", link.lag)
        .read("type", link.type)
        .read("sourcePlanNodeUniqueId", link.sourcePlanNodeUniqueId)
        .read("targetPlanNodeUniqueId", link.targetPlanNodeUniqueId)
        .read("sourcePlanNodeId", link.sourcePlanNodeId)
        .read("targetPlanNodeId", link.targetPlanNodeId)
        .isGood();
}

template<class Record>
bool listFromJson(const QJsonValue& json, QList<Record>& records)
{
    if (!json.isArray())
        return false;
    QList<Record> read;
    const QJsonArray array = json.toArray();
    for (const QJsonValue& element : array) {
        Record record{};
        if (!fromJson(element, record))
            return false;
        read.append(record);
    }
    records = read;
    return true;
}

} // namespace

QJsonValue toJson(const QString& text)
{
    return text;
}

QJsonValue toJson(int number)
{
    return number;
}

QJsonValue toJson(double number)
{
    return number;
}

QJsonValue toJson(bool flag)
{
    return flag;
}

QJsonValue toJson(const QDateTime& dateTime)
{
    return dateTime.isValid() ? QJsonValue(dateTime.toString(Qt::ISODateWithMs))
                              : QJsonValue(QJsonValue::Null);
}

QJsonValue toJson(const QStringList& texts)
{
    return QJsonArray::fromStringList(texts);
}

QJsonValue toJson(const QMap<QString, QStringList>& lists)
{
    QJsonObject json;
    for (auto entry = lists.constBegin(); entry != lists.constEnd(); ++entry)
        json.insert(entry.key(), QJsonArray::fromStringList(entry.value()));
    return json;
}

QJsonValue toJson(const KvDuration& duration)
{
    return QJsonObject{{QStringLiteral("value"), duration.value}, {QStringLiteral("units"), duration.units}};
}

QJsonValue toJson(const QList<KvPlanPredecessor>& predecessors)
{
    return arrayOf(predecessors);
}

QJsonValue toJson(const QList<KvDocument>& documents)
{
    return arrayOf(documents);
}

QJsonValue toJson(const QList<KvMedia>& media)
{
    return arrayOf(media);
}

bool fromJson(const QJsonValue& json, QString& text)
{
    if (!json.isString())
        return false;
    text = json.toString();
    return true;
}

bool fromJson(const QJsonValue& json, int& number)
{
    const double value = json.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!(value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max()) ||
        value != std::floor(value))
        return false;
    number = int(value);
    return true;
}

bool fromJson(const QJsonValue& json, double& number)
{
    if (!json.isDouble() || !std::isfinite(json.toDouble()))
        return false;
    number = json.toDouble();
    return true;
}

bool fromJson(const QJsonValue& json, bool& flag)
{
    if (!json.isBool())
        return false;
    flag = json.toBool();
    return true;
}

bool fromJson(const QJsonValue& json, QDateTime& dateTime)
{
    const QDateTime read = KvPub::getDateTimeByQString(json.toString());
    if (!json.isNull() && !read.isValid())
        return false;
    dateTime = read;
    return true;
}

bool fromJson(const QJsonValue& json, QStringList& texts)
{
    QList<QString> read;
    if (!listFromJson(json, read))
        return false;
    texts = read;
    return true;
}

bool fromJson(const QJsonValue& json, QMap<QString, QStringList>& lists)
{
    if (!json.isObject())
        return false;
    QMap<QString, QStringList> read;
    const QJsonObject object = json.toObject();
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry) {
        if (!fromJson(*entry, read[entry.key()]))
            return false;
    }
    lists = read;
    return true;
}

bool fromJson(const QJsonValue& json, KvDuration& duration)
{
    KvDuration read;
    if (!Members(json).read("value", read.value).read("units", read.units).isGood())
        return false;
    duration = read;
    return true;
}

bool fromJson(const QJsonValue& json, QList<KvPlanPredecessor>& predecessors)
{
    return listFromJson(json, predecessors);
}
