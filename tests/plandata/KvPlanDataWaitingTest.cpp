// What a host may do while it waits for a plan: read another, empty the caches, copy the object, quit.

#include "FacadeCopies.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <support/ScriptedServer.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

using KvTest::Reply;
using KvTest::ScriptedServer;

namespace {

const QString outerId = QStringLiteral("outer");
const QString innerId = QStringLiteral("inner");

Reply planReply(const QString& id, int held = 0)
{
    return Reply::json(QJsonObject{{QStringLiteral("_id"), id},
                                   {QStringLiteral("name"), QStringLiteral("name of ") + id}})
        .heldUntil(held);
}

} // namespace

class KvPlanDataWaitingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void innerReadEndsFirst_data();
    void innerReadEndsFirst();
    void innerReadOfTheSamePlan();
    void innerFailureLeavesTheOuterRead();
    void manyLevelsDeep();
    void cachesEmptiedDuringTheWait();
    void copyMadeDuringTheWait();
    void cacheIsReadDuringTheWait();
    void readsInARowFromATimer();
    void quitDuringTheWait();

private:
    void duringTheWait(int request, const std::function<void()>& work);
    KvPlanData& data() { return *KvPlanData::instance(); }

    ScriptedServer m_server;
    QMetaObject::Connection m_connection;
};

void KvPlanDataWaitingTest::init()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    data().clear();
}

void KvPlanDataWaitingTest::cleanup()
{
    disconnect(m_connection);
    QCOMPARE(m_server.complaint(), QString());
    m_server.reset();
}

// Runs `work` from a timer, once the server has that many requests and so a call is waiting for it.
void KvPlanDataWaitingTest::duringTheWait(int request, const std::function<void()>& work)
{
    m_connection =
        connect(&m_server, &ScriptedServer::requestReceived, this, [this, request, work](int count) {
            if (count == request)
                QTimer::singleShot(0, this, work);
        });
}

void KvPlanDataWaitingTest::innerReadEndsFirst_data()
{
    QTest::addColumn<int>("innerHeld");
    QTest::newRow("inner reply first") << 0;
    QTest::newRow("outer reply is there before the inner one") << 3;
}

void KvPlanDataWaitingTest::innerReadEndsFirst()
{
    QFETCH(int, innerHeld);
    m_server.enqueue(planReply(outerId, 2));
    m_server.enqueue(planReply(innerId, innerHeld));
    m_server.enqueue(planReply(QStringLiteral("third")));
    QStringList order;
    KvPlan inner;
    KvPlan third;
    duringTheWait(1, [&] {
        order.append(QStringLiteral("inner begins"));
        if (innerHeld != 0) {
            // Lets the inner reply go, from a level further in.
            QTimer::singleShot(0, this, [&] {
                order.append(QString::number(data().getPlanById(QStringLiteral("third"), third)));
            });
        }
        const bool read = data().getPlanById(innerId, inner);
        order.append(QStringLiteral("inner ends %1").arg(read));
    });
    KvPlan outer;
    order.append(QStringLiteral("outer begins"));
    const bool read = data().getPlanById(outerId, outer);
    order.append(QStringLiteral("outer ends %1").arg(read));

    QStringList wanted{QStringLiteral("outer begins"), QStringLiteral("inner begins"),
                       QStringLiteral("inner ends 1"), QStringLiteral("outer ends 1")};
    if (innerHeld != 0)
        wanted.insert(2, QStringLiteral("1"));
    else
        QVERIFY(data().getPlanById(QStringLiteral("third"), third));
    QCOMPARE(order, wanted);
    QCOMPARE(outer.id, outerId);
    QCOMPARE(inner.id, innerId);
    QCOMPARE(third.id, QStringLiteral("third"));
    QCOMPARE(data().getPlanName(outerId), QStringLiteral("name of outer"));
    QCOMPARE(data().getPlanName(innerId), QStringLiteral("name of inner"));
}

// The outer read ends last, so its reply is what stays cached.
void KvPlanDataWaitingTest::innerReadOfTheSamePlan()
{
    m_server.enqueue(planReply(QStringLiteral("first answer"), 2));
    m_server.enqueue(planReply(QStringLiteral("second answer")));
    KvPlan inner;
    QString nameBetween;
    duringTheWait(1, [&] {
        QVERIFY(data().getPlanById(outerId, inner));
        nameBetween = data().getPlanName(outerId);
    });
    KvPlan outer;
    QVERIFY(data().getPlanById(outerId, outer));
    QCOMPARE(nameBetween, QStringLiteral("name of second answer"));
    QCOMPARE(inner.id, QStringLiteral("second answer"));
    QCOMPARE(outer.id, QStringLiteral("first answer"));
    QCOMPARE(data().getPlanName(outerId), QStringLiteral("name of first answer"));
}

void KvPlanDataWaitingTest::innerFailureLeavesTheOuterRead()
{
    m_server.enqueue(planReply(outerId, 2));
    m_server.enqueue(Reply::json(QJsonObject(), 500));
    bool innerRead = true;
    duringTheWait(1, [&] {
        KvPlanNode node;
        innerRead = data().getPlanNodeFromCacheById(innerId, node);
    });
    KvPlan outer;
    QVERIFY(data().getPlanFromCacheById(outerId, outer));
    QVERIFY(!innerRead);
    QCOMPARE(outer.id, outerId);
}

void KvPlanDataWaitingTest::manyLevelsDeep()
{
    constexpr int levels = 6; // as many connections to one server as there are at a time
    // All are answered at once when the innermost asks, and still end from the inside out.
    m_server.setHandler([](const KvTest::Request& request) {
        return planReply(request.decodedPath().section(QLatin1Char('/'), -1), levels);
    });
    QList<int> ended;
    std::function<void(int)> read = [&](int level) {
        KvPlan plan;
        QVERIFY(data().getPlanById(QString::number(level), plan));
        QCOMPARE(plan.id, QString::number(level));
        ended.append(level);
    };
    m_connection = connect(&m_server, &ScriptedServer::requestReceived, this, [&](int count) {
        if (count < levels)
            QTimer::singleShot(0, this, [&read, count] { read(count + 1); });
    });
    read(1);
    QList<int> wanted;
    for (int level = levels; level > 0; --level)
        wanted.append(level);
    QCOMPARE(ended, wanted);
}

void KvPlanDataWaitingTest::cachesEmptiedDuringTheWait()
{
    m_server.enqueue(planReply(innerId));
    KvPlan plan;
    QVERIFY(data().getPlanById(innerId, plan));
    m_server.enqueue(planReply(outerId, 3));
    m_server.enqueue(planReply(QStringLiteral("third")));
    duringTheWait(2, [&] {
        data().clear();
        KvPlan third;
        QVERIFY(data().getPlanById(QStringLiteral("third"), third));
    });
    QVERIFY(data().getPlanById(outerId, plan));
    QVERIFY(data().getPlanName(innerId).isNull());
    QCOMPARE(data().getPlanName(outerId), QStringLiteral("name of outer"));
    QCOMPARE(data().getPlanName(QStringLiteral("third")), QStringLiteral("name of third"));
}

void KvPlanDataWaitingTest::copyMadeDuringTheWait()
{
    m_server.enqueue(planReply(outerId, 2));
    m_server.enqueue(planReply(innerId));
    KvPlanData* copy = nullptr;
    duringTheWait(1, [&] {
        KvPlan inner;
        QVERIFY(data().getPlanById(innerId, inner));
        copy = copyOf(data());
    });
    KvPlan outer;
    QVERIFY(data().getPlanById(outerId, outer));
    QVERIFY(copy != nullptr);
    QCOMPARE(copy->getPlanName(innerId), QStringLiteral("name of inner"));
    QVERIFY(copy->getPlanName(outerId).isNull());
}

void KvPlanDataWaitingTest::cacheIsReadDuringTheWait()
{
    m_server.enqueue(planReply(innerId));
    KvPlan plan;
    QVERIFY(data().getPlanById(innerId, plan));
    m_server.enqueue(planReply(outerId, 3));
    m_server.enqueue(planReply(QStringLiteral("third")));
    QString outerName = QStringLiteral("not asked");
    KvPlan cached;
    duringTheWait(2, [&] {
        QVERIFY(data().getPlanFromCacheById(innerId, cached));
        outerName = data().getPlanName(outerId);
        KvPlan third;
        QVERIFY(data().getPlanById(QStringLiteral("third"), third));
    });
    QVERIFY(data().getPlanById(outerId, plan));
    QCOMPARE(cached.id, innerId);
    QVERIFY(outerName.isNull()); // not before its reply has come
}

void KvPlanDataWaitingTest::readsInARowFromATimer()
{
    m_server.setHandler([](const KvTest::Request& request) {
        return planReply(request.decodedPath().section(QLatin1Char('/'), -1));
    });
    int done = 0;
    QTimer::singleShot(0, this, [&] {
        for (int i = 0; i < 100; ++i) {
            KvPlan plan;
            if (data().getPlanById(QString::number(i), plan) && plan.id == QString::number(i))
                ++done;
        }
    });
    QTRY_COMPARE(done, 100);
    QCOMPARE(m_server.connectionCount(), 1); // kept alive
}

// The last of the tests: a quitting application sends no more.
void KvPlanDataWaitingTest::quitDuringTheWait()
{
    m_server.enqueue(planReply(innerId));
    KvPlan plan;
    QVERIFY(data().getPlanById(innerId, plan));
    m_server.enqueue(planReply(outerId).with(Reply::StallBeforeHeaders));
    bool read = true;
    bool returned = false;
    QElapsedTimer clock;
    clock.start();
    duringTheWait(2, [] { QCoreApplication::quit(); });
    QTimer::singleShot(0, this, [&] {
        read = data().getPlanById(outerId, plan);
        returned = true;
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(returned);
    QVERIFY(!read);
    QVERIFY2(clock.elapsed() < 10000,
             qPrintable(QString::number(clock.elapsed()))); // not the timeout of 30 s
    QCOMPARE(plan.id, QString());
    QVERIFY(data().getPlanName(outerId).isNull());
    QCOMPARE(data().getPlanName(innerId), QStringLiteral("name of inner"));
}

QTEST_GUILESS_MAIN(KvPlanDataWaitingTest)
#include "KvPlanDataWaitingTest.moc"
