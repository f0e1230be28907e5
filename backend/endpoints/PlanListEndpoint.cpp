#include "../access/Caller.h"
#include "../filters/FilterText.h"
#include "../filters/PlanFields.h"
#include "../json/JsonWriter.h"
#include "../records/FieldReader.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

namespace PlanService {

namespace {

PlanQuery queryOf(const Call& call)
{
    PlanQuery query;
    query.projectId = call.parameter("projectId");
    query.visible = call.caller.visibilityIn(query.projectId);
    const QString category = call.query.value(QStringLiteral("category"));
    if (!category.isEmpty()) {
        query.category = category;
    }
    query.where = readFilter(call.query.value(QStringLiteral("where")), planFields());
    query.skip = call.queryNumber("skip", 0);
    query.limit = call.queryNumber("limit", -1);
    return query;
}

} // namespace

Reply getPlans(const Call& call)
{
    const PlanQuery query = queryOf(call);
    return listReply(
        call, [&] { return call.store.planListJson(query); }, [&] { return call.store.planCount(query); });
}

Reply listReply(const Call& call, const std::function<JsonPieces()>& list, const std::function<int()>& count)
{
    try {
        if (!call.queryFlag("only_count")) {
            return {200, list(), {}, {}};
        }
        JsonWriter json;
        json.beginObject().key("count").number(count()).endObject();
        return {200, {json.take()}, {}, {}};
    } catch (const StoreTooSlow&) {
        throw ApiError(
            400, QStringLiteral("filterTooSlow"),
            QStringLiteral("the search took too long; use a simpler pattern, or narrow it by dates or "
                           "a category"),
            QStringLiteral("where"));
    }
}

} // namespace PlanService
