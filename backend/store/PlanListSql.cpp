#include "PlanListSql.h"

#include "VisibilitySql.h"

namespace PlanService {

namespace {

SqlCondition conditionOf(const PlanQuery& query)
{
    SqlCondition condition;
    condition.also(QStringLiteral("projectId = ?"), {query.projectId});
    if (query.category) {
        condition.also(QStringLiteral("category = ?"), {*query.category});
    }
    addVisibility(query.visible,
                  {QStringLiteral("createdBy = ?"),
                   {query.visible.user.isNull() ? QStringLiteral("") : query.visible.user}},
                  condition);
    if (query.where.kind != Filter::Kind::All || !query.where.terms.isEmpty()) {
        const SqlCondition where = sqlOf(query.where);
        condition.also(where.text, where.parameters);
    }
    return condition;
}

} // namespace

SqlStatement planListSql(const PlanQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    if (query.skip == 0) {
        return {QStringLiteral("SELECT CAST(document AS BLOB) FROM plans WHERE %1"
                               " ORDER BY createdAt, id LIMIT ?")
                    .arg(condition.text),
                condition.parameters + QVariantList{query.limit}};
    }
    // What is skipped is passed in the index alone, without a look at its rows.
    return {QStringLiteral("SELECT CAST(document AS BLOB) FROM plans WHERE rowid IN"
                           " (SELECT rowid FROM plans WHERE %1 ORDER BY createdAt, id LIMIT ? OFFSET ?)"
                           " ORDER BY createdAt, id")
                .arg(condition.text),
            condition.parameters + QVariantList{query.limit, query.skip}};
}

SqlStatement planCountSql(const PlanQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    return {QStringLiteral("SELECT count(*) FROM plans WHERE %1").arg(condition.text), condition.parameters};
}

} // namespace PlanService
