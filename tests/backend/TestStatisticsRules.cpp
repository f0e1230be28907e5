// By which rules the service counts progress, each on a plan of its own, and what it refuses to count.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QDate>
#include <QtTest>

using namespace KvTest;

class TestStatisticsRules : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;

    QByteArray body(const QByteArray& path) { return m_http->get("/task-service/projects/" + path).body; }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
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
};

QTEST_GUILESS_MAIN(TestStatisticsRules)
#include "TestStatisticsRules.moc"
