#include "../access/Caller.h"
#include "../records/FieldReader.h"
#include "../records/PlanNodeInput.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

#include <QHash>
#include <QRegularExpression>

namespace PlanService {

namespace {

PlanRecord existingPlan(const Call& call, const QString& id)
{
    const std::optional<PlanRecord> plan = call.store.plan(id);
    if (!plan) {
        throw noSuchPlan(id);
    }
    return *plan;
}

void requireCategories(const Call& call, const PlanRecord& plan, const QStringList& categories,
                       void (Caller::*require)(const QString&, const QString&) const)
{
    for (const QString& category : categories) {
        (call.caller.*require)(plan.projectId, category);
    }
}

/// Puts the sent nodes in the place of the plan's.
void replaceNodes(const Call& call, const PlanRecord& plan, const PlanInput& input)
{
    const QString user = call.caller.userId();
    QHash<QString, QByteArray> stored;
    const auto find = [&](const QString& id) {
        std::optional<PlanNodeRecord> node = call.store.planNode(id);
        if (node && node->planId != plan.id) {
            node.reset();
        }
        if (node) {
            stored.insert(id, node->document);
        }
        return node;
    };
    NodeIds ids;
    QVector<PlanNodeRecord> nodes = readPlanNodes(input, plan, user, ids, find);
    // Of those that come, and of those that change or go.
    requireCategories(call, plan, categoriesOf(nodes) + call.store.categoriesOfNodes(plan.id),
                      &Caller::requireEdit);
    QStringList kept;
    QVector<PlanNodeRecord> added;
    for (PlanNodeRecord& node : nodes) {
        const auto before = stored.constFind(node.id);
        if (before == stored.constEnd()) {
            added.append(std::move(node));
            continue;
        }
        if (before.value() != node.document) {
            call.store.updatePlanNode(node);
        }
        kept.append(node.id);
    }
    insertNodes(call.store, added, ids);
    for (const PlanNodeRecord& node : qAsConst(added)) {
        kept.append(node.id);
    }
    call.store.keepPlanNodes(plan.id, kept);
}

/// The plan's name with a number, "Tower (2)"; one that is there already is left away first.
QString freeName(Store& store, const PlanRecord& plan)
{
    static const QRegularExpression numbered(QStringLiteral(" \\([0-9]{1,9}\\)$"));
    constexpr int room = 14;
    const QString base = QString(plan.name).remove(numbered).left(longestText - room);
    const auto name = [&](int number) {
        return QStringLiteral("%1 (%2)").arg(base).arg(number);
    };
    // In steps that double, then halve: many copies of one plan cost few looks.
    int taken = 1;
    int free = 2;
    while (store.hasPlanNamed(plan.projectId, name(free))) {
        taken = free;
        free *= 2;
    }
    while (free - taken > 1) {
        const int middle = taken + (free - taken) / 2;
        (store.hasPlanNamed(plan.projectId, name(middle)) ? taken : free) = middle;
    }
    return name(free);
}

} // namespace

void insertNodes(Store& store, QVector<PlanNodeRecord>& nodes, NodeIds& ids)
{
    constexpr int together = 1000;
    for (int first = 0; first < nodes.size(); first += together) {
        const int count = qMin(together, nodes.size() - first);
        const QVector<int> refused = store.addPlanNodes(nodes, first, count);
        for (const int place : refused) {
            do {
                giveId(nodes[place], ids.next());
            } while (!store.addPlanNode(nodes.at(place)));
        }
        for (int i = first; i < first + count; ++i) {
            nodes[i].document.clear(); // many documents at once are most of the memory
        }
    }
}

Reply postPlan(const Call& call)
{
    const PlanInput input = readPlanInput(call.request.body);
    const PlanRecord plan = newPlan(input.plan, call.caller.userId());
    call.caller.requireCreate(plan.projectId, plan.category);
    NodeIds ids;
    QVector<PlanNodeRecord> nodes = readPlanNodes(input, plan, call.caller.userId(), ids);
    requireCategories(call, plan, categoriesOf(nodes), &Caller::requireCreate);
    Transaction transaction(call.store);
    call.store.insertPlan(plan);
    insertNodes(call.store, nodes, ids);
    transaction.commit();
    return planReply(call, plan.id);
}

Reply putPlan(const Call& call)
{
    const PlanInput input = readPlanInput(call.request.body);
    Transaction transaction(call.store);
    const PlanRecord before = existingPlan(call, call.parameter("planId"));
    call.caller.requireRead({before.projectId, before.category, {before.createdBy}}); // the reply shows it
    call.caller.requireEdit(before.projectId, before.category);
    const PlanRecord plan = changedPlan(before, input.plan, call.caller.userId());
    call.caller.requireEdit(plan.projectId, plan.category);
    if (plan.document != before.document) {
        call.store.updatePlan(plan);
    }
    if (plan.category != before.category) {
        // Or clients, who ask for the nodes of a plan in the plan's category, would find none of them.
        call.store.moveNodes(plan.id, before.category, plan.category);
    }
    if (input.hasNodes) {
        replaceNodes(call, plan, input);
    }
    transaction.commit();
    return planReply(call, plan.id);
}

Reply copyPlan(const Call& call)
{
    Transaction transaction(call.store);
    const PlanRecord plan = existingPlan(call, call.parameter("planId"));
    call.caller.requireRead({plan.projectId, plan.category, {plan.createdBy}});
    call.caller.requireCreate(plan.projectId, plan.category);
    requireCategories(call, plan, call.store.categoriesOfNodes(plan.id), &Caller::requireCreate);
    const PlanRecord copy = copiedPlan(plan, freeName(call.store, plan), call.caller.userId());
    call.store.insertPlan(copy);
    call.store.copyPlanNodes(plan.id, copy, newPlanId().left(16));
    transaction.commit();
    return planReply(call, copy.id);
}

Reply deletePlan(const Call& call)
{
    Transaction transaction(call.store);
    const PlanRecord plan = existingPlan(call, call.parameter("planId"));
    call.caller.requireDelete(plan.projectId, plan.category);
    requireCategories(call, plan, call.store.categoriesOfNodes(plan.id), &Caller::requireDelete);
    call.store.removePlan(plan.id);
    transaction.commit();
    return {204, {}, {}, {}};
}

} // namespace PlanService
