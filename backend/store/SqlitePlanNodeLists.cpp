// Lists and counts of nodes of the SQLite store.

#include "PlanNodeJsonSql.h"
#include "PlanNodeListSql.h"
#include "SqliteStore.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

JsonPieces SqliteStore::planNodeListJson(const PlanNodeQuery& query)
{
    const SqlStatement statement = planNodeListSql(query);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return rowsJson(rows);
}

int SqliteStore::planNodeListCount(const PlanNodeQuery& query)
{
    const SqlStatement statement = planNodeCountSql(query);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return m_database->next(rows) ? rows.value(0).toInt() : 0;
}

JsonPieces SqliteStore::planNodesJson(const QStringList& ids)
{
    // As one list, whose size no limit on the number of parameters holds down.
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    QSqlQuery& rows = m_database->run(
        QStringLiteral("SELECT CAST(" PLANSERVICE_NODE_JSON " || substr(n.document, 2) AS BLOB)"
                       " FROM json_each(CAST(? AS TEXT)) e CROSS JOIN planNodes n ON n.id = e.value"
                       " LEFT JOIN plans p ON p.id = n.planId ORDER BY e.key"),
        {list});
    const JsonPieces pieces = rowsJson(rows);
    rows.finish();
    return pieces;
}

} // namespace PlanService
