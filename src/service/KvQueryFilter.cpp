#include <service/KvQueryFilter.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Kv {

namespace {

QJsonObject dateRangeFilter(const QDateTime& start, const QDateTime& lastDay)
{
    // A day added to no date would make one in the year -4714 of it.
    const QDateTime end = lastDay.isValid() ? lastDay.addDays(1) : lastDay;
    return {{QLatin1String("$gte"), KvPub::getQStringByDateTime(start)},
            {QLatin1String("$lt"), KvPub::getQStringByDateTime(end)}};
}

QJsonObject nameFilter(const QString& pattern)
{
    return {{QLatin1String("$regex"), pattern}, {QLatin1String("$options"), QLatin1String("i")}};
}

QString categorySuffix(const QString& category)
{
    return category.isEmpty() ? QString() : QLatin1String("&category=") + category;
}

QLatin1String listSuffix(int listType)
{
    switch (listType) {
    case 0:
        return QLatin1String("&list=all");
    case 1:
        return QLatin1String("&list=received");
    case 2:
        return QLatin1String("&list=post");
    default:
        return QLatin1String("");
    }
}

QLatin1String finishSuffix(int finishState)
{
    switch (finishState) {
    case -1:
        return QLatin1String("");
    case 1:
        return QLatin1String("&finish=true");
    default:
        return QLatin1String("&finish=false");
    }
}

} // namespace

QString buildPlanQuery(const KvPlanCondition& condition)
{
    QJsonObject where;
    if (!condition.allTime) {
        const QJsonObject range = makeDateRangeFilter(condition);
        where.insert(QLatin1String("$or"), QJsonArray{QJsonObject{{QLatin1String("createdAt"), range}},
                                                      QJsonObject{{QLatin1String("updatedAt"), range}}});
    }
    if (!condition.name.isEmpty())
        where.insert(QLatin1String("name"), makeNameRegexFilter(condition));
    return filterText(where) + categorySuffix(condition.category);
}

QString buildPlanNodeQuery(const KvPlanNodeCondition& condition)
{
    QJsonObject where;
    if (!condition.allTime)
        where.insert(QLatin1String("createdAt"), makeDateRangeFilter(condition));
    if (!condition.name.isEmpty())
        where.insert(QLatin1String("displayName"), nameFilter(condition.name));
    if (!condition.planId.isEmpty())
        where.insert(QLatin1String("planId"), condition.planId);
    // After the plan, which it replaces: hosts ask for tasks outside any plan by way of the plan's endpoint.
    if (condition.withoutPlan)
        where.insert(QLatin1String("planId"), QJsonValue::Null);
    if (!condition.userId.isEmpty())
        where.insert(QLatin1String("userIds"), condition.userId);
    if (!condition.relativeUserId.isEmpty())
        where.insert(QLatin1String("relativeUserIds"), condition.relativeUserId);
    return filterText(where) + categorySuffix(condition.category) + listSuffix(condition.listType) +
           finishSuffix(condition.finishState);
}

QJsonObject makeDateRangeFilter(const KvPlanCondition& condition)
{
    return dateRangeFilter(condition.startDate, condition.endDate);
}

QJsonObject makeDateRangeFilter(const KvPlanNodeCondition& condition)
{
    return dateRangeFilter(condition.startDate, condition.endDate);
}

QJsonObject makeNameRegexFilter(const KvPlanCondition& condition)
{
    return nameFilter(condition.name);
}

QJsonObject makeInFilter(const QStringList& values)
{
    QJsonArray list;
    for (const QString& value : values)
        list.append(toIdValue(value));
    return {{QLatin1String("$in"), list}};
}

QString filterText(const QJsonObject& filter)
{
    return QString::fromUtf8(QJsonDocument(filter).toJson(QJsonDocument::Compact));
}

} // namespace Kv
