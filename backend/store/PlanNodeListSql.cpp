#include "PlanNodeListSql.h"

#include "PlanNodeJsonSql.h"
#include "VisibilitySql.h"

namespace PlanService {

namespace {

/// The filter's own condition on the plan, which the index of a plan's rows answers.
bool namesPlans(const Filter& where)
{
    for (const Filter& term : where.terms) {
        const bool lists = term.kind == Filter::Kind::Equals || term.kind == Filter::Kind::In;
        if (where.kind == Filter::Kind::All && lists &&
            QLatin1String(term.field->name) == QLatin1String("planId") && !term.values.contains(QString())) {
            return true;
        }
    }
    return false;
}

void addPlace(const PlanNodeQuery& query, SqlCondition& condition)
{
    // A project has far more nodes than its plans have: its own index is looked at where no plan is named.
    const bool byPlan = (query.planId && !query.planId->isEmpty()) || namesPlans(query.where);
    condition.also(byPlan ? QStringLiteral("{loose projectId} = ?") : QStringLiteral("projectId = ?"),
                   {query.projectId});
    if (query.planId && query.planId->isEmpty()) {
        condition.also(QStringLiteral("planId IS NULL"));
    } else if (query.planId) {
        condition.also(QStringLiteral("planId = ?"), {*query.planId});
    }
    if (query.category) {
        condition.also(byPlan ? QStringLiteral("{loose category} = ?") : QStringLiteral("category = ?"),
                       {*query.category});
    }
}

void addStates(const PlanNodeQuery& query, SqlCondition& condition)
{
    if (query.unstart && query.processing && query.finished) {
        return;
    }
    if (query.unstart && query.processing) {
        condition.also(QStringLiteral("actualFinishDate IS NULL"));
        return;
    }
    QStringList states;
    if (query.unstart) {
        states += QStringLiteral("(actualStartDate IS NULL AND actualFinishDate IS NULL)");
    }
    if (query.processing) {
        states += QStringLiteral("(actualStartDate IS NOT NULL AND actualFinishDate IS NULL)");
    }
    if (query.finished) {
        states += QStringLiteral("actualFinishDate IS NOT NULL");
    }
    condition.also(states.isEmpty()
                       ? QStringLiteral("FALSE")
                       : QLatin1Char('(') + states.join(QLatin1String(" OR ")) + QLatin1Char(')'));
}

SqlCondition conditionOf(const PlanNodeQuery& query)
{
    SqlCondition condition;
    addPlace(query, condition);
    addVisibility(query.visible, ownNode(query.visible.user), condition);
    addStates(query, condition);
    if (query.worker) {
        const SqlCondition works = worksOn(*query.worker);
        condition.also(works.text, works.parameters);
    }
    if (query.creator) {
        condition.also(QStringLiteral("createdBy = ?"),
                       {query.creator->isNull() ? QStringLiteral("") : *query.creator});
    }
    if (query.where.kind != Filter::Kind::All || !query.where.terms.isEmpty()) {
        const SqlCondition where = sqlOf(query.where);
        condition.also(where.text, where.parameters);
    }
    return condition;
}

QString orderOf(const PlanNodeQuery& query)
{
    if (query.order == PlanNodeOrder::FinishDate) {
        return QStringLiteral("n.finishDate IS NULL, n.finishDate, n.id");
    }
    // Within one plan its index gives the order, and a page costs no more than its rows.
    return query.planId ? QStringLiteral("n.rowNumber, n.id")
                        : QStringLiteral("n.planId NULLS FIRST, n.rowNumber, n.id");
}

} // namespace

SqlStatement planNodeListSql(const PlanNodeQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    const QString json =
        query.withDocuments
            ? QStringLiteral(PLANSERVICE_NODE_JSON PLANSERVICE_NODE_DOCUMENTS " || substr(n.document, 2)")
            : QStringLiteral(PLANSERVICE_NODE_JSON " || substr(n.document, 2)");
    // What is skipped or sorted is looked up without its JSON; the limit keeps the order of the page.
    return {QStringLiteral("SELECT CAST(%1 AS {bytes}) FROM"
                           " (SELECT number FROM planNodes n WHERE %2 ORDER BY %3 LIMIT ? OFFSET ?) page"
                           " {then} planNodes n ON n.number = page.number"
                           " LEFT JOIN plans p ON p.id = n.planId {again ORDER BY %3}")
                .arg(json, condition.text, orderOf(query)),
            condition.parameters + QVariantList{mostRows(query.limit), query.skip}};
}

SqlStatement planNodeRowsSql(const QString& columns, const PlanNodeQuery& query)
{
    const SqlCondition condition = conditionOf(query);
    return {QStringLiteral("SELECT %1 FROM planNodes n WHERE %2").arg(columns, condition.text),
            condition.parameters};
}

} // namespace PlanService
