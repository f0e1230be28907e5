// Progress and rights at the real service: reports move tasks, counts are those of the tasks, and what a
// right does not allow is refused by name.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtCore/QDateTime>
#include <QtCore/QMap>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::ServiceProcess;
using KvTest::textOf;
using KvTest::words;

class KvplanProgressServiceTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    ServiceProcess m_guarded; // with tokens
    QString m_planId;

    Kvplan kvplan(const ServiceProcess& service, const QByteArray& token = {}) const
    {
        Kvplan made(service.baseUrl());
        made.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("sample-project"));
        if (!token.isEmpty())
            made.setEnvironment(QStringLiteral("KV_ACCESS_TOKEN"), QString::fromLatin1(token));
        return made;
    }

    KvplanRun run(const QStringList& arguments) const { return kvplan(m_service).run(arguments); }

    QJsonArray tasks() const
    {
        return run({QStringLiteral("show"), m_planId, QStringLiteral("--json")})
            .object()
            .value(QLatin1String("planNodes"))
            .toArray();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = seeded.value(QLatin1String("planId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        QVERIFY2(!m_guarded.seed().isEmpty(), qPrintable(m_guarded.failure()));
        QVERIFY2(m_guarded.start(), qPrintable(m_guarded.failure()));
    }

    void reportsMoveATask()
    {
        QString id;
        const QJsonArray all = tasks();
        for (const QJsonValue& one : all) {
            if (id.isEmpty() && textOf(one, "actualStartDate").isEmpty() &&
                !one[QLatin1String("summary")].toBool())
                id = textOf(one, "id");
        }
        QVERIFY(!id.isEmpty());
        const int earlier = run({QStringLiteral("responses"), id, QStringLiteral("--json")}).array().size();
        const KvplanRun begun =
            run({QStringLiteral("respond"), id, QStringLiteral("--percent"), QStringLiteral("40"),
                 QStringLiteral("--start"), QStringLiteral("2026-03-05T08:00"), QStringLiteral("--remark"),
                 QStringLiteral("第2层 begun"), QStringLiteral("--media"), QStringLiteral("f1,t1,5")});
        QCOMPARE(begun.error(), QString());
        QVERIFY2(begun.text().contains(QStringLiteral("40%\n")), qPrintable(begun.text()));
        QVERIFY2(begun.text().contains(QStringLiteral("2026-03-05 08:00\n")), qPrintable(begun.text()));
        const KvplanRun done = run(
            {QStringLiteral("respond"), id, QStringLiteral("--finish"), QStringLiteral("2026-03-09T17:00")});
        QCOMPARE(done.error(), QString());
        QVERIFY2(done.text().contains(QStringLiteral("100%\n")), qPrintable(done.text()));
        const KvplanRun listed = run({QStringLiteral("responses"), id, QStringLiteral("--json")});
        QCOMPARE(listed.array().size(), earlier + 2);
        const QJsonObject first = listed.array().at(earlier).toObject();
        QCOMPARE(textOf(first, "remark"), QStringLiteral("第2层 begun"));
        QCOMPARE(first.value(QLatin1String("percentage")).toInt(), 40);
        QCOMPARE(first.value(QLatin1String("media")).toArray().size(), 1);
        QVERIFY(run({QStringLiteral("responses"), id}).text().contains(QStringLiteral("第2层 begun\n")));
    }

    // Counted here from the tasks themselves.
    void countsAreThoseOfTheTasks()
    {
        QMap<QString, int> byStatus;
        QMap<QString, int> byMonth;
        QMap<QString, int> byDay;
        const QJsonArray all = tasks();
        for (const QJsonValue& one : all) {
            const QString finish = textOf(one, "actualFinishDate");
            ++byStatus[!finish.isEmpty()                          ? QStringLiteral("finished")
                       : textOf(one, "actualStartDate").isEmpty() ? QStringLiteral("unstart")
                                                                  : QStringLiteral("processing")];
            if (!finish.isEmpty()) {
                ++byMonth[finish.left(7)];
                ++byDay[finish.left(10)];
            }
        }
        const QJsonObject statistics = run(words("stats --json")).object();
        QCOMPARE(statistics.value(QLatin1String("total")).toInt(), all.size());
        QMap<QString, int> told;
        for (const QJsonValue& status : statistics.value(QLatin1String("items")).toArray()) {
            told.insert(textOf(status, "status"), status[QLatin1String("total")].toInt());
            int sum = 0;
            for (const QJsonValue& situation : status[QLatin1String("items")].toArray())
                sum += situation[QLatin1String("total")].toInt();
            QCOMPARE(sum, status[QLatin1String("total")].toInt());
        }
        QCOMPARE(told, byStatus);
        const KvplanRun chart = run(words("stats"));
        QVERIFY2(chart.text().contains(
                     QStringLiteral("\nfinished     %1 ").arg(byStatus.value(QStringLiteral("finished")))),
                 qPrintable(chart.text()));

        const auto quantities = [&](const char* period, int digits) {
            QMap<QString, int> counted;
            const QStringList lines =
                run({QStringLiteral("quantities"), QStringLiteral("--period"), QLatin1String(period)})
                    .text()
                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                    .mid(2);
            for (const QString& line : lines) // "2026-03         4  ███"
                counted.insert(line.left(digits),
                               line.mid(digits).trimmed().section(QLatin1Char(' '), 0, 0).toInt());
            return counted;
        };
        QCOMPARE(quantities("month", 7), byMonth);
        QCOMPARE(quantities("day", 10), byDay);
        int finished = 0;
        for (const QJsonValue& week : run(words("quantities --period week --json")).array())
            finished += week[QLatin1String("total")].toInt();
        QCOMPARE(finished, byStatus.value(QStringLiteral("finished")));
    }

    void metering()
    {
        const QString id = textOf(tasks().at(5), "id");
        const KvplanRun set = run({QStringLiteral("state"), QStringLiteral("--task"), id,
                                   QStringLiteral("--set"), QStringLiteral("7")});
        QCOMPARE(set.error(), QString());
        QCOMPARE(set.text(), id + QStringLiteral("  7\n"));
        int code = -1;
        for (const QJsonValue& state :
             run({QStringLiteral("state"), m_planId, QStringLiteral("--json")}).array()) {
            if (textOf(state, "taskId") == id)
                code = state[QLatin1String("state")].toInt();
        }
        QCOMPARE(code, 7);
        const KvplanRun unknown = run(words("state --task nope --set 7"));
        QCOMPARE(unknown.faultOfFailure(1), QString());
        QVERIFY2(unknown.error().contains(QStringLiteral("404")), qPrintable(unknown.error()));
    }

    void missingRights_data()
    {
        QTest::addColumn<QString>("rights");
        QTest::addColumn<QStringList>("line");
        QTest::addColumn<QString>("missing"); // null: nothing is
        const auto row = [](const char* name, const char* rights, const char* line, const char* missing) {
            QTest::newRow(name) << QString::fromLatin1(rights) << words(line) << QString::fromLatin1(missing);
        };
        row("update", "read=all", "update NODE remark=x", "edit");
        row("update, allowed", "read=all,edit", "update NODE remark=x", "");
        row("respond", "read=all", "respond NODE --percent 5", "edit");
        row("state", "read=all", "state --task NODE --set 1", "edit");
        row("delete-nodes", "read=all,edit", "delete-nodes --yes NODE NODE", "delete");
        row("nodes", "create", "nodes PLAN", "read");
        row("todo", "create", "todo", "read");
        row("stats", "create", "stats", "read");
        row("quantities", "create", "quantities", "read");
        row("responses", "create", "responses NODE", "read");
        row("state of a plan", "create", "state PLAN", "read");
    }

    void missingRights()
    {
        QFETCH(QString, rights);
        QFETCH(QStringList, line);
        QFETCH(QString, missing);
        const QByteArray token =
            m_guarded.createToken(QStringLiteral("ann"), QStringLiteral("sample-project"), rights);
        QVERIFY2(!token.isEmpty(), qPrintable(m_guarded.failure()));
        line.replaceInStrings(QStringLiteral("NODE"), textOf(tasks().at(5), "id"));
        line.replaceInStrings(QStringLiteral("PLAN"), m_planId);
        const KvplanRun done = kvplan(m_guarded, token).run(line);
        if (missing.isEmpty()) {
            QCOMPARE(done.error(), QString());
            QCOMPARE(done.exitCode, 0);
        } else {
            QCOMPARE(done.faultOfFailure(1), QString());
            QVERIFY2(done.error().contains(QStringLiteral("403")), qPrintable(done.error()));
            QVERIFY2(done.error().contains(QStringLiteral("'%1'").arg(missing)), qPrintable(done.error()));
            QVERIFY2(done.error().endsWith(QStringLiteral("ask whoever administers the service for it\n")),
                     qPrintable(done.error()));
        }
    }

    // What is told of the rights is what the service then does.
    void rights_data()
    {
        QTest::addColumn<QString>("granted");
        QTest::addColumn<QString>("told");
        QTest::newRow("all") << QStringLiteral("read=all,create,edit,delete,export")
                             << QStringLiteral("create    yes\nedit      yes\ndelete    yes\n"
                                               "read      all plans\nexport    yes\n");
        QTest::newRow("own") << QStringLiteral("read=own,edit")
                             << QStringLiteral("create    no\nedit      yes\ndelete    no\n"
                                               "read      your own plans and tasks at most\nexport    no\n");
    }

    void rights()
    {
        QFETCH(QString, granted);
        QFETCH(QString, told);
        const QByteArray token =
            m_guarded.createToken(QStringLiteral("ben"), QStringLiteral("sample-project"), granted);
        QVERIFY2(!token.isEmpty(), qPrintable(m_guarded.failure()));
        const KvplanRun shown = kvplan(m_guarded, token).run(words("rights"));
        QCOMPARE(shown.error(), QString());
        QCOMPARE(shown.text(), QStringLiteral("project   sample-project\n") + told);
    }

    void savingWithoutTheRightToCreate()
    {
        const QByteArray token = m_guarded.createToken(
            QStringLiteral("carl"), QStringLiteral("sample-project"), QStringLiteral("read=all,edit"));
        Kvplan program = kvplan(m_guarded, token);
        program.setInput("[{\"name\":\"New\"},{\"id\":\"" + textOf(tasks().at(6), "id").toLatin1() +
                         "\",\"planWorkload\":77}]");
        const KvplanRun saved = program.run({QStringLiteral("save"), m_planId, QStringLiteral("-"),
                                             QStringLiteral("--yes"), QStringLiteral("--json")});
        QCOMPARE(saved.exitCode, 1);
        QVERIFY2(saved.error().startsWith(QStringLiteral("kvplan: cannot create tasks at ")),
                 qPrintable(saved.error()));
        QVERIFY2(saved.error().contains(QStringLiteral("no right 'create'")), qPrintable(saved.error()));
        QVERIFY2(saved.error().contains(QStringLiteral("\"New\" was not created\n")),
                 qPrintable(saved.error()));
        QCOMPARE(saved.object().value(QLatin1String("created")).toArray().size(), 0);
        QCOMPARE(saved.object().value(QLatin1String("updated")).toArray().size(), 1);
    }

    void withoutAToken()
    {
        const KvplanRun refused = kvplan(m_guarded).run(words("stats"));
        QCOMPARE(refused.faultOfFailure(1), QString());
        QVERIFY2(refused.error().contains(QStringLiteral("401")), qPrintable(refused.error()));
        QVERIFY2(refused.error().endsWith(QStringLiteral("(--token-file or KV_ACCESS_TOKEN)\n")),
                 qPrintable(refused.error()));
    }
};

QTEST_GUILESS_MAIN(KvplanProgressServiceTest)
#include "KvplanProgressServiceTest.moc"
