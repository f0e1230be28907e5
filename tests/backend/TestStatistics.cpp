// Numbers of progress through the real process, against counts that are done here, node by node.

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

    void countsAsDates_data()
    {
        QTest::addColumn<QString>("dates"); // days from today: start, finish, actual start, actual finish
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("situation");
        const auto row = [](const char* name, const char* dates, const char* status, const char* situation) {
            QTest::newRow(name) << QString::fromLatin1(dates) << QString::fromLatin1(status)
                                << QString::fromLatin1(situation);
        };
        row("to come", "1 5 - -", "unstart", "normal");
        row("begins today", "0 5 - -", "unstart", "normal");
        row("should have begun", "-1 5 - -", "unstart", "delay");
        row("no dates", "- - - -", "unstart", "normal");
        row("begun in time", "-2 5 -2 -", "processing", "normal");
        row("begun early", "2 5 -2 -", "processing", "ahead");
        row("begun late", "-4 5 -2 -", "processing", "delay");
        row("has to finish today", "-2 0 -2 -", "processing", "normal");
        row("begun early but past its finish", "-5 -1 -6 -", "processing", "delay");
        row("begun without plan", "- - -1 -", "processing", "normal");
        row("begun, no planned start", "- 3 -1 -", "processing", "normal");
        row("finished in time", "-9 -5 -9 -5", "finished", "normal");
        row("finished early", "-9 -5 -9 -6", "finished", "ahead");
        row("finished late", "-9 -5 -9 -4", "finished", "delay");
        row("finished in time though begun late", "-9 -5 -7 -5", "finished", "normal");
        row("finished without plan", "- - -9 -5", "finished", "normal");
        row("finished without start", "-9 -5 - -5", "finished", "normal");
    }
    void countsAsDates()
    {
        QFETCH(QString, dates);
        QFETCH(QString, status);
        QFETCH(QString, situation);
        const QByteArray project = "dates " + QByteArray(QTest::currentDataTag());
        const QByteArray path = project.toPercentEncoding();
        const QStringList keys{"startDate"_s, "finishDate"_s, "actualStartDate"_s, "actualFinishDate"_s};
        QDate today;
        QByteArray reply;
        do {
            today = QDate::currentDate();
            QJsonObject node{{"projectId"_s, QString::fromLatin1(project)}};
            for (int i = 0; i < keys.size(); ++i) {
                const QString days = dates.split(QLatin1Char(' ')).at(i);
                // Hours do not count: late in the evening is still the same day.
                node.insert(keys.at(i), days == "-"_s ? ""_s
                                                      : today.addDays(days.toInt()).toString(Qt::ISODate) +
                                                            (i < 2 ? "T07:30:00.000"_s : "T22:15:00.000"_s));
            }
            const QJsonObject plan =
                objectOf(m_http->request("POST", "/task-service/plans",
                                         jsonOf({{"projectId"_s, QString::fromLatin1(project)},
                                                 {"projectData"_s, QJsonArray{node}}})));
            reply = body(path + "/planNodes_statistics");
            m_http->request("DELETE", "/task-service/plans/" + idOf(plan));
        } while (today != QDate::currentDate());
        QCOMPARE(
            QString::fromUtf8(reply),
            R"({"total":1,"items":[{"total":1,"status":"%1","items":[{"total":1,"situation":"%2"}]}]})"_s.arg(
                status, situation));
        QCOMPARE(body(path + "/planNodes_statistics"), QByteArray("{\"total\":0,\"items\":[]}"));
    }

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

    void weeksAreThoseOfTheirThursday_data()
    {
        QTest::addColumn<QString>("day");
        QTest::addColumn<int>("year");
        QTest::addColumn<int>("week");
        QTest::newRow("Friday, in the old year's last") << "2027-01-01"_s << 2026 << 53;
        QTest::newRow("Monday, in the new year's first") << "2024-12-30"_s << 2025 << 1;
        QTest::newRow("Sunday, in the old year's last") << "2023-01-01"_s << 2022 << 52;
        QTest::newRow("Sunday of a week 53") << "2021-01-03"_s << 2020 << 53;
        QTest::newRow("Monday after it") << "2021-01-04"_s << 2021 << 1;
        QTest::newRow("Thursday, new year") << "2026-01-01"_s << 2026 << 1;
        QTest::newRow("leap day") << "2024-02-29"_s << 2024 << 9;
        QTest::newRow("first day there is") << "0001-01-01"_s << 1 << 1;
        QTest::newRow("last day there is") << "9999-12-31"_s << 9999 << 52;
    }
    void weeksAreThoseOfTheirThursday()
    {
        QFETCH(QString, day);
        QFETCH(int, year);
        QFETCH(int, week);
        const QJsonObject node{{"actualFinishDate"_s, day + "T23:59:59.999"_s}};
        const QString project = "week of "_s + day;
        QCOMPARE(m_http
                     ->request("POST", "/task-service/plans",
                               jsonOf({{"projectId"_s, project}, {"projectData"_s, QJsonArray{node, node}}}))
                     .status,
                 200);
        QCOMPARE(
            QString::fromUtf8(
                body(project.toUtf8().toPercentEncoding() + "/planNodes_quantities_statistics?period=week")),
            R"([{"type":"week","year":%1,"month":0,"week":%2,"day":0,"total":2}])"_s.arg(year).arg(week));
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QString>("field");
        const auto row = [](const char* name, const char* query, const char* field) {
            QTest::newRow(name) << QByteArray(query) << QString::fromLatin1(field);
        };
        row("unknown period", "_quantities_statistics?period=quarter", "period");
        row("period in another case", "_quantities_statistics?period=Week", "period");
        row("no period", "_quantities_statistics?category=&personal=true", "period");
        row("empty period", "_quantities_statistics?period=", "period");
        row("personal is no flag", "_quantities_statistics?period=day&personal=1", "personal");
        row("unknown dimension", "_statistics?dimensions=[%22status%22,%22weather%22]", "dimensions");
        row("dimension is a number", "_statistics?dimensions=[1]", "dimensions");
        row("dimension twice", "_statistics?dimensions=[%22status%22,%22status%22]", "dimensions");
        row("no list", "_statistics?dimensions=status", "dimensions");
        row("an object", "_statistics?dimensions=%7B%7D", "dimensions");
        row("empty dimensions", "_statistics?dimensions=", "dimensions");
        row("personal is empty", "_statistics?personal=", "personal");
    }
    void refuses()
    {
        QFETCH(QByteArray, query);
        QFETCH(QString, field);
        const RawReply reply = m_http->get("/task-service/projects/sample-project/planNodes" + query);
        QCOMPARE(reply.status, 400);
        QCOMPARE(errorOf(reply), "badParameter "_s + field);
    }

    void namesWhatItDoesNotKnow()
    {
        QVERIFY(body("p/planNodes_quantities_statistics?period=quarter").contains("quarter"));
        QVERIFY(body("p/planNodes_statistics?dimensions=[%22weather%22]").contains("weather"));
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
