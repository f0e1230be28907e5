// What writes plans of the SQLite store.

#include "SqliteStore.h"

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

void SqliteStore::updatePlan(const PlanRecord& plan)
{
    m_database
        ->run(sql("UPDATE plans SET projectId = ?, category = ?, name = ?, createdAt = ?, updatedAt = ?,"
                  " createdBy = ?, document = ? WHERE id = ?"),
              parametersOf(plan))
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
