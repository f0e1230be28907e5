// What a changed plan sends: the differences to the cached one, and nothing where there is none.

#include "EndpointsFixture.h"

#include <service/KvPlanEndpoints.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <functional>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::Reply;

using Edit = std::function<void(KvPlan&)>;
Q_DECLARE_METATYPE(Edit)

class KvPlanEndpointsUpdateTest : public EndpointsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void sendsWhatDiffers_data();
    void sendsWhatDiffers();
    void goesToTheCachedPlan();
    void withoutDifference_data();
    void withoutDifference();
};

void KvPlanEndpointsUpdateTest::sendsWhatDiffers_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QStringList>("keys");
    const auto row = [](const char* name, const char* keys, const Edit& edit) {
        QTest::newRow(name) << edit << QString::fromLatin1(keys).split(QLatin1Char(' '));
    };
    row("name", "name", [](KvPlan& plan) { plan.name += QLatin1Char('x'); });
    row("category", "category", [](KvPlan& plan) { plan.category += QLatin1Char('x'); });
    row("project", "projectId", [](KvPlan& plan) { plan.projectId += QLatin1Char('x'); });
    row("schedule file", "projectFileId", [](KvPlan& plan) { plan.projectFileId += QLatin1Char('x'); });
    row("visibility", "public", [](KvPlan& plan) { plan.isPublic = 7; });
    row("a range more", "ranges", [](KvPlan& plan) { plan.ranges.append(QStringLiteral("r")); });
    row("name in another case", "name", [](KvPlan& plan) { plan.name = plan.name.toUpper(); });
    row("a node's name", "projectData", [](KvPlan& plan) { plan.planNodes[1].name += QLatin1Char('x'); });
    row("a node less", "projectData", [](KvPlan& plan) { plan.planNodes.removeLast(); });
    row("nodes in another order", "projectData",
        [](KvPlan& plan) { std::swap(plan.planNodes[0], plan.planNodes[1]); });
    row("no nodes", "projectData", [](KvPlan& plan) { plan.planNodes.clear(); });
    row("two at once", "name public", [](KvPlan& plan) {
        plan.name = QStringLiteral("x");
        plan.isPublic = 0;
    });
    row("one changed, one cleared", "name", [](KvPlan& plan) {
        plan.name = QStringLiteral("x");
        plan.category.clear();
    });
    row("one changed, and what the service assigns", "name", [](KvPlan& plan) {
        plan.name = QStringLiteral("x");
        plan.updatedBy = QStringLiteral("me");
        plan.createdAt = QDateTime();
        plan.mppFilePath.clear();
    });
}

void KvPlanEndpointsUpdateTest::sendsWhatDiffers()
{
    QFETCH(Edit, edit);
    QFETCH(QStringList, keys);
    m_server.enqueue(Reply::json(QJsonObject()));
    m_server.enqueue(Reply::json(QJsonObject()));
    const KvPlan cached = fullPlan();
    KvPlan plan = cached;
    edit(plan);
    KvPlan created = plan;
    QVERIFY(Kv::requestUpdatePlan(cached, plan));
    QCOMPARE(m_server.requestCount(), 1);
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/1id"));
    const QJsonObject body = m_server.lastRequest().object();
    QCOMPARE(body.keys(), keys);
    // With the value that the whole plan would be sent with.
    QVERIFY(Kv::requestCreatePlan(created));
    const QJsonObject whole = m_server.lastRequest().object();
    for (const QString& key : keys)
        QCOMPARE(body.value(key), whole.value(key));
}

void KvPlanEndpointsUpdateTest::goesToTheCachedPlan()
{
    KvPlan cached;
    cached.id = QStringLiteral("cached one");
    KvPlan plan;
    plan.id = QStringLiteral("edited");
    plan.name = QStringLiteral("n");
    m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Kv::requestUpdatePlan(cached, plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/cached%20one"));
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"name\":\"n\"}"));

    plan.name = QStringLiteral("n");
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    QVERIFY(!Kv::requestUpdatePlan(KvPlan(), plan)); // of a plan without an id
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/"));
}

void KvPlanEndpointsUpdateTest::withoutDifference_data()
{
    QTest::addColumn<Edit>("edit");
    const auto row = [](const char* name, const Edit& edit) {
        QTest::newRow(name) << edit;
    };
    row("nothing", [](KvPlan&) {});
    row("what is not written", [](KvPlan& plan) {
        plan.id = QStringLiteral("other");
        plan.mppFilePath = QStringLiteral("other");
        plan.createdBy.clear();
        plan.updatedBy = QStringLiteral("other");
        plan.createdAt = QDateTime();
        plan.updatedAt = QDateTime(QDate(2030, 1, 1), QTime(0, 0));
        plan.planNodes[0].notes = QStringLiteral("other");
        plan.planNodes[0].summary = !plan.planNodes[0].summary;
        plan.planNodes[0].documents.clear();
        plan.planNodes[1].children = {KvPlanNode()};
    });
    // Empty texts and lists are not written, so nobody can tell them from values that stay.
    row("fields cleared", [](KvPlan& plan) {
        plan.name.clear();
        plan.category.clear();
        plan.projectFileId.clear();
        plan.ranges.clear();
        plan.isPublic = 100;
    });
}

void KvPlanEndpointsUpdateTest::withoutDifference()
{
    QFETCH(Edit, edit);
    const KvPlan cached = fullPlan();
    KvPlan plan = cached;
    edit(plan);
    QVERIFY(Kv::requestUpdatePlan(cached, plan));
    QCOMPARE(m_server.requestCount(), 0);
    QCOMPARE(difference(dump(plan), dump(cached)), QString());
    // The same record twice, and where nobody listens.
    KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
    QVERIFY(Kv::requestUpdatePlan(plan, plan));
    QCOMPARE(difference(dump(plan), dump(cached)), QString());
}

QTEST_GUILESS_MAIN(KvPlanEndpointsUpdateTest)
#include "KvPlanEndpointsUpdateTest.moc"
