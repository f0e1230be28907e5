#include "../json/JsonWriter.h"
#include "../store/Store.h"
#include "Endpoints.h"

namespace PlanService {

Reply getHealth(const Call& call)
{
    const int schema = call.store.schemaVersion();
    JsonWriter json;
    json.beginObject();
    json.key("status").text(QStringLiteral("ok"));
    json.key("version").utf8(PLANSERVICE_VERSION);
    json.key("schemaVersion").number(schema);
    json.endObject();
    return {200, {json.take()}, {}, {}};
}

} // namespace PlanService
