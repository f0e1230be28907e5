// Lists and counts of plans of the SQLite store.

#include "PlanListSql.h"
#include "SqliteStore.h"

namespace PlanService {

namespace {

constexpr int pieceSize = 256 * 1024;

} // namespace

JsonPieces SqliteStore::planListJson(const PlanQuery& query)
{
    const SqlStatement statement = planListSql(query);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return rowsJson(rows);
}

JsonPieces SqliteStore::rowsJson(QSqlQuery& rows) const
{
    JsonPieces pieces;
    QByteArray piece = "[";
    for (bool first = true; m_database->next(rows); first = false) {
        if (!first) {
            piece += ',';
        }
        piece += rows.value(0).toByteArray();
        if (piece.size() >= pieceSize) {
            pieces.append(piece);
            piece.clear();
        }
    }
    pieces.append(piece + ']');
    return pieces;
}

int SqliteStore::planCount(const PlanQuery& query)
{
    const SqlStatement statement = planCountSql(query);
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return m_database->next(rows) ? rows.value(0).toInt() : 0;
}

} // namespace PlanService
