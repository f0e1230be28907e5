// Single nodes.

#include "PlanNodeJsonSql.h"
#include "SqlStore.h"

namespace PlanService {

namespace {

QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

} // namespace

std::optional<Ownership> SqlStore::planNodeOwnership(const QString& planNodeId)
{
    QSqlQuery& row = m_database->run(
        sql("SELECT projectId, category, createdBy, people FROM planNodes WHERE id = ?") + changedByUs(),
        {planNodeId});
    std::optional<Ownership> ownership;
    if (row.next()) {
        ownership = Ownership{row.value(0).toString(), row.value(1).toString(), {row.value(2).toString()}};
        ownership->users += peopleIn(row.value(3).toString());
    }
    row.finish();
    return ownership;
}

JsonPieces SqlStore::planNodeJson(const QString& planNodeId, bool withDocuments)
{
    const QString select =
        withDocuments ? sql("SELECT CAST(" PLANSERVICE_NODE_JSON PLANSERVICE_NODE_DOCUMENTS
                            " || substr(n.document, 2) AS {bytes})"
                            " FROM planNodes n LEFT JOIN plans p ON p.id = n.planId WHERE n.id = ?")
                      : sql("SELECT CAST(" PLANSERVICE_NODE_JSON " || substr(n.document, 2) AS {bytes})"
                            " FROM planNodes n LEFT JOIN plans p ON p.id = n.planId WHERE n.id = ?");
    const QVariant node = m_database->value(select, {planNodeId});
    return node.isValid() ? JsonPieces{node.toByteArray()} : JsonPieces();
}

std::optional<PlanNodeRecord> SqlStore::planNode(const QString& planNodeId)
{
    QSqlQuery& row = m_database->run(sql("SELECT planId, projectId, category, rowNumber, createdAt,"
                                         " createdBy, updatedAt, CAST(document AS {bytes})"
                                         " FROM planNodes WHERE id = ?") +
                                         changedByUs(),
                                     {planNodeId});
    std::optional<PlanNodeRecord> node;
    if (row.next()) {
        node = PlanNodeRecord();
        node->id = planNodeId;
        node->planId = row.value(0).toString();
        node->projectId = row.value(1).toString();
        node->category = row.value(2).toString();
        node->rowNumber = row.value(3).toInt();
        node->createdAt = row.value(4).toString();
        node->createdBy = row.value(5).toString();
        node->updatedAt = row.value(6).toString();
        node->document = row.value(7).toByteArray();
    }
    row.finish();
    return node;
}

int SqlStore::lastRow(const QString& projectId, const QString& planId)
{
    const QVariant row =
        planId.isEmpty()
            ? m_database->value(
                  sql("SELECT max(rowNumber) FROM planNodes WHERE planId IS NULL AND projectId = ?"),
                  {projectId})
            : m_database->value(sql("SELECT max(rowNumber) FROM planNodes WHERE planId = ?"), {planId});
    return qMax(0, row.toInt());
}

} // namespace PlanService
