#include <model/KvPlanCodec.h>

#include <model/KvDecodePool.h>
#include <model/KvJsonMembers.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

#include <utility>

namespace Kv {

namespace {

using Value = const KvJsonMember&;
using Document = KvDocument&;
using Link = KvPlanPredecessor&;
using Node = KvPlanNode&;
using Plan = KvPlan&;
using Pool = KvDecodePool&;

void readDocuments(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool);
void readLinks(const QJsonArray& in, KvPlanNode& out, KvDecodePool& pool);
void readMaterialBills(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool);
void readPredecessors(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool);
void readTasks(const QJsonArray& in, KvPlan& out, KvDecodePool& pool);

// The tables below stand in ascending order of the keys, as a JSON object does. One key a line, however long.
// clang-format off

const KvField<KvPlanPredecessor> predecessorFields[] = {
    {QLatin1String("Lag"), [](Value v, Link l, Pool) { readDuration(v.members(), l.lag); }},
    {QLatin1String("SourcePlanNodeID"), [](Value v, Link l, Pool) { l.sourcePlanNodeId = v.wholeNumber(); }},
    {QLatin1String("SourcePlanNodeName"), [](Value v, Link l, Pool p) { l.sourcePlanNodeName = p.shared(v.text()); }},
    {QLatin1String("SourcePlanNodeUniqueID"), [](Value v, Link l, Pool) { l.sourcePlanNodeUniqueId = v.wholeNumber(); }},
    {QLatin1String("TargetPlanNodeID"), [](Value v, Link l, Pool) { l.targetPlanNodeId = v.wholeNumber(); }},
    {QLatin1String("TargetPlanNodeName"), [](Value v, Link l, Pool p) { l.targetPlanNodeName = p.shared(v.text()); }},
    {QLatin1String("TargetPlanNodeUniqueID"), [](Value v, Link l, Pool) { l.targetPlanNodeUniqueId = v.text(); }},
    {QLatin1String("Type"), [](Value v, Link l, Pool) { l.type = v.wholeNumber(); }},
};

const KvField<KvDocument> documentFields[] = {
    {QLatin1String("_id"), [](Value v, Document d, Pool p) { d.id = p.shared(v.text()); }},
    {QLatin1String("createdAt"), [](Value v, Document d, Pool p) { d.createdAt = p.shared(v.text()); }},
    {QLatin1String("createdBy"), [](Value v, Document d, Pool p) { d.createdBy = p.shared(v.text()); }},
    {QLatin1String("fileSize"), [](Value v, Document d, Pool) { d.fileSize = v.wholeNumber(); }},
    {QLatin1String("name"), [](Value v, Document d, Pool p) { d.name = p.shared(v.text()); }},
    {QLatin1String("suffix"), [](Value v, Document d, Pool p) { d.suffix = p.shared(v.text()); }},
};

const KvField<KvPlanNode> nodeFields[] = {
    {QLatin1String("GUID"), [](Value v, Node n, Pool) { n.guid = v.text(); }},
    {QLatin1String("_id"), [](Value v, Node n, Pool) { n.id = v.text(); }},
    {QLatin1String("actualFinishDate"), [](Value v, Node n, Pool p) { n.actualFinishDate = p.repeatedDateTime(v); }},
    {QLatin1String("actualStartDate"), [](Value v, Node n, Pool p) { n.actualStartDate = p.repeatedDateTime(v); }},
    {QLatin1String("actualWorkload"), [](Value v, Node n, Pool) { n.actualWorkload = v.wholeNumber(); }},
    {QLatin1String("category"), [](Value v, Node n, Pool p) { n.category = p.repeated(v); }},
    {QLatin1String("cooperateIds"), [](Value v, Node n, Pool p) { n.cooperateIds = p.idList(v.elements()); }},
    {QLatin1String("createdAt"), [](Value v, Node n, Pool p) { n.createdAt = p.repeatedDateTime(v); }},
    {QLatin1String("createdBy"), [](Value v, Node n, Pool p) { n.createdBy = p.repeated(v); }},
    // The service sends a number here and takes a boolean; a boolean that is read back therefore reads as
    // false.
    {QLatin1String("displaySimulation"), [](Value v, Node n, Pool) { n.displaySimulation = v.wholeNumber() != 0; }},
    {QLatin1String("documentIds"), [](Value v, Node n, Pool p) { n.documentIds = p.idList(v.elements()); }},
    {QLatin1String("documents"), [](Value v, Node n, Pool p) { readDocuments(v.elements(), n, p); }},
    {QLatin1String("dynamicEffect"), [](Value v, Node n, Pool) { n.dynamicEffect = v.wholeNumber(); }},
    // The service names the links "entity" when it sends them and "links" when it takes them.
    {QLatin1String("entity"), [](Value v, Node n, Pool p) { readLinks(v.jsonArray(), n, p); }},
    {QLatin1String("entityHideDate"), [](Value v, Node n, Pool p) { n.entityHideDate = p.dateTime(v.text()); }},
    {QLatin1String("entityHideType"), [](Value v, Node n, Pool) { n.entityHideType = v.wholeNumber(); }},
    {QLatin1String("executeIds"), [](Value v, Node n, Pool p) { n.executeIds = p.idList(v.elements()); }},
    {QLatin1String("finishDate"), [](Value v, Node n, Pool p) { n.finishDate = p.dateTime(v.text()); }},
    {QLatin1String("finishedPercentage"), [](Value v, Node n, Pool) { n.finishedPercentage = v.real(); }},
    {QLatin1String("id"), [](Value v, Node n, Pool) { n.planNodeId = v.wholeNumber(); }},
    {QLatin1String("isDistributed"), [](Value v, Node n, Pool) { n.isDistributed = v.flag(); }},
    {QLatin1String("materialBills"), [](Value v, Node n, Pool p) { readMaterialBills(v.elements(), n, p); }},
    {QLatin1String("milestone"), [](Value v, Node n, Pool) { n.milestone = v.flag(); }},
    {QLatin1String("name"), [](Value v, Node n, Pool p) { n.name = p.shared(v.text()); }},
    {QLatin1String("parentTaskID"), [](Value v, Node n, Pool) { n.parentTaskId = v.wholeNumber(); }},
    {QLatin1String("planId"), [](Value v, Node n, Pool p) { n.planId = p.repeated(v); }},
    {QLatin1String("planName"), [](Value v, Node n, Pool p) { n.planName = p.repeated(v); }},
    {QLatin1String("planWorkload"), [](Value v, Node n, Pool) { n.planWorkload = v.wholeNumber(); }},
    {QLatin1String("predecessors"), [](Value v, Node n, Pool p) { readPredecessors(v.elements(), n, p); }},
    {QLatin1String("projectId"), [](Value v, Node n, Pool p) { n.projectId = p.repeated(v); }},
    {QLatin1String("remark"), [](Value v, Node n, Pool p) { n.remark = p.repeated(v); }},
    {QLatin1String("startDate"), [](Value v, Node n, Pool p) { n.startDate = p.dateTime(v.text()); }},
    {QLatin1String("summary"), [](Value v, Node n, Pool) { n.summary = v.flag(); }},
    {QLatin1String("uniqueId"), [](Value v, Node n, Pool) { n.uniqueId = v.wholeNumber(); }},
    {QLatin1String("updatedAt"), [](Value v, Node n, Pool p) { n.updatedAt = p.repeatedDateTime(v); }},
    {QLatin1String("updatedBy"), [](Value v, Node n, Pool p) { n.updatedBy = p.repeated(v); }},
    {QLatin1String("userIds"), [](Value v, Node n, Pool p) { n.userIds = p.idList(v.elements()); }},
};
// "projectFile", an older key of "projectFileId", is not read: the newer one replaces it in any case, also by
// nothing, and existing services send both.
const KvField<KvPlan> planFields[] = {
    {QLatin1String("_id"), [](Value v, Plan n, Pool) { n.id = v.text(); }},
    {QLatin1String("category"), [](Value v, Plan n, Pool p) { n.category = p.shared(v.text()); }},
    {QLatin1String("createdAt"), [](Value v, Plan n, Pool p) { n.createdAt = p.dateTime(v.text()); }},
    {QLatin1String("createdBy"), [](Value v, Plan n, Pool p) { n.createdBy = p.shared(v.text()); }},
    {QLatin1String("name"), [](Value v, Plan n, Pool) { n.name = v.text(); }},
    {QLatin1String("projectFileId"), [](Value v, Plan n, Pool) { n.projectFileId = v.text(); }},
    {QLatin1String("projectId"), [](Value v, Plan n, Pool p) { n.projectId = p.shared(v.text()); }},
    {QLatin1String("public"), [](Value v, Plan n, Pool) { n.isPublic = v.wholeNumber(); }},
    {QLatin1String("ranges"), [](Value v, Plan n, Pool p) { n.ranges = p.idList(v.elements()); }},
    {QLatin1String("tasks"), [](Value v, Plan n, Pool p) { readTasks(v.jsonArray(), n, p); }},
    {QLatin1String("updatedAt"), [](Value v, Plan n, Pool p) { n.updatedAt = p.dateTime(v.text()); }},
    {QLatin1String("updatedBy"), [](Value v, Plan n, Pool p) { n.updatedBy = p.shared(v.text()); }},
};
// clang-format on

void readPredecessor(const QCborMap& in, KvPlanPredecessor& out, KvDecodePool& pool)
{
    static const auto* const fields = new KvFields(predecessorFields); // for good, as KvFields tells
    fields->read(in, out, pool);
}

void readPredecessors(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool)
{
    static const auto* const empty = new KvPlanPredecessor; // for good, as the fields
    out.predecessors.reserve(out.predecessors.size() + int(in.size()));
    QString successor; // mostly the node itself, for each of its links: one text for all
    for (const QCborValue& element : in) {
        out.predecessors.append(*empty);
        KvPlanPredecessor& link = out.predecessors.last();
        readPredecessor(element.toMap(), link, pool);
        if (!successor.isEmpty() && link.targetPlanNodeUniqueId == successor)
            link.targetPlanNodeUniqueId = successor;
        successor = link.targetPlanNodeUniqueId;
    }
}

void readDocument(const QCborMap& in, KvDocument& out, KvDecodePool& pool)
{
    static const auto* const fields = new KvFields(documentFields); // for good, as KvFields tells
    fields->read(in, out, pool);
}

void readDocuments(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool)
{
    out.documents.clear();
    for (const QCborValue& element : in) {
        out.documents.append(KvDocument());
        readDocument(element.toMap(), out.documents.last(), pool);
    }
}

void readLinks(const QJsonArray& in, KvPlanNode& out, KvDecodePool& pool)
{
    out.links = in.isEmpty() ? KvLinksEntity() : KvPub::jsonArrayToLinksEntity(in);
    pool.shareKeys(out.links);
}

void readMaterialBills(const QCborArray& in, KvPlanNode& out, KvDecodePool& pool)
{
    out.materialBills.clear();
    for (const QCborValue& element : in) {
        const QCborMap bill = element.toMap();
        out.materialBills.insert(pool.shared(bill.value(QLatin1String("rId")).toString()),
                                 pool.repeatedIdList(bill.value(QLatin1String("statusIds"))));
    }
    out.materialBills = pool.shared(out.materialBills);
}

void readTasks(const QJsonArray& in, KvPlan& out, KvDecodePool& pool)
{
    out.planNodes.clear();
    out.planNodes.reserve(in.size());
    const KvPlanNode fresh;
    for (const QJsonValue& task : in) {
        out.planNodes.append(fresh);
        jsonObjectToPlanNode(task.toObject(), out.planNodes.last(), pool);
    }
}

} // namespace

// By look-up, which is quicker than a walk along a table where there are but two keys, as in a bill above.
// A missing unit reads as 0, not as the record's default of days: the sender then gave no unit.
void readDuration(const QCborMap& in, KvDuration& out)
{
    out.value = in.value(QLatin1String("Duration")).toDouble(0.0);
    out.units = in.value(QLatin1String("Units")).toJsonValue().toInt(0);
}

void jsonObjectToPlan(const QJsonObject& in, KvPlan& out)
{
    KvDecodePool pool(in.value(QLatin1String("tasks")).toArray().size());
    jsonObjectToPlan(in, out, pool);
}

void jsonObjectToPlan(const QJsonObject& in, KvPlan& out, KvDecodePool& pool)
{
    static const auto* const fields = new KvFields(planFields); // for good, as KvFields tells
    fields->read(in, out, pool);
}

void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out)
{
    KvDecodePool pool;
    jsonObjectToPlanNode(in, out, pool);
}

void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out, KvDecodePool& pool)
{
    static const auto* const fields = new KvFields(nodeFields); // for good, as KvFields tells
    fields->read(in, out, pool);
    if (out.guid.isEmpty())
        out.guid = out.id;
}

KvPlanPredecessor jsonObjectToPredecessor(const QJsonObject& in)
{
    KvDecodePool pool;
    KvPlanPredecessor out;
    readPredecessor(QCborMap::fromJsonObject(in), out, pool);
    return out;
}

KvDuration jsonObjectToDuration(const QJsonObject& in)
{
    KvDuration out;
    readDuration(QCborMap::fromJsonObject(in), out);
    return out;
}

KvDocument jsonObjectToDocument(const QJsonObject& in)
{
    KvDecodePool pool;
    KvDocument out;
    readDocument(QCborMap::fromJsonObject(in), out, pool);
    return out;
}

} // namespace Kv
