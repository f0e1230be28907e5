// Metering states.

#include "PlanListSql.h"
#include "SqlSearch.h"
#include "VisibilitySql.h"

namespace PlanService {

namespace {

SqlCondition conditionOf(const TaskStateQuery& query)
{
    SqlCondition condition;
    condition.also(QStringLiteral("projectId = ?"), {query.projectId});
    SqlCondition visible;
    addVisibility(query.visible, ownNode(query.visible.user), visible);
    if (!visible.text.isEmpty()) {
        condition.also(QStringLiteral("EXISTS (SELECT 1 FROM planNodes WHERE planNodes.id = taskStates.taskId"
                                      " AND ") +
                           visible.text + QLatin1Char(')'),
                       visible.parameters);
    }
    if (query.where.kind != Filter::Kind::All || !query.where.terms.isEmpty()) {
        const SqlCondition where = sqlOf(query.where);
        condition.also(where.text, where.parameters);
    }
    return condition;
}

SqlStatement stateRowsSql(const QString& columns, const TaskStateQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    return {QStringLiteral("SELECT %1 FROM taskStates WHERE %2").arg(columns, condition.text),
            condition.parameters};
}

} // namespace

std::optional<TaskStateRecord> SqlStore::taskState(const QString& taskId)
{
    QSqlQuery& row = m_database->run(
        QStringLiteral("SELECT id, projectId, planId, responseId, state FROM taskStates WHERE taskId = ?"),
        {taskId});
    std::optional<TaskStateRecord> state;
    if (row.next()) {
        state =
            TaskStateRecord{row.value(0).toString(), row.value(1).toString(), row.value(2).toString(), taskId,
                            row.value(3).toString(), row.value(4).toInt()};
    }
    row.finish();
    return state;
}

JsonPieces SqlStore::taskStateListJson(const TaskStateQuery& query)
{
    return searched(query, stateRowsSql, [this](const TaskStateQuery& found) {
        SqlStatement statement =
            stateRowsSql(QStringLiteral("CAST('{\"_id\":' || CAST({quote}(id) AS TEXT)"
                                        " || ',\"planId\":' || CAST({quote}(planId) AS TEXT)"
                                        " || ',\"taskId\":' || CAST({quote}(taskId) AS TEXT)"
                                        " || ',\"responseId\":' || CAST({quote}(responseId) AS TEXT)"
                                        " || ',\"state\":' || state || '}' AS {bytes})"),
                         found);
        statement.text += QLatin1String(" ORDER BY number");
        return statementJson(statement);
    });
}

int SqlStore::taskStateCount(const TaskStateQuery& query)
{
    return searched(query, stateRowsSql, [this](const TaskStateQuery& found) {
        return rowCount(stateRowsSql(countOfRows, found));
    });
}

void SqlStore::putTaskState(const TaskStateRecord& state)
{
    m_database
        ->run(QStringLiteral("INSERT INTO taskStates (id, projectId, planId, taskId, responseId, state)"
                             " VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT (taskId)"
                             " DO UPDATE SET responseId = excluded.responseId, state = excluded.state"),
              {state.id, orEmpty(state.projectId), orEmpty(state.planId), state.taskId,
               orEmpty(state.responseId), state.state})
        .finish();
}

} // namespace PlanService
