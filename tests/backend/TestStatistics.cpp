// Numbers of progress of the sample project through the real process, against counts that are done here, node
// by node.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QDate>
#include <QMap>
#include <QtTest>

#include <functional>

using namespace KvTest;

namespace {

QDate dayOf(const QJsonObject& node, const char* key)
{
    return QDate::fromString(node.value(QLatin1String(key)).toString().left(10), Qt::ISODate);
}

QString statusOf(const QJsonObject& node)
{
    if (dayOf(node, "actualFinishDate").isValid()) {
        return "finished"_s;
    }
    return dayOf(node, "actualStartDate").isValid() ? "processing"_s : "unstart"_s;
}

QString compared(const QDate& actual, const QDate& planned)
{
    if (!planned.isValid() || actual == planned) {
        return "normal"_s;
    }
    return actual > planned ? "delay"_s : "ahead"_s;
}

QString situationOf(const QJsonObject& node, const QDate& today)
{
    const QString status = statusOf(node);
    if (status == "finished"_s) {
        return compared(dayOf(node, "actualFinishDate"), dayOf(node, "finishDate"));
    }
    const QDate awaited = dayOf(node, status == "processing"_s ? "finishDate" : "startDate");
    if (awaited.isValid() && awaited < today) {
        return "delay"_s;
    }
    return status == "processing"_s ? compared(dayOf(node, "actualStartDate"), dayOf(node, "startDate"))
                                    : "normal"_s;
}

bool isOf(const QJsonObject& node, const QString& user)
{
    for (const char* list : {"userIds", "executeIds", "cooperateIds"}) {
        if (node.value(QLatin1String(list)).toArray().contains(user)) {
            return true;
        }
    }
    return node.value("createdBy"_s).toString() == user;
}

/// "2026 W 10": the week that the day's Thursday lies in, counted from that year's first Thursday.
QString bucketOf(const QDate& day, const QString& period)
{
    if (period == "week"_s) {
        const QDate thursday = day.addDays(4 - day.dayOfWeek());
        QDate first(thursday.year(), 1, 1);
        while (first.dayOfWeek() != Qt::Thursday) {
            first = first.addDays(1);
        }
        return "%1 0 %2 0"_s.arg(thursday.year()).arg(first.daysTo(thursday) / 7 + 1);
    }
    const bool byDay = period == "day"_s;
    return "%1 %2 0 %3"_s.arg(day.year())
        .arg(byDay || period == "month"_s ? day.month() : 0)
        .arg(byDay ? day.day() : 0);
}

using Count = QMap<QString, int>;

} // namespace

class TestStatistics : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;
    QVector<QJsonObject> m_nodes; ///< of every plan of the sample project
    QByteArray m_token;
    const QString m_user = "anna.berger"_s;
    bool m_withTokens = false;

    QByteArray header() const { return m_withTokens ? bearer(m_token) : QByteArray(); }

    QByteArray body(const QByteArray& path)
    {
        return m_http->get("/task-service/projects/" + path, header()).body;
    }

    void seed(const QStringList& arguments)
    {
        const QJsonObject seeded = m_service.seed(arguments);
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
    }

    /// Statuses and situations of the nodes, told once before the day changes and once after where it does.
    Count counted(const std::function<bool(const QJsonObject&)>& counts, const QDate& today)
    {
        Count numbers;
        for (const QJsonObject& node : qAsConst(m_nodes)) {
            if (counts(node)) {
                ++numbers[statusOf(node) + QLatin1Char(' ') + situationOf(node, today)];
            }
        }
        return numbers;
    }

    /// The service's numbers in the same form; every sum in the reply is held against its parts.
    Count told(const QByteArray& path)
    {
        Count numbers;
        const QJsonObject all = QJsonDocument::fromJson(body(path)).object();
        int sum = 0;
        const QJsonArray byStatus = all.value("items"_s).toArray();
        for (const QJsonValue& status : byStatus) {
            int sumOfStatus = 0;
            const QJsonArray bySituation = status.toObject().value("items"_s).toArray();
            for (const QJsonValue& situation : bySituation) {
                const int total = situation.toObject().value("total"_s).toInt();
                numbers.insert(status.toObject().value("status"_s).toString() + QLatin1Char(' ') +
                                   situation.toObject().value("situation"_s).toString(),
                               total);
                sumOfStatus += total;
            }
            [&] {
                QCOMPARE(status.toObject().value("total"_s).toInt(), sumOfStatus);
            }();
            sum += sumOfStatus;
        }
        [&] {
            QCOMPARE(all.value("total"_s).toInt(), sum);
        }();
        return numbers;
    }

    void compareCounts(const QByteArray& path, const std::function<bool(const QJsonObject&)>& counts)
    {
        QDate today;
        Count service;
        do {
            today = QDate::currentDate();
            service = told(path);
        } while (today != QDate::currentDate());
        QCOMPARE(service, counted(counts, today));
        QVERIFY(!service.isEmpty());
    }

private Q_SLOTS:
    void initTestCase()
    {
        seed({});
        seed({"--category"_s, "other"_s, "--seed"_s, "2"_s, "--start-date"_s, "2025-06-02"_s,
              "--status-date"_s, "2026-01-20"_s});
        seed({"--project"_s, "elsewhere"_s});
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        const QJsonArray plans = QJsonDocument::fromJson(body("sample-project/plans")).array();
        QCOMPARE(plans.size(), 2);
        for (const QJsonValue& plan : plans) {
            const QJsonArray nodes = objectOf(m_http->get("/task-service/plans/" + idOf(plan.toObject())))
                                         .value("tasks"_s)
                                         .toArray();
            for (const QJsonValue& node : nodes) {
                m_nodes.append(node.toObject());
            }
        }
        QCOMPARE(m_nodes.size(), 2 * 395);
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void countsAProject()
    {
        const auto all = [](const QJsonObject&) {
            return true;
        };
        compareCounts("sample-project/planNodes_statistics", all);
        // Without tokens everything is one's own.
        compareCounts(
            "sample-project/planNodes_statistics?personal=true&dimensions=[%22status%22,%22situation%22]",
            all);
        compareCounts(
            "sample-project/planNodes_statistics?personal=true&category=other",
            [](const QJsonObject& node) { return node.value("category"_s).toString() == "other"_s; });
    }

    void nestsAsAsked_data()
    {
        QTest::addColumn<QByteArray>("dimensions");
        QTest::addColumn<QStringList>("keys"); // of each level
        QTest::newRow("status in situation")
            << QByteArray("[\"situation\",\"status\"]") << QStringList{"situation"_s, "status"_s};
        QTest::newRow("status") << QByteArray("[\"status\"]") << QStringList{"status"_s};
        QTest::newRow("situation") << QByteArray("[ \"situation\" ]") << QStringList{"situation"_s};
        QTest::newRow("nothing") << QByteArray("[]") << QStringList();
    }
    void nestsAsAsked()
    {
        QFETCH(QByteArray, dimensions);
        QFETCH(QStringList, keys);
        QJsonObject level = QJsonDocument::fromJson(body("sample-project/planNodes_statistics?dimensions=" +
                                                         dimensions.toPercentEncoding()))
                                .object();
        QCOMPARE(level.value("total"_s).toInt(), m_nodes.size());
        for (const QString& key : qAsConst(keys)) {
            const QJsonArray items = level.value("items"_s).toArray();
            QVERIFY(!items.isEmpty());
            for (const QJsonValue& item : items) {
                QVERIFY(!item.toObject().value(key).toString().isEmpty());
            }
            level = items.first().toObject();
        }
        QVERIFY(!level.contains("items"_s));
    }

    void countsWhatWasFinished_data()
    {
        QTest::addColumn<QString>("period");
        for (const char* period : {"day", "week", "month", "year"}) {
            QTest::newRow(period) << QString::fromLatin1(period);
        }
    }
    void countsWhatWasFinished()
    {
        QFETCH(QString, period);
        Count expected;
        for (const QJsonObject& node : qAsConst(m_nodes)) {
            const QDate day = dayOf(node, "actualFinishDate");
            if (day.isValid()) {
                ++expected[bucketOf(day, period)];
            }
        }
        Count found;
        QDate before(1, 1, 1);
        const QJsonArray items =
            QJsonDocument::fromJson(
                body("sample-project/planNodes_quantities_statistics?category=&personal=true"
                     "&period=" +
                     period.toLatin1()))
                .array();
        QVERIFY(items.size() > (period == "year"_s ? 0 : 3));
        for (const QJsonValue& value : items) {
            const QJsonObject item = value.toObject();
            const auto number = [&](const char* key) {
                return item.value(QLatin1String(key)).toInt(-1);
            };
            QCOMPARE(item.value("type"_s).toString(), period);
            found.insert("%1 %2 %3 %4"_s.arg(number("year"))
                             .arg(number("month"))
                             .arg(number("week"))
                             .arg(number("day")),
                         number("total"));
            const QDate at = QDate(number("year"), qMax(1, number("month")), qMax(1, number("day")))
                                 .addDays(number("week") * 7);
            QVERIFY(before < at);
            before = at;
        }
        QCOMPARE(found, expected);
    }

    // The last one: from the first token on the requests above need one.
    void countsForTheTokensUser()
    {
        m_token = m_service.createToken(m_user, "sample-project"_s, "read=all"_s);
        m_withTokens = true;
        const auto mine = [&](const QJsonObject& node) {
            return isOf(node, m_user);
        };
        compareCounts("sample-project/planNodes_statistics?personal=true", mine);
        compareCounts("sample-project/planNodes_statistics", [](const QJsonObject&) { return true; });
        compareCounts("sample-project/planNodes_statistics?personal=true&category=other",
                      [&](const QJsonObject& node) {
                          return mine(node) && node.value("category"_s).toString() == "other"_s;
                      });
        // Reading one's own only makes no difference to what is personal, and all the difference otherwise.
        m_token = m_service.createToken(m_user, "sample-project"_s, "read=own"_s);
        compareCounts("sample-project/planNodes_statistics?personal=true", mine);
        compareCounts("sample-project/planNodes_statistics", mine);
        // Where a category may not be read its nodes are not counted, personal or not.
        m_token = m_service.createToken(m_user, "sample-project"_s, "read=all"_s, "other"_s);
        compareCounts("sample-project/planNodes_statistics", [](const QJsonObject& node) {
            return node.value("category"_s).toString() == "other"_s;
        });
        int finished = 0;
        for (const QJsonObject& node : qAsConst(m_nodes)) {
            finished += mine(node) && node.value("category"_s).toString() == "other"_s &&
                                dayOf(node, "actualFinishDate").isValid()
                            ? 1
                            : 0;
        }
        int toldFinished = 0;
        const QJsonArray years =
            QJsonDocument::fromJson(
                body("sample-project/planNodes_quantities_statistics?category=&personal=true&period=year"))
                .array();
        for (const QJsonValue& year : years) {
            toldFinished += year.toObject().value("total"_s).toInt();
        }
        QVERIFY(finished > 0);
        QCOMPARE(toldFinished, finished);
    }
};

QTEST_GUILESS_MAIN(TestStatistics)
#include "TestStatistics.moc"
