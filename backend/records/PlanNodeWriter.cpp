#include "PlanNodeWriter.h"

#include "../json/JsonWriter.h"
#include "FieldReader.h"
#include "PlanInput.h"

#include <QJsonDocument>

namespace PlanService {

namespace {

void writePredecessors(JsonWriter& json, const FieldReader& node)
{
    const QJsonArray list = node.array("predecessors");
    json.beginArray();
    for (int i = 0; i < list.size(); ++i) {
        const FieldReader in(&node, "predecessors", i, list.at(i));
        const FieldReader lag(&in, "Lag");
        json.beginObject();
        json.key("SourcePlanNodeName").text(in.text("SourcePlanNodeName"));
        json.key("TargetPlanNodeName").text(in.text("TargetPlanNodeName"));
        json.key("Lag").beginObject();
        json.key("Duration").real(lag.number("Duration").value_or(0));
        json.key("Units").number(lag.whole("Units").value_or(2));
        json.endObject();
        json.key("Type").number(in.whole("Type").value_or(0));
        json.key("SourcePlanNodeUniqueID").number(in.whole("SourcePlanNodeUniqueID").value_or(0));
        // Text on this side of the link, a number on the other: so the format has it.
        json.key("TargetPlanNodeUniqueID").text(in.text("TargetPlanNodeUniqueID"));
        json.key("SourcePlanNodeID").number(in.whole("SourcePlanNodeID").value_or(0));
        json.key("TargetPlanNodeID").number(in.whole("TargetPlanNodeID").value_or(0));
        json.endObject();
    }
    json.endArray();
}

/// A list of objects that each hold a name and a list of texts.
void writeNamedLists(JsonWriter& json, const FieldReader& node, const char* list, const char* name,
                     const char* texts)
{
    const QJsonArray elements = node.array(list);
    json.beginArray();
    for (int i = 0; i < elements.size(); ++i) {
        const FieldReader in(&node, list, i, elements.at(i));
        json.beginObject();
        json.key(name).text(in.text(name));
        json.key(texts).texts(in.texts(texts));
        json.endObject();
    }
    json.endArray();
}

/// Clients send a boolean, and get a number; both come in.
int displaySimulation(const FieldReader& node)
{
    return node.hasNumber("displaySimulation") ? (node.whole("displaySimulation").value_or(0) != 0 ? 1 : 0)
                                               : (node.flag("displaySimulation").value_or(true) ? 1 : 0);
}

} // namespace

void writePlanNode(PlanNodeRecord& node, const FieldReader& in, const Stamp& stamp)
{
    const QString category = in.text("category");
    // What is stored already stays, however long it is.
    if (!category.isEmpty() && category != node.category) {
        node.category = in.indexedName("category");
    }
    node.name = in.text("name");
    node.rowNumber = in.whole("id").value_or(node.rowNumber);
    node.uniqueId = in.whole("uniqueId").value_or(-1);
    node.parentTaskId = in.whole("parentTaskID").value_or(-1);
    node.startDate = in.date("startDate");
    node.finishDate = in.date("finishDate");
    node.actualStartDate = in.date("actualStartDate");
    node.actualFinishDate = in.date("actualFinishDate");
    node.createdAt = stamp.createdAt;
    node.createdBy = stamp.createdBy;
    node.updatedAt = stamp.updatedAt;
    const QStringList responsible = in.texts("userIds");
    const QStringList executing = in.texts("executeIds");
    const QStringList cooperating = in.texts("cooperateIds");
    node.people = peopleText(responsible + executing + cooperating);

    constexpr int usual = 1300;
    JsonWriter json(usual);
    json.beginObject();
    json.key("_id").text(node.id);
    json.key("category").text(node.category);
    const QString guid = in.text("GUID");
    if (!guid.isEmpty() && guid != node.id) {
        json.key("GUID").text(guid);
    }
    json.key("planId").text(node.planId);
    json.key("projectId").text(node.projectId);
    json.key("id").number(node.rowNumber);
    json.key("uniqueId").number(node.uniqueId);
    json.key("parentTaskID").number(node.parentTaskId);
    json.key("name").text(node.name);
    json.key("isDistributed").flag(in.flag("isDistributed").value_or(false));
    json.key("remark").text(in.text("remark"));
    // A client leaves these four out where they are not set, and would read a missing one as 0.
    json.key("finishedPercentage").real(in.number("finishedPercentage").value_or(-1));
    json.key("createdBy").text(stamp.createdBy);
    json.key("updatedBy").text(stamp.updatedBy);
    json.key("updatedAt").text(stamp.updatedAt);
    json.key("createdAt").text(stamp.createdAt);
    json.key("startDate").text(node.startDate);
    json.key("finishDate").text(node.finishDate);
    json.key("actualStartDate").text(node.actualStartDate);
    json.key("actualFinishDate").text(node.actualFinishDate);
    json.key("dynamicEffect").number(in.whole("dynamicEffect").value_or(-1));
    json.key("displaySimulation").number(displaySimulation(in));
    json.key("entityHideDate").text(in.date("entityHideDate"));
    json.key("entityHideType").number(in.whole("entityHideType").value_or(0));
    json.key("planWorkload").number(in.whole("planWorkload").value_or(-1));
    json.key("actualWorkload").number(in.whole("actualWorkload").value_or(-1));
    json.key("predecessors");
    writePredecessors(json, in);
    // Comes in as "links" and goes out as "entity".
    json.key("entity");
    writeNamedLists(json, in, "links", "modelId", "entityIds");
    json.key("userIds").texts(responsible);
    json.key("executeIds").texts(executing);
    json.key("cooperateIds").texts(cooperating);
    json.key("documentIds").texts(in.texts("documentIds"));
    json.key("materialBills");
    writeNamedLists(json, in, "materialBills", "rId", "statusIds");
    json.endObject();
    node.document = json.take();
}

Stamp stampOf(const PlanNodeRecord& node)
{
    const QJsonObject object = QJsonDocument::fromJson(node.document).object();
    return {node.createdAt, node.createdBy, node.updatedAt,
            object.value(QLatin1String("updatedBy")).toString()};
}

} // namespace PlanService
