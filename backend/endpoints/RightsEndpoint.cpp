#include "../access/Caller.h"
#include "../json/JsonWriter.h"
#include "../store/Store.h"
#include "Endpoints.h"

namespace PlanService {

Reply getRight(const Call& call)
{
    // One module so far; a client that asks for another one would take a wrong answer for its own.
    call.queryWord("moduleKey", {QStringLiteral("plan")});
    static const QMap<QString, bool RightsRecord::*> flags{
        {QStringLiteral("create"), &RightsRecord::create},
        {QStringLiteral("edit"), &RightsRecord::edit},
        {QStringLiteral("delete"), &RightsRecord::remove},
        {QStringLiteral("export"), &RightsRecord::exportPlans}};
    const QString key = call.queryWord("key", flags.keys() + QStringList{QStringLiteral("read")});
    const RightsRecord rights =
        call.caller.rightsIn(call.parameter("projectId"), call.query.value(QStringLiteral("category")));
    const auto flag = flags.constFind(key);
    const QString value = flag == flags.constEnd()
                              ? rights.read
                              : (rights.*flag.value() ? QStringLiteral("true") : QStringLiteral("false"));
    JsonWriter json;
    json.beginObject().key("value").text(value).endObject();
    return {200, {json.take()}, {}, {}};
}

} // namespace PlanService
