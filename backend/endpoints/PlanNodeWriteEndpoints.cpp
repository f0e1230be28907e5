#include "../access/Caller.h"
#include "../json/ClientJson.h"
#include "../json/JsonWriter.h"
#include "../records/FieldReader.h"
#include "../records/PlanNodeChange.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

void requireCreate(const Call& call, const PlanRecord& plan, const QVector<PlanNodeRecord>& nodes)
{
    const QStringList categories = categoriesOf(nodes);
    for (const QString& category : categories) {
        call.caller.requireCreate(plan.projectId, category);
    }
    if (categories.isEmpty()) {
        call.caller.requireCreate(plan.projectId, plan.category);
    }
}

PlanRecord existingPlan(const Call& call, const QString& id)
{
    const std::optional<PlanRecord> plan = call.store.plan(id);
    if (!plan) {
        throw noSuchPlan(id);
    }
    return *plan;
}

/// The plan that the node names, or what stands for none in the project that it names.
PlanRecord planOfNode(const Call& call, const FieldReader& node)
{
    const QString planId = node.text("planId");
    if (!planId.isEmpty()) {
        return existingPlan(call, planId);
    }
    PlanRecord none;
    none.projectId = node.text("projectId");
    if (none.projectId.isEmpty()) {
        node.refuse("projectId", QStringLiteral("missingValue"),
                    QStringLiteral("'projectId' has to name the project of a node that belongs to no plan"));
    }
    return none;
}

/// Adds the nodes to the plan. @return what the store holds of them now, in their order.
JsonPieces create(const Call& call, const PlanInput& input, const PlanRecord& plan)
{
    NodeIds ids;
    QVector<PlanNodeRecord> nodes = readPlanNodes(input, plan, call.caller.userId(), ids, {},
                                                  call.store.lastRow(plan.projectId, plan.id));
    requireCreate(call, plan, nodes);
    Transaction transaction(call.store);
    if (!plan.id.isEmpty() && !call.store.planOwnership(plan.id)) {
        throw noSuchPlan(plan.id); // it went while the nodes were read
    }
    QStringList created;
    created.reserve(nodes.size());
    for (PlanNodeRecord& node : nodes) {
        insertNode(call.store, node, ids);
        created.append(node.id);
        node.document.clear(); // many documents at once are most of the memory
    }
    const JsonPieces json = call.store.planNodesJson(created);
    transaction.commit();
    return json;
}

/// The stored node that the changes are for, and that the caller may change.
PlanNodeRecord nodeToChange(const Call& call, const QString& id, const QString& field)
{
    const std::optional<PlanNodeRecord> node = call.store.planNode(id);
    if (!node) {
        throw ApiError(404, QStringLiteral("planNodeNotFound"),
                       QStringLiteral("there is no plan node '%1'; nothing was changed").arg(shortened(id)),
                       field);
    }
    call.caller.requireEdit(node->projectId, node->category);
    return *node;
}

void change(const Call& call, const PlanNodeRecord& stored, const QJsonObject& changes, int index)
{
    const PlanNodeRecord changed = changedPlanNode(stored, changes, call.caller.userId(), index);
    if (changed.category != stored.category) {
        call.caller.requireEdit(changed.projectId, changed.category);
    }
    if (changed.document != stored.document) {
        call.store.updatePlanNode(changed);
    }
}

QStringList idsToDelete(const Call& call)
{
    const auto refuse = [](const QString& message) {
        return ApiError(400, QStringLiteral("badParameter"), message, QStringLiteral("queryParam"));
    };
    const QJsonObject parameter =
        clientDocument(call.query.value(QStringLiteral("queryParam")).toUtf8()).object();
    const QJsonValue list = parameter.value(QLatin1String("ids"));
    if (!list.isArray()) {
        throw refuse(QStringLiteral("'queryParam' has to be {\"ids\": [ids of nodes]} in JSON"));
    }
    QStringList ids;
    const QJsonArray values = list.toArray();
    for (const QJsonValue& value : values) {
        if (!value.isString()) {
            throw refuse(QStringLiteral("'ids' of 'queryParam' has to hold texts"));
        }
        ids.append(value.toString());
    }
    return ids;
}

} // namespace

Reply postPlanNode(const Call& call)
{
    const PlanInput input = readSingleNode(call.request.body);
    const PlanRecord plan = planOfNode(call, FieldReader(parsedNode(input, 0)));
    JsonPieces json = create(call, input, plan);
    // A list of one; the object alone is the reply.
    const QByteArray list = json.join();
    return {200, {list.mid(1, list.size() - 2)}, {}, {}};
}

Reply postPlanNodes(const Call& call)
{
    const PlanInput input = readNodeList(call.request.body);
    return {200, create(call, input, existingPlan(call, call.parameter("planId"))), {}, {}};
}

Reply putPlanNode(const Call& call)
{
    const QJsonObject changes = call.bodyObject(largestSingleNode);
    const QString id = call.parameter("planNodeId");
    Transaction transaction(call.store);
    const PlanNodeRecord stored = nodeToChange(call, id, QStringLiteral("planNodeId"));
    const std::optional<Ownership> ownership = call.store.planNodeOwnership(id);
    if (ownership) {
        call.caller.requireRead(*ownership); // the reply shows it
    }
    change(call, stored, changes, -1);
    const JsonPieces json = call.store.planNodeJson(id, false);
    transaction.commit();
    return {200, json, {}, {}};
}

Reply putPlanNodes(const Call& call)
{
    const PlanInput input = readNodeList(call.request.body);
    Transaction transaction(call.store);
    for (int i = 0; i < input.nodes.size(); ++i) {
        const QJsonObject changes = parsedNode(input, i);
        const FieldReader in(nullptr, input.list, i, changes);
        const QString id = in.text("_id");
        if (id.isEmpty()) {
            in.refuse("_id", QStringLiteral("missingValue"),
                      QStringLiteral("'%1' has to name the node that changes").arg(in.pathOf("_id")));
        }
        change(call, nodeToChange(call, id, in.pathOf("_id")), changes, i);
    }
    transaction.commit();
    JsonWriter json;
    json.beginObject().key("count").number(input.nodes.size()).endObject();
    return {200, {json.take()}, {}, {}};
}

Reply deletePlanNode(const Call& call)
{
    const QString id = call.parameter("planNodeId");
    Transaction transaction(call.store);
    const std::optional<Ownership> node = call.store.planNodeOwnership(id);
    if (!node) {
        throw noSuchPlanNode(id);
    }
    call.caller.requireDelete(node->projectId, node->category);
    call.store.removePlanNode(id);
    transaction.commit();
    return {204, {}, {}, {}};
}

Reply deletePlanNodes(const Call& call)
{
    const QStringList ids = idsToDelete(call);
    Transaction transaction(call.store);
    for (const QString& id : ids) {
        const std::optional<Ownership> node = call.store.planNodeOwnership(id);
        if (node) {
            call.caller.requireDelete(node->projectId, node->category);
            call.store.removePlanNode(id);
        }
    }
    transaction.commit();
    return {204, {}, {}, {}};
}

} // namespace PlanService
