// Plans, with their nodes. JSON text is put together by the database; here it is only carried.

#include "PlanNodeJsonSql.h"
#include "SqlStore.h"

#include <limits>

namespace PlanService {

namespace {

// Nodes a piece: enough that a statement's start does not count, and few enough that a slow client takes the
// pieces of one step of sending, some 64, within the time that a step may last.
constexpr int nodesPerPiece = 250;

} // namespace

std::optional<Ownership> SqlStore::planOwnership(const QString& planId)
{
    QSqlQuery& row = m_database->run(
        sql("SELECT projectId, category, createdBy, version FROM plans WHERE id = ?") + keptByUs(), {planId});
    std::optional<Ownership> ownership;
    if (row.next()) {
        ownership = Ownership{row.value(0).toString(),
                              row.value(1).toString(),
                              {row.value(2).toString()},
                              row.value(3).toString()};
    }
    row.finish();
    return ownership;
}

std::shared_ptr<PlanText> SqlStore::planText(const QString& planId, const QString& version)
{
    std::shared_ptr<PlanText> text = m_texts ? m_texts->find(planId, version) : nullptr;
    if (text) {
        return text;
    }
    QString found;
    // All pieces come from one snapshot, whatever is written meanwhile.
    m_database->beginReading();
    try {
        QSqlQuery& head = m_database->run(
            sql("SELECT CAST(substr(document, 1, length(document) - 1) || ',\"tasks\":[' AS {bytes}), version"
                " FROM plans WHERE id = ?"),
            {planId});
        if (head.next()) {
            text = std::make_shared<PlanText>();
            text->pieces.append(head.value(0).toByteArray());
            found = head.value(1).toString();
        }
        head.finish();
        if (text) {
            appendNodes(planId, text->pieces);
            text->pieces.append(QByteArrayLiteral("]}"));
        }
        m_database->commit();
    } catch (...) {
        m_database->rollback();
        throw;
    }
    if (text && m_texts) {
        m_texts->keep(planId, found, text);
    }
    return text;
}

void SqlStore::appendNodes(const QString& planId, JsonPieces& pieces)
{
    const QString piece = sql("SELECT CAST({join}(node, ',') AS {bytes}), count(*) FROM ("
                              " SELECT " PLANSERVICE_NODE_JSON " || substr(n.document, 2) AS node"
                              " FROM planNodes n JOIN plans p ON p.id = n.planId"
                              " WHERE n.planId = ? AND (n.rowNumber, n.id) > (?, ?)"
                              " ORDER BY n.rowNumber, n.id LIMIT ?) nodes");
    const QString lastOfPiece = sql("SELECT rowNumber, id FROM planNodes"
                                    " WHERE planId = ? AND (rowNumber, id) > (?, ?)"
                                    " ORDER BY rowNumber, id LIMIT 1 OFFSET ?");
    QVariant row = std::numeric_limits<int>::min();
    QVariant id = QStringLiteral("");
    for (bool first = true;; first = false) {
        QSqlQuery& nodes = m_database->run(piece, {planId, row, id, nodesPerPiece});
        const int count = nodes.next() ? nodes.value(1).toInt() : 0;
        if (count > 0 && !first) {
            pieces.append(QByteArrayLiteral(","));
        }
        if (count > 0) {
            pieces.append(nodes.value(0).toByteArray());
        }
        nodes.finish();
        if (count < nodesPerPiece) {
            return;
        }
        QSqlQuery& last = m_database->run(lastOfPiece, {planId, row, id, nodesPerPiece - 1});
        last.next();
        row = last.value(0);
        id = last.value(1);
        last.finish();
    }
}

int SqlStore::planNodeCount(const QString& planId)
{
    return m_database->value(sql("SELECT count(*) FROM planNodes WHERE planId = ?"), {planId}).toInt();
}

std::optional<PlanRecord> SqlStore::plan(const QString& planId)
{
    QSqlQuery& row = m_database->run(sql("SELECT projectId, category, name, createdAt, updatedAt, createdBy,"
                                         " CAST(document AS {bytes}) FROM plans WHERE id = ?") +
                                         changedByUs(),
                                     {planId});
    std::optional<PlanRecord> plan;
    if (row.next()) {
        plan = PlanRecord{planId,
                          row.value(0).toString(),
                          row.value(1).toString(),
                          row.value(2).toString(),
                          row.value(3).toString(),
                          row.value(4).toString(),
                          row.value(5).toString(),
                          row.value(6).toByteArray()};
    }
    row.finish();
    return plan;
}

bool SqlStore::hasPlanNamed(const QString& projectId, const QString& name)
{
    return m_database
        ->value(sql("SELECT EXISTS (SELECT 1 FROM plans WHERE projectId = ? AND name = ?)"),
                {projectId, orEmpty(name)})
        .toBool();
}

} // namespace PlanService
