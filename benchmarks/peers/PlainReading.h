#pragma once

#include <model/KvPlanRecords.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// A plan read as one would at first: each key is looked up, and nothing that repeats is shared. It is what
/// the library's own reading is measured against, with Qt's parser and with others.
///
/// @p Object gives the members of a JSON object by key, whatever parser it comes from: text(), number(),
/// real(), flag(), texts() and each(), which calls a function with each object of an array.
template<class Object>
void readPlainly(const Object& in, KvDuration& out)
{
    out.value = in.real("Duration");
    out.units = in.number("Units");
}

template<class Object>
void readPlainly(const Object& in, KvPlanPredecessor& out)
{
    in.member("Lag", [&](const Object& lag) { readPlainly(lag, out.lag); });
    out.sourcePlanNodeId = in.number("SourcePlanNodeID");
    out.sourcePlanNodeName = in.text("SourcePlanNodeName");
    out.sourcePlanNodeUniqueId = in.number("SourcePlanNodeUniqueID");
    out.targetPlanNodeId = in.number("TargetPlanNodeID");
    out.targetPlanNodeName = in.text("TargetPlanNodeName");
    out.targetPlanNodeUniqueId = in.text("TargetPlanNodeUniqueID");
    out.type = in.number("Type");
}

template<class Object>
void readPlainly(const Object& in, KvPlanNode& out)
{
    const auto date = [&](const char* key) {
        return KvPub::getDateTimeByQString(in.text(key));
    };
    out.id = in.text("_id");
    out.guid = in.text("GUID");
    if (out.guid.isEmpty())
        out.guid = out.id;
    out.planId = in.text("planId");
    out.planName = in.text("planName");
    out.projectId = in.text("projectId");
    out.planNodeId = in.number("id");
    out.category = in.text("category");
    out.uniqueId = in.number("uniqueId");
    out.parentTaskId = in.number("parentTaskID");
    out.name = in.text("name");
    out.milestone = in.flag("milestone");
    out.summary = in.flag("summary");
    out.isDistributed = in.flag("isDistributed");
    out.remark = in.text("remark");
    out.createdBy = in.text("createdBy");
    out.updatedBy = in.text("updatedBy");
    out.createdAt = date("createdAt");
    out.updatedAt = date("updatedAt");
    out.startDate = date("startDate");
    out.finishDate = date("finishDate");
    out.actualStartDate = date("actualStartDate");
    out.actualFinishDate = date("actualFinishDate");
    out.displaySimulation = in.number("displaySimulation") != 0;
    out.finishedPercentage = in.real("finishedPercentage");
    out.planWorkload = in.number("planWorkload");
    out.actualWorkload = in.number("actualWorkload");
    out.dynamicEffect = in.number("dynamicEffect");
    out.entityHideDate = date("entityHideDate");
    out.entityHideType = in.number("entityHideType");
    out.userIds = in.texts("userIds");
    out.executeIds = in.texts("executeIds");
    out.cooperateIds = in.texts("cooperateIds");
    out.documentIds = in.texts("documentIds");
    in.each("predecessors", [&](const Object& link) {
        out.predecessors.append(KvPlanPredecessor());
        readPlainly(link, out.predecessors.last());
    });
    in.each("entity", [&](const Object& link) { out.links[link.text("modelId")] = link.texts("entityIds"); });
    in.each("materialBills",
            [&](const Object& bill) { out.materialBills.insert(bill.text("rId"), bill.texts("statusIds")); });
}

template<class Object>
void readPlainly(const Object& in, KvPlan& out)
{
    out.id = in.text("_id");
    out.name = in.text("name");
    out.category = in.text("category");
    out.projectId = in.text("projectId");
    in.each("tasks", [&](const Object& task) {
        out.planNodes.append(KvPlanNode());
        readPlainly(task, out.planNodes.last());
    });
}

/// The members of an object of Qt's own parser.
class QtMembers
{
public:
    explicit QtMembers(const QJsonObject& object)
        : m_object(object)
    {
    }

    QString text(const char* key) const { return value(key).toString(); }
    int number(const char* key) const { return value(key).toInt(); }
    double real(const char* key) const { return value(key).toDouble(); }
    bool flag(const char* key) const { return value(key).toBool(); }

    QStringList texts(const char* key) const
    {
        QStringList list;
        const QJsonArray array = value(key).toArray();
        for (const QJsonValue element : array)
            list.append(element.toString());
        return list;
    }

    template<class Read>
    void member(const char* key, Read read) const
    {
        read(QtMembers(value(key).toObject()));
    }

    template<class Read>
    void each(const char* key, Read read) const
    {
        const QJsonArray array = value(key).toArray();
        for (const QJsonValue element : array)
            read(QtMembers(element.toObject()));
    }

private:
    QJsonValue value(const char* key) const { return m_object.value(QLatin1String(key)); }

    QJsonObject m_object;
};
