// What writes plans.

#include "SqlStore.h"

namespace PlanService {

namespace {

QVariantList parametersOf(const PlanRecord& plan, const SqlDatabase& database)
{
    return {orEmpty(plan.projectId),      orEmpty(plan.category),
            orEmpty(plan.name),           textOrNull(plan.createdAt),
            textOrNull(plan.updatedAt),   orEmpty(plan.createdBy),
            database.text(plan.document), plan.id};
}

} // namespace

void SqlStore::insertPlan(const PlanRecord& plan)
{
    m_database
        ->run(
            sql("INSERT INTO plans (projectId, category, name, createdAt, updatedAt, createdBy, document, id)"
                " VALUES (?, ?, ?, ?, ?, ?, CAST(? AS TEXT), ?)"),
            parametersOf(plan, *m_database))
        .finish();
    touch(plan.id);
}

void SqlStore::updatePlan(const PlanRecord& plan)
{
    m_database
        ->run(sql("UPDATE plans SET projectId = ?, category = ?, name = ?, createdAt = ?, updatedAt = ?,"
                  " createdBy = ?, document = CAST(? AS TEXT) WHERE id = ?"),
              parametersOf(plan, *m_database))
        .finish();
    touch(plan.id);
}

bool SqlStore::removePlan(const QString& planId)
{
    // The nodes go with it, by the reference that they hold.
    QSqlQuery& removal = m_database->run(sql("DELETE FROM plans WHERE id = ?"), {planId});
    const bool found = removal.numRowsAffected() > 0;
    removal.finish();
    return found;
}

} // namespace PlanService
