// How far the nodes of a project are.

#include "SqlStore.h"
#include "StatisticsSql.h"

namespace PlanService {

QVector<NodeCount> SqlStore::nodeCounts(const NodeScope& scope, const QString& today)
{
    const SqlStatement statement = nodeCountSql(scope, today);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    QVector<NodeCount> counts;
    while (m_database->next(rows)) {
        counts.append({static_cast<NodeStatus>(rows.value(0).toInt()),
                       static_cast<NodeSituation>(rows.value(1).toInt()), rows.value(2).toInt()});
    }
    return counts;
}

QVector<DayCount> SqlStore::finishedPerDay(const NodeScope& scope)
{
    const SqlStatement statement = finishedPerDaySql(scope);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    QVector<DayCount> days;
    while (m_database->next(rows)) {
        days.append({rows.value(0).toString(), rows.value(1).toInt()});
    }
    return days;
}

} // namespace PlanService
