// What writes nodes.

#include "SqlStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace PlanService {

namespace {

/// The document goes in as the bytes that it is, without a way through UTF-16.
QVariantList parametersOf(const PlanNodeRecord& node, const SqlDatabase& database)
{
    return {textOrNull(node.planId),
            orEmpty(node.projectId),
            orEmpty(node.category),
            orEmpty(node.name),
            node.rowNumber,
            node.uniqueId,
            node.parentTaskId,
            textOrNull(node.startDate),
            textOrNull(node.finishDate),
            textOrNull(node.actualStartDate),
            textOrNull(node.actualFinishDate),
            textOrNull(node.createdAt),
            textOrNull(node.updatedAt),
            orEmpty(node.createdBy),
            orEmpty(node.people),
            database.text(node.document),
            node.id};
}

/// To be followed by what happens to rows that are there already.
QString insertionOf(int count)
{
    const QString row = sql("(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, CAST(? AS TEXT), ?)");
    return sql("INSERT INTO planNodes (planId, projectId, category, name, rowNumber, uniqueId, parentTaskId,"
               " startDate, finishDate, actualStartDate, actualFinishDate, createdAt, updatedAt, createdBy,"
               " people, document, id) VALUES ") +
           row + (QLatin1String(", ") + row).repeated(count - 1) + sql(" ON CONFLICT (id) DO ");
}

} // namespace

bool SqlStore::addPlanNode(const PlanNodeRecord& node)
{
    // Made once, as a batch asks for it row by row.
    static const QString one = insertionOf(1) + QLatin1String("NOTHING");
    QSqlQuery& insertion = m_database->run(one, parametersOf(node, *m_database));
    const bool added = insertion.numRowsAffected() > 0;
    insertion.finish();
    if (added) {
        touch(node.planId);
    }
    return added;
}

QVector<int> SqlStore::addPlanNodes(const QVector<PlanNodeRecord>& nodes, int first, int count)
{
    const int atOnce = m_database->rowsAtOnce();
    const int end = first + count;
    QVector<int> refused;
    int next = first;
    for (; atOnce > 1 && next + atOnce <= end; next += atOnce) {
        refused += addTogether(nodes, next, atOnce);
    }
    // Statements of other lengths would each be prepared for once.
    for (; next < end; ++next) {
        if (!addPlanNode(nodes.at(next))) {
            refused.append(next);
        }
    }
    return refused;
}

QVector<int> SqlStore::addTogether(const QVector<PlanNodeRecord>& nodes, int first, int count)
{
    QVariantList parameters;
    for (int i = first; i < first + count; ++i) {
        parameters += parametersOf(nodes.at(i), *m_database);
    }
    QSqlQuery& rows = m_database->run(insertionOf(count) + QLatin1String("NOTHING RETURNING id"), parameters);
    QSet<QString> added;
    while (m_database->next(rows)) {
        added.insert(rows.value(0).toString());
    }
    rows.finish();
    QVector<int> refused;
    for (int i = first; i < first + count; ++i) {
        // An id that stands twice among the nodes was added once.
        if (added.remove(nodes.at(i).id)) {
            touch(nodes.at(i).planId);
        } else {
            refused.append(i);
        }
    }
    return refused;
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
    touch(node.planId);
}

void SqlStore::updatePlanNodes(const QVector<PlanNodeRecord>& nodes)
{
    // The row that is there stands for the conflict: many rows are changed by one statement so.
    static const QString change =
        sql("UPDATE SET planId = excluded.planId, projectId = excluded.projectId,"
            " category = excluded.category, name = excluded.name, rowNumber = excluded.rowNumber,"
            " uniqueId = excluded.uniqueId, parentTaskId = excluded.parentTaskId,"
            " startDate = excluded.startDate, finishDate = excluded.finishDate,"
            " actualStartDate = excluded.actualStartDate, actualFinishDate = excluded.actualFinishDate,"
            " createdAt = excluded.createdAt, updatedAt = excluded.updatedAt,"
            " createdBy = excluded.createdBy, people = excluded.people, document = excluded.document");
    const int atOnce = m_database->rowsAtOnce();
    int next = 0;
    for (; atOnce > 1 && next + atOnce <= nodes.size(); next += atOnce) {
        QVariantList parameters;
        for (int i = next; i < next + atOnce; ++i) {
            parameters += parametersOf(nodes.at(i), *m_database);
            touch(nodes.at(i).planId);
        }
        m_database->run(insertionOf(atOnce) + change, parameters).finish();
    }
    for (; next < nodes.size(); ++next) {
        updatePlanNode(nodes.at(next));
    }
}

void SqlStore::moveNodes(const QString& planId, const QString& fromCategory, const QString& toCategory)
{
    m_database
        ->run(sql("UPDATE planNodes SET category = ?, document = json_patch(document, "
                  "CAST({object}('category', CAST(? AS TEXT)) AS TEXT))"
                  " WHERE planId = ? AND category = ?"),
              {orEmpty(toCategory), orEmpty(toCategory), planId, orEmpty(fromCategory)})
        .finish();
    touch(planId);
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
    touch(planId);
}

bool SqlStore::removePlanNode(const QString& planNodeId)
{
    QSqlQuery& removal =
        m_database->run(sql("DELETE FROM planNodes WHERE id = ? RETURNING planId"), {planNodeId});
    const bool found = m_database->next(removal);
    const QString planId = found ? removal.value(0).toString() : QString();
    removal.finish();
    touch(planId);
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
    touch(plan.id);
}

} // namespace PlanService
