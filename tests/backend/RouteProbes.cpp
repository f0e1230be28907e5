#include "RouteProbes.h"

#include "Text.h"

namespace KvTest {

const QVector<RouteProbe>& routeProbes()
{
    static const QVector<RouteProbe> probes{
        {"GET /health", "", "", {}},
        {"GET /metrics", "", "", {}},
        {"GET /task-service/plans/{planId}", "", "", {"read"_s}},
        {"PUT /task-service/plans/{planId}", "", R"({"name":"Secret change"})", {"read"_s, "edit"_s}},
        {"DELETE /task-service/plans/{planId}", "", "", {"delete"_s}},
        {"POST /task-service/plans", "", R"({"projectId":"PROJECT","category":"c1"})", {"create"_s}},
        {"PUT /task-service/plans/{planId}/copy", "", "{}", {"read"_s, "create"_s}},
        {"GET /task-service/projects/{projectId}/plans", "", "", {"list"_s}},
        {"GET /task-service/planNodes/{planNodeId}", "?expand=true", "", {"read"_s}},
        {"PUT /task-service/planNodes/{planNodeId}", "", R"({"name":"Secret change"})", {"read"_s, "edit"_s}},
        {"DELETE /task-service/planNodes/{planNodeId}", "", "", {"delete"_s}},
        {"POST /task-service/planNodes", "", R"({"planId":"PLAN","name":"n"})", {"create"_s}},
        {"PUT /task-service/planNodes", "", R"([{"_id":"NODE","name":"Secret change"}])", {"edit"_s}},
        {"DELETE /task-service/planNodes", "?queryParam={\"ids\":[\"VICTIM\"]}", "", {"delete"_s}},
        {"GET /task-service/plans/{planId}/planNodes", "?where={}", "", {"list"_s}},
        {"POST /task-service/plans/{planId}/planNodes", "", R"([{"name":"n"}])", {"create"_s}},
        {"GET /task-service/projects/{projectId}/planNodes",
         "?where={\"planId\":\"PLAN\"}&expand=true",
         "",
         {"list"_s}},
        {"GET /task-service/planNodes/{planNodeId}/responses",
         "?order=createdAt&expand=true",
         "",
         {"read"_s}},
        {"POST /task-service/planNodes/{planNodeId}/responses",
         "",
         R"({"percentage":50})",
         {"read"_s, "edit"_s}},
        {"GET /task-service/projects/{projectId}/planNodes_statistics",
         "?personal=true&dimensions=[\"status\",\"situation\"]",
         "",
         {"list"_s}},
        {"GET /task-service/projects/{projectId}/planNodes_quantities_statistics",
         "?category=&personal=true&period=day",
         "",
         {"list"_s}},
        {"GET /task-service/projects/{projectId}/auth", "?key=read&moduleKey=plan&category=c1", "", {}},
        {"GET /ka-rond-service/projects/{projectId}/taskstates",
         "?where={\"planId\":{\"$in\":[\"PLAN\"]}}",
         "",
         {"list"_s}},
        {"POST /ka-rond-service/taskstates",
         "",
         R"({"projectId":"PROJECT","planId":"PLAN","taskId":"NODE","responseId":null})",
         {"read"_s, "edit"_s}},
        {"PUT /ka-rond-service/tasks/{taskId}/taskstates",
         "",
         R"({"taskId":"NODE","state":3})",
         {"read"_s, "edit"_s}},
        {"GET /user-service/settings/{key}", "", "", {}},
        {"PUT /user-service/settings/{key}", "", R"({"value":1})", {}},
    };
    return probes;
}

namespace {

QByteArray filled(QByteArray text, const RouteWorld& world)
{
    return text.replace("PROJECT", world.project)
        .replace("PLAN", world.plan)
        .replace("VICTIM", world.victimNode)
        .replace("NODE", world.node);
}

} // namespace

QByteArray targetOf(const RouteProbe& probe, const RouteWorld& world)
{
    const bool removes = probe.method() == "DELETE";
    QByteArray path = probe.route.mid(probe.route.indexOf(' ') + 1);
    path.replace("{planId}", removes ? world.victimPlan : world.plan)
        .replace("{planNodeId}", removes ? world.victimNode : world.node)
        .replace("{taskId}", world.node)
        .replace("{projectId}", world.project)
        .replace("{key}", "k");
    return path + filled(probe.query, world).replace('"', "%22").replace('{', "%7B").replace('}', "%7D");
}

QByteArray bodyOf(const RouteProbe& probe, const RouteWorld& world)
{
    return filled(probe.body, world);
}

} // namespace KvTest
