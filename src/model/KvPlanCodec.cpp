#include <model/KvPlanCodec.h>

#include <model/KvDecodePool.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

#include <algorithm>
#include <iterator>

namespace Kv {

namespace {

using Value = const QJsonValue&;
using Node = KvPlanNode&;
using Pool = KvDecodePool&;

QString dateText(const QDateTime& dateTime)
{
    return dateTime.toString(KvPub::getDateTimeFormat());
}

void readPredecessors(Value value, Node out)
{
    const QJsonArray array = value.toArray();
    for (const QJsonValue& element : array)
        out.predecessors.append(jsonObjectToPredecessor(element.toObject()));
}

void readDocuments(Value value, Node out)
{
    out.documents.clear();
    const QJsonArray array = value.toArray();
    for (const QJsonValue& element : array)
        out.documents.append(jsonObjectToDocument(element.toObject()));
}

void readMaterialBills(Value value, Node out, Pool pool)
{
    out.materialBills.clear();
    const QJsonArray array = value.toArray();
    for (const QJsonValue& element : array) {
        const QJsonObject bill = element.toObject();
        out.materialBills.insert(bill.value(QLatin1String("rId")).toString(),
                                 pool.idList(bill.value(QLatin1String("statusIds"))));
    }
}

struct NodeField
{
    QLatin1String key;
    void (*read)(Value, Node, Pool);
};

// In ascending order of the keys, which is the order in which a JSON object hands them out: a node is then
// read in one walk over its object, where a look-up a key would cost more than all the rest together.
const NodeField nodeFields[] = {
    {QLatin1String("GUID"),
     [](Value v, Node n, Pool) {
         n.guid = v.toString();
     }},
    {QLatin1String("_id"),
     [](Value v, Node n, Pool) {
         n.id = v.toString();
     }},
    {QLatin1String("actualFinishDate"),
     [](Value v, Node n, Pool p) {
         n.actualFinishDate = p.dateTime(v);
     }},
    {QLatin1String("actualStartDate"),
     [](Value v, Node n, Pool p) {
         n.actualStartDate = p.dateTime(v);
     }},
    {QLatin1String("actualWorkload"),
     [](Value v, Node n, Pool) {
         n.actualWorkload = v.toInt(0);
     }},
    {QLatin1String("category"),
     [](Value v, Node n, Pool p) {
         n.category = p.text(v);
     }},
    {QLatin1String("cooperateIds"),
     [](Value v, Node n, Pool p) {
         n.cooperateIds = p.idList(v);
     }},
    {QLatin1String("createdAt"),
     [](Value v, Node n, Pool p) {
         n.createdAt = p.dateTime(v);
     }},
    {QLatin1String("createdBy"),
     [](Value v, Node n, Pool p) {
         n.createdBy = p.text(v);
     }},
    // The service sends a number here and takes a boolean; a boolean that is read back therefore reads as
    // false.
    {QLatin1String("displaySimulation"),
     [](Value v, Node n, Pool) {
         n.displaySimulation = v.toInt(0) != 0;
     }},
    {QLatin1String("documentIds"),
     [](Value v, Node n, Pool p) {
         n.documentIds = p.idList(v);
     }},
    {QLatin1String("documents"),
     [](Value v, Node n, Pool) {
         readDocuments(v, n);
     }},
    {QLatin1String("dynamicEffect"),
     [](Value v, Node n, Pool) {
         n.dynamicEffect = v.toInt(0);
     }},
    // The service names the links "entity" when it sends them and "links" when it takes them.
    {QLatin1String("entity"),
     [](Value v, Node n, Pool) {
         n.links = KvPub::jsonArrayToLinksEntity(v.toArray());
     }},
    {QLatin1String("entityHideDate"),
     [](Value v, Node n, Pool p) {
         n.entityHideDate = p.dateTime(v);
     }},
    {QLatin1String("entityHideType"),
     [](Value v, Node n, Pool) {
         n.entityHideType = v.toInt(0);
     }},
    {QLatin1String("executeIds"),
     [](Value v, Node n, Pool p) {
         n.executeIds = p.idList(v);
     }},
    {QLatin1String("finishDate"),
     [](Value v, Node n, Pool p) {
         n.finishDate = p.dateTime(v);
     }},
    {QLatin1String("finishedPercentage"),
     [](Value v, Node n, Pool) {
         n.finishedPercentage = v.toDouble(0.0);
     }},
    {QLatin1String("id"),
     [](Value v, Node n, Pool) {
         n.planNodeId = v.toInt(0);
     }},
    {QLatin1String("isDistributed"),
     [](Value v, Node n, Pool) {
         n.isDistributed = v.toBool(false);
     }},
    {QLatin1String("materialBills"),
     [](Value v, Node n, Pool p) {
         readMaterialBills(v, n, p);
     }},
    {QLatin1String("milestone"),
     [](Value v, Node n, Pool) {
         n.milestone = v.toBool(false);
     }},
    {QLatin1String("name"),
     [](Value v, Node n, Pool) {
         n.name = v.toString();
     }},
    {QLatin1String("parentTaskID"),
     [](Value v, Node n, Pool) {
         n.parentTaskId = v.toInt(0);
     }},
    {QLatin1String("planId"),
     [](Value v, Node n, Pool p) {
         n.planId = p.text(v);
     }},
    {QLatin1String("planName"),
     [](Value v, Node n, Pool p) {
         n.planName = p.text(v);
     }},
    {QLatin1String("planWorkload"),
     [](Value v, Node n, Pool) {
         n.planWorkload = v.toInt(0);
     }},
    {QLatin1String("predecessors"),
     [](Value v, Node n, Pool) {
         readPredecessors(v, n);
     }},
    {QLatin1String("projectId"),
     [](Value v, Node n, Pool p) {
         n.projectId = p.text(v);
     }},
    {QLatin1String("remark"),
     [](Value v, Node n, Pool p) {
         n.remark = p.text(v);
     }},
    {QLatin1String("startDate"),
     [](Value v, Node n, Pool p) {
         n.startDate = p.dateTime(v);
     }},
    {QLatin1String("summary"),
     [](Value v, Node n, Pool) {
         n.summary = v.toBool(false);
     }},
    {QLatin1String("uniqueId"),
     [](Value v, Node n, Pool) {
         n.uniqueId = v.toInt(0);
     }},
    {QLatin1String("updatedAt"),
     [](Value v, Node n, Pool p) {
         n.updatedAt = p.dateTime(v);
     }},
    {QLatin1String("updatedBy"),
     [](Value v, Node n, Pool p) {
         n.updatedBy = p.text(v);
     }},
    {QLatin1String("userIds"),
     [](Value v, Node n, Pool p) {
         n.userIds = p.idList(v);
     }},
};
constexpr int nodeFieldCount = int(std::size(nodeFields));
static_assert(nodeFieldCount <= 64, "the fields seen are kept in one 64-bit word");

int nodeFieldIndex(const QString& key)
{
    const auto at = std::lower_bound(std::begin(nodeFields), std::end(nodeFields), key,
                                     [](const NodeField& field, const QString& k) { return field.key < k; });
    return at != std::end(nodeFields) && at->key == key ? int(at - std::begin(nodeFields)) : -1;
}

} // namespace

void jsonObjectToPlan(const QJsonObject& in, KvPlan& out)
{
    KvDecodePool pool;
    out.id = in.value(QLatin1String("_id")).toString();
    out.category = in.value(QLatin1String("category")).toString();
    out.projectId = in.value(QLatin1String("projectId")).toString();
    out.name = in.value(QLatin1String("name")).toString();
    out.projectFileId = in.value(QLatin1String("projectFile")).toString();
    out.createdAt = pool.dateTime(in.value(QLatin1String("createdAt")));
    out.createdBy = in.value(QLatin1String("createdBy")).toString();
    out.updatedAt = pool.dateTime(in.value(QLatin1String("updatedAt")));
    out.updatedBy = in.value(QLatin1String("updatedBy")).toString();
    // Replaces the older key "projectFile" read above, also by nothing: existing services send both.
    out.projectFileId = in.value(QLatin1String("projectFileId")).toString();
    out.isPublic = in.value(QLatin1String("public")).toInt(0);
    out.ranges = idListFromJson(in.value(QLatin1String("ranges")));

    out.planNodes.clear();
    const QJsonArray tasks = in.value(QLatin1String("tasks")).toArray();
    out.planNodes.reserve(tasks.size());
    for (const QJsonValue& task : tasks) {
        out.planNodes.append(KvPlanNode());
        jsonObjectToPlanNode(task.toObject(), out.planNodes.last(), pool);
    }
}

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
    for (const KvPlanNode& node : in.planNodes) {
        QJsonObject object;
        planNodeToJsonObject(node, object, true);
        nodes.append(object);
    }
    out.insert(QLatin1String("projectData"), nodes);
}

void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out)
{
    KvDecodePool pool;
    jsonObjectToPlanNode(in, out, pool);
}

void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out, KvDecodePool& pool)
{
    quint64 seen = 0;
    int next = 0;
    const auto end = in.constEnd();
    for (auto member = in.constBegin(); member != end; ++member) {
        const QString key = member.key();
        const int field = next < nodeFieldCount && key == nodeFields[next].key ? next : nodeFieldIndex(key);
        if (field < 0)
            continue;
        nodeFields[field].read(member.value(), out, pool);
        seen |= quint64(1) << field;
        next = field + 1;
    }
    const QJsonValue missing(QJsonValue::Undefined);
    for (int field = 0; field < nodeFieldCount; ++field) {
        if (!(seen >> field & 1))
            nodeFields[field].read(missing, out, pool);
    }
    if (out.guid.isEmpty())
        out.guid = out.id;
}

void planNodeToJsonObject(const KvPlanNode& in, QJsonObject& out, bool withId)
{
    if (withId && !in.id.isEmpty())
        out.insert(QLatin1String("_id"), in.id);
    if (in.guid != in.id && !in.guid.isEmpty())
        out.insert(QLatin1String("GUID"), in.guid);
    if (!in.planId.isEmpty())
        out.insert(QLatin1String("planId"), in.planId);
    if (!in.projectId.isEmpty())
        out.insert(QLatin1String("projectId"), in.projectId);
    out.insert(QLatin1String("id"), in.planNodeId);
    out.insert(QLatin1String("category"), in.category);
    out.insert(QLatin1String("uniqueId"), in.uniqueId);
    out.insert(QLatin1String("parentTaskID"), in.parentTaskId);
    if (!in.name.isEmpty())
        out.insert(QLatin1String("name"), in.name);
    out.insert(QLatin1String("isDistributed"), in.isDistributed);
    if (!in.remark.isEmpty())
        out.insert(QLatin1String("remark"), in.remark);
    if (!in.createdBy.isEmpty())
        out.insert(QLatin1String("createdBy"), in.createdBy);
    if (!in.updatedBy.isEmpty())
        out.insert(QLatin1String("updatedBy"), in.updatedBy);
    out.insert(QLatin1String("createdAt"), dateText(in.createdAt));
    out.insert(QLatin1String("updatedAt"), dateText(in.updatedAt));
    out.insert(QLatin1String("startDate"), dateText(in.startDate));
    out.insert(QLatin1String("finishDate"), dateText(in.finishDate));
    out.insert(QLatin1String("actualStartDate"), dateText(in.actualStartDate));
    out.insert(QLatin1String("actualFinishDate"), dateText(in.actualFinishDate));
    // A boolean here, though the reader wants a number: the service takes only the boolean.
    out.insert(QLatin1String("displaySimulation"), in.displaySimulation);
    if (in.finishedPercentage >= 0.0)
        out.insert(QLatin1String("finishedPercentage"), in.finishedPercentage);
    if (in.planWorkload >= 0)
        out.insert(QLatin1String("planWorkload"), in.planWorkload);
    if (in.actualWorkload >= 0)
        out.insert(QLatin1String("actualWorkload"), in.actualWorkload);
    if (in.dynamicEffect != -1)
        out.insert(QLatin1String("dynamicEffect"), in.dynamicEffect);
    QJsonArray predecessors;
    for (const KvPlanPredecessor& predecessor : in.predecessors)
        predecessors.append(predecessorToJsonObject(predecessor));
    out.insert(QLatin1String("predecessors"), predecessors);
    out.insert(QLatin1String("links"), KvPub::linksEntityToJsonArray(in.links));
    out.insert(QLatin1String("entityHideDate"), dateText(in.entityHideDate));
    out.insert(QLatin1String("entityHideType"), in.entityHideType);
    out.insert(QLatin1String("userIds"), QJsonArray::fromStringList(in.userIds));
    out.insert(QLatin1String("executeIds"), QJsonArray::fromStringList(in.executeIds));
    out.insert(QLatin1String("cooperateIds"), QJsonArray::fromStringList(in.cooperateIds));
    out.insert(QLatin1String("documentIds"), QJsonArray::fromStringList(in.documentIds));
    QJsonArray bills;
    for (auto bill = in.materialBills.constBegin(); bill != in.materialBills.constEnd(); ++bill) {
        bills.append(QJsonObject{{QLatin1String("rId"), bill.key()},
                                 {QLatin1String("statusIds"), QJsonArray::fromStringList(bill.value())}});
    }
    out.insert(QLatin1String("materialBills"), bills);
}

KvPlanPredecessor jsonObjectToPredecessor(const QJsonObject& in)
{
    KvPlanPredecessor out;
    out.sourcePlanNodeName = in.value(QLatin1String("SourcePlanNodeName")).toString();
    out.targetPlanNodeName = in.value(QLatin1String("TargetPlanNodeName")).toString();
    out.lag = jsonObjectToDuration(in.value(QLatin1String("Lag")).toObject());
    out.type = in.value(QLatin1String("Type")).toInt(0);
    out.sourcePlanNodeUniqueId = in.value(QLatin1String("SourcePlanNodeUniqueID")).toInt(0);
    out.targetPlanNodeUniqueId = in.value(QLatin1String("TargetPlanNodeUniqueID")).toString();
    out.sourcePlanNodeId = in.value(QLatin1String("SourcePlanNodeID")).toInt(0);
    out.targetPlanNodeId = in.value(QLatin1String("TargetPlanNodeID")).toInt(0);
    return out;
}

QJsonObject predecessorToJsonObject(const KvPlanPredecessor& in)
{
    QJsonObject out;
    out.insert(QLatin1String("SourcePlanNodeName"), in.sourcePlanNodeName);
    out.insert(QLatin1String("TargetPlanNodeName"), in.targetPlanNodeName);
    out.insert(QLatin1String("Lag"), durationToJsonObject(in.lag));
    out.insert(QLatin1String("Type"), in.type);
    out.insert(QLatin1String("SourcePlanNodeUniqueID"), in.sourcePlanNodeUniqueId);
    out.insert(QLatin1String("TargetPlanNodeUniqueID"), in.targetPlanNodeUniqueId);
    out.insert(QLatin1String("SourcePlanNodeID"), in.sourcePlanNodeId);
    out.insert(QLatin1String("TargetPlanNodeID"), in.targetPlanNodeId);
    return out;
}

// A missing unit reads as 0, not as the record's default of days: the sender then gave no unit.
KvDuration jsonObjectToDuration(const QJsonObject& in)
{
    KvDuration out;
    out.value = in.value(QLatin1String("Duration")).toDouble(0.0);
    out.units = in.value(QLatin1String("Units")).toInt(0);
    return out;
}

QJsonObject durationToJsonObject(const KvDuration& in)
{
    return {{QLatin1String("Duration"), in.value}, {QLatin1String("Units"), in.units}};
}

KvDocument jsonObjectToDocument(const QJsonObject& in)
{
    KvDocument out;
    out.id = in.value(QLatin1String("_id")).toString();
    out.name = in.value(QLatin1String("name")).toString();
    out.fileSize = in.value(QLatin1String("fileSize")).toInt(0);
    out.suffix = in.value(QLatin1String("suffix")).toString();
    out.createdAt = in.value(QLatin1String("createdAt")).toString();
    out.createdBy = in.value(QLatin1String("createdBy")).toString();
    return out;
}

} // namespace Kv
