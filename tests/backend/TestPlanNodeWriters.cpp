// Several who write the same nodes at once, and what is left of a batch when the service is killed.

#include "PlanNodeRequests.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtTest>

#include <functional>

using namespace KvTest;

namespace {

QByteArray requestText(const QByteArray& method, const QByteArray& path, const QByteArray& body)
{
    return method + " /task-service/" + path +
           " HTTP/1.1\r\nHost: localhost\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}

/// A batch of so many nodes, told from others by their category.
QByteArray batch(int nodes, const QString& category)
{
    QJsonObject node = task("Pour the slab of the floor, 浇筑"_s, 1);
    node.insert("category"_s, category);
    node.insert("userIds"_s, QJsonArray{"ann"_s, "bo"_s});
    node.insert("remark"_s, "x"_s.repeated(300));
    const QByteArray json = jsonOf(node);
    return '[' + (json + ',').repeated(nodes - 1) + json + ']';
}

} // namespace

class TestPlanNodeWriters : public QObject
{
    Q_OBJECT

private:
    /// What a killed service leaves of batches that were sent to it.
    class Crash
    {
    public:
        bool start()
        {
            if (!m_service.process.start({"--create"_s})) {
                return false;
            }
            m_plan = m_service.newPlan("crash"_s);
            return !m_plan.isEmpty();
        }

        /// Sends the batch, kills the service when @p now says so or the reply is there, and starts it again.
        bool round(int nodes, const QString& category, const std::function<bool(bool logChanged)>& now)
        {
            const QByteArray text =
                requestText("POST", "plans/" + m_plan + "/planNodes", batch(nodes, category));
            RawHttp http(m_service.process.port());
            const QString log = m_service.process.databaseFile() + "-wal"_s;
            const auto stateOf = [&] {
                const QFileInfo file(log);
                return qMakePair(file.size(), file.lastModified());
            };
            const auto before = stateOf();
            http.send(text);
            bool changed = false;
            while (!http.hasReply() && !now(changed)) {
                changed = changed || stateOf() != before;
            }
            const bool answered = http.hasReply() && http.read().status == 200;
            m_service.process.kill();
            changed = changed || stateOf() != before;
            if (!m_service.process.start()) {
                return false;
            }
            m_sent.insert(category, qMakePair(nodes, answered));
            m_unanswered += answered ? 0 : 1;
            m_insideTheWrite += !answered && changed ? 1 : 0;
            return true;
        }

        int storedOf(const QString& category)
        {
            const QByteArray path = "plans/" + m_plan + "/planNodes?only_count=true&category=";
            return objectOf(m_service.get(path + encoded(category))).value("count"_s).toInt(-1);
        }

        /// Empty when every batch is there whole or not at all, and every answered one is there.
        QString complaint()
        {
            m_kept = 0;
            for (auto it = m_sent.cbegin(); it != m_sent.cend(); ++it) {
                const int stored = storedOf(it.key());
                m_kept += stored > 0 && !it->second ? 1 : 0;
                if (stored != it->first && (stored != 0 || it->second)) {
                    return "%1: %2 of %3 nodes, %4"_s.arg(it.key()).arg(stored).arg(it->first).arg(
                        it->second ? "answered"_s : "not answered"_s);
                }
            }
            return QString();
        }

        QString report() const
        {
            return "%1 killed before their reply, %2 of these after the first byte of the log, %3 found whole"_s
                .arg(m_unanswered)
                .arg(m_insideTheWrite)
                .arg(m_kept);
        }
        int insideTheWrite() const { return m_insideTheWrite; }
        int unanswered() const { return m_unanswered; }

    private:
        NodeService m_service;
        QByteArray m_plan;
        QMap<QString, QPair<int, bool>> m_sent; ///< nodes and whether they were acknowledged, by category
        int m_unanswered = 0;
        int m_insideTheWrite = 0;
        int m_kept = 0;
    };

private Q_SLOTS:
    void batchesSurviveBeingKilled_data()
    {
        QTest::addColumn<int>("nodes");
        QTest::addColumn<int>("rounds");
        QTest::newRow("3,000 nodes") << 3000 << 24;
        QTest::newRow("a large batch") << KV_LARGE_BATCH << 20;
    }

    void batchesSurviveBeingKilled()
    {
        QFETCH(int, nodes);
        QFETCH(int, rounds);
        const quint32 seed = QRandomGenerator::system()->generate();
        QRandomGenerator random(seed);
        Crash crash;
        QVERIFY(crash.start());
        QElapsedTimer timer;
        timer.start();
        QVERIFY(crash.round(nodes, "measured"_s, [](bool) { return false; }));
        const int usual = static_cast<int>(timer.elapsed());
        for (int i = 0; i < rounds; ++i) {
            // At any moment, and in every other round at any moment from the first byte of the log on.
            const bool atTheLog = i % 2 == 1;
            const qint64 wait = random.bounded(atTheLog ? nodes * 5 : usual * 1000) * qint64(1000);
            QElapsedTimer since;
            since.start();
            bool begun = false;
            QVERIFY(crash.round(nodes, "round %1"_s.arg(i), [&](bool logChanged) {
                if (atTheLog && logChanged && !begun) {
                    begun = true;
                    since.start();
                }
                return begun == atTheLog && since.nsecsElapsed() >= wait;
            }));
            const QString complaint = crash.complaint();
            QVERIFY2(complaint.isEmpty(), qPrintable("seed %1: %2"_s.arg(seed).arg(complaint)));
        }
        qInfo("seed %u, a batch of %d takes at most %d ms; of %d rounds: %s", seed, nodes, usual, rounds,
              qPrintable(crash.report()));
        // The rounds did meet what they are for.
        QVERIFY2(crash.unanswered() >= rounds / 4 && crash.insideTheWrite() > 0, qPrintable(crash.report()));
    }

    void twoWhoChangeDifferentKeysLoseNothing()
    {
        constexpr int count = 1000;
        NodeService service;
        QVERIFY2(service.process.start({"--create"_s}), qPrintable(service.process.failure()));
        const QByteArray plan = service.newPlan("pair"_s);
        QStringList names;
        for (int i = 0; i < count; ++i) {
            names.append("node %1"_s.arg(i));
        }
        const QStringList ids = service.addNodes(plan, names);
        const auto stored = [&] {
            return arrayOf(service.get("plans/" + plan + "/planNodes"));
        };
        const QJsonArray before = stored();
        QCOMPARE(before.size(), count);
        const auto changes = [&](const QString& key, const QString& text) {
            QJsonArray list;
            for (const QString& id : ids) {
                list.append(QJsonObject{{"_id"_s, id}, {key, text}});
            }
            return requestText("PUT", "planNodes", listJson(list));
        };
        const auto withoutStamp = [](const QJsonValue& node, const QStringList& keys) {
            QJsonObject object = node.toObject();
            for (const QString& key : QStringList{"updatedAt"_s} + keys) {
                object.remove(key);
            }
            return object;
        };
        RawHttp one(service.process.port());
        RawHttp two(service.process.port());
        for (int round = 0; round < 5; ++round) {
            const QString text = "round %1"_s.arg(round);
            one.send(changes("name"_s, text));
            two.send(changes("remark"_s, text));
            QCOMPARE(one.read().status, 200);
            QCOMPARE(two.read().status, 200);
            const QJsonArray now = stored();
            QCOMPARE(now.size(), count);
            for (int i = 0; i < count; ++i) {
                QCOMPARE(now.at(i).toObject().value("name"_s).toString(), text);
                QCOMPARE(now.at(i).toObject().value("remark"_s).toString(), text);
                QCOMPARE(withoutStamp(now.at(i), {"name"_s, "remark"_s}),
                         withoutStamp(before.at(i), {"name"_s, "remark"_s}));
            }
        }
        // One saves all at once while the other saves node by node.
        two.send(changes("remark"_s, "batch"_s));
        for (int i = 0; i < count; i += 10) {
            const RawReply reply = one.request("PUT", "/task-service/planNodes/" + ids.at(i).toLatin1(),
                                               "{\"name\":\"single\"}");
            QCOMPARE(reply.status, 200);
        }
        QCOMPARE(two.read().status, 200);
        const QJsonArray mixed = stored();
        for (int i = 0; i < count; ++i) {
            QCOMPARE(mixed.at(i).toObject().value("remark"_s).toString(), "batch"_s);
            QCOMPARE(mixed.at(i).toObject().value("name"_s).toString(),
                     i % 10 == 0 ? "single"_s : "round 4"_s);
        }
        // Of two who change the same key the later one wins, for every node, and nothing else is touched.
        for (int round = 0; round < 5; ++round) {
            one.send(changes("name"_s, "one %1"_s.arg(round)));
            two.send(changes("name"_s, "two %1"_s.arg(round)));
            QCOMPARE(one.read().status, 200);
            QCOMPARE(two.read().status, 200);
            const QJsonArray now = stored();
            const QString winner = now.first().toObject().value("name"_s).toString();
            QVERIFY2(winner == "one %1"_s.arg(round) || winner == "two %1"_s.arg(round), qPrintable(winner));
            for (int i = 0; i < count; ++i) {
                QCOMPARE(now.at(i).toObject().value("name"_s).toString(), winner);
                QCOMPARE(withoutStamp(now.at(i), {"name"_s}), withoutStamp(mixed.at(i), {"name"_s}));
            }
        }
        QVERIFY2(service.process.stop(), qPrintable(service.process.failure()));
    }
};

QTEST_GUILESS_MAIN(TestPlanNodeWriters)
#include "TestPlanNodeWriters.moc"
