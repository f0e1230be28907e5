#include <model/KvPlanCodec.h>

#include <model/KvEncodePool.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

#include <utility>

namespace Kv {

namespace {

using Link = const KvPlanPredecessor&;
using Node = const KvPlanNode&;
using Pool = KvEncodePool&;

// What QDateTime::toString gives for KvPub::getDateTimeFormat, at a fraction of its cost and with the digits
// 0 to 9 whatever the user's language is.
QJsonValue dateText(const QDateTime& dateTime, KvEncodePool& pool)
{
    const auto text = [&](const KvWallClock&) {
        return QJsonValue(KvPub::getQStringByDateTime(dateTime));
    };
    const KvWallClock time = wallClock(dateTime);
    return dateTime.isValid() ? pool.dates.of(time, text) : text(time);
}

QJsonValue listOf(const QStringList& ids, KvEncodePool& pool)
{
    return ids.isEmpty() ? QJsonValue(QJsonArray()) : pool.lists.of(ids, &QJsonArray::fromStringList);
}

QJsonValue materialBillsOf(const KvTextLists& bills, KvEncodePool& pool)
{
    if (bills.isEmpty())
        return QJsonArray();
    return pool.materialBills.of(bills, [&](const KvTextLists& first) {
        QJsonArray out;
        for (auto bill = first.constBegin(); bill != first.constEnd(); ++bill)
            out.append(QJsonObject{{QStringLiteral("rId"), bill.key()},
                                   {QStringLiteral("statusIds"), listOf(bill.value(), pool)}});
        return out;
    });
}

template<auto Field>
bool same(const KvPlanNode& a, const KvPlanNode& b)
{
    return a.*Field == b.*Field;
}

template<auto Field>
bool sameDate(const KvPlanNode& a, const KvPlanNode& b)
{
    return wallClock(a.*Field) == wallClock(b.*Field) && (a.*Field).isValid() == (b.*Field).isValid();
}

// The tables below stand in ascending order of the keys, as a JSON object does. One key a line, however long.
// clang-format off

const KvWrittenField<KvPlanPredecessor> predecessorFields[] = {
    {QLatin1String("Lag"), [](Link l, Pool p) { return durationToJsonValue(l.lag, p); }},
    {QLatin1String("SourcePlanNodeID"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeId); }},
    {QLatin1String("SourcePlanNodeName"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeName); }},
    {QLatin1String("SourcePlanNodeUniqueID"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeUniqueId); }},
    {QLatin1String("TargetPlanNodeID"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeId); }},
    {QLatin1String("TargetPlanNodeName"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeName); }},
    {QLatin1String("TargetPlanNodeUniqueID"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeUniqueId); }},
    {QLatin1String("Type"), [](Link l, Pool) { return QJsonValue(l.type); }},
};

const KvWrittenField<KvPlanNode> nodeFields[] = {
    {QLatin1String("GUID"), [](Node n, Pool) { return QJsonValue(n.guid); }, [](Node n) { return n.guid != n.id && !n.guid.isEmpty(); }},
    {QLatin1String("_id"), [](Node n, Pool) { return QJsonValue(n.id); }, [](Node n) { return !n.id.isEmpty(); }},
    {QLatin1String("actualFinishDate"), [](Node n, Pool p) { return dateText(n.actualFinishDate, p); }},
    {QLatin1String("actualStartDate"), [](Node n, Pool p) { return dateText(n.actualStartDate, p); }},
    {QLatin1String("actualWorkload"), [](Node n, Pool) { return QJsonValue(n.actualWorkload); }, [](Node n) { return n.actualWorkload >= 0; }},
    {QLatin1String("category"), [](Node n, Pool) { return QJsonValue(n.category); }, nullptr, same<&KvPlanNode::category>},
    {QLatin1String("cooperateIds"), [](Node n, Pool p) { return listOf(n.cooperateIds, p); }},
    {QLatin1String("createdAt"), [](Node n, Pool p) { return dateText(n.createdAt, p); }, nullptr, sameDate<&KvPlanNode::createdAt>},
    {QLatin1String("createdBy"), [](Node n, Pool) { return QJsonValue(n.createdBy); }, [](Node n) { return !n.createdBy.isEmpty(); }, same<&KvPlanNode::createdBy>},
    // A boolean here, though the reader wants a number: the service takes only the boolean.
    {QLatin1String("displaySimulation"), [](Node n, Pool) { return QJsonValue(n.displaySimulation); }},
    {QLatin1String("documentIds"), [](Node n, Pool p) { return listOf(n.documentIds, p); }},
    {QLatin1String("dynamicEffect"), [](Node n, Pool) { return QJsonValue(n.dynamicEffect); }, [](Node n) { return n.dynamicEffect != -1; }},
    {QLatin1String("entityHideDate"), [](Node n, Pool p) { return dateText(n.entityHideDate, p); }, nullptr, sameDate<&KvPlanNode::entityHideDate>},
    {QLatin1String("entityHideType"), [](Node n, Pool) { return QJsonValue(n.entityHideType); }},
    {QLatin1String("executeIds"), [](Node n, Pool p) { return listOf(n.executeIds, p); }},
    {QLatin1String("finishDate"), [](Node n, Pool p) { return dateText(n.finishDate, p); }},
    {QLatin1String("finishedPercentage"), [](Node n, Pool) { return QJsonValue(n.finishedPercentage); }, [](Node n) { return n.finishedPercentage >= 0.0; }},
    {QLatin1String("id"), [](Node n, Pool) { return QJsonValue(n.planNodeId); }},
    {QLatin1String("isDistributed"), [](Node n, Pool) { return QJsonValue(n.isDistributed); }},
    {QLatin1String("links"), [](Node n, Pool) { return QJsonValue(KvPub::linksEntityToJsonArray(n.links)); }},
    {QLatin1String("materialBills"), [](Node n, Pool p) { return materialBillsOf(n.materialBills, p); }},
    {QLatin1String("name"), [](Node n, Pool) { return QJsonValue(n.name); }, [](Node n) { return !n.name.isEmpty(); }},
    {QLatin1String("parentTaskID"), [](Node n, Pool) { return QJsonValue(n.parentTaskId); }},
    {QLatin1String("planId"), [](Node n, Pool) { return QJsonValue(n.planId); }, [](Node n) { return !n.planId.isEmpty(); }, same<&KvPlanNode::planId>},
    {QLatin1String("planWorkload"), [](Node n, Pool) { return QJsonValue(n.planWorkload); }, [](Node n) { return n.planWorkload >= 0; }},
    {QLatin1String("predecessors"), [](Node n, Pool p) { return QJsonValue(predecessorsToJsonArray(n.predecessors, p)); }},
    {QLatin1String("projectId"), [](Node n, Pool) { return QJsonValue(n.projectId); }, [](Node n) { return !n.projectId.isEmpty(); }, same<&KvPlanNode::projectId>},
    {QLatin1String("remark"), [](Node n, Pool) { return QJsonValue(n.remark); }, [](Node n) { return !n.remark.isEmpty(); }},
    {QLatin1String("startDate"), [](Node n, Pool p) { return dateText(n.startDate, p); }},
    {QLatin1String("uniqueId"), [](Node n, Pool) { return QJsonValue(n.uniqueId); }},
    {QLatin1String("updatedAt"), [](Node n, Pool p) { return dateText(n.updatedAt, p); }},
    {QLatin1String("updatedBy"), [](Node n, Pool) { return QJsonValue(n.updatedBy); }, [](Node n) { return !n.updatedBy.isEmpty(); }},
    {QLatin1String("userIds"), [](Node n, Pool p) { return listOf(n.userIds, p); }},
};
// clang-format on

constexpr quint64 idField = 1 << 1; // "_id" in the table above

} // namespace

// The nodes are read from "tasks" and written to "projectData": so the service names them in each direction.
void planToJsonObject(const KvPlan& in, QJsonObject& out)
{
    if (!in.projectId.isEmpty())
        out.insert(QLatin1String("projectId"), in.projectId);
    if (!in.category.isEmpty())
        out.insert(QLatin1String("category"), in.category);
    if (!in.name.isEmpty())
        out.insert(QLatin1String("name"), in.name);
    if (!in.projectFileId.isEmpty())
        out.insert(QLatin1String("projectFileId"), in.projectFileId);
    if (in.isPublic != 100)
        out.insert(QLatin1String("public"), in.isPublic);
    if (!in.ranges.isEmpty())
        out.insert(QLatin1String("ranges"), QJsonArray::fromStringList(in.ranges));
    QJsonArray nodes;
    KvEncodePool pool(in.planNodes.size());
    for (const KvPlanNode& node : in.planNodes)
        nodes.append(planNodeToJsonObject(node, true, pool));
    out.insert(QLatin1String("projectData"), nodes);
}

QJsonObject planNodeToJsonObject(const KvPlanNode& in, bool withId, KvEncodePool& pool)
{
    static const KvObjectWriter writer(nodeFields);
    return writer.write(in, pool.nodes, pool, withId ? 0 : idField);
}

void planNodeToJsonObject(const KvPlanNode& in, QJsonObject& out, bool withId)
{
    KvEncodePool pool;
    addMembers(planNodeToJsonObject(in, withId, pool), out);
}

QJsonArray predecessorsToJsonArray(const QList<KvPlanPredecessor>& in, KvEncodePool& pool)
{
    static const KvObjectWriter writer(predecessorFields);
    QJsonArray out;
    for (const KvPlanPredecessor& predecessor : in)
        out.append(writer.write(predecessor, pool.predecessors, pool));
    return out;
}

QJsonValue durationToJsonValue(const KvDuration& in, KvEncodePool& pool)
{
    return pool.durations.of({in.value, in.units}, [&](const KvAmount&) { return durationToJsonObject(in); });
}

QJsonObject predecessorToJsonObject(const KvPlanPredecessor& in)
{
    KvEncodePool pool;
    return predecessorsToJsonArray({in}, pool).first().toObject();
}

QJsonObject durationToJsonObject(const KvDuration& in)
{
    return {{QStringLiteral("Duration"), in.value}, {QStringLiteral("Units"), in.units}};
}

} // namespace Kv
