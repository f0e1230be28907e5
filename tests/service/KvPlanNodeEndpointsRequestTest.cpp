// What the endpoint functions for plan nodes put on the wire: verb, target and body, byte for byte.

#include "EndpointRequestsFixture.h"

#include <service/KvPlanNodeEndpoints.h>
#include <service/KvQueryFilter.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtTest/QtTest>

using KvTest::fullPlanNode;
using KvTest::Reply;

Q_DECLARE_METATYPE(KvPlanNodeCondition)

namespace {

const QString p1 = QStringLiteral("p1");
const QString n1 = QStringLiteral("n1");

KvPlanNodeCondition anyOf(const QString& planId)
{
    KvPlanNodeCondition condition;
    condition.allTime = true;
    condition.listType = -1;
    condition.finishState = -1;
    condition.planId = planId;
    return condition;
}

KvPlanNodeCondition named(const QString& name, const QString& category = QString())
{
    KvPlanNodeCondition condition = anyOf(p1);
    condition.name = name;
    condition.category = category;
    return condition;
}

bool count(const KvPlanNodeCondition& condition)
{
    int result = 0;
    return Kv::requestPlanNodeRangeCount(condition, result);
}

bool page(const KvPlanNodeCondition& condition, int skip, int limit)
{
    QList<KvPlanNode> nodes;
    return Kv::requestPlanNodeRangeData(condition, skip, limit, nodes);
}

bool ofPlans(const QStringList& planIds, const QString& category)
{
    QList<KvPlanNode> nodes;
    return Kv::requestPlanNodesByPlanIds(planIds, category, nodes);
}

bool todo(int skip, int limit, const QString& category)
{
    QList<KvPlanNode> nodes;
    return Kv::requestTodoPlanNodes(skip, limit, nodes, category);
}

KvPlanNode nodeNamed(const QString& name)
{
    KvPlanNode node;
    node.name = name;
    return node;
}

// What a node that has nothing but a name is created with.
QByteArray freshNodeBody(const QByteArray& name, const QByteArray& projectId)
{
    return R"({"actualFinishDate":"","actualStartDate":"","actualWorkload":0,"category":"",)"
           R"("cooperateIds":[],"createdAt":"","displaySimulation":true,"documentIds":[],"dynamicEffect":0,)"
           R"("entityHideDate":"","entityHideType":0,"executeIds":[],"finishDate":"","finishedPercentage":0,)"
           R"("id":-1,"isDistributed":false,"links":[],"materialBills":[],"name":")" +
           name + R"(","parentTaskID":-1,"planWorkload":0,"predecessors":[],"projectId":")" + projectId +
           R"(","startDate":"","uniqueId":-1,"updatedAt":"","userIds":[]})";
}

} // namespace

class KvPlanNodeEndpointsRequestTest : public EndpointRequestsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void request_data();
    void withoutPlanNothingIsSent_data();
    void withoutPlanNothingIsSent();
    void withoutPlansNothingIsSent();
    void projectIsReadAnew();
    void numbersIgnoreTheUsersLanguage();
    void filterArrivesUnchanged_data();
    void filterArrivesUnchanged();
    void categoryArrivesUnchanged_data();
    void categoryArrivesUnchanged();
    void deletedIdsArriveUnchanged_data();
    void deletedIdsArriveUnchanged();
};

void KvPlanNodeEndpointsRequestTest::request_data()
{
    requestColumns();
    row("one", "GET", "planNodes/n1?expand=true", [] {
        KvPlanNode node;
        return Kv::requestPlanNodeById(n1, node);
    });

    const QByteArray list = "plans/p1/planNodes?where=";
    const QByteArray ofP1 = "%7B%22planId%22:%22p1%22%7D";
    row("count of all", "GET", list + ofP1 + "&only_count=true", [] { return count(anyOf(p1)); });
    row("first page", "GET", list + ofP1 + "&skip=0&limit=20", [] { return page(anyOf(p1), 0, 20); });
    row("numbers are not checked", "GET", list + ofP1 + "&skip=-1&limit=-20",
        [] { return page(anyOf(p1), -1, -20); });
    row("largest numbers", "GET", list + ofP1 + "&skip=2147483647&limit=2147483647",
        [] { return page(anyOf(p1), 2147483647, 2147483647); });

    KvPlanNodeCondition some = named(QStringLiteral("wall 1"), QStringLiteral("a b"));
    some.listType = 1;
    some.finishState = 0;
    some.userId = QStringLiteral("u1");
    some.relativeUserId = QStringLiteral("u2");
    const QByteArray walls = "%7B%22displayName%22:%7B%22$options%22:%22i%22,%22$regex%22:%22wall%201%22%7D,"
                             "%22planId%22:%22p1%22,%22relativeUserIds%22:%22u2%22,%22userIds%22:%22u1%22%7D"
                             "&category=a%20b&list=received&finish=false";
    row("count of some", "GET", list + walls + "&only_count=true", [=] { return count(some); });
    row("page of some", "GET", list + walls + "&skip=40&limit=20", [=] { return page(some, 40, 20); });
    KvPlanNodeCondition outside = anyOf(p1);
    outside.withoutPlan = true;
    outside.category = QStringLiteral("C");
    outside.listType = 0;
    outside.finishState = 1;
    // The path names the plan all the same.
    row("page of nodes outside any plan", "GET",
        list + "%7B%22planId%22:null%7D&category=C&list=all&finish=true&skip=0&limit=20",
        [=] { return page(outside, 0, 20); });

    const QByteArray inPlans = "projects/project-1/planNodes?where=%7B%22planId%22:%7B%22$in%22:%5B";
    row("of one plan", "GET", inPlans + "%22p1%22%5D%7D%7D&category=c&expand=true",
        [] { return ofPlans({p1}, QStringLiteral("c")); });
    row("of plans, without category", "GET",
        inPlans + "%22p2%22,null,%22p1%22%5D%7D%7D&category=&expand=true", [] {
            return ofPlans({QStringLiteral("p2"), QString(), p1}, QString());
        });

    const QByteArray todoList = "projects/project-1/planNodes?type=todo&category=";
    const QByteArray states = "&state=%7B%22$in%22:%5B%22unstart%22,%22processing%22%5D%7D";
    row("to do", "GET", todoList + "c&expand=true&order=finishDate&skip=0&limit=20" + states,
        [] { return todo(0, 20, QStringLiteral("c")); });
    row("to do, without category", "GET", todoList + "&expand=true&order=finishDate&skip=0&limit=0" + states,
        [] { return todo(0, 0, QString()); });

    const auto createOne = [] {
        KvPlanNode node = nodeNamed(QStringLiteral("墙 \"A\""));
        return Kv::requestCreatePlanNode(node);
    };
    row("create", "POST", "planNodes", createOne, freshNodeBody("墙 \\\"A\\\"", "project-1"));
    const auto createTwo = [] {
        QList<KvPlanNode> nodes{nodeNamed(QStringLiteral("b")), nodeNamed(QStringLiteral("a"))};
        return Kv::requestCreatePlanNodes(p1, nodes);
    };
    row("create two", "POST", "plans/p1/planNodes", createTwo,
        '[' + freshNodeBody("b", "project-1") + ',' + freshNodeBody("a", "project-1") + ']');
    const auto createNone = [] {
        QList<KvPlanNode> nodes;
        return Kv::requestCreatePlanNodes(p1, nodes);
    };
    row("create none", "POST", "plans/p1/planNodes", createNone, "[]");

    row("delete", "DELETE", "planNodes/n1", [] { return Kv::requestDeletePlanNode(n1); });
    row("delete by a special id", "DELETE", "planNodes/a%20b%23c%2B100%25",
        [] { return Kv::requestDeletePlanNode(QStringLiteral("a b#c+100%")); });
    row("delete two", "DELETE", "planNodes?queryParam=%7B%22ids%22%3A%5B%22n1%22%2C%22n2%22%5D%7D", [] {
        return Kv::requestDeletePlanNodes({n1, QStringLiteral("n2")});
    });
    row("delete none", "DELETE", "planNodes?queryParam=%7B%22ids%22%3A%5B%5D%7D",
        [] { return Kv::requestDeletePlanNodes({}); });
}

void KvPlanNodeEndpointsRequestTest::withoutPlanNothingIsSent_data()
{
    QTest::addColumn<KvPlanNodeCondition>("condition");
    QTest::newRow("nothing set") << KvPlanNodeCondition();
    KvPlanNodeCondition full = named(QStringLiteral("n"), QStringLiteral("c"));
    full.planId = QStringLiteral("");
    full.userId = full.relativeUserId = QStringLiteral("u");
    full.startDate = full.endDate = QDateTime(QDate(2026, 5, 4), QTime(0, 0));
    QTest::newRow("all but the plan") << full;
    full.withoutPlan = true;
    QTest::newRow("outside any plan") << full;
}

void KvPlanNodeEndpointsRequestTest::withoutPlanNothingIsSent()
{
    QFETCH(KvPlanNodeCondition, condition);
    int found = 77;
    QVERIFY(!Kv::requestPlanNodeRangeCount(condition, found));
    QCOMPARE(found, 77);
    QList<KvPlanNode> nodes{fullPlanNode()};
    QVERIFY(!Kv::requestPlanNodeRangeData(condition, 0, 20, nodes));
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(m_server.requestCount(), 0);
}

void KvPlanNodeEndpointsRequestTest::withoutPlansNothingIsSent()
{
    QList<KvPlanNode> nodes{fullPlanNode()};
    QVERIFY(!Kv::requestPlanNodesByPlanIds({}, QStringLiteral("c"), nodes));
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(m_server.requestCount(), 0);
}

void KvPlanNodeEndpointsRequestTest::projectIsReadAnew()
{
    for (const auto& project : projects()) {
        GetSoftCache()->setCurrentProjectId(project.first);
        const QByteArray path = "/task-service/projects/" + project.second + "/planNodes";
        for (int i = 0; i < 4; ++i)
            m_server.enqueue(Reply::json(QJsonArray()));
        QVERIFY(ofPlans({p1}, QString()));
        QCOMPARE(m_server.lastRequest().path(), path);
        QVERIFY(todo(0, 1, QString()));
        QCOMPARE(m_server.lastRequest().path(), path);
        KvPlanNode node;
        QVERIFY(Kv::requestCreatePlanNode(node));
        QCOMPARE(m_server.lastRequest().object().value(QLatin1String("projectId")).toString(), project.first);
        QList<KvPlanNode> nodes{fullPlanNode()};
        QVERIFY(Kv::requestCreatePlanNodes(p1, nodes));
        const QJsonObject first = m_server.lastRequest().array().at(0).toObject();
        QCOMPARE(first.value(QLatin1String("projectId")).toString(), project.first);
    }
}

void KvPlanNodeEndpointsRequestTest::numbersIgnoreTheUsersLanguage()
{
    for (const QLocale::Language language : {QLocale::German, QLocale::Arabic, QLocale::Hindi}) {
        QLocale::setDefault(QLocale(language));
        m_server.enqueue(Reply::json(QJsonArray()));
        m_server.enqueue(Reply::json(QJsonArray()));
        QVERIFY(page(anyOf(p1), 12345, 67890));
        QVERIFY(m_server.lastRequest().query().endsWith("&skip=12345&limit=67890"));
        QVERIFY(todo(12345, 67890, QString()));
        QVERIFY(m_server.lastRequest().query().contains("&skip=12345&limit=67890&"));
    }
}

void KvPlanNodeEndpointsRequestTest::filterArrivesUnchanged_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("blanks") << " a  b ";
    QTest::newRow("quotes and backslashes") << R"("a"b"\d+\\\")";
    QTest::newRow("newline and tab") << "a\nb\tc";
    QTest::newRow("a parameter of its own") << "x&skip=9&limit=9";
    QTest::newRow("a way out of the literal") << R"("}}&skip=9)";
    QTest::newRow("percent-encoded letter") << "%41%2F%zz";
    QTest::newRow("hash, plus, question mark") << "#1+1?";
    QTest::newRow("braces") << "}]a{[";
    QTest::newRow("Chinese and emoji") << QStringLiteral("第2层🏗");
    QTest::newRow("10,000 characters") << QString(10000, QChar(0x5c42));
    for (int i = 0; i <= 9; ++i)
        QTest::newRow(qPrintable(QStringLiteral("half of %1").arg(i)))
            << QStringLiteral("50%") + QString::number(i);
    QTest::newRow("localised placeholders") << "%L1 %L3";
}

// What a user searches for may look like a placeholder, and swallows neither skip nor limit.
void KvPlanNodeEndpointsRequestTest::filterArrivesUnchanged()
{
    QFETCH(QString, text);
    const QString where = Kv::buildPlanNodeQuery(named(text));
    m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(count(named(text)));
    KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.queryValue("where"), where);
    QCOMPARE(request.queryKeys().join(QLatin1Char(' ')), QStringLiteral("where only_count"));

    m_server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(page(named(text, QStringLiteral("50%3")), 40, 20));
    request = m_server.lastRequest();
    QCOMPARE(request.queryValue("where"), where);
    QCOMPARE(request.queryValue("category"), QStringLiteral("50%3"));
    QCOMPARE(request.queryValue("skip"), QStringLiteral("40"));
    QCOMPARE(request.queryValue("limit"), QStringLiteral("20"));
    QCOMPARE(request.queryKeys().join(QLatin1Char(' ')), QStringLiteral("where category skip limit"));
    QCOMPARE(request.path(), QByteArray("/task-service/plans/p1/planNodes"));
}

void KvPlanNodeEndpointsRequestTest::categoryArrivesUnchanged_data()
{
    QTest::addColumn<QString>("category");
    QTest::newRow("blanks and what URLs cut at") << " a  b #1+1";
    for (int i = 0; i <= 9; ++i) {
        QTest::newRow(qPrintable(QStringLiteral("half of %1").arg(i)))
            << QStringLiteral("50%") + QString::number(i);
    }
}

void KvPlanNodeEndpointsRequestTest::categoryArrivesUnchanged()
{
    QFETCH(QString, category);
    m_server.enqueue(Reply::json(QJsonArray()));
    m_server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(todo(40, 20, category));
    KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.queryValue("category"), category);
    QVERIFY(request.query().contains("&skip=40&limit=20&state="));
    QCOMPARE(request.queryValue("state"), QStringLiteral(R"({"$in":["unstart","processing"]})"));
    QVERIFY(ofPlans({p1}, category));
    request = m_server.lastRequest();
    QCOMPARE(request.queryValue("category"), category);
    QCOMPARE(request.queryValue("where"), QStringLiteral(R"({"planId":{"$in":["p1"]}})"));
}

void KvPlanNodeEndpointsRequestTest::deletedIdsArriveUnchanged_data()
{
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("plain") << QStringList{n1, QStringLiteral("n2")};
    QTest::newRow("empty texts stay texts") << QStringList{QString(), n1, QStringLiteral("")};
    QTest::newRow("what URLs cut at") << QStringList{QStringLiteral("a&b=c#d?e/f+g h")};
    QTest::newRow("percent and placeholders")
        << QStringList{QStringLiteral("100%"), QStringLiteral("%1%2%41")};
    QTest::newRow("quotes and braces") << QStringList{QStringLiteral("\"}]\\"), QStringLiteral("{'")};
    QTest::newRow("Chinese and emoji") << QStringList{QStringLiteral("墙"), QStringLiteral("🏗")};
    QTest::newRow("order and repetition")
        << QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
}

void KvPlanNodeEndpointsRequestTest::deletedIdsArriveUnchanged()
{
    QFETCH(QStringList, ids);
    m_server.enqueue(Reply::empty());
    QVERIFY(Kv::requestDeletePlanNodes(ids));
    const KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.queryKeys(), QStringList{QStringLiteral("queryParam")});
    const QJsonObject wanted{{QStringLiteral("ids"), QJsonArray::fromStringList(ids)}};
    QCOMPARE(request.queryValue("queryParam").toUtf8(), QJsonDocument(wanted).toJson(QJsonDocument::Compact));
}

QTEST_GUILESS_MAIN(KvPlanNodeEndpointsRequestTest)
#include "KvPlanNodeEndpointsRequestTest.moc"
