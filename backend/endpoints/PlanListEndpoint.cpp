#include "../access/Caller.h"
#include "../filters/FilterText.h"
#include "../filters/PlanFields.h"
#include "../json/JsonWriter.h"
#include "../records/FieldReader.h"
#include "../store/Store.h"
#include "Endpoints.h"

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
    try {
        if (!call.queryFlag("only_count")) {
            return {200, call.store.planListJson(query), {}, {}};
        }
        JsonWriter json;
        json.beginObject().key("count").number(call.store.planCount(query)).endObject();
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
