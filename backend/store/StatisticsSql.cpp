#include "StatisticsSql.h"

#include "VisibilitySql.h"

namespace PlanService {

namespace {

// The index holds every column that is looked at; another one may promise fewer rows and would cost a look
// at each.
constexpr const char* countedNodes = "planNodes {by planNodesByProject}";

constexpr const char* statusSql = "CASE WHEN actualFinishDate IS NOT NULL THEN 2"
                                  " WHEN actualStartDate IS NOT NULL THEN 1 ELSE 0 END";

// A comparison with a date that is not set is neither true nor false and ends at ELSE.
constexpr const char* situationSql =
    "CASE WHEN actualFinishDate IS NOT NULL THEN"
    "  CASE WHEN substr(actualFinishDate, 1, 10) > substr(finishDate, 1, 10) THEN 1"
    "  WHEN substr(actualFinishDate, 1, 10) < substr(finishDate, 1, 10) THEN 2 ELSE 0 END"
    " WHEN actualStartDate IS NOT NULL THEN"
    "  CASE WHEN substr(finishDate, 1, 10) < ?"
    "  OR substr(actualStartDate, 1, 10) > substr(startDate, 1, 10) THEN 1"
    "  WHEN substr(actualStartDate, 1, 10) < substr(startDate, 1, 10) THEN 2 ELSE 0 END"
    " WHEN substr(startDate, 1, 10) < ? THEN 1 ELSE 0 END";

SqlCondition conditionOf(const NodeScope& scope)
{
    SqlCondition condition;
    condition.also(QStringLiteral("projectId = ?"), {scope.projectId});
    if (scope.category) {
        condition.also(QStringLiteral("category = ?"), {*scope.category});
    }
    addVisibility(scope.visible, ownNode(scope.visible.user), condition);
    if (scope.person) {
        const SqlCondition own = ownNode(*scope.person);
        condition.also(own.text, own.parameters);
    }
    return condition;
}

} // namespace

SqlStatement nodeCountSql(const NodeScope& scope, const QString& today)
{
    const SqlCondition condition = conditionOf(scope);
    return {QStringLiteral("SELECT %1 AS status, %2 AS situation, count(*) FROM %3 WHERE %4 GROUP BY 1, 2")
                .arg(QLatin1String(statusSql), QLatin1String(situationSql), QLatin1String(countedNodes),
                     condition.text),
            QVariantList{today, today} + condition.parameters};
}

SqlStatement finishedPerDaySql(const NodeScope& scope)
{
    const SqlCondition condition = conditionOf(scope);
    return {QStringLiteral("SELECT substr(actualFinishDate, 1, 10) AS day, count(*) FROM %1"
                           " WHERE actualFinishDate IS NOT NULL AND %2 GROUP BY 1 ORDER BY 1")
                .arg(QLatin1String(countedNodes), condition.text),
            condition.parameters};
}

} // namespace PlanService
