#include "PlanNodeInput.h"

#include "../http/Reply.h"
#include "../json/JsonWriter.h"
#include "FieldReader.h"

#include <QJsonDocument>
#include <QSet>

namespace PlanService {

namespace {

constexpr int longestId = 100;

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
int displaySimulation(const FieldReader& node, const QJsonObject& object)
{
    return object.value(QLatin1String("displaySimulation")).isDouble()
               ? (node.whole("displaySimulation").value_or(0) != 0 ? 1 : 0)
               : (node.flag("displaySimulation").value_or(true) ? 1 : 0);
}

class NodeWriter
{
public:
    NodeWriter(const PlanRecord& plan)
        : m_plan(plan)
    {
    }

    /// Fills @p record, whose id and row number are set, from the client's object.
    void write(PlanNodeRecord& record, const FieldReader& in, const QJsonObject& object, const Stamp& stamp)
    {
        record.planId = m_plan.id;
        record.projectId = m_plan.projectId;
        record.category = in.text("category");
        if (record.category.isEmpty()) {
            record.category = m_plan.category;
        }
        record.name = in.text("name");
        record.rowNumber = in.whole("id").value_or(record.rowNumber);
        record.uniqueId = in.whole("uniqueId").value_or(-1);
        record.parentTaskId = in.whole("parentTaskID").value_or(-1);
        record.startDate = in.date("startDate");
        record.finishDate = in.date("finishDate");
        record.actualStartDate = in.date("actualStartDate");
        record.actualFinishDate = in.date("actualFinishDate");
        record.createdAt = stamp.createdAt;
        record.createdBy = stamp.createdBy;
        record.updatedAt = stamp.updatedAt;

        m_json.beginObject();
        m_json.key("_id").text(record.id);
        m_json.key("category").text(record.category);
        const QString guid = in.text("GUID");
        if (!guid.isEmpty() && guid != record.id) {
            m_json.key("GUID").text(guid);
        }
        m_json.key("planId").text(record.planId);
        m_json.key("projectId").text(record.projectId);
        m_json.key("id").number(record.rowNumber);
        m_json.key("uniqueId").number(record.uniqueId);
        m_json.key("parentTaskID").number(record.parentTaskId);
        m_json.key("name").text(record.name);
        m_json.key("isDistributed").flag(in.flag("isDistributed").value_or(false));
        m_json.key("remark").text(in.text("remark"));
        // A client leaves these four out where they are not set, and would read a missing one as 0.
        m_json.key("finishedPercentage").real(in.number("finishedPercentage").value_or(-1));
        m_json.key("createdBy").text(stamp.createdBy);
        m_json.key("updatedBy").text(stamp.updatedBy);
        m_json.key("updatedAt").text(stamp.updatedAt);
        m_json.key("createdAt").text(stamp.createdAt);
        m_json.key("startDate").text(record.startDate);
        m_json.key("finishDate").text(record.finishDate);
        m_json.key("actualStartDate").text(record.actualStartDate);
        m_json.key("actualFinishDate").text(record.actualFinishDate);
        m_json.key("dynamicEffect").number(in.whole("dynamicEffect").value_or(-1));
        m_json.key("displaySimulation").number(displaySimulation(in, object));
        m_json.key("entityHideDate").text(in.date("entityHideDate"));
        m_json.key("entityHideType").number(in.whole("entityHideType").value_or(0));
        m_json.key("planWorkload").number(in.whole("planWorkload").value_or(-1));
        m_json.key("actualWorkload").number(in.whole("actualWorkload").value_or(-1));
        m_json.key("predecessors");
        writePredecessors(m_json, in);
        // Comes in as "links" and goes out as "entity".
        m_json.key("entity");
        writeNamedLists(m_json, in, "links", "modelId", "entityIds");
        m_json.key("userIds").texts(in.texts("userIds"));
        m_json.key("executeIds").texts(in.texts("executeIds"));
        m_json.key("cooperateIds").texts(in.texts("cooperateIds"));
        m_json.key("documentIds").texts(in.texts("documentIds"));
        m_json.key("materialBills");
        writeNamedLists(m_json, in, "materialBills", "rId", "statusIds");
        m_json.endObject();
        record.document = m_json.take();
    }

private:
    const PlanRecord& m_plan;
    JsonWriter m_json;
};

QJsonValue parsedNode(const PlanInput& input, int index)
{
    const JsonSlice& slice = input.nodes.at(index);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(textOf(input.text, slice), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        // A number or a text is no document either; which of the two it was does not matter to the client.
        throw ApiError(400, QStringLiteral("badJson"),
                       QStringLiteral("'projectData[%1]' is not a well-formed JSON object, see byte %2")
                           .arg(index)
                           .arg(slice.begin + error.offset),
                       QStringLiteral("projectData[%1]").arg(index));
    }
    return document.object();
}

QString sentId(const FieldReader& in, QSet<QString>& seen)
{
    const QString id = in.text("_id");
    if (id.size() > longestId) {
        in.refuse("_id", QStringLiteral("badId"),
                  QStringLiteral("'%1' has %2 characters, at most %3 are accepted")
                      .arg(in.pathOf("_id"))
                      .arg(id.size())
                      .arg(longestId));
    }
    if (!id.isEmpty() && seen.contains(id)) {
        in.refuse("_id", QStringLiteral("duplicateId"),
                  QStringLiteral("'%1' is the id of an earlier node too: '%2'").arg(in.pathOf("_id"), id));
    }
    seen.insert(id);
    return id;
}

Stamp stampOf(const PlanNodeRecord& node)
{
    const QJsonObject object = QJsonDocument::fromJson(node.document).object();
    return {node.createdAt, node.createdBy, node.updatedAt,
            object.value(QLatin1String("updatedBy")).toString()};
}

QByteArray beginningWith(const QString& id)
{
    JsonWriter json;
    json.beginObject().key("_id").text(id);
    return json.take();
}

} // namespace

NodeIds::NodeIds()
    : m_prefix(newPlanId().left(16))
{
}

QString NodeIds::next()
{
    return m_prefix + QStringLiteral("%1").arg(++m_number, 8, 16, QLatin1Char('0'));
}

QVector<PlanNodeRecord> readPlanNodes(const PlanInput& input, const PlanRecord& plan, const QString& user,
                                      NodeIds& ids, const FindNode& findStored)
{
    QVector<PlanNodeRecord> nodes;
    nodes.reserve(input.nodes.size());
    NodeWriter writer(plan);
    QSet<QString> seen;
    const QString now = siteNow();
    const Stamp fresh{now, user, now, user};
    for (int i = 0; i < input.nodes.size(); ++i) {
        const QJsonValue element = parsedNode(input, i);
        const QJsonObject object = element.toObject();
        const FieldReader in(nullptr, "projectData", i, element);
        PlanNodeRecord node;
        node.id = sentId(in, seen);
        node.rowNumber = i + 1;
        const auto stored = node.id.isEmpty() || !findStored ? std::nullopt : findStored(node.id);
        if (node.id.isEmpty()) {
            node.id = ids.next();
        }
        if (!stored) {
            writer.write(node, in, object, fresh);
        } else {
            Stamp stamp = stampOf(*stored);
            writer.write(node, in, object, stamp);
            if (node.document != stored->document) {
                stamp.updatedAt = now;
                stamp.updatedBy = user;
                node.rowNumber = i + 1;
                writer.write(node, in, object, stamp);
            }
        }
        nodes.append(node);
    }
    return nodes;
}

void giveId(PlanNodeRecord& node, const QString& id)
{
    node.document.replace(0, beginningWith(node.id).size(), beginningWith(id));
    node.id = id;
}

QStringList categoriesOf(const QVector<PlanNodeRecord>& nodes)
{
    QSet<QString> categories;
    for (const PlanNodeRecord& node : nodes) {
        categories.insert(node.category);
    }
    return {categories.begin(), categories.end()};
}

} // namespace PlanService
