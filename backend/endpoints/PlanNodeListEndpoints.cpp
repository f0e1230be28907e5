#include "../access/Caller.h"
#include "../filters/FilterText.h"
#include "../filters/PlanNodeFields.h"
#include "../json/ClientJson.h"
#include "../records/FieldReader.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

ApiError badStates(const QString& message)
{
    return {400, QStringLiteral("badParameter"), message, QStringLiteral("state")};
}

/// One word, or {"$in": [words]}.
QStringList statesOf(const QString& text)
{
    if (!text.startsWith(QLatin1Char('{'))) {
        return {text};
    }
    const QJsonObject object = clientDocument(text.toUtf8()).object();
    const QJsonValue list = object.value(QLatin1String("$in"));
    if (object.size() != 1 || !list.isArray()) {
        throw badStates(QStringLiteral("'state' has to be a state or {\"$in\": [states]}, not '%1'")
                            .arg(shortened(text)));
    }
    QStringList states;
    const QJsonArray words = list.toArray();
    for (const QJsonValue& word : words) {
        states.append(word.toString());
    }
    return states;
}

void readStates(const Call& call, PlanNodeQuery& query)
{
    const auto text = call.query.constFind(QStringLiteral("state"));
    if (text == call.query.constEnd()) {
        return;
    }
    const QStringList states = statesOf(*text);
    for (const QString& state : states) {
        if (state != QLatin1String("unstart") && state != QLatin1String("processing") &&
            state != QLatin1String("finished")) {
            throw badStates(QStringLiteral("'state' knows unstart, processing and finished, not '%1'")
                                .arg(shortened(state)));
        }
    }
    query.unstart = states.contains(QLatin1String("unstart"));
    query.processing = states.contains(QLatin1String("processing"));
    query.finished = states.contains(QLatin1String("finished"));
}

/// "finish" asks by the actual finish alone, and narrows what "state" has left.
void readFinish(const Call& call, PlanNodeQuery& query)
{
    if (!call.query.contains(QStringLiteral("finish"))) {
        return;
    }
    const bool finished = call.queryFlag("finish");
    query.unstart = query.unstart && !finished;
    query.processing = query.processing && !finished;
    query.finished = query.finished && finished;
}

void readPersonal(const Call& call, PlanNodeQuery& query)
{
    const QString list =
        call.queryWord("list", {QStringLiteral("all"), QStringLiteral("received"), QStringLiteral("post")},
                       QStringLiteral("all"));
    const bool toDo = call.query.contains(QStringLiteral("type")) &&
                      call.queryWord("type", {QStringLiteral("todo")}) == QLatin1String("todo");
    if (toDo && !call.query.contains(QStringLiteral("state"))) {
        query.finished = false;
    }
    // Without tokens there is one user only, whose every node is.
    if (call.caller.userId().isEmpty()) {
        return;
    }
    if (toDo || list == QLatin1String("received")) {
        query.worker = call.caller.userId();
    }
    if (list == QLatin1String("post")) {
        query.creator = call.caller.userId();
    }
}

PlanNodeQuery queryOf(const Call& call, const QString& projectId)
{
    PlanNodeQuery query;
    query.projectId = projectId;
    query.visible = call.caller.visibilityIn(projectId);
    const QString category = call.query.value(QStringLiteral("category"));
    if (!category.isEmpty()) {
        query.category = category;
    }
    query.where = readFilter(call.query.value(QStringLiteral("where")), planNodeFields());
    readStates(call, query);
    readPersonal(call, query);
    readFinish(call, query);
    const QString order =
        call.queryWord("order", {QStringLiteral("id"), QStringLiteral("finishDate")}, QStringLiteral("id"));
    query.order = order == QLatin1String("finishDate") ? PlanNodeOrder::FinishDate : PlanNodeOrder::Plan;
    query.withDocuments = call.queryFlag("expand");
    query.skip = call.queryNumber("skip", 0);
    query.limit = call.queryNumber("limit", -1);
    return query;
}

Reply nodeList(const Call& call, const PlanNodeQuery& query)
{
    return listReply(
        call, [&] { return call.store.planNodeListJson(query); },
        [&] { return call.store.planNodeListCount(query); });
}

/// The filter's own {"planId": null}.
bool asksForNoPlan(const Filter& where)
{
    for (const Filter& term : where.terms) {
        if (term.kind == Filter::Kind::Equals && QLatin1String(term.field->name) == QLatin1String("planId") &&
            term.values.first().isEmpty()) {
            return true;
        }
    }
    return false;
}

} // namespace

Reply getPlanNodesOfPlan(const Call& call)
{
    const QString planId = call.parameter("planId");
    const std::optional<Ownership> plan = call.store.planOwnership(planId);
    if (!plan) {
        throw noSuchPlan(planId);
    }
    PlanNodeQuery query = queryOf(call, plan->projectId);
    // A client that asks for nodes without a plan names one all the same: it stands for its project then.
    query.planId = asksForNoPlan(query.where) ? QString() : planId;
    return nodeList(call, query);
}

Reply getPlanNodes(const Call& call)
{
    return nodeList(call, queryOf(call, call.parameter("projectId")));
}

} // namespace PlanService
