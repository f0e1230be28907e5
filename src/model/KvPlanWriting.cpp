#include <model/KvPlanCodec.h>

#include <model/KvEncodePool.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

#include <utility>

namespace Kv {

namespace {

using Bill = const std::pair<const QString&, const QStringList&>&;
using Duration = const KvDuration&;
using Link = const KvPlanPredecessor&;
using Node = const KvPlanNode&;
using Pool = KvEncodePool&;

QJsonValue materialBillsOf(const KvPlanNode& in, KvEncodePool& pool);

// What QDateTime::toString gives for KvPub::getDateTimeFormat, at a fraction of its cost and with the digits
// 0 to 9 whatever the user's language is.
QJsonValue dateText(const QDateTime& dateTime)
{
    return KvPub::getQStringByDateTime(dateTime);
}

QJsonValue listOf(const QStringList& ids)
{
    return QJsonArray::fromStringList(ids);
}

// The tables below stand in ascending order of the keys, as a JSON object does. One key a line, however long.
// clang-format off

const KvWrittenField<KvDuration> durationFields[] = {
    {QLatin1String("Duration"), [](Duration d, Pool) { return QJsonValue(d.value); }},
    {QLatin1String("Units"), [](Duration d, Pool) { return QJsonValue(d.units); }},
};

const KvWrittenField<KvPlanPredecessor> predecessorFields[] = {
    {QLatin1String("Lag"), [](Link l, Pool p) { return QJsonValue(durationToJsonObject(l.lag, p)); }},
    {QLatin1String("SourcePlanNodeID"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeId); }},
    {QLatin1String("SourcePlanNodeName"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeName); }},
    {QLatin1String("SourcePlanNodeUniqueID"), [](Link l, Pool) { return QJsonValue(l.sourcePlanNodeUniqueId); }},
    {QLatin1String("TargetPlanNodeID"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeId); }},
    {QLatin1String("TargetPlanNodeName"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeName); }},
    {QLatin1String("TargetPlanNodeUniqueID"), [](Link l, Pool) { return QJsonValue(l.targetPlanNodeUniqueId); }},
    {QLatin1String("Type"), [](Link l, Pool) { return QJsonValue(l.type); }},
};

const KvWrittenField<std::pair<const QString&, const QStringList&>> materialBillFields[] = {
    {QLatin1String("rId"), [](Bill b, Pool) { return QJsonValue(b.first); }},
    {QLatin1String("statusIds"), [](Bill b, Pool) { return listOf(b.second); }},
};

const KvWrittenField<KvPlanNode> nodeFields[] = {
    {QLatin1String("GUID"), [](Node n, Pool) { return QJsonValue(n.guid); }, [](Node n) { return n.guid != n.id && !n.guid.isEmpty(); }},
    {QLatin1String("_id"), [](Node n, Pool) { return QJsonValue(n.id); }, [](Node n) { return !n.id.isEmpty(); }},
    {QLatin1String("actualFinishDate"), [](Node n, Pool) { return dateText(n.actualFinishDate); }},
    {QLatin1String("actualStartDate"), [](Node n, Pool) { return dateText(n.actualStartDate); }},
    {QLatin1String("actualWorkload"), [](Node n, Pool) { return QJsonValue(n.actualWorkload); }, [](Node n) { return n.actualWorkload >= 0; }},
    {QLatin1String("category"), [](Node n, Pool) { return QJsonValue(n.category); }},
    {QLatin1String("cooperateIds"), [](Node n, Pool) { return listOf(n.cooperateIds); }},
    {QLatin1String("createdAt"), [](Node n, Pool) { return dateText(n.createdAt); }},
    {QLatin1String("createdBy"), [](Node n, Pool) { return QJsonValue(n.createdBy); }, [](Node n) { return !n.createdBy.isEmpty(); }},
    // A boolean here, though the reader wants a number: the service takes only the boolean.
    {QLatin1String("displaySimulation"), [](Node n, Pool) { return QJsonValue(n.displaySimulation); }},
    {QLatin1String("documentIds"), [](Node n, Pool) { return listOf(n.documentIds); }},
    {QLatin1String("dynamicEffect"), [](Node n, Pool) { return QJsonValue(n.dynamicEffect); }, [](Node n) { return n.dynamicEffect != -1; }},
    {QLatin1String("entityHideDate"), [](Node n, Pool) { return dateText(n.entityHideDate); }},
    {QLatin1String("entityHideType"), [](Node n, Pool) { return QJsonValue(n.entityHideType); }},
    {QLatin1String("executeIds"), [](Node n, Pool) { return listOf(n.executeIds); }},
    {QLatin1String("finishDate"), [](Node n, Pool) { return dateText(n.finishDate); }},
    {QLatin1String("finishedPercentage"), [](Node n, Pool) { return QJsonValue(n.finishedPercentage); }, [](Node n) { return n.finishedPercentage >= 0.0; }},
    {QLatin1String("id"), [](Node n, Pool) { return QJsonValue(n.planNodeId); }},
    {QLatin1String("isDistributed"), [](Node n, Pool) { return QJsonValue(n.isDistributed); }},
    {QLatin1String("links"), [](Node n, Pool) { return QJsonValue(KvPub::linksEntityToJsonArray(n.links)); }},
    {QLatin1String("materialBills"), [](Node n, Pool p) { return materialBillsOf(n, p); }},
    {QLatin1String("name"), [](Node n, Pool) { return QJsonValue(n.name); }, [](Node n) { return !n.name.isEmpty(); }},
    {QLatin1String("parentTaskID"), [](Node n, Pool) { return QJsonValue(n.parentTaskId); }},
    {QLatin1String("planId"), [](Node n, Pool) { return QJsonValue(n.planId); }, [](Node n) { return !n.planId.isEmpty(); }},
    {QLatin1String("planWorkload"), [](Node n, Pool) { return QJsonValue(n.planWorkload); }, [](Node n) { return n.planWorkload >= 0; }},
    {QLatin1String("predecessors"), [](Node n, Pool p) { return QJsonValue(predecessorsToJsonArray(n.predecessors, p)); }},
    {QLatin1String("projectId"), [](Node n, Pool) { return QJsonValue(n.projectId); }, [](Node n) { return !n.projectId.isEmpty(); }},
    {QLatin1String("remark"), [](Node n, Pool) { return QJsonValue(n.remark); }, [](Node n) { return !n.remark.isEmpty(); }},
    {QLatin1String("startDate"), [](Node n, Pool) { return dateText(n.startDate); }},
    {QLatin1String("uniqueId"), [](Node n, Pool) { return QJsonValue(n.uniqueId); }},
    {QLatin1String("updatedAt"), [](Node n, Pool) { return dateText(n.updatedAt); }},
    {QLatin1String("updatedBy"), [](Node n, Pool) { return QJsonValue(n.updatedBy); }, [](Node n) { return !n.updatedBy.isEmpty(); }},
    {QLatin1String("userIds"), [](Node n, Pool) { return listOf(n.userIds); }},
};
// clang-format on

constexpr quint64 idField = 1 << 1; // "_id" in the table above

QJsonValue materialBillsOf(const KvPlanNode& in, KvEncodePool& pool)
{
    static const KvObjectWriter writer(materialBillFields);
    QJsonArray bills;
    for (auto bill = in.materialBills.constBegin(); bill != in.materialBills.constEnd(); ++bill)
        bills.append(writer.write({bill.key(), bill.value()}, pool.materialBills, pool));
    return bills;
}

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
    KvEncodePool pool;
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

QJsonObject durationToJsonObject(const KvDuration& in, KvEncodePool& pool)
{
    static const KvObjectWriter writer(durationFields);
    return writer.write(in, pool.durations, pool);
}

QJsonObject predecessorToJsonObject(const KvPlanPredecessor& in)
{
    KvEncodePool pool;
    return predecessorsToJsonArray({in}, pool).first().toObject();
}

QJsonObject durationToJsonObject(const KvDuration& in)
{
    KvEncodePool pool;
    return durationToJsonObject(in, pool);
}

} // namespace Kv
