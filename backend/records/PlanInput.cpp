#include "PlanInput.h"

#include "../http/Reply.h"
#include "../json/ClientJson.h"
#include "../json/JsonWriter.h"
#include "FieldReader.h"
#include "SiteClock.h"

#include <QJsonDocument>
#include <QRandomGenerator>

#include <array>

namespace PlanService {

namespace {

constexpr int publicNotSet = 100; // a client leaves this value out

ApiError badJson(int position, const char* wanted = "object")
{
    return {400, QStringLiteral("badJson"),
            QStringLiteral("the body is not a well-formed JSON %1, see byte %2")
                .arg(QLatin1String(wanted))
                .arg(position)};
}

void requireNotTooMany(const PlanInput& input, const QString& what)
{
    if (input.nodes.size() > mostNodes) {
        throw ApiError(413, QStringLiteral("tooManyNodes"),
                       QStringLiteral("%1 has %2 nodes, a request takes at most %3")
                           .arg(what)
                           .arg(input.nodes.size())
                           .arg(mostNodes),
                       QLatin1String(input.list));
    }
}

QJsonObject parsedObject(const QByteArray& json, int position)
{
    QJsonParseError error;
    const QJsonDocument document = clientDocument(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        throw badJson(position + error.offset);
    }
    return document.object();
}

/// A key without escapes is told by its text; one with escapes is read.
bool isNodesKey(const QByteArray& key)
{
    if (!key.contains('\\')) {
        return key == "\"projectData\"";
    }
    return QJsonDocument::fromJson("[" + key + "]").array().at(0).toString() == QLatin1String("projectData");
}

PlanInput split(const QByteArray& body)
{
    PlanInput input;
    input.text = body;
    QByteArray rest = "{";
    const QVector<JsonMember> members = splitObject(body);
    for (const JsonMember& member : members) {
        if (isNodesKey(textOf(body, member.key))) {
            if (body.at(member.value.begin) != '[') {
                throw ApiError(400, QStringLiteral("wrongType"),
                               QStringLiteral("'projectData' has to be a list"),
                               QStringLiteral("projectData"));
            }
            input.hasNodes = true;
            input.nodes = splitArray(body, member.value);
            continue;
        }
        rest += rest.size() > 1 ? "," : "";
        rest += textOf(body, member.key) + ':' + textOf(body, member.value);
    }
    input.plan = parsedObject(rest + '}', 0);
    return input;
}

void writeDocument(PlanRecord& plan, const QJsonObject& values, const Stamp& stamp)
{
    const FieldReader in(values);
    // What is stored already stays, however long it is.
    if (in.text("category") != plan.category) {
        plan.category = in.indexedName("category");
    }
    plan.name = in.text("name");
    plan.createdAt = stamp.createdAt;
    plan.createdBy = stamp.createdBy;
    plan.updatedAt = stamp.updatedAt;
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(plan.id);
    json.key("category").text(plan.category);
    json.key("projectId").text(plan.projectId);
    json.key("name").text(plan.name);
    json.key("createdAt").text(stamp.createdAt);
    json.key("createdBy").text(stamp.createdBy);
    json.key("updatedAt").text(stamp.updatedAt);
    json.key("updatedBy").text(stamp.updatedBy);
    json.key("projectFileId").text(in.text("projectFileId"));
    json.key("public").number(in.whole("public").value_or(publicNotSet));
    json.key("ranges").texts(in.texts("ranges"));
    json.endObject();
    plan.document = json.take();
}

} // namespace

PlanInput readPlanInput(const QByteArray& body)
{
    PlanInput input;
    try {
        input = split(body);
    } catch (const JsonSplitError& error) {
        throw badJson(error.position());
    }
    requireNotTooMany(input, QStringLiteral("'projectData'"));
    return input;
}

PlanInput readNodeList(const QByteArray& body)
{
    PlanInput input;
    input.text = body;
    input.hasNodes = true;
    input.list = "";
    try {
        input.nodes = splitArray(body, {0, body.size()});
    } catch (const JsonSplitError& error) {
        throw badJson(error.position(), "array");
    }
    requireNotTooMany(input, QStringLiteral("the body"));
    return input;
}

PlanInput readSingleNode(const QByteArray& body)
{
    if (body.size() > largestSingleNode) {
        throw ApiError(413, QStringLiteral("bodyTooLarge"),
                       QStringLiteral("the body has %1 bytes, at most %2 are accepted here")
                           .arg(body.size())
                           .arg(largestSingleNode));
    }
    PlanInput input;
    input.text = body;
    input.hasNodes = true;
    input.list = nullptr;
    input.nodes = {{0, body.size()}};
    return input;
}

QString pathOfNode(const PlanInput& input, int index)
{
    return input.list == nullptr ? QString()
                                 : QStringLiteral("%1[%2]").arg(QLatin1String(input.list)).arg(index);
}

QJsonObject parsedNode(const PlanInput& input, int index)
{
    const JsonSlice& slice = input.nodes.at(index);
    QJsonParseError error;
    const QJsonDocument document = clientDocument(textOf(input.text, slice), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        // A number or a text is no document either; which of the two it was does not matter to the client.
        const QString path = pathOfNode(input, index);
        throw ApiError(400, QStringLiteral("badJson"),
                       QStringLiteral("%1 is not a well-formed JSON object, see byte %2")
                           .arg(path.isEmpty() ? QStringLiteral("the body")
                                               : QLatin1Char('\'') + path + QLatin1Char('\''))
                           .arg(slice.begin + error.offset),
                       path);
    }
    return document.object();
}

PlanRecord newPlan(const QJsonObject& input, const QString& user)
{
    PlanRecord plan;
    plan.id = newPlanId();
    plan.projectId = FieldReader(input).indexedName("projectId");
    if (plan.projectId.isEmpty()) {
        throw ApiError(400, QStringLiteral("missingValue"),
                       QStringLiteral("'projectId' has to name the project that the plan belongs to"),
                       QStringLiteral("projectId"));
    }
    const QString now = siteStamp();
    writeDocument(plan, input, {now, user, now, user});
    return plan;
}

PlanRecord changedPlan(const PlanRecord& plan, const QJsonObject& input, const QString& user)
{
    const FieldReader in(input);
    if (in.has("projectId") && in.text("projectId") != plan.projectId) {
        in.refuse("projectId", QStringLiteral("projectFixed"),
                  QStringLiteral("a plan stays in its project; copy its nodes into a new one instead"));
    }
    const QJsonObject before = QJsonDocument::fromJson(plan.document).object();
    QJsonObject values = before;
    for (const char* key : {"category", "name", "projectFileId", "public", "ranges"}) {
        if (in.has(key)) {
            values.insert(QLatin1String(key), input.value(QLatin1String(key)));
        }
    }
    PlanRecord changed = plan;
    const bool differs = values != before;
    writeDocument(changed, values,
                  {plan.createdAt, plan.createdBy, differs ? siteStamp(plan.updatedAt) : plan.updatedAt,
                   differs ? user : before.value(QLatin1String("updatedBy")).toString()});
    return changed;
}

PlanRecord copiedPlan(const PlanRecord& plan, const QString& name, const QString& user)
{
    QJsonObject values = QJsonDocument::fromJson(plan.document).object();
    values.insert(QLatin1String("name"), name);
    PlanRecord copy = plan;
    copy.id = newPlanId();
    const QString now = siteStamp();
    writeDocument(copy, values, {now, user, now, user});
    return copy;
}

QString newPlanId()
{
    std::array<quint32, 3> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    QString id;
    for (const quint32 word : words) {
        id += QStringLiteral("%1").arg(word, 8, 16, QLatin1Char('0'));
    }
    return id;
}

} // namespace PlanService
