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
#include <QSet>

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
    none.projectId = node.indexedName("projectId");
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
    insertNodes(call.store, nodes, ids);
    QStringList created;
    created.reserve(nodes.size());
    for (const PlanNodeRecord& node : qAsConst(nodes)) {
        created.append(node.id);
    }
    const JsonPieces json = call.store.planNodesJson(created);
    transaction.commit();
    return json;
}

ApiError noNodeToChange(const QString& id, const QString& field)
{
    return {404, QStringLiteral("planNodeNotFound"),
            QStringLiteral("there is no plan node '%1'; nothing was changed").arg(shortened(id)), field};
}

/// The node with the changes, which the caller may make.
PlanNodeRecord changedBy(const Call& call, const PlanNodeRecord& stored, const QJsonObject& changes,
                         int index)
{
    call.caller.requireEdit(stored.projectId, stored.category);
    const PlanNodeRecord changed = changedPlanNode(stored, changes, call.caller.userId(), index);
    if (changed.category != stored.category) {
        call.caller.requireEdit(changed.projectId, changed.category);
    }
    return changed;
}

QString idToChange(const PlanInput& input, const QJsonObject& changes, int index)
{
    const FieldReader in(nullptr, input.list, index, changes);
    const QString id = in.text("_id");
    if (id.isEmpty()) {
        in.refuse("_id", QStringLiteral("missingValue"),
                  QStringLiteral("'%1' has to name the node that changes").arg(in.pathOf("_id")));
    }
    return id;
}

/// Changes some nodes, which are read and written together, from @p first on. @return how many. A node that
/// is named again begins the next ones, as it changes by what it is after the first time.
int changeSome(const Call& call, const PlanInput& input, int first)
{
    constexpr int together = 500;
    QSet<QString> named;
    QStringList ids;
    QVector<QJsonObject> changes;
    while (first + ids.size() < input.nodes.size() && ids.size() < together) {
        const QJsonObject node = parsedNode(input, first + ids.size());
        const QString id = idToChange(input, node, first + ids.size());
        if (named.contains(id)) {
            break;
        }
        named.insert(id);
        ids.append(id);
        changes.append(node);
    }
    const QHash<QString, PlanNodeRecord> stored = call.store.planNodes(ids);
    QVector<PlanNodeRecord> changed;
    for (int i = 0; i < ids.size(); ++i) {
        const auto before = stored.constFind(ids.at(i));
        if (before == stored.constEnd()) {
            const FieldReader in(nullptr, input.list, first + i, QJsonObject());
            throw noNodeToChange(ids.at(i), in.pathOf("_id"));
        }
        const PlanNodeRecord node = changedBy(call, *before, changes.at(i), first + i);
        if (node.document != before->document) {
            changed.append(node);
        }
    }
    call.store.updatePlanNodes(changed);
    return ids.size();
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
    const std::optional<PlanNodeRecord> stored = call.store.planNode(id);
    if (!stored) {
        throw noNodeToChange(id, QStringLiteral("planNodeId"));
    }
    call.caller.requireEdit(stored->projectId, stored->category);
    const std::optional<Ownership> ownership = call.store.planNodeOwnership(id);
    if (ownership) {
        call.caller.requireRead(*ownership); // the reply shows it
    }
    const PlanNodeRecord changed = changedBy(call, *stored, changes, -1);
    if (changed.document != stored->document) {
        call.store.updatePlanNode(changed);
    }
    const JsonPieces json = call.store.planNodeJson(id, false);
    transaction.commit();
    return {200, json, {}, {}};
}

Reply putPlanNodes(const Call& call)
{
    const PlanInput input = readNodeList(call.request.body);
    Transaction transaction(call.store);
    for (int next = 0; next < input.nodes.size();) {
        next += changeSome(call, input, next);
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
