// Single nodes.

#include "PlanNodeJsonSql.h"
#include "SqlStore.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

/// What a change of a node needs of it; see changeableNode().
QString changeableNodes()
{
    return sql("SELECT id, planId, projectId, category, rowNumber, createdAt, createdBy, updatedAt,"
               " CAST(document AS {bytes}) FROM planNodes");
}

PlanNodeRecord changeableNode(const QSqlQuery& row)
{
    PlanNodeRecord node;
    node.id = row.value(0).toString();
    node.planId = row.value(1).toString();
    node.projectId = row.value(2).toString();
    node.category = row.value(3).toString();
    node.rowNumber = row.value(4).toInt();
    node.createdAt = row.value(5).toString();
    node.createdBy = row.value(6).toString();
    node.updatedAt = row.value(7).toString();
    node.document = row.value(8).toByteArray();
    return node;
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
    QSqlQuery& row = m_database->run(changeableNodes() + sql(" WHERE id = ?") + changedByUs(), {planNodeId});
    std::optional<PlanNodeRecord> node;
    if (row.next()) {
        node = changeableNode(row);
    }
    row.finish();
    return node;
}

QHash<QString, PlanNodeRecord> SqlStore::planNodes(const QStringList& ids)
{
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    QSqlQuery& rows = m_database->run(
        changeableNodes() + sql(" WHERE id IN (SELECT value FROM {elements}(CAST(? AS {json})))") +
            changedByUs(),
        {m_database->text(list)});
    QHash<QString, PlanNodeRecord> nodes;
    nodes.reserve(ids.size());
    while (m_database->next(rows)) {
        const PlanNodeRecord node = changeableNode(rows);
        nodes.insert(node.id, node);
    }
    rows.finish();
    return nodes;
}

QStringList SqlStore::categoriesOfNodes(const QString& planId)
{
    QSqlQuery& rows =
        m_database->run(sql("SELECT DISTINCT category FROM planNodes WHERE planId = ?"), {planId});
    QStringList categories;
    while (m_database->next(rows)) {
        categories.append(rows.value(0).toString());
    }
    rows.finish();
    return categories;
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
