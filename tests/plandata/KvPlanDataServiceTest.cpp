// The road of one request on the real service: database, HTTP, library, host; and a failure at each step.

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <model/KvPlanRecordsDump.h>

#include <RawHttp.h>
#include <ServiceProcess.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;

namespace {

struct KeyOf
{
    const char* key;
    const char* field;
};

// Under these keys the service sends what the record's dump holds as it is: texts, numbers, lists of ids.
const KeyOf plainKeys[] = {
    {"_id", "id"},
    {"category", "category"},
    {"planId", "planId"},
    {"planName", "planName"},
    {"projectId", "projectId"},
    {"id", "planNodeId"},
    {"uniqueId", "uniqueId"},
    {"parentTaskID", "parentTaskId"},
    {"name", "name"},
    {"isDistributed", "isDistributed"},
    {"remark", "remark"},
    {"finishedPercentage", "finishedPercentage"},
    {"createdBy", "createdBy"},
    {"updatedBy", "updatedBy"},
    {"milestone", "milestone"},
    {"summary", "summary"},
    {"dynamicEffect", "dynamicEffect"},
    {"entityHideType", "entityHideType"},
    {"planWorkload", "planWorkload"},
    {"actualWorkload", "actualWorkload"},
    {"userIds", "userIds"},
    {"executeIds", "executeIds"},
    {"cooperateIds", "cooperateIds"},
    {"documentIds", "documentIds"},
};

const KeyOf dateKeys[] = {
    {"updatedAt", "updatedAt"},
    {"createdAt", "createdAt"},
    {"startDate", "startDate"},
    {"finishDate", "finishDate"},
    {"actualStartDate", "actualStartDate"},
    {"actualFinishDate", "actualFinishDate"},
    {"entityHideDate", "entityHideDate"},
};

QJsonValue valueAt(const QJsonObject& json, const char* key)
{
    return json.value(QLatin1String(key));
}

QJsonValue dateAt(const QJsonObject& json, const char* key)
{
    const QString text = valueAt(json, key).toString();
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonObject mapAt(const QJsonObject& json, const char* key, const char* name, const char* list)
{
    QJsonObject map;
    const QJsonArray elements = valueAt(json, key).toArray();
    for (const QJsonValue element : elements)
        map.insert(valueAt(element.toObject(), name).toString(), valueAt(element.toObject(), list).toArray());
    return map;
}

QJsonObject expectedPredecessor(const QJsonObject& json)
{
    const QJsonObject lag = valueAt(json, "Lag").toObject();
    return {{QStringLiteral("sourcePlanNodeName"), valueAt(json, "SourcePlanNodeName")},
            {QStringLiteral("targetPlanNodeName"), valueAt(json, "TargetPlanNodeName")},
            {QStringLiteral("lag"), QJsonObject{{QStringLiteral("value"), valueAt(lag, "Duration")},
                                                {QStringLiteral("units"), valueAt(lag, "Units")}}},
            {QStringLiteral("type"), valueAt(json, "Type")},
            {QStringLiteral("sourcePlanNodeUniqueId"), valueAt(json, "SourcePlanNodeUniqueID")},
            {QStringLiteral("targetPlanNodeUniqueId"), valueAt(json, "TargetPlanNodeUniqueID")},
            {QStringLiteral("sourcePlanNodeId"), valueAt(json, "SourcePlanNodeID")},
            {QStringLiteral("targetPlanNodeId"), valueAt(json, "TargetPlanNodeID")}};
}

QJsonObject expectedDocument(const QJsonObject& json)
{
    return {{QStringLiteral("id"), valueAt(json, "_id")},
            {QStringLiteral("name"), valueAt(json, "name")},
            {QStringLiteral("fileSize"), valueAt(json, "fileSize")},
            {QStringLiteral("suffix"), valueAt(json, "suffix")},
            {QStringLiteral("createdAt"), valueAt(json, "createdAt")},
            {QStringLiteral("createdBy"), valueAt(json, "createdBy")}};
}

template<class Convert>
QJsonArray converted(const QJsonValue& list, Convert convert)
{
    QJsonArray array;
    const QJsonArray elements = list.toArray();
    for (const QJsonValue element : elements)
        array.append(convert(element.toObject()));
    return array;
}

// The record that the service's JSON stands for, without the library's own reader.
QJsonObject expectedNode(const QJsonObject& json)
{
    QJsonObject node = dump(KvPlanNode());
    for (const KeyOf& key : plainKeys)
        node.insert(QLatin1String(key.field), valueAt(json, key.key));
    for (const KeyOf& key : dateKeys)
        node.insert(QLatin1String(key.field), dateAt(json, key.key));
    const QString guid = valueAt(json, "GUID").toString();
    node.insert(QStringLiteral("guid"), guid.isEmpty() ? valueAt(json, "_id") : QJsonValue(guid));
    node.insert(QStringLiteral("displaySimulation"), valueAt(json, "displaySimulation").toInt() != 0);
    node.insert(QStringLiteral("predecessors"),
                converted(valueAt(json, "predecessors"), expectedPredecessor));
    node.insert(QStringLiteral("documents"), converted(valueAt(json, "documents"), expectedDocument));
    node.insert(QStringLiteral("links"), mapAt(json, "entity", "modelId", "entityIds"));
    node.insert(QStringLiteral("materialBills"), mapAt(json, "materialBills", "rId", "statusIds"));
    return node;
}

QJsonObject expectedPlan(const QJsonObject& json)
{
    QJsonObject plan = dump(KvPlan());
    for (const char* key :
         {"category", "projectId", "name", "projectFileId", "createdBy", "updatedBy", "ranges"})
        plan.insert(QLatin1String(key), valueAt(json, key));
    plan.insert(QStringLiteral("id"), valueAt(json, "_id"));
    plan.insert(QStringLiteral("isPublic"), valueAt(json, "public"));
    plan.insert(QStringLiteral("createdAt"), dateAt(json, "createdAt"));
    plan.insert(QStringLiteral("updatedAt"), dateAt(json, "updatedAt"));
    plan.insert(QStringLiteral("planNodes"), converted(valueAt(json, "tasks"), expectedNode));
    return plan;
}

} // namespace

class KvPlanDataServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void roadOfOneRequest();
    void everyFieldOfThePlan();
    void everyFieldOfANode();
    void failingStep_data();
    void failingStep();
    void serviceGoesAwayAndComesBack();
    void tokensAreInNoLog();

private:
    QJsonObject fromService(const QByteArray& target);
    KvPlanData& data() { return *KvPlanData::instance(); }

    KvTest::ServiceProcess m_service;
    QString m_planId;
    QString m_nodeId;
    QByteArray m_token;
    QByteArray m_strangersToken;
    QList<KvNetworkReport> m_reports;
};

void KvPlanDataServiceTest::initTestCase()
{
    const QJsonObject seeded = m_service.seed({QStringLiteral("--nodes"), QStringLiteral("400")});
    QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
    m_planId = seeded.value(QStringLiteral("planId")).toString();
    const QString project = seeded.value(QStringLiteral("projectId")).toString();
    m_token = m_service.createToken(QStringLiteral("wang.fang"), project, QStringLiteral("read=all"));
    QVERIFY2(!m_token.isEmpty(), qPrintable(m_service.failure()));
    m_strangersToken = m_service.createToken(QStringLiteral("stranger"), QStringLiteral("another-project"),
                                             QStringLiteral("read=all"));
    QVERIFY2(!m_strangersToken.isEmpty(), qPrintable(m_service.failure()));
    QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
}

void KvPlanDataServiceTest::init()
{
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
    NetworkManager::instance().setAccessToken(QString::fromLatin1(m_token));
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
            [this](const KvNetworkReport& report) { m_reports.append(report); });
    data().clear();
    m_reports.clear();
}

void KvPlanDataServiceTest::cleanup()
{
    disconnect(&NetworkManager::instance(), nullptr, this, nullptr);
}

QJsonObject KvPlanDataServiceTest::fromService(const QByteArray& target)
{
    const KvTest::RawReply reply =
        KvTest::RawHttp(m_service.port()).get(target, "Authorization: Bearer " + m_token + "\r\n");
    return reply.status == 200 ? QJsonDocument::fromJson(reply.body).object() : QJsonObject();
}

void KvPlanDataServiceTest::roadOfOneRequest()
{
    // The host knows nothing yet.
    QVERIFY(data().getPlanName(m_planId).isNull());
    KvPlan plan;
    plan.mppFilePath = QStringLiteral("kept.mpp");
    QVERIFY(data().getPlanById(m_planId, plan));
    QCOMPARE(m_reports.size(), 1);
    QCOMPARE(m_reports.first().method, QStringLiteral("GET"));
    QCOMPARE(m_reports.first().path, QStringLiteral("/task-service/plans/") + m_planId);
    QCOMPARE(m_reports.first().httpStatus, 200);
    QCOMPARE(plan.id, m_planId);
    QCOMPARE(plan.planNodes.size(), 400);
    QCOMPARE(plan.mppFilePath, QStringLiteral("kept.mpp"));
    // From here on without the service.
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(m_planId, cached));
    QCOMPARE(difference(dump(cached), dump(plan)), QString());
    QCOMPARE(data().getPlanName(m_planId), plan.name);
    QVERIFY(!plan.name.isEmpty());
    QCOMPARE(m_reports.size(), 1);
}

void KvPlanDataServiceTest::everyFieldOfThePlan()
{
    const QJsonObject json = fromService("/task-service/plans/" + m_planId.toLatin1());
    QCOMPARE(json.value(QStringLiteral("tasks")).toArray().size(), 400);
    KvPlan plan;
    QVERIFY(data().getPlanById(m_planId, plan));
    // Node by node, so that a difference is shown where it is.
    const QJsonObject wanted = expectedPlan(json);
    const QJsonArray nodes = wanted.value(QStringLiteral("planNodes")).toArray();
    for (int i = 0; i < nodes.size(); ++i)
        QCOMPARE(difference(dump(plan.planNodes.at(i)), nodes.at(i).toObject()), QString());
    QCOMPARE(difference(dump(plan), wanted), QString());
    // The sample must make the comparison worth something.
    QJsonObject seen;
    const QJsonObject byDefault = dump(KvPlanNode());
    for (const QJsonValue node : nodes) {
        const QJsonObject fields = node.toObject();
        for (auto field = fields.constBegin(); field != fields.constEnd(); ++field) {
            if (field.value() != byDefault.value(field.key()))
                seen.insert(field.key(), true);
        }
    }
    for (const char* field : {"id",
                              "guid",
                              "category",
                              "planId",
                              "planName",
                              "projectId",
                              "name",
                              "planNodeId",
                              "uniqueId",
                              "parentTaskId",
                              "finishedPercentage",
                              "summary",
                              "milestone",
                              "startDate",
                              "finishDate",
                              "actualStartDate",
                              "actualFinishDate",
                              "planWorkload",
                              "actualWorkload",
                              "predecessors",
                              "links",
                              "userIds",
                              "executeIds",
                              "createdAt",
                              "createdBy",
                              "updatedAt",
                              "updatedBy",
                              "materialBills",
                              "documentIds"})
        QVERIFY2(seen.contains(QLatin1String(field)), field);
}

void KvPlanDataServiceTest::everyFieldOfANode()
{
    const QJsonArray tasks =
        fromService("/task-service/plans/" + m_planId.toLatin1()).value(QStringLiteral("tasks")).toArray();
    int withDocuments = 0;
    for (int i = 0; i < tasks.size(); i += 7) {
        const QString id = tasks.at(i).toObject().value(QStringLiteral("_id")).toString();
        const QJsonObject json = fromService("/task-service/planNodes/" + id.toLatin1() + "?expand=true");
        QCOMPARE(json.value(QStringLiteral("_id")).toString(), id);
        KvPlanNode node;
        QVERIFY(data().getPlanNodeFromCacheById(id, node));
        QCOMPARE(difference(dump(node), expectedNode(json)), QString());
        KvPlanNode cached;
        QVERIFY(data().getPlanNodeFromCacheById(id, cached));
        QCOMPARE(difference(dump(cached), dump(node)), QString());
        withDocuments += node.documents.isEmpty() ? 0 : 1;
    }
    QVERIFY(withDocuments > 0);
    QCOMPARE(m_reports.size(), (tasks.size() + 6) / 7);
}

void KvPlanDataServiceTest::failingStep_data()
{
    QTest::addColumn<QString>("planId");
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("path"); // after the address of the service
    QTest::addColumn<int>("status");
    const QString good = QString::fromLatin1(m_token);
    QTest::newRow("unknown plan") << "no-such-plan" << good << "" << 404;
    QTest::newRow("wrong path before the services") << m_planId << good << "elsewhere/" << 404;
    QTest::newRow("no token") << m_planId << ""
                              << "" << 401;
    QTest::newRow("wrong token") << m_planId << "not-a-token"
                                 << "" << 401;
    QTest::newRow("token for another project")
        << m_planId << QString::fromLatin1(m_strangersToken) << "" << 403;
}

void KvPlanDataServiceTest::failingStep()
{
    QFETCH(QString, planId);
    QFETCH(QString, token);
    QFETCH(QString, path);
    QFETCH(int, status);
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl() + path);
    NetworkManager::instance().setAccessToken(token);
    KvPlan plan = KvTest::fullPlan();
    KvPlan wanted;
    wanted.isPublic = 0;
    wanted.mppFilePath = plan.mppFilePath;
    QVERIFY(!data().getPlanById(planId, plan));
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
    QCOMPARE(m_reports.size(), 1);
    QCOMPARE(m_reports.first().httpStatus, status);
    QCOMPARE(m_reports.first().category, KvNetworkReport::Http);
    // Nothing is cached: it asks again.
    QVERIFY(data().getPlanName(planId).isNull());
    QVERIFY(!data().getPlanFromCacheById(planId, plan));
    QCOMPARE(m_reports.size(), 2);
    KvPlanNode node;
    QVERIFY(!data().getPlanNodeFromCacheById(planId, node));
    QCOMPARE(m_reports.size(), 3);
}

void KvPlanDataServiceTest::serviceGoesAwayAndComesBack()
{
    KvPlan plan;
    QVERIFY(data().getPlanById(m_planId, plan));
    const QString name = plan.name;
    QVERIFY2(m_service.stop(), qPrintable(m_service.failure()));

    QVERIFY(!data().getPlanById(m_planId, plan));
    QCOMPARE(m_reports.last().category, KvNetworkReport::Refused);
    QCOMPARE(plan.name, QString());
    QCOMPARE(data().getPlanName(m_planId), name); // what was read stays
    QVERIFY(data().getPlanFromCacheById(m_planId, plan));
    QCOMPARE(plan.planNodes.size(), 400);
    data().clear();
    QVERIFY(!data().getPlanFromCacheById(m_planId, plan));

    QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
    QVERIFY(data().getPlanById(m_planId, plan));
    QCOMPARE(plan.name, name);
}

void KvPlanDataServiceTest::tokensAreInNoLog()
{
    KvPlan plan;
    QVERIFY(data().getPlanById(m_planId, plan));
    QVERIFY2(m_service.stop(), qPrintable(m_service.failure()));
    const QByteArray log = m_service.log();
    QVERIFY(log.contains("/task-service/plans/" + m_planId.toLatin1()));
    QVERIFY(!log.contains(m_token));
    QVERIFY(!log.contains(m_strangersToken));
}

QTEST_GUILESS_MAIN(KvPlanDataServiceTest)
#include "KvPlanDataServiceTest.moc"
