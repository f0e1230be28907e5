#include "PlanListSql.h"

namespace PlanService {

namespace {

/// Categories without rights of their own follow the rights for the whole project.
void addVisibility(const Visibility& visible, SqlCondition& condition)
{
    if (visible.categories.isEmpty() && visible.elsewhere == ReadScope::All) {
        return;
    }
    const QString user = visible.user.isNull() ? QStringLiteral("") : visible.user;
    QStringList choices;
    QVariantList parameters;
    for (auto it = visible.categories.begin(); it != visible.categories.end(); ++it) {
        if (it.value() != ReadScope::None) {
            choices += it.value() == ReadScope::All ? QStringLiteral("category = ?")
                                                    : QStringLiteral("(category = ? AND createdBy = ?)");
            parameters += it.key();
            if (it.value() == ReadScope::Own) {
                parameters += user;
            }
        }
    }
    if (visible.elsewhere != ReadScope::None) {
        QStringList others;
        for (auto it = visible.categories.begin(); it != visible.categories.end(); ++it) {
            others += QStringLiteral("category <> ?");
            parameters += it.key();
        }
        if (visible.elsewhere == ReadScope::Own) {
            others += QStringLiteral("createdBy = ?");
            parameters += user;
        }
        choices += QLatin1Char('(') + others.join(QLatin1String(" AND ")) + QLatin1Char(')');
    }
    condition.also(choices.isEmpty()
                       ? QStringLiteral("0")
                       : QLatin1Char('(') + choices.join(QLatin1String(" OR ")) + QLatin1Char(')'),
                   parameters);
}

SqlCondition conditionOf(const PlanQuery& query)
{
    SqlCondition condition;
    condition.also(QStringLiteral("projectId = ?"), {query.projectId});
    if (query.category) {
        condition.also(QStringLiteral("category = ?"), {*query.category});
    }
    addVisibility(query.visible, condition);
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
