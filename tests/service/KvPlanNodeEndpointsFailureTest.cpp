// What a request for plan nodes that fails leaves in the caller's records, whatever came instead of an
// answer.

#include "EndpointFailuresFixture.h"
#include "KvPlanNodeCalls.h"

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;

class KvPlanNodeEndpointsFailureTest : public EndpointFailuresFixture
{
    Q_OBJECT

private:
    QJsonObject toldObject() const override;
    void verifyFailures(const std::function<void()>& prepare) override;
};

QJsonObject KvPlanNodeEndpointsFailureTest::toldObject() const
{
    QJsonObject object = nodeObject(told, told);
    object.insert(QStringLiteral("count"), 5);
    return object;
}

void KvPlanNodeEndpointsFailureTest::verifyFailures(const std::function<void()>& prepare)
{
    for (const NodeCall& call : {readOne, create, update}) {
        prepare();
        KvPlanNode node = fullPlanNode();
        QVERIFY(!call(node));
        QCOMPARE(difference(dump(node), dump(emptied(fullPlanNode()))), QString());
    }
    for (const ListCall& call : {readPage, readPlans, readTodo}) {
        prepare();
        QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2)};
        QVERIFY(!call(nodes));
        QCOMPARE(nodes.size(), 2);
        QCOMPARE(difference(dump(nodes.at(0)), dump(fullPlanNode(1))), QString());
        QCOMPARE(difference(dump(nodes.at(1)), dump(fullPlanNode(2))), QString());
    }
    for (const ListCall& call : {createMany, updateMany}) {
        prepare();
        QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2)};
        QVERIFY(!call(nodes));
        QVERIFY(nodes.isEmpty());
    }
    prepare();
    int count = 77;
    QVERIFY(!Kv::requestPlanNodeRangeCount(ofP1(), count));
    QCOMPARE(count, 0);
    prepare();
    QVERIFY(!Kv::requestDeletePlanNode(n1));
    prepare();
    QVERIFY(!Kv::requestDeletePlanNodes({n1}));
}

QTEST_GUILESS_MAIN(KvPlanNodeEndpointsFailureTest)
#include "KvPlanNodeEndpointsFailureTest.moc"
