#include <service/KvQueryFilter.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Kv {

namespace {

QString compactText(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
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
    QString text = compactText(where);
    if (!condition.category.isEmpty())
        text += QLatin1String("&category=") + condition.category;
    return text;
}

QJsonObject makeDateRangeFilter(const KvPlanCondition& condition)
{
    // A day added to no date would make one in the year -4714 of it.
    const QDateTime end = condition.endDate.isValid() ? condition.endDate.addDays(1) : condition.endDate;
    return {{QLatin1String("$gte"), KvPub::getQStringByDateTime(condition.startDate)},
            {QLatin1String("$lt"), KvPub::getQStringByDateTime(end)}};
}

QJsonObject makeNameRegexFilter(const KvPlanCondition& condition)
{
    return {{QLatin1String("$regex"), condition.name}, {QLatin1String("$options"), QLatin1String("i")}};
}

} // namespace Kv
