#include "PlainCodec.h"

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

namespace PlainCodec {

namespace {

class Object
{
public:
    explicit Object(const QJsonObject& object)
        : m_object(object)
    {
    }

    QJsonValue at(const char* key) const { return m_object.value(QLatin1String(key)); }
    QString text(const char* key) const { return at(key).toString(); }
    int number(const char* key) const { return at(key).toInt(0); }
    double real(const char* key) const { return at(key).toDouble(0.0); }
    bool flag(const char* key) const { return at(key).toBool(false); }
    QJsonArray array(const char* key) const { return at(key).toArray(); }
    Object object(const char* key) const { return Object(at(key).toObject()); }
    QDateTime date(const char* key) const { return KvPub::getDateTimeByQString(text(key)); }
    QDateTime exchangeDate(const char* key) const
    {
        return QDateTime::fromString(text(key), QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    }
    QStringList ids(const char* key) const
    {
        return KvPub::getStrListFromVarList(array(key).toVariantList());
    }
    KvDuration duration(const char* key) const
    {
        const Object in = object(key);
        return {in.real("Duration"), in.number("Units")};
    }

private:
    QJsonObject m_object;
};

KvPlanPredecessor predecessor(const Object& in)
{
    KvPlanPredecessor out;
    out.sourcePlanNodeName = in.text("SourcePlanNodeName");
    out.targetPlanNodeName = in.text("TargetPlanNodeName");
    out.lag = in.duration("Lag");
    out.type = in.number("Type");
    out.sourcePlanNodeUniqueId = in.number("SourcePlanNodeUniqueID");
    out.targetPlanNodeUniqueId = in.text("TargetPlanNodeUniqueID");
    out.sourcePlanNodeId = in.number("SourcePlanNodeID");
    out.targetPlanNodeId = in.number("TargetPlanNodeID");
    return out;
}

KvPlanPredecessor exchangePredecessor(const Object& in)
{
    KvPlanPredecessor out;
    out.sourcePlanNodeName = in.text("SourceTaskName");
    out.targetPlanNodeName = in.text("TargetTaskName");
    out.lag = in.duration("Lag");
    out.type = in.number("Type");
    out.sourcePlanNodeUniqueId = in.number("SourceTaskUniqueID");
    out.targetPlanNodeUniqueId = QString(QLatin1Char(static_cast<char>(in.number("TargetTaskUniqueID"))));
    out.sourcePlanNodeId = in.number("SourceTaskID");
    out.targetPlanNodeId = in.number("TargetTaskID");
    return out;
}

KvDocument document(const Object& in)
{
    KvDocument out;
    out.id = in.text("_id");
    out.name = in.text("name");
    out.fileSize = in.number("fileSize");
    out.suffix = in.text("suffix");
    out.createdAt = in.text("createdAt");
    out.createdBy = in.text("createdBy");
    return out;
}

} // namespace

void readPlan(const QJsonObject& json, KvPlan& out)
{
    const Object in(json);
    out.id = in.text("_id");
    out.category = in.text("category");
    out.projectId = in.text("projectId");
    out.name = in.text("name");
    out.projectFileId = in.text("projectFile");
    out.createdAt = in.date("createdAt");
    out.createdBy = in.text("createdBy");
    out.updatedAt = in.date("updatedAt");
    out.updatedBy = in.text("updatedBy");
    out.projectFileId = in.text("projectFileId");
    out.isPublic = in.number("public");
    out.ranges = in.ids("ranges");
    out.planNodes.clear();
    const QJsonArray tasks = in.array("tasks");
    for (const QJsonValue& task : tasks) {
        KvPlanNode node;
        readNode(task.toObject(), node);
        out.planNodes.append(node);
    }
}

void readNode(const QJsonObject& json, KvPlanNode& out)
{
    const Object in(json);
    out.id = in.text("_id");
    out.category = in.text("category");
    out.guid = in.text("GUID");
    if (out.guid.isEmpty())
        out.guid = out.id;
    out.planId = in.text("planId");
    out.planName = in.text("planName");
    out.projectId = in.text("projectId");
    out.planNodeId = in.number("id");
    out.uniqueId = in.number("uniqueId");
    out.parentTaskId = in.number("parentTaskID");
    out.name = in.text("name");
    out.isDistributed = in.flag("isDistributed");
    out.remark = in.text("remark");
    out.finishedPercentage = in.real("finishedPercentage");
    out.createdBy = in.text("createdBy");
    out.updatedBy = in.text("updatedBy");
    out.updatedAt = in.date("updatedAt");
    out.createdAt = in.date("createdAt");
    out.startDate = in.date("startDate");
    out.finishDate = in.date("finishDate");
    out.actualStartDate = in.date("actualStartDate");
    out.actualFinishDate = in.date("actualFinishDate");
    out.milestone = in.flag("milestone");
    out.summary = in.flag("summary");
    out.dynamicEffect = in.number("dynamicEffect");
    out.displaySimulation = in.number("displaySimulation") != 0;
    out.entityHideDate = in.date("entityHideDate");
    out.entityHideType = in.number("entityHideType");
    out.planWorkload = in.number("planWorkload");
    out.actualWorkload = in.number("actualWorkload");
    const QJsonArray predecessors = in.array("predecessors");
    for (const QJsonValue& link : predecessors)
        out.predecessors.append(predecessor(Object(link.toObject())));
    out.links = KvPub::jsonArrayToLinksEntity(in.array("entity"));
    out.userIds = in.ids("userIds");
    out.executeIds = in.ids("executeIds");
    out.cooperateIds = in.ids("cooperateIds");
    out.documentIds = in.ids("documentIds");
    out.documents.clear();
    const QJsonArray documents = in.array("documents");
    for (const QJsonValue& element : documents)
        out.documents.append(document(Object(element.toObject())));
    out.materialBills.clear();
    const QJsonArray bills = in.array("materialBills");
    for (const QJsonValue& element : bills) {
        const Object bill(element.toObject());
        out.materialBills.insert(bill.text("rId"), bill.ids("statusIds"));
    }
}

void readExchangePlan(const QJsonObject& json, KvPlan& out)
{
    const Object in(json);
    out.name = in.text("Name");
    out.mppFilePath = in.text("MPPFilePath");
    const QJsonArray tasks = in.array("AllTasks");
    for (const QJsonValue& task : tasks) {
        KvPlanNode node;
        readExchangeTask(task.toObject(), node);
        out.planNodes.append(node);
    }
}

void readExchangeTask(const QJsonObject& json, KvPlanNode& out)
{
    const Object in(json);
    out.parentTaskId = in.number("ParentTask");
    out.guid = in.text("GUID");
    out.planNodeId = in.number("ID");
    out.uniqueId = in.number("UniqueID");
    out.name = in.text("Name");
    out.durationText = in.text("DurationText");
    out.milestone = in.flag("Milestone");
    out.summary = in.flag("Summary");
    out.notes = QString(QChar(in.flag("Notes") ? 1 : 0));
    out.startText = in.text("StartText");
    out.type = in.number("Type");
    out.duration = in.duration("Duration");
    out.finishSlack = in.duration("FinishSlack");
    out.finishText = in.text("FinishText");
    out.startDate = in.exchangeDate("Start");
    out.finishDate = in.exchangeDate("Finish");
    const QJsonArray predecessors = in.array("Predecessors");
    for (const QJsonValue& link : predecessors)
        out.predecessors.append(exchangePredecessor(Object(link.toObject())));
}

} // namespace PlainCodec
