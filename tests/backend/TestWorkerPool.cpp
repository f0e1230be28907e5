// Which job gets a worker when there are more jobs than workers.

#include "Text.h"
#include "http/WorkerPool.h"
#include "store/OpenStore.h"

#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <mutex>

Q_DECLARE_METATYPE(QVector<PlanService::Lane>)

using namespace PlanService;
using KvTest::operator""_s;

namespace {

constexpr int waitMs = 30000;

/// Jobs that tell when they have begun, and stay until they may end.
class Jobs
{
public:
    explicit Jobs(WorkerPool& pool)
        : m_pool(pool)
    {
    }
    ~Jobs() { m_end.release(1000); }

    bool add(Lane lane, int count = 1)
    {
        bool all = true;
        for (int i = 0; i < count; ++i) {
            const bool added = m_pool.add(
                [this](Store&) {
                    m_begun.release();
                    m_end.acquire();
                },
                lane);
            all = all && added;
        }
        return all;
    }
    /// Waits until @p count more have begun.
    bool begin(int count) { return m_begun.tryAcquire(count, waitMs); }
    int begun() const { return m_begun.available(); }
    void end(int count) { m_end.release(count); }

private:
    WorkerPool& m_pool;
    QSemaphore m_begun;
    QSemaphore m_end;
};

} // namespace

class TestWorkerPool : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QString m_path;

    std::unique_ptr<WorkerPool> pool(int workers, std::size_t queueLimit = 100) const
    {
        const QString path = m_path;
        return std::make_unique<WorkerPool>(workers, queueLimit, [path] { return connectStore(path); });
    }

    /// Whether a small job is done while whatever else waits or works.
    static bool answersASmallOne(WorkerPool& pool)
    {
        QSemaphore done;
        return pool.add([&](Store&) { done.release(); }) && done.tryAcquire(1, waitMs);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_path = m_folder.filePath("plans.db"_s);
        openStore(m_path, MissingDatabase::Create);
    }

    void oneWorkerIsLeftForSmallJobs_data()
    {
        QTest::addColumn<int>("workers");
        QTest::addColumn<QVector<Lane>>("lanes");
        QTest::addColumn<int>("most");
        const QVector<Lane> large{Lane::Large};
        const QVector<Lane> writes{Lane::Write};
        const QVector<Lane> both{Lane::Large, Lane::Write};
        QTest::newRow("two, large ones") << 2 << large << 1;
        QTest::newRow("two, writes") << 2 << writes << 1;
        QTest::newRow("two, both") << 2 << both << 1;
        QTest::newRow("three, large ones") << 3 << large << 1;
        QTest::newRow("three, both") << 3 << both << 2;
        QTest::newRow("four, large ones") << 4 << large << 2;
        QTest::newRow("four, writes") << 4 << writes << 2;
        QTest::newRow("four, both") << 4 << both << 3;
        QTest::newRow("eight, both") << 8 << both << 7;
    }
    void oneWorkerIsLeftForSmallJobs()
    {
        QFETCH(int, workers);
        QFETCH(QVector<Lane>, lanes);
        QFETCH(int, most);
        const auto some = pool(workers);
        Jobs jobs(*some);
        for (const Lane lane : lanes) {
            QVERIFY(jobs.add(lane, 20));
        }
        QVERIFY(jobs.begin(most));
        QVERIFY(answersASmallOne(*some));
        QTRY_COMPARE(some->load().running, static_cast<std::size_t>(most));
        QCOMPARE(jobs.begun(), 0);
        jobs.end(20 * lanes.size());
        QVERIFY(jobs.begin(20 * lanes.size() - most));
    }

    void smallJobsTakeEveryWorker()
    {
        const auto four = pool(4);
        Jobs jobs(*four);
        QVERIFY(jobs.add(Lane::Small, 10));
        QVERIFY(jobs.begin(4));
        QCOMPARE(four->load().waiting, std::size_t(6));
    }

    void oneWorkerDoesEverything()
    {
        const auto one = pool(1);
        Jobs jobs(*one);
        QVERIFY(jobs.add(Lane::Large, 3) && jobs.add(Lane::Write, 3) && jobs.add(Lane::Small, 3));
        jobs.end(9);
        QVERIFY(jobs.begin(9));
    }

    void whoeverCameFirstGoesFirst()
    {
        const auto one = pool(1);
        Jobs jobs(*one);
        QVERIFY(jobs.add(Lane::Small));
        QVERIFY(jobs.begin(1));
        QList<int> order;
        std::mutex orderMutex; // which the thread sanitizer sees, other than Qt's semaphore
        QSemaphore done;
        const QList<Lane> lanes{Lane::Large, Lane::Small, Lane::Write, Lane::Large, Lane::Small, Lane::Write};
        for (int i = 0; i < lanes.size(); ++i) {
            QVERIFY(one->add(
                [&, i](Store&) {
                    {
                        const std::lock_guard<std::mutex> lock(orderMutex);
                        order.append(i);
                    }
                    done.release();
                },
                lanes.at(i)));
        }
        jobs.end(1);
        QVERIFY(done.tryAcquire(lanes.size(), waitMs));
        const std::lock_guard<std::mutex> lock(orderMutex);
        QCOMPARE(order, QList<int>({0, 1, 2, 3, 4, 5}));
    }

    void eachLaneHasAQueueOfItsOwn()
    {
        const auto two = pool(2, 3);
        Jobs jobs(*two);
        QVERIFY(jobs.add(Lane::Large));
        QVERIFY(jobs.begin(1));
        QVERIFY(jobs.add(Lane::Large, 3));
        QVERIFY(!jobs.add(Lane::Large));
        QVERIFY(jobs.add(Lane::Write, 3));
        QVERIFY(!jobs.add(Lane::Write));
        QVERIFY(answersASmallOne(*two));
        jobs.end(7);
        QVERIFY(jobs.begin(6));
    }

    void finishesWhatIsQueued()
    {
        std::atomic<int> done{0};
        {
            const auto three = pool(3);
            for (int i = 0; i < 30; ++i) {
                QVERIFY(three->add([&](Store&) { ++done; }, static_cast<Lane>(i % 3)));
            }
            three->finish();
            QCOMPARE(done.load(), 30);
            QVERIFY(!three->add([&](Store&) { ++done; }));
        }
        QCOMPARE(done.load(), 30);
    }
};

QTEST_GUILESS_MAIN(TestWorkerPool)
#include "TestWorkerPool.moc"
