// Lists and counts of plans.

#include "PlanListSql.h"
#include "SqlSearch.h"

#include <QElapsedTimer>

namespace PlanService {

namespace {

constexpr int pieceSize = 256 * 1024;

} // namespace

JsonPieces SqlStore::planListJson(const PlanQuery& query)
{
    return searched(query, planRowsSql,
                    [this](const PlanQuery& found) { return statementJson(planListSql(found)); });
}

int SqlStore::planCount(const PlanQuery& query)
{
    return searched(query, planRowsSql,
                    [this](const PlanQuery& found) { return rowCount(planRowsSql(countOfRows, found)); });
}

JsonPieces SqlStore::statementJson(const SqlStatement& statement)
{
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return rowsJson(rows);
}

int SqlStore::rowCount(const SqlStatement& statement)
{
    QSqlQuery rows = m_database->runOnce(statement.text, statement.parameters);
    return m_database->next(rows) ? rows.value(0).toInt() : 0;
}

void SqlStore::lookFor(PatternSearch& search, const SqlStatement& candidates)
{
    QElapsedTimer timer;
    timer.start();
    QSqlQuery rows = m_database->runOnce(candidates.text, candidates.parameters);
    std::vector<QByteArray> texts(search.patterns());
    while (m_database->next(rows)) {
        if (timer.hasExpired(m_database->longestSearch())) {
            throw StoreTooSlow(
                QStringLiteral("database '%1': the search takes too long").arg(m_database->name()));
        }
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const int column = static_cast<int>(i) + 1;
            texts[i] = rows.isNull(column) ? QByteArray() : rows.value(column).toString().toUtf8();
        }
        search.look(rows.value(0).toString(), texts);
    }
}

JsonPieces SqlStore::rowsJson(QSqlQuery& rows)
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

} // namespace PlanService
