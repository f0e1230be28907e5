#include "PlanListSql.h"

#include "VisibilitySql.h"

#include <limits>

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

QVariant mostRows(int limit)
{
    return limit < 0 ? std::numeric_limits<qint64>::max() : qint64{limit};
}

SqlStatement planListSql(const PlanQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    const QVariant limit = mostRows(query.limit);
    if (query.skip == 0) {
        return {QStringLiteral("SELECT CAST(document AS {bytes}) FROM plans WHERE %1"
                               " ORDER BY createdAt NULLS FIRST, id LIMIT ?")
                    .arg(condition.text),
                condition.parameters + QVariantList{limit}};
    }
    // What is skipped is passed in the index alone, without a look at its rows.
    return {
        QStringLiteral("SELECT CAST(document AS {bytes}) FROM plans WHERE id IN"
                       " (SELECT id FROM plans WHERE %1 ORDER BY createdAt NULLS FIRST, id LIMIT ? OFFSET ?)"
                       " ORDER BY createdAt NULLS FIRST, id")
            .arg(condition.text),
        condition.parameters + QVariantList{limit, query.skip}};
}

SqlStatement planRowsSql(const QString& columns, const PlanQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    return {QStringLiteral("SELECT %1 FROM plans WHERE %2").arg(columns, condition.text),
            condition.parameters};
}

} // namespace PlanService
