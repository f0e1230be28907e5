// What the site reports back, on the real service: responses, counts, metering states.

#include "KvPlanNodeServiceFixture.h"

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullResponse;
using KvTest::fullState;

Q_DECLARE_METATYPE(KvPlanNodeResponse)

namespace {

const QString user = QStringLiteral("anna.berger");

KvPlanNodeResponse reported(int percentage, const QDateTime& start = QDateTime(),
                            const QDateTime& finish = QDateTime())
{
    KvPlanNodeResponse response;
    response.percentage = percentage;
    response.actualStartDate = start;
    response.actualFinishDate = finish;
    return response;
}

bool isHers(const KvPlanNode& node)
{
    return node.userIds.contains(user) || node.executeIds.contains(user) ||
           node.cooperateIds.contains(user) || node.createdBy == user;
}

QString statusOf(const KvPlanNode& node)
{
    if (node.actualFinishDate.isValid())
        return QStringLiteral("finished");
    return node.actualStartDate.isValid() ? QStringLiteral("processing") : QStringLiteral("unstart");
}

} // namespace

class KvProgressServiceTest : public KvPlanNodeServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() override;
    void responseMovesItsNode_data();
    void responseMovesItsNode();
    void responsesComeOldestFirst();
    void documentsComeWithTheResponse();
    void refusedResponse_data();
    void refusedResponse();
    void statisticsAreThoseOfTheUser();
    void quantitiesAreThoseOfTheUser_data();
    void quantitiesAreThoseOfTheUser();
    void stateOfATask();
    void statesOfPlans();
    void refusedStates();

private:
    KvPlanNode newNode()
    {
        NodeList nodes{nodeNamed(QStringLiteral("task"), 1)};
        if (!data().createPlanNodes(newPlan().id, nodes))
            qFatal("no node");
        return nodes.first();
    }
    QByteArray m_maker;
    QByteArray m_counted;
};

void KvProgressServiceTest::init()
{
    KvPlanNodeServiceFixture::init();
    if (m_maker.isEmpty()) {
        const QString rights = QStringLiteral("read=all,create,edit,delete");
        m_maker = m_service.createToken(QStringLiteral("maker"), QStringLiteral("site"), rights);
        m_counted = m_service.createToken(user, m_seededProject, QStringLiteral("read=all,edit"));
        QVERIFY2(!m_maker.isEmpty() && !m_counted.isEmpty(), qPrintable(m_service.failure()));
    }
    GetSoftCache()->setCurrentProjectId(QStringLiteral("site"));
    NetworkManager::instance().setAccessToken(QString::fromLatin1(m_maker));
}

void KvProgressServiceTest::responseMovesItsNode_data()
{
    QTest::addColumn<KvPlanNodeResponse>("response");
    QTest::addColumn<double>("percentage");
    QTest::addColumn<QDateTime>("start"); // null: none; 1 January 2000: when it was reported
    QTest::addColumn<QDateTime>("finish");
    const QDateTime none;
    const QDateTime now(QDate(2000, 1, 1), QTime(0, 0));
    const QDateTime may4(QDate(2026, 5, 4), QTime(7, 30));
    const QDateTime may8(QDate(2026, 5, 8), QTime(17, 0));
    QTest::newRow("half done") << reported(50) << 50.0 << now << none;
    QTest::newRow("half done since") << reported(50, may4) << 50.0 << may4 << none;
    QTest::newRow("not begun") << reported(0) << 0.0 << none << none;
    QTest::newRow("begun") << reported(0, may4) << 0.0 << may4 << none;
    QTest::newRow("done") << reported(100) << 100.0 << now << now;
    QTest::newRow("done on a day") << reported(100, may4, may8) << 100.0 << may4 << may8;
    QTest::newRow("a finish counts as done") << reported(0, may4, may8) << 100.0 << may4 << may8;
}

void KvProgressServiceTest::responseMovesItsNode()
{
    QFETCH(KvPlanNodeResponse, response);
    QFETCH(double, percentage);
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, finish);
    const KvPlanNode node = newNode();
    const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
    QVERIFY(data().createPlanNodeResponse(node.id, response));
    QVERIFY(!response.id.isEmpty());
    QCOMPARE(response.createdBy, QStringLiteral("maker"));
    // The cached node has not moved until it is read again.
    KvPlanNode moved;
    QVERIFY(data().getPlanNodeFromCacheById(node.id, moved));
    QVERIFY(!moved.actualStartDate.isValid());
    moved = stored(node);
    QCOMPARE(moved.finishedPercentage, percentage);
    const auto isAsExpected = [&](const QDateTime& date, const QDateTime& expected) {
        if (expected.date().year() == 2000)
            return date >= before && date <= QDateTime::currentDateTime().addSecs(2);
        return date == expected && date.isValid() == expected.isValid();
    };
    QVERIFY2(isAsExpected(moved.actualStartDate, start), qPrintable(moved.actualStartDate.toString()));
    QVERIFY2(isAsExpected(moved.actualFinishDate, finish), qPrintable(moved.actualFinishDate.toString()));
    QCOMPARE(moved.name, node.name);
}

void KvProgressServiceTest::responsesComeOldestFirst()
{
    const KvPlanNode node = newNode();
    QList<KvPlanNodeResponse> sent;
    for (int i = 1; i <= 3; ++i) {
        KvPlanNodeResponse response = reported(i * 20);
        response.hostId = i == 2 ? node.id : QString();
        response.remark = QStringLiteral("第%1层 \"x\"\n").arg(i);
        response.media = {{QStringLiteral("photo"), QStringLiteral("preview"), i},
                          {QString(), QStringLiteral("without a file"), 0},
                          {QStringLiteral("video"), QString(), -1}};
        QVERIFY(data().createPlanNodeResponse(node.id, response));
        QCOMPARE(response.media.size(), 2);
        QCOMPARE(response.hostId, node.id);
        sent.append(response);
    }
    QList<KvPlanNodeResponse> read{fullResponse()};
    QVERIFY(data().getPlanNodeResponses(node.id, read));
    QCOMPARE(read.size(), 4);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(difference(dump(read.at(i + 1)), dump(sent.at(i))), QString());
    QVERIFY(!data().getPlanNodeResponses(QStringLiteral("no such node"), read));
    QCOMPARE(read.size(), 4);
}

void KvProgressServiceTest::documentsComeWithTheResponse()
{
    GetSoftCache()->setCurrentProjectId(m_seededProject);
    NetworkManager::instance().setAccessToken(QString::fromLatin1(m_counted));
    KvPlanNode withDocuments;
    for (const KvPlanNode& node : stored(m_seededPlan)) {
        if (!node.documents.isEmpty())
            withDocuments = node;
    }
    QVERIFY(!withDocuments.documents.isEmpty());
    const KvDocument document = withDocuments.documents.first();
    KvPlanNodeResponse response = reported(10);
    response.documentIds = QStringList{document.id};
    QVERIFY(data().createPlanNodeResponse(withDocuments.id, response));
    // The reply's ids are added to those that were sent.
    QCOMPARE(response.documentIds, (QStringList{document.id, document.id}));
    QCOMPARE(response.documents.size(), 1);
    QCOMPARE(difference(dump(response.documents.first()), dump(document)), QString());
    QList<KvPlanNodeResponse> read;
    QVERIFY(data().getPlanNodeResponses(withDocuments.id, read));
    QCOMPARE(read.last().documentIds, QStringList{document.id});
}

void KvProgressServiceTest::refusedResponse_data()
{
    QTest::addColumn<KvPlanNodeResponse>("response");
    const QDateTime day(QDate(2026, 5, 4), QTime(8, 0));
    QTest::newRow("more than all") << reported(101);
    QTest::newRow("less than nothing") << reported(-1);
    QTest::newRow("finished before it began") << reported(100, day, day.addDays(-1));
    KvPlanNodeResponse response = reported(50);
    response.hostId = QStringLiteral("another node");
    QTest::newRow("of another node") << response;
    response = reported(50);
    response.documentIds = QStringList{QStringLiteral("no such document")};
    QTest::newRow("with a document that is not there") << response;
}

void KvProgressServiceTest::refusedResponse()
{
    QFETCH(KvPlanNodeResponse, response);
    const KvPlanNode node = newNode();
    const KvPlanNode before = stored(node);
    QVERIFY(!data().createPlanNodeResponse(node.id, response));
    QCOMPARE(response.percentage, 0);
    QCOMPARE(difference(dump(stored(node)), dump(before)), QString());
    QList<KvPlanNodeResponse> read;
    QVERIFY(data().getPlanNodeResponses(node.id, read));
    QVERIFY(read.isEmpty());
}

// Counted here, node by node.
void KvProgressServiceTest::statisticsAreThoseOfTheUser()
{
    GetSoftCache()->setCurrentProjectId(m_seededProject);
    NetworkManager::instance().setAccessToken(QString::fromLatin1(m_counted));
    const NodeList nodes = stored(m_seededPlan);
    const QString category = nodes.first().category;
    for (const QString& asked : {QString(), category, QStringLiteral("other")}) {
        QMap<QString, int> byStatus;
        int total = 0;
        for (const KvPlanNode& node : nodes) {
            if (isHers(node) && (asked.isEmpty() || node.category == asked)) {
                ++byStatus[statusOf(node)];
                ++total;
            }
        }
        KvPlanStatistics statistics;
        QVERIFY(data().geStatistics(asked, statistics));
        QCOMPARE(statistics.total, total);
        QCOMPARE(statistics.items.size(), byStatus.size());
        for (const KvStatusStatistics& status : statistics.items) {
            QCOMPARE(status.total, byStatus.value(status.status));
            int sum = 0;
            for (const KvSituationCount& situation : status.items)
                sum += situation.total;
            QCOMPARE(sum, status.total);
        }
        QVERIFY(asked == QLatin1String("other") || (total > 0 && total < nodes.size()));
    }
}

void KvProgressServiceTest::quantitiesAreThoseOfTheUser_data()
{
    QTest::addColumn<QString>("period");
    for (const char* period : {"day", "week", "month", "year"})
        QTest::newRow(period) << QString::fromLatin1(period);
}

void KvProgressServiceTest::quantitiesAreThoseOfTheUser()
{
    QFETCH(QString, period);
    GetSoftCache()->setCurrentProjectId(m_seededProject);
    NetworkManager::instance().setAccessToken(QString::fromLatin1(m_counted));
    QMap<QString, int> expected; // "2026 5 0 4"
    for (const KvPlanNode& node : stored(m_seededPlan)) {
        const QDate day = node.actualFinishDate.date();
        if (!isHers(node) || !day.isValid())
            continue;
        int year = day.year();
        const int week = day.weekNumber(period == QLatin1String("week") ? &year : nullptr);
        const bool isDay = period == QLatin1String("day");
        const bool hasMonth = isDay || period == QLatin1String("month");
        ++expected[QStringLiteral("%1 %2 %3 %4")
                       .arg(year)
                       .arg(hasMonth ? day.month() : 0)
                       .arg(period == QLatin1String("week") ? week : 0)
                       .arg(isDay ? day.day() : 0)];
    }
    QVERIFY(!expected.isEmpty());
    QList<KvStatisticsQuantity> quantities;
    QVERIFY(data().getPlanNodeQuantities(quantities, QString(), period));
    QMap<QString, int> told;
    for (const KvStatisticsQuantity& quantity : qAsConst(quantities)) {
        QCOMPARE(quantity.type, period);
        told.insert(QStringLiteral("%1 %2 %3 %4")
                        .arg(quantity.year)
                        .arg(quantity.month)
                        .arg(quantity.week)
                        .arg(quantity.day),
                    quantity.total);
    }
    QCOMPARE(told, expected);
    QVERIFY(!data().getPlanNodeQuantities(quantities, QString(), QStringLiteral("moon")));
    QCOMPARE(quantities.size(), told.size());
}

void KvProgressServiceTest::stateOfATask()
{
    const KvPlanNode node = newNode();
    KvPlanNodeResponse response = reported(30);
    QVERIFY(data().createPlanNodeResponse(node.id, response));
    KvMeteringState state;
    state.planId = node.planId;
    state.taskId = node.id;
    state.responseId = response.id;
    state.state = 9; // is not sent
    QVERIFY(data().createMeteringState(state));
    QVERIFY(!state.id.isEmpty());
    QCOMPARE(state.state, 0);
    QCOMPARE(state.responseId, response.id);
    state.state = 4;
    QVERIFY(data().updateMeteringState(state));
    QCOMPARE(state.state, 4);
    QCOMPARE(state.responseId, response.id);
    KvMeteringState cached;
    QVERIFY(data().getPlanNodeMeteringState(node.id, cached));
    QCOMPARE(dump(cached), dump(state));
    // Another process knows nothing of it until it reads it.
    data().clear();
    QVERIFY(!data().getPlanNodeMeteringState(node.id, cached));
    QList<KvMeteringState> states;
    QVERIFY(data().getMeteringState({node.planId}, states));
    QCOMPARE(states.size(), 1);
    QCOMPARE(dump(states.first()), dump(state));
    QVERIFY(data().getPlanNodeMeteringState(node.id, cached));
    QCOMPARE(dump(cached), dump(state));
}

void KvProgressServiceTest::statesOfPlans()
{
    const KvPlanNode nodes[] = {newNode(), newNode(), newNode()};
    for (const KvPlanNode& node : nodes) {
        KvMeteringState state;
        state.taskId = node.id;
        state.state = 2;
        QVERIFY(data().updateMeteringState(state)); // creates it where there is none
        QCOMPARE(state.planId, node.planId);
    }
    QList<KvMeteringState> states{fullState()};
    QVERIFY(data().getMeteringState({nodes[2].planId, nodes[0].planId, QString()}, states));
    QCOMPARE(states.size(), 2);
    QCOMPARE(states.at(0).taskId, nodes[0].id); // in the order of their creation
    QCOMPARE(states.at(1).taskId, nodes[2].id);
    QVERIFY(data().getMeteringState({}, states));
    QVERIFY(states.isEmpty());
    // A deleted task takes its state along; this process goes on knowing it.
    QVERIFY(data().deletePlanNodeById(nodes[0].id));
    QVERIFY(data().getMeteringState({nodes[0].planId}, states));
    QVERIFY(states.isEmpty());
    KvMeteringState cached;
    QVERIFY(data().getPlanNodeMeteringState(nodes[0].id, cached));
}

void KvProgressServiceTest::refusedStates()
{
    KvMeteringState state = fullState();
    QVERIFY(!data().createMeteringState(state)); // of no task that there is
    QCOMPARE(dump(state), dump(KvMeteringState()));
    QVERIFY(!data().updateMeteringState(state)); // of none at all
    QVERIFY(!data().createMeteringState(state));
    KvMeteringState cached = fullState();
    for (const QString& task : {QString(), fullState().taskId})
        QVERIFY(!data().getPlanNodeMeteringState(task, cached));
    QCOMPARE(dump(cached), dump(fullState()));
}

QTEST_GUILESS_MAIN(KvProgressServiceTest)
#include "KvProgressServiceTest.moc"
