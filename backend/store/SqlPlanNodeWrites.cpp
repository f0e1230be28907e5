// What writes nodes.

#include "SqlStore.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

QVariant dateOrNull(const QString& date)
{
    return date.isEmpty() ? QVariant(QVariant::String) : QVariant(date);
}

/// The document goes in as the bytes that it is, without a way through UTF-16.
QVariantList parametersOf(const PlanNodeRecord& node, const SqlDatabase& database)
{
    return {node.planId.isEmpty() ? QVariant(QVariant::String) : node.planId,
            orEmpty(node.projectId),
            orEmpty(node.category),
            orEmpty(node.name),
            node.rowNumber,
            node.uniqueId,
            node.parentTaskId,
            dateOrNull(node.startDate),
            dateOrNull(node.finishDate),
            dateOrNull(node.actualStartDate),
            dateOrNull(node.actualFinishDate),
            dateOrNull(node.createdAt),
            dateOrNull(node.updatedAt),
            orEmpty(node.createdBy),
            orEmpty(node.people),
            database.text(node.document),
            node.id};
}

} // namespace

bool SqlStore::addPlanNode(const PlanNodeRecord& node)
{
    QSqlQuery& insertion =
        m_database->run(sql("INSERT INTO planNodes (planId, projectId, category, name, rowNumber, uniqueId,"
                            " parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate,"
                            " createdAt, updatedAt, createdBy, people, document, id)"
                            " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, CAST(? AS TEXT), ?)"
                            " ON CONFLICT(id) DO NOTHING"),
                        parametersOf(node, *m_database));
    const bool added = insertion.numRowsAffected() > 0;
    insertion.finish();
    return added;
}

void SqlStore::insertPlanNode(const PlanNodeRecord& node)
{
    if (!addPlanNode(node)) {
        throw StoreError(
            QStringLiteral("database '%1': there is a node '%2' already").arg(m_database->name(), node.id));
    }
}

void SqlStore::insertDocument(const DocumentRecord& document)
{
    m_database
        ->run(sql("INSERT INTO documents (id, projectId, document) VALUES (?, ?, CAST(? AS TEXT))"),
              {document.id, orEmpty(document.projectId), m_database->text(document.document)})
        .finish();
}

void SqlStore::updatePlanNode(const PlanNodeRecord& node)
{
    m_database
        ->run(sql("UPDATE planNodes SET planId = ?, projectId = ?, category = ?, name = ?, rowNumber = ?,"
                  " uniqueId = ?, parentTaskId = ?, startDate = ?, finishDate = ?, actualStartDate = ?,"
                  " actualFinishDate = ?, createdAt = ?, updatedAt = ?, createdBy = ?, people = ?, document "
                  "= CAST(? AS TEXT)"
                  " WHERE id = ?"),
              parametersOf(node, *m_database))
        .finish();
}

void SqlStore::moveNodes(const QString& planId, const QString& fromCategory, const QString& toCategory)
{
    m_database
        ->run(sql("UPDATE planNodes SET category = ?, document = json_patch(document, "
                  "CAST({object}('category', CAST(? AS TEXT)) AS TEXT))"
                  " WHERE planId = ? AND category = ?"),
              {orEmpty(toCategory), orEmpty(toCategory), planId, orEmpty(fromCategory)})
        .finish();
}

void SqlStore::keepPlanNodes(const QString& planId, const QStringList& ids)
{
    // As one list, whose size no limit on the number of parameters holds down.
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    m_database
        ->run(sql("DELETE FROM planNodes WHERE planId = ? AND id NOT IN"
                  " (SELECT value FROM {elements}(CAST(? AS {json})))"),
              {planId, m_database->text(list)})
        .finish();
}

bool SqlStore::removePlanNode(const QString& planNodeId)
{
    QSqlQuery& removal = m_database->run(sql("DELETE FROM planNodes WHERE id = ?"), {planNodeId});
    const bool found = removal.numRowsAffected() > 0;
    removal.finish();
    return found;
}

void SqlStore::copyPlanNodes(const QString& fromPlanId, const PlanRecord& plan, const QString& idPrefix)
{
    m_database
        ->run(sql("INSERT INTO planNodes (id, planId, projectId, category, name, rowNumber, uniqueId,"
                  " parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate,"
                  " createdAt, updatedAt, createdBy, people, document)"
                  " SELECT newId, p.id, projectId, category, name, rowNumber, uniqueId, parentTaskId,"
                  " startDate, finishDate, actualStartDate, actualFinishDate, p.at, p.at, p.by, people,"
                  " json_patch(document, CAST({object}('GUID', NULL, '_id', newId, 'planId', p.id,"
                  " 'createdAt', p.at, 'createdBy', p.by, 'updatedAt', p.at, 'updatedBy', p.by) AS TEXT))"
                  " FROM (SELECT ? AS id, ? AS at, ? AS by) p,"
                  " (SELECT *, ? || {hex row_number() OVER (ORDER BY rowNumber, id)} AS newId"
                  "  FROM planNodes WHERE planId = ?) n"),
              {plan.id, plan.createdAt, orEmpty(plan.createdBy), idPrefix, fromPlanId})
        .finish();
}

} // namespace PlanService
