// Holds the service and docs/openapi.yaml together.

#include "Description.h"
#include "RawHttp.h"
#include "ServiceProcess.h"
#include "Text.h"
#include "endpoints/Endpoints.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QtTest>

#include <cmath>

using namespace KvTest;

namespace {

QString typeOf(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return "boolean"_s;
    case QJsonValue::Double:
        return std::floor(value.toDouble()) == value.toDouble() ? "integer"_s : "number"_s;
    case QJsonValue::String:
        return "string"_s;
    case QJsonValue::Array:
        return "array"_s;
    case QJsonValue::Object:
        return "object"_s;
    default:
        return "null"_s;
    }
}

} // namespace

class TestDescription : public QObject
{
    Q_OBJECT

private:
    const Description m_description{QStringLiteral(OPENAPI_FILE)};
    ServiceProcess m_service;
    QByteArray m_plan;

    QJsonObject get(const QByteArray& target)
    {
        return QJsonDocument::fromJson(RawHttp(m_service.port()).get(target).body).object();
    }

    QJsonArray list(const QByteArray& target)
    {
        return QJsonDocument::fromJson(RawHttp(m_service.port()).get(target).body).array();
    }

    QByteArray nodeOf(const QByteArray& plan)
    {
        const QJsonArray tasks = get("/task-service/plans/" + plan).value("tasks"_s).toArray();
        return tasks.first().toObject().value("_id"_s).toString().toLatin1();
    }

    QByteArray bodyFor(const QString& operation) const
    {
        if (operation.startsWith("GET"_s)) {
            return QByteArray();
        }
        const bool list = operation == "PUT /task-service/planNodes"_s ||
                          operation == "POST /task-service/plans/{planId}/planNodes"_s;
        return list ? QByteArray("[]")
                    : "{\"value\":1,\"projectId\":\"sample-project\",\"state\":1,\"taskId\":\"" +
                          m_plan.left(16) + "00000001\"}";
    }

    QByteArray copyOfThePlan()
    {
        const RawReply copy =
            RawHttp(m_service.port()).request("PUT", "/task-service/plans/" + m_plan + "/copy", "{}");
        return QJsonDocument::fromJson(copy.body).object().value("_id"_s).toString().toLatin1();
    }

    /// Every key of the objects is described with its type, and every described property occurs.
    void compare(const QString& schema, const QJsonArray& objects)
    {
        const QMap<QString, QString> described = m_description.properties(schema);
        QVERIFY2(!described.isEmpty(), qPrintable(schema));
        QSet<QString> seen;
        for (const QJsonValue& value : objects) {
            const QJsonObject object = value.toObject();
            for (auto it = object.begin(); it != object.end(); ++it) {
                const QString type = described.value(it.key(), "not described"_s);
                const bool fits = type.isEmpty() || type == typeOf(it.value()) ||
                                  (type == "number"_s && typeOf(it.value()) == "integer"_s);
                QVERIFY2(fits, qPrintable(schema + "."_s + it.key() + ": "_s + type + ", sent "_s +
                                          typeOf(it.value())));
                seen.insert(it.key());
            }
        }
        QCOMPARE(QSet<QString>(described.keyBegin(), described.keyEnd()) - seen, QSet<QString>());
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_plan = seeded.value("planId"_s).toString().toLatin1();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    }

    void describesEveryRouteAndNoOther()
    {
        QStringList routes;
        for (const PlanService::Route& route : PlanService::serviceRoutes()) {
            routes.append(QString::fromLatin1(route.method + ' ' + route.pathTemplate));
        }
        routes.sort();
        QCOMPARE(m_description.operations(), routes);
    }

    void everyDescribedPathAnswersAsDescribed()
    {
        const QStringList operations = m_description.operations();
        for (const QString& operation : operations) {
            QByteArray path = operation.section(QLatin1Char(' '), 1).toLatin1();
            const QByteArray method = operation.section(QLatin1Char(' '), 0, 0).toLatin1();
            path.replace("{planId}", method == "DELETE" ? copyOfThePlan() : m_plan)
                .replace("{projectId}", "sample-project")
                .replace("{planNodeId}",
                         method == "DELETE" ? nodeOf(copyOfThePlan()) : m_plan.left(16) + "00000001")
                .replace("{taskId}", m_plan.left(16) + "00000001")
                .replace("{key}", "k");
            QVERIFY2(!path.contains('{'), path.constData());
            // What these two cannot do without.
            path += path.endsWith("/auth") ? "?moduleKey=plan&key=read" : "";
            path += path.endsWith("/planNodes_quantities_statistics") ? "?period=month" : "";
            path += operation == "DELETE /task-service/planNodes"_s ? "?queryParam={\"ids\":[]}" : "";
            const RawReply reply = RawHttp(m_service.port()).request(method, path, bodyFor(operation));
            QCOMPARE(reply.status, method == "DELETE" ? 204 : 200);
            const QStringList statuses = m_description.statuses(operation);
            QVERIFY(statuses.contains(QString::number(reply.status)));
            QVERIFY(statuses.contains("500"_s) && statuses.contains("503"_s));
            QCOMPARE(statuses.contains("401"_s), operation != "GET /health"_s);
        }
    }

    void repliesHaveTheDescribedKeysAndTypes()
    {
        QCOMPARE(m_description.version(), QStringLiteral(PLANSERVICE_VERSION));
        const QJsonObject plan = get("/task-service/plans/" + m_plan);
        compare("Health"_s, {get("/health")});
        compare("Plan"_s, {plan});
        QJsonArray nodes = plan.value("tasks"_s).toArray();
        const QJsonObject expanded =
            get("/task-service/planNodes/" + m_plan.left(16) + "00000004?expand=true");
        nodes.append(expanded);
        const QByteArray listed = "/task-service/plans/" + m_plan + "/planNodes";
        compare("PlanNode"_s, list(listed + "?expand=true"));
        compare("PlanCount"_s, {get(listed + "?only_count=true")});
        compare("PlanNode"_s, nodes);
        compare("Document"_s, expanded.value("documents"_s).toArray());
        compare("PlanCount"_s, {get("/task-service/projects/sample-project/plans?only_count=true")});
        compare("Error"_s, {get("/elsewhere")});
        const QByteArray project = "/task-service/projects/sample-project/";
        compare("RightValue"_s, {get(project + "auth?moduleKey=plan&key=read")});
        compare("Quantity"_s, list(project + "planNodes_quantities_statistics?period=week"));
        const QJsonObject statistics = get(project + "planNodes_statistics");
        compare("Statistics"_s, {statistics});
        const QJsonArray byStatus = statistics.value("items"_s).toArray();
        compare("StatusCount"_s, byStatus);
        compare("SituationCount"_s, byStatus.first().toObject().value("items"_s).toArray());
        compare("TaskState"_s, list("/ka-rond-service/projects/sample-project/taskstates"));
        QJsonArray predecessors;
        QJsonArray lags;
        QJsonArray links;
        QJsonArray bills;
        for (const QJsonValue& node : qAsConst(nodes)) {
            const QJsonArray ofNode = node.toObject().value("predecessors"_s).toArray();
            for (const QJsonValue& predecessor : ofNode) {
                predecessors.append(predecessor);
                lags.append(predecessor.toObject().value("Lag"_s));
            }
            links.append(node.toObject().value("entity"_s).toArray().first());
            bills.append(node.toObject().value("materialBills"_s).toArray().first());
        }
        compare("Predecessor"_s, predecessors);
        compare("Lag"_s, lags);
        compare("EntityLink"_s, links);
        compare("MaterialBill"_s, bills);
        const QByteArray node = m_plan.left(16) + "00000004";
        const QJsonObject response{
            {"media"_s, QJsonArray{QJsonObject{{"fileId"_s, "f"_s}}}},
            {"documentIds"_s, expanded.value("documentIds"_s)},
        };
        const QJsonArray responses{
            QJsonDocument::fromJson(RawHttp(m_service.port())
                                        .request("POST", "/task-service/planNodes/" + node + "/responses",
                                                 QJsonDocument(response).toJson())
                                        .body)
                .object()};
        compare("Response"_s, responses);
        compare("Medium"_s, responses.first().toObject().value("media"_s).toArray());
        compare("Document"_s, responses.first().toObject().value("documents"_s).toArray());
    }
};

QTEST_GUILESS_MAIN(TestDescription)
#include "TestDescription.moc"
