#include "../access/Caller.h"
#include "../filters/FilterText.h"
#include "../json/JsonWriter.h"
#include "../records/FieldReader.h"
#include "../records/PlanInput.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

namespace PlanService {

namespace {

constexpr int largestState = 64 * 1024;

const QVector<FilterField>& taskStateFields()
{
    static const QVector<FilterField> fields{{"_id", FieldKind::Text, "id"},
                                             {"planId", FieldKind::Text, "planId"},
                                             {"taskId", FieldKind::Text, "taskId"},
                                             {"responseId", FieldKind::Text, "responseId"},
                                             {"state", FieldKind::Whole, "state"}};
    return fields;
}

[[noreturn]] void refuse(const char* code, const QString& message, const char* key)
{
    throw ApiError(400, QLatin1String(code), message, QLatin1String(key));
}

/// The state that the task has, or a new one of it. A state belongs where its task does.
TaskStateRecord stateOf(const Call& call, const QString& taskId)
{
    const std::optional<Ownership> owner = call.store.planNodeOwnership(taskId);
    const std::optional<PlanNodeRecord> task = call.store.planNode(taskId);
    if (!owner || !task) {
        throw ApiError(404, QStringLiteral("taskNotFound"),
                       QStringLiteral("there is no plan node '%1'").arg(shortened(taskId)),
                       QStringLiteral("taskId"));
    }
    call.caller.requireRead(*owner); // the reply shows it
    call.caller.requireEdit(owner->projectId, owner->category);
    const std::optional<TaskStateRecord> stored = call.store.taskState(taskId);
    if (stored) {
        return *stored;
    }
    TaskStateRecord fresh;
    fresh.id = newPlanId();
    fresh.projectId = task->projectId;
    fresh.planId = task->planId;
    fresh.taskId = taskId;
    return fresh;
}

void requireSame(const char* key, const QString& sent, const QString& ofTask)
{
    if (!sent.isEmpty() && sent != ofTask) {
        refuse("otherPlace",
               QStringLiteral("'%1' is '%2', and the task is not there")
                   .arg(QLatin1String(key), shortened(sent)),
               key);
    }
}

Reply stateReply(const TaskStateRecord& state)
{
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(state.id);
    json.key("planId").text(state.planId);
    json.key("taskId").text(state.taskId);
    json.key("responseId").text(state.responseId);
    json.key("state").number(state.state);
    json.endObject();
    return {200, {json.take()}, {}, {}};
}

} // namespace

Reply getTaskStates(const Call& call)
{
    TaskStateQuery query;
    query.projectId = call.parameter("projectId");
    query.visible = call.caller.visibilityIn(query.projectId);
    query.where = readFilter(call.query.value(QStringLiteral("where")), taskStateFields());
    return listReply(
        call, [&] { return call.store.taskStateListJson(query); },
        [&] { return call.store.taskStateCount(query); });
}

Reply postTaskState(const Call& call)
{
    const QJsonObject body = call.bodyObject(largestState);
    const FieldReader in(body);
    const QString projectId = in.textOrNull("projectId");
    const QString planId = in.textOrNull("planId");
    const QString taskId = in.textOrNull("taskId");
    const QString responseId = in.textOrNull("responseId");
    if (taskId.isEmpty()) {
        refuse("missingValue", QStringLiteral("'taskId' has to name the plan node that the state is of"),
               "taskId");
    }
    Transaction transaction(call.store);
    TaskStateRecord state = stateOf(call, taskId);
    requireSame("projectId", projectId, state.projectId);
    requireSame("planId", planId, state.planId);
    if (!responseId.isEmpty() && !call.store.hasResponse(taskId, responseId)) {
        refuse("responseNotFound", QStringLiteral("the task has no response '%1'").arg(shortened(responseId)),
               "responseId");
    }
    // The same request again changes nothing; another response begins anew.
    if (state.responseId != responseId) {
        state.responseId = responseId;
        state.state = 0;
    }
    call.store.putTaskState(state);
    transaction.commit();
    return stateReply(state);
}

Reply putTaskState(const Call& call)
{
    const QJsonObject body = call.bodyObject(largestState);
    const FieldReader in(body);
    const QString taskId = call.parameter("taskId");
    const QString sentId = in.textOrNull("taskId");
    if (!sentId.isEmpty() && sentId != taskId) {
        refuse("otherTask",
               QStringLiteral("'taskId' is '%1', the path names another task").arg(shortened(sentId)),
               "taskId");
    }
    const std::optional<int> code = in.whole("state");
    if (!code) {
        refuse("missingValue", QStringLiteral("'state' has to be the state's code"), "state");
    }
    Transaction transaction(call.store);
    TaskStateRecord state = stateOf(call, taskId);
    state.state = *code;
    call.store.putTaskState(state);
    transaction.commit();
    return stateReply(state);
}

} // namespace PlanService
