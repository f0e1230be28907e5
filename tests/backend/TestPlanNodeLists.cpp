// Which nodes a list holds besides what it is filtered by, in which order, with what, and from which index.

#include "FilterQueries.h"
#include "FreshDatabase.h"
#include "PlanNodeSample.h"
#include "store/PlanNodeListSql.h"

#include <QtTest>

#include <functional>

using namespace PlanService;
using namespace KvTest;

class TestPlanNodeLists : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    KvTest::FreshDatabase m_database{m_folder.filePath("a.db"_s)};
    std::unique_ptr<Store> m_store;

    QString stepsFor(const PlanNodeQuery& query) { return stepsOf(planNodeListSql(query)); }

private Q_SLOTS:
    void initTestCase() { m_store = openNodeSample(m_database.name()); }

    void states_data()
    {
        QTest::addColumn<QString>("states");
        QTest::addColumn<QString>("found");
        QTest::newRow("none") << ""_s
                              << ""_s;
        QTest::newRow("unstart") << "unstart"_s
                                 << "n1 a2 b1"_s;
        QTest::newRow("processing") << "processing"_s
                                    << "a1"_s;
        QTest::newRow("finished") << "finished"_s
                                  << "a3"_s;
        QTest::newRow("not finished") << "unstart processing"_s
                                      << "n1 a1 a2 b1"_s;
        QTest::newRow("not at work") << "unstart finished"_s
                                     << "n1 a3 a2 b1"_s;
        QTest::newRow("begun") << "processing finished"_s
                               << "a3 a1"_s;
        QTest::newRow("all") << "unstart processing finished"_s
                             << "n1 a3 a1 a2 b1"_s;
    }
    void states()
    {
        QFETCH(QString, states);
        QFETCH(QString, found);
        PlanNodeQuery query = queryFor("{}"_s);
        query.unstart = states.contains("unstart"_s);
        query.processing = states.contains("processing"_s);
        query.finished = states.contains("finished"_s);
        QCOMPARE(ids(*m_store, query), words(found));
        QCOMPARE(m_store->planNodeListCount(query), words(found).size());
    }

    void narrowsByPlaceAndPerson()
    {
        const auto found = [&](const std::function<void(PlanNodeQuery&)>& narrow) {
            PlanNodeQuery query = queryFor("{}"_s);
            narrow(query);
            return ids(*m_store, query);
        };
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = "A"_s; }), words("a3 a1 a2"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = "X"_s; }), QStringList()); // of another project
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = QString(); }), words("n1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.category = "c2"_s; }), words("a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.worker = "ann"_s; }), words("n1 a3 a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.worker = "an"_s; }), words("b1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.creator = "bo"_s; }), words("a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) {
                     q.visible.elsewhere = ReadScope::Own;
                     q.visible.user = "bo"_s;
                 }),
                 words("a3 a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) {
                     q.visible.elsewhere = ReadScope::None;
                     q.visible.categories.insert("c2"_s, ReadScope::All);
                 }),
                 words("a1"_s));
    }

    void ordersByFinishWithTheUnplannedLast()
    {
        PlanNodeQuery query = queryFor("{}"_s);
        query.order = PlanNodeOrder::FinishDate;
        QCOMPARE(ids(*m_store, query), words("b1 a1 n1 a3 a2"_s));
        for (int skip = 0; skip < 5; ++skip) {
            query.skip = skip;
            query.limit = 1;
            QCOMPARE(ids(*m_store, query), words("b1 a1 n1 a3 a2"_s).mid(skip, 1));
        }
    }

    void derivesAndEmbeds()
    {
        PlanNodeQuery query = queryFor("{\"_id\":{\"$in\":[\"a3\",\"n1\"]}}"_s);
        QVERIFY(!nodesOf(m_store->planNodeListJson(query)).first().toObject().contains("documents"_s));
        query.withDocuments = true;
        const QJsonArray nodes = nodesOf(m_store->planNodeListJson(query));
        const QJsonObject none = nodes.at(0).toObject();
        const QJsonObject node = nodes.at(1).toObject();
        QCOMPARE(node.value("planName"_s).toString(), "Tower A"_s);
        QCOMPARE(node.value("summary"_s), QJsonValue(true));
        // The document of another project is not shown, whoever names it.
        QCOMPARE(node.value("documents"_s), QJsonValue(QJsonArray{QJsonObject{{"_id"_s, "d1"_s}}}));
        QCOMPARE(none.value("documents"_s), QJsonValue(QJsonArray()));
        QCOMPARE(none.value("planName"_s), QJsonValue(QString()));
        QCOMPARE(none.value("planId"_s), QJsonValue(QString()));
        QCOMPARE(none.value("summary"_s), QJsonValue(false));
    }

    void givesNodesInTheOrderAskedFor()
    {
        QCOMPARE(idsOf(nodesOf(m_store->planNodesJson({"b1"_s, "gone"_s, "a3"_s, "n1"_s}))),
                 words("b1 a3 n1"_s));
        QCOMPARE(nodesOf(m_store->planNodesJson({})), QJsonArray());
    }

    void looksInTheIndexThatHelps()
    {
        PlanNodeQuery page = queryFor("{\"planId\":\"A\",\"createdAt\":{\"$gte\":\"2026-01-01\"}}"_s);
        page.planId = "A"_s;
        page.limit = 20;
        const QString ofPlan = stepsFor(page);
        QVERIFY2(ofPlan.contains("planNodesByRow"_s) && !ofPlan.contains("TEMP B-TREE"_s),
                 qPrintable(ofPlan));
        const QString ofPlans = stepsFor(queryFor("{\"planId\":{\"$in\":[\"A\",\"B\"]}}"_s));
        QVERIFY2(ofPlans.contains("planNodesByRow (planId=?)"_s), qPrintable(ofPlans));
        PlanNodeQuery toDo = queryFor("{}"_s);
        toDo.worker = "ann"_s;
        toDo.finished = false;
        toDo.order = PlanNodeOrder::FinishDate;
        const QString ofUser = stepsFor(toDo);
        QVERIFY2(ofUser.contains("planNodesByProject (projectId=?"_s), qPrintable(ofUser));
        PlanNodeQuery none = queryFor("{\"planId\":null}"_s);
        none.planId = QString();
        const QString ofNone = stepsFor(none);
        QVERIFY2(ofNone.contains("planNodesWithoutPlan"_s) && !ofNone.contains("TEMP B-TREE"_s),
                 qPrintable(ofNone));
    }
};

QTEST_GUILESS_MAIN(TestPlanNodeLists)
#include "TestPlanNodeLists.moc"
