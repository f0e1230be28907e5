// What the endpoint functions for plans put on the wire: verb, target and body, byte for byte.

#include "EndpointRequestsFixture.h"

#include <service/KvPlanEndpoints.h>
#include <service/KvQueryFilter.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtTest/QtTest>

using KvTest::fullPlan;
using KvTest::Reply;

namespace {

const QString p1 = QStringLiteral("p1");

KvPlanCondition anyPlan()
{
    KvPlanCondition condition;
    condition.allTime = true;
    return condition;
}

KvPlanCondition named(const QString& name, const QString& category = QString())
{
    KvPlanCondition condition = anyPlan();
    condition.name = name;
    condition.category = category;
    return condition;
}

KvPlanCondition inMay()
{
    KvPlanCondition condition;
    condition.startDate = QDateTime(QDate(2026, 5, 4), QTime(0, 0));
    condition.endDate = QDateTime(QDate(2026, 5, 8), QTime(0, 0));
    return condition;
}

bool count(const KvPlanCondition& condition)
{
    int result = 0;
    return Kv::requestPlanRangeCount(condition, result);
}

bool page(const KvPlanCondition& condition, int skip, int limit)
{
    QList<KvPlan> plans;
    return Kv::requestPlanRangeData(condition, skip, limit, plans);
}

bool create(const QString& projectId, const QString& name)
{
    KvPlan plan;
    plan.projectId = projectId;
    plan.name = name;
    return Kv::requestCreatePlan(plan);
}

} // namespace

class KvPlanEndpointsRequestTest : public EndpointRequestsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void request_data();
    void projectIsReadAnew();
    void numbersIgnoreTheUsersLanguage();
    void filterArrivesUnchanged_data();
    void filterArrivesUnchanged();
    void createdPlanGetsTheProject_data();
    void createdPlanGetsTheProject();
};

void KvPlanEndpointsRequestTest::request_data()
{
    requestColumns();
    const auto readOne = [] {
        KvPlan plan;
        return Kv::requestPlanById(p1, plan);
    };
    const auto readAll = [] {
        QList<KvPlan> plans;
        return Kv::requestAllPlans(plans);
    };
    row("one", "GET", "plans/p1", readOne);
    row("all", "GET", "projects/project-1/plans", readAll);

    const QByteArray list = "projects/project-1/plans?where=";
    const QByteArray towers = "%7B%22name%22:%7B%22$options%22:%22i%22,%22$regex%22:%22tower%201%22%7D%7D";
    const QByteArray may = "%7B%22$gte%22:%222026-05-04T00:00:00.000%22,"
                           "%22$lt%22:%222026-05-09T00:00:00.000%22%7D";
    const QByteArray changedInMay =
        "%7B%22$or%22:%5B%7B%22createdAt%22:" + may + "%7D,%7B%22updatedAt%22:" + may + "%7D%5D%7D";
    const KvPlanCondition tower = named(QStringLiteral("tower 1"), QStringLiteral("a b"));
    row("count of all", "GET", list + "%7B%7D&only_count=true", [] { return count(anyPlan()); });
    row("count of some", "GET", list + towers + "&category=a%20b&only_count=true",
        [=] { return count(tower); });
    row("count of dates", "GET", list + changedInMay + "&only_count=true", [] { return count(inMay()); });
    row("first page", "GET", list + "%7B%7D&skip=0&limit=20", [] { return page(anyPlan(), 0, 20); });
    row("page of some", "GET", list + towers + "&category=a%20b&skip=40&limit=20",
        [=] { return page(tower, 40, 20); });
    row("page of dates", "GET", list + changedInMay + "&skip=1&limit=2", [] { return page(inMay(), 1, 2); });
    row("empty page", "GET", list + "%7B%7D&skip=0&limit=0", [] { return page(anyPlan(), 0, 0); });
    row("numbers are not checked", "GET", list + "%7B%7D&skip=-1&limit=-20",
        [] { return page(anyPlan(), -1, -20); });
    row("largest numbers", "GET", list + "%7B%7D&skip=2147483647&limit=2147483647",
        [] { return page(anyPlan(), 2147483647, 2147483647); });

    row(
        "create", "POST", "plans", [] { return create(QString(), QStringLiteral("主楼 \"A\"")); },
        QByteArray("{\"name\":\"主楼 \\\"A\\\"\",\"projectData\":[],\"projectId\":\"project-1\"}"));
    const auto copy = [] {
        KvPlan plan = fullPlan(); // nothing of it is sent
        return Kv::requestCopyPlan(p1, plan);
    };
    row("copy", "PUT", "plans/p1/copy", copy, "{}");
    const auto rename = [] {
        KvPlan cached;
        cached.id = p1;
        KvPlan plan = cached;
        plan.name = QStringLiteral("B");
        return Kv::requestUpdatePlan(cached, plan);
    };
    row("update", "PUT", "plans/p1", rename, "{\"name\":\"B\"}");
    row("delete", "DELETE", "plans/p1", [] { return Kv::requestDeletePlan(p1); });
    const auto deleteSpecial = [] {
        return Kv::requestDeletePlan(QStringLiteral("a b#c+100%"));
    };
    row("delete by a special id", "DELETE", "plans/a%20b%23c%2B100%25", deleteSpecial);
    const auto copySpecial = [] {
        KvPlan plan;
        return Kv::requestCopyPlan(QStringLiteral("层"), plan);
    };
    row("copy by a Chinese id", "PUT", "plans/%E5%B1%82/copy", copySpecial, "{}");
}

void KvPlanEndpointsRequestTest::projectIsReadAnew()
{
    for (const auto& project : projects()) {
        GetSoftCache()->setCurrentProjectId(project.first);
        const QByteArray path = "/task-service/projects/" + project.second + "/plans";
        for (int i = 0; i < 4; ++i)
            m_server.enqueue(Reply::json(QJsonObject()));
        QList<KvPlan> plans;
        QVERIFY(Kv::requestAllPlans(plans));
        QCOMPARE(m_server.lastRequest().target, path);
        QVERIFY(count(anyPlan()));
        QCOMPARE(m_server.lastRequest().path(), path);
        QVERIFY(page(anyPlan(), 0, 1));
        QCOMPARE(m_server.lastRequest().path(), path);
        QVERIFY(create(QString(), QString()));
        QCOMPARE(m_server.lastRequest().object().value(QLatin1String("projectId")).toString(), project.first);
    }
}

void KvPlanEndpointsRequestTest::numbersIgnoreTheUsersLanguage()
{
    for (const QLocale::Language language : {QLocale::German, QLocale::Arabic, QLocale::Hindi}) {
        QLocale::setDefault(QLocale(language));
        m_server.enqueue(Reply::json(QJsonArray()));
        QVERIFY(page(anyPlan(), 12345, 67890));
        QCOMPARE(m_server.lastRequest().query(), QByteArray("where=%7B%7D&skip=12345&limit=67890"));
    }
}

void KvPlanEndpointsRequestTest::filterArrivesUnchanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("category");
    const QString none;
    QTest::newRow("word") << "tower" << none;
    QTest::newRow("blanks") << " a  b "
                            << " c d ";
    QTest::newRow("double quotes") << R"("a"b)"
                                   << R"("c")";
    QTest::newRow("backslashes") << R"(\d+\\\")"
                                 << R"(c\d)";
    QTest::newRow("newline and tab") << "a\nb\tc" << none;
    QTest::newRow("ampersand") << "a&b" << none;
    QTest::newRow("a parameter of its own") << "x&skip=9&limit=9" << none;
    QTest::newRow("a way out of the literal") << R"("}}&skip=9)" << none;
    QTest::newRow("equals") << "a=b"
                            << "c=d";
    QTest::newRow("percent") << "100%"
                             << "50%";
    QTest::newRow("percent-encoded letter") << "%41%2F%zz" << none;
    QTest::newRow("hash") << "#1"
                          << "#2";
    QTest::newRow("plus") << "1+1"
                          << "2+2";
    QTest::newRow("question mark") << "a?b"
                                   << "c?d";
    QTest::newRow("braces") << "}]a{["
                            << "{c}";
    QTest::newRow("Chinese") << QStringLiteral("第2层") << QStringLiteral("施工");
    QTest::newRow("emoji") << QStringLiteral("🏗🧱") << QStringLiteral("🏗");
    QTest::newRow("10,000 characters") << QString(10000, QChar(0x5c42)) << none;
    for (int i = 0; i <= 9; ++i) {
        const QString text = QStringLiteral("a%") + QString::number(i);
        QTest::newRow(qPrintable(QStringLiteral("like placeholder %1").arg(i))) << text << text;
    }
    QTest::newRow("like localised placeholders") << "%L1 %L3"
                                                 << "%L4";
}

void KvPlanEndpointsRequestTest::filterArrivesUnchanged()
{
    QFETCH(QString, name);
    QFETCH(QString, category);
    const QString where = Kv::buildPlanQuery(named(name));
    QStringList keys{QStringLiteral("where")};
    if (!category.isEmpty())
        keys.append(QStringLiteral("category"));

    m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(count(named(name, category)));
    KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.queryValue("where"), where);
    QCOMPARE(request.queryValue("category"), category);
    QCOMPARE(request.queryValue("only_count"), QStringLiteral("true"));
    QCOMPARE(request.queryKeys(), QStringList(keys) << QStringLiteral("only_count"));

    m_server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(page(named(name, category), 40, 20));
    request = m_server.lastRequest();
    QCOMPARE(request.queryValue("where"), where);
    QCOMPARE(request.queryValue("category"), category);
    QCOMPARE(request.queryValue("skip"), QStringLiteral("40"));
    QCOMPARE(request.queryValue("limit"), QStringLiteral("20"));
    keys << QStringLiteral("skip") << QStringLiteral("limit");
    QCOMPARE(request.queryKeys(), keys);
    QCOMPARE(request.path(), QByteArray("/task-service/projects/project-1/plans"));
}

void KvPlanEndpointsRequestTest::createdPlanGetsTheProject_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("sent");
    QTest::newRow("none: the current one") << QString() << "project-1";
    QTest::newRow("empty: the current one") << ""
                                            << "project-1";
    QTest::newRow("another: kept") << "project-2"
                                   << "project-2";
}

void KvPlanEndpointsRequestTest::createdPlanGetsTheProject()
{
    QFETCH(QString, given);
    QFETCH(QString, sent);
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlan plan = fullPlan();
    plan.projectId = given;
    QVERIFY(Kv::requestCreatePlan(plan));
    const QJsonObject body = m_server.lastRequest().object();
    QCOMPARE(body.value(QLatin1String("projectId")).toString(), sent);
    // All that a plan has to tell, its nodes included, and nothing that the service assigns.
    QCOMPARE(body.keys().join(QLatin1Char(' ')),
             QStringLiteral("category name projectData projectFileId projectId public ranges"));
    const QJsonArray nodes = body.value(QLatin1String("projectData")).toArray();
    QCOMPARE(nodes.size(), 2);
    QCOMPARE(nodes.at(0).toObject().value(QLatin1String("_id")).toString(), fullPlan().planNodes.at(0).id);
}

QTEST_GUILESS_MAIN(KvPlanEndpointsRequestTest)
#include "KvPlanEndpointsRequestTest.moc"
