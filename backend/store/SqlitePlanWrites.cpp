// What writes plans and nodes of the SQLite store.

#include "SqliteStore.h"

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

QVariantList parametersOf(const PlanRecord& plan)
{
    return {orEmpty(plan.projectId),
            orEmpty(plan.category),
            orEmpty(plan.name),
            dateOrNull(plan.createdAt),
            dateOrNull(plan.updatedAt),
            orEmpty(plan.createdBy),
            QString::fromUtf8(plan.document),
            plan.id};
}

QVariantList parametersOf(const PlanNodeRecord& node)
{
    return {node.planId,
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
            QString::fromUtf8(node.document),
            node.id};
}

} // namespace

void SqliteStore::insertPlan(const PlanRecord& plan)
{
    m_database
        ->run(
            sql("INSERT INTO plans (projectId, category, name, createdAt, updatedAt, createdBy, document, id)"
                " VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
            parametersOf(plan))
        .finish();
}

void SqliteStore::insertPlanNode(const PlanNodeRecord& node)
{
    m_database
        ->run(sql("INSERT INTO planNodes (planId, projectId, category, name, rowNumber, uniqueId,"
                  " parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate,"
                  " createdAt, updatedAt, createdBy, people, document, id)"
                  " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
              parametersOf(node))
        .finish();
}

void SqliteStore::insertDocument(const DocumentRecord& document)
{
    m_database
        ->run(sql("INSERT INTO documents (id, projectId, document) VALUES (?, ?, ?)"),
              {document.id, orEmpty(document.projectId), QString::fromUtf8(document.document)})
        .finish();
}

void SqliteStore::updatePlan(const PlanRecord& plan)
{
    m_database
        ->run(sql("UPDATE plans SET projectId = ?, category = ?, name = ?, createdAt = ?, updatedAt = ?,"
                  " createdBy = ?, document = ? WHERE id = ?"),
              parametersOf(plan))
        .finish();
}

void SqliteStore::updatePlanNode(const PlanNodeRecord& node)
{
    m_database
        ->run(
            sql("UPDATE planNodes SET planId = ?, projectId = ?, category = ?, name = ?, rowNumber = ?,"
                " uniqueId = ?, parentTaskId = ?, startDate = ?, finishDate = ?, actualStartDate = ?,"
                " actualFinishDate = ?, createdAt = ?, updatedAt = ?, createdBy = ?, people = ?, document = ?"
                " WHERE id = ?"),
            parametersOf(node))
        .finish();
}

void SqliteStore::keepPlanNodes(const QString& planId, const QStringList& ids)
{
    // As one list, whose size no limit on the number of parameters holds down.
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    m_database
        ->run(sql("DELETE FROM planNodes WHERE planId = ? AND id NOT IN (SELECT value FROM json_each(?))"),
              {planId, QString::fromUtf8(list)})
        .finish();
}

void SqliteStore::copyPlanNodes(const QString& fromPlanId, const PlanRecord& plan, const QString& idPrefix)
{
    m_database
        ->run(sql("INSERT INTO planNodes (id, planId, projectId, category, name, rowNumber, uniqueId,"
                  " parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate,"
                  " createdAt, updatedAt, createdBy, people, document)"
                  " SELECT newId, p.id, projectId, category, name, rowNumber, uniqueId, parentTaskId,"
                  " startDate, finishDate, actualStartDate, actualFinishDate, p.at, p.at, p.by, people,"
                  " json_set(json_remove(document, '$.GUID'), '$._id', newId, '$.planId', p.id,"
                  " '$.createdAt', p.at, '$.createdBy', p.by, '$.updatedAt', p.at, '$.updatedBy', p.by)"
                  " FROM (SELECT ? AS id, ? AS at, ? AS by) p,"
                  " (SELECT *, ? || printf('%08x', row_number() OVER (ORDER BY rowNumber, id)) AS newId"
                  "  FROM planNodes WHERE planId = ?)"),
              {plan.id, plan.createdAt, orEmpty(plan.createdBy), idPrefix, fromPlanId})
        .finish();
}

bool SqliteStore::removePlan(const QString& planId)
{
    // The nodes go with it, by the reference that they hold.
    QSqlQuery& removal = m_database->run(sql("DELETE FROM plans WHERE id = ?"), {planId});
    const bool found = removal.numRowsAffected() > 0;
    removal.finish();
    return found;
}

} // namespace PlanService
