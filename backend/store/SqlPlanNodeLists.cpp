// Lists and counts of nodes.

#include "PlanNodeJsonSql.h"
#include "PlanNodeListSql.h"
#include "SqlSearch.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

JsonPieces SqlStore::planNodeListJson(const PlanNodeQuery& query)
{
    return searched(query, planNodeRowsSql,
                    [this](const PlanNodeQuery& found) { return statementJson(planNodeListSql(found)); });
}

int SqlStore::planNodeListCount(const PlanNodeQuery& query)
{
    return searched(query, planNodeRowsSql, [this](const PlanNodeQuery& found) {
        return rowCount(planNodeRowsSql(countOfRows, found));
    });
}

JsonPieces SqlStore::planNodesJson(const QStringList& ids)
{
    // As one list, whose size no limit on the number of parameters holds down.
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    QSqlQuery& rows = m_database->run(
        QStringLiteral("SELECT CAST(" PLANSERVICE_NODE_JSON " || substr(n.document, 2) AS {bytes})"
                       " FROM {elements}(CAST(? AS {json})) {numbered e} {then} planNodes n ON n.id = e.value"
                       " LEFT JOIN plans p ON p.id = n.planId ORDER BY e.key"),
        {m_database->text(list)});
    const JsonPieces pieces = rowsJson(rows);
    rows.finish();
    return pieces;
}

} // namespace PlanService
