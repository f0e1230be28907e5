// kvplan on the real service: what it shows is what the service holds, and refusals name their cause.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::ServiceProcess;

class KvplanServiceTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QJsonObject m_seeded;
    QJsonObject m_sample;
    QString m_planId;

private Q_SLOTS:
    void initTestCase()
    {
        m_seeded = m_service.seed();
        QVERIFY2(!m_seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = m_seeded.value(QLatin1String("planId")).toString();
        // The same plan as the service would send it, told without a database.
        m_sample = QJsonDocument::fromJson(ServiceProcess::run({QStringLiteral("sample")}).output).object();
        QCOMPARE(m_sample.value(QLatin1String("_id")).toString(), m_planId);
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    }

    void showAsJsonHoldsThePlan()
    {
        const KvplanRun run =
            Kvplan(m_service.baseUrl()).run({QStringLiteral("show"), m_planId, QStringLiteral("--json")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        const QJsonObject plan = run.object();
        QCOMPARE(plan.value(QLatin1String("id")).toString(), m_planId);
        for (const QString& key :
             {QStringLiteral("name"), QStringLiteral("category"), QStringLiteral("projectId"),
              QStringLiteral("createdBy"), QStringLiteral("updatedBy")})
            QCOMPARE(plan.value(key), m_sample.value(key));
        const QJsonArray nodes = plan.value(QLatin1String("planNodes")).toArray();
        const QJsonArray tasks = m_sample.value(QLatin1String("tasks")).toArray();
        QCOMPARE(nodes.size(), m_seeded.value(QLatin1String("nodes")).toInt());
        QCOMPARE(nodes.size(), tasks.size());
        const QList<QPair<QString, QString>> keys{
            {QStringLiteral("id"), QStringLiteral("_id")},
            {QStringLiteral("planNodeId"), QStringLiteral("id")},
            {QStringLiteral("uniqueId"), QStringLiteral("uniqueId")},
            {QStringLiteral("parentTaskId"), QStringLiteral("parentTaskID")},
            {QStringLiteral("name"), QStringLiteral("name")},
            {QStringLiteral("startDate"), QStringLiteral("startDate")},
            {QStringLiteral("finishDate"), QStringLiteral("finishDate")},
            {QStringLiteral("finishedPercentage"), QStringLiteral("finishedPercentage")},
            {QStringLiteral("milestone"), QStringLiteral("milestone")},
            {QStringLiteral("userIds"), QStringLiteral("userIds")},
            {QStringLiteral("documentIds"), QStringLiteral("documentIds")},
        };
        for (int i = 0; i < nodes.size(); ++i) {
            const QJsonObject node = nodes.at(i).toObject();
            const QJsonObject task = tasks.at(i).toObject();
            for (const auto& [ours, theirs] : keys)
                QVERIFY2(node.value(ours) == task.value(theirs),
                         qPrintable(QStringLiteral("%1 of %2").arg(ours).arg(i)));
            QCOMPARE(node.value(QLatin1String("predecessors")).toArray().size(),
                     task.value(QLatin1String("predecessors")).toArray().size());
        }
    }

    void showAndTreeHaveEveryTask()
    {
        const int tasks = m_seeded.value(QLatin1String("nodes")).toInt();
        const KvplanRun show = Kvplan(m_service.baseUrl()).run({QStringLiteral("show"), m_planId});
        QCOMPARE(show.error(), QString());
        QVERIFY(show.text().startsWith(m_seeded.value(QLatin1String("name")).toString() + QLatin1Char('\n')));
        QVERIFY(show.text().contains(QStringLiteral("  tasks     %1\n").arg(tasks)));
        QCOMPARE(show.output.count('\n'), tasks + 10);
        const KvplanRun tree = Kvplan(m_service.baseUrl()).run({QStringLiteral("tree"), m_planId});
        QCOMPARE(tree.error(), QString());
        QCOMPARE(tree.output.count('\n'), tasks + 4);
    }

    void treeAsJsonHoldsEveryTask()
    {
        const KvplanRun run =
            Kvplan(m_service.baseUrl()).run({QStringLiteral("tree"), m_planId, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        QList<QJsonArray> levels{run.array()};
        int nodes = 0;
        while (!levels.isEmpty()) {
            const QJsonArray level = levels.takeLast();
            for (const QJsonValue& value : level) {
                const QJsonObject node = value.toObject();
                ++nodes;
                const QJsonArray children = node.value(QLatin1String("children")).toArray();
                for (const QJsonValue& child : children)
                    QCOMPARE(child.toObject().value(QLatin1String("parentTaskId")),
                             node.value(QLatin1String("uniqueId")));
                levels.append(children);
            }
        }
        QCOMPARE(nodes, m_seeded.value(QLatin1String("nodes")).toInt());
    }

    void exportHoldsEveryTask()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("plan.json"));
        const KvplanRun run = Kvplan(m_service.baseUrl()).run({QStringLiteral("export"), m_planId, path});
        QCOMPARE(run.error(), QString());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject exported = QJsonDocument::fromJson(file.readAll()).object();
        QCOMPARE(exported.value(QLatin1String("Name")), m_sample.value(QLatin1String("name")));
        const QJsonArray nodes = exported.value(QLatin1String("AllPlanNodes")).toArray();
        const QJsonArray tasks = m_sample.value(QLatin1String("tasks")).toArray();
        QCOMPARE(nodes.size(), tasks.size());
        for (int i = 0; i < nodes.size(); ++i)
            QCOMPARE(nodes.at(i).toObject().value(QLatin1String("Name")),
                     tasks.at(i).toObject().value(QLatin1String("name")));
    }

    void anUnknownPlan()
    {
        const KvplanRun run =
            Kvplan(m_service.baseUrl()).run({QStringLiteral("show"), QStringLiteral("第2期")});
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("cannot read the plan \"第2期\"")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("404")), qPrintable(run.error()));
    }

    // A plan's life: made, listed, found, renamed, copied, deleted.
    void changes()
    {
        Kvplan kvplan(m_service.baseUrl());
        kvplan.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("第2期"));
        const auto run = [&](const QStringList& arguments) {
            const KvplanRun done = kvplan.run(arguments);
            return done.exitCode == 0 ? done.text() : done.error();
        };
        const auto names = [&](const QStringList& options) {
            QStringList found;
            const QJsonArray plans =
                kvplan.run(QStringList{QStringLiteral("plans"), QStringLiteral("--json")} + options).array();
            for (const QJsonValue& plan : plans)
                found.append(plan.toObject().value(QLatin1String("name")).toString());
            return found.join(QLatin1Char('|'));
        };
        QCOMPARE(run({QStringLiteral("plans")}), QStringLiteral("no plans\n"));
        const QString odd = QStringLiteral("第2层 \"&\" %41 #1+1? \\ 🏗");
        QString id;
        for (const QString& name : {QStringLiteral("Plan 10"), odd, QStringLiteral("plan 2")}) {
            const QString made = run({QStringLiteral("create"), name});
            id = made.section(QStringLiteral("  "), 0, 0);
            QCOMPARE(made, QStringLiteral("%1  %2\n").arg(id, name));
        }
        QCOMPARE(names({}), QStringLiteral("plan 2|Plan 10|") + odd);
        QCOMPARE(names({QStringLiteral("--name"), QStringLiteral("^plan 2$")}), QStringLiteral("plan 2"));
        QCOMPARE(names({QStringLiteral("--name"), QStringLiteral("\"&\" %41 #1\\+1\\?")}), odd);
        QCOMPARE(names({QStringLiteral("--category"), QStringLiteral("other")}), QString());
        QVERIFY(run({QStringLiteral("plans"), QStringLiteral("--page"), QStringLiteral("2"),
                     QStringLiteral("--page-size"), QStringLiteral("2")})
                    .endsWith(QStringLiteral("\n1 of 3 plans, page 2 of 2\n")));

        QCOMPARE(run({QStringLiteral("rename"), id, QStringLiteral("副本")}),
                 id + QStringLiteral("  副本\n"));
        QCOMPARE(names({QStringLiteral("--name"), QStringLiteral("副")}), QStringLiteral("副本"));
        QCOMPARE(run({QStringLiteral("delete"), QStringLiteral("--yes"), id}), QString());
        QCOMPARE(names({}), QStringLiteral("Plan 10|") + odd);
        const KvplanRun gone = kvplan.run({QStringLiteral("delete"), QStringLiteral("--yes"), id});
        QCOMPARE(gone.faultOfFailure(1), QString());
        QVERIFY2(gone.error().contains(QStringLiteral("404")), qPrintable(gone.error()));
    }

    void aCopyHasEveryTask()
    {
        const Kvplan kvplan(m_service.baseUrl());
        const KvplanRun copied = kvplan.run({QStringLiteral("copy"), m_planId, QStringLiteral("--json")});
        QCOMPARE(copied.error(), QString());
        const QString id = copied.object().value(QLatin1String("id")).toString();
        QVERIFY(!id.isEmpty() && id != m_planId);
        const QString original = kvplan.run({QStringLiteral("tree"), m_planId}).text();
        const QString copy = kvplan.run({QStringLiteral("tree"), id}).text();
        QCOMPARE(copy.section(QLatin1Char('\n'), 1), original.section(QLatin1Char('\n'), 1));
        QCOMPARE(kvplan.run({QStringLiteral("delete"), QStringLiteral("--yes"), id}).error(), QString());
        QCOMPARE(kvplan.run({QStringLiteral("tree"), m_planId}).text(), original);
    }

    void anImportedScheduleIsAPlan()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("schedule.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"Name": "总进度", "AllTasks": [
            {"UniqueID": 7, "ID": 1, "Name": "主体", "Start": "2026-03-05T08:00:00", "Finish": "2026-03-12T17:00:00"},
            {"UniqueID": 9, "ID": 2, "Name": "钢筋", "ParentTask": 7, "Start": "2026-03-05T08:00:00",
             "Finish": "2026-03-09T17:00:00", "Predecessors": [{"SourceTaskUniqueID": 7, "Type": 1}]}]})");
        file.close();
        Kvplan kvplan(m_service.baseUrl());
        kvplan.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("第3期"));
        const KvplanRun imported = kvplan.run({QStringLiteral("import"), file.fileName()});
        QCOMPARE(imported.error(), QString());
        const QString id = imported.text().section(QStringLiteral("  "), 0, 0);
        QCOMPARE(imported.text(), id + QStringLiteral("  总进度\n"));
        const QJsonArray roots = kvplan.run({QStringLiteral("tree"), id, QStringLiteral("--json")}).array();
        QCOMPARE(roots.size(), 1);
        const QJsonObject root = roots.first().toObject();
        QCOMPARE(root.value(QLatin1String("name")).toString(), QStringLiteral("主体"));
        QCOMPARE(root.value(QLatin1String("startDate")).toString(),
                 QStringLiteral("2026-03-05T08:00:00.000"));
        const QJsonArray children = root.value(QLatin1String("children")).toArray();
        QCOMPARE(children.size(), 1);
        const QJsonObject link =
            children.first().toObject().value(QLatin1String("predecessors")).toArray().first().toObject();
        QCOMPARE(link.value(QLatin1String("sourcePlanNodeUniqueId")).toInt(), 7);
        QCOMPARE(link.value(QLatin1String("type")).toInt(), 1);
        QVERIFY(kvplan.run({QStringLiteral("show"), id}).text().endsWith(QStringLiteral("0%  1\n")));
    }

    void aPatternThatIsNone()
    {
        Kvplan kvplan(m_service.baseUrl());
        kvplan.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("第2期"));
        const KvplanRun run =
            kvplan.run({QStringLiteral("plans"), QStringLiteral("--name"), QStringLiteral("(a+")});
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("400")) && run.error().contains(QStringLiteral("'(a+'")),
                 qPrintable(run.error()));
    }

    // Last of all, for from the first token on everything needs one.
    void tokensAndRights()
    {
        const QString project = m_seeded.value(QLatin1String("projectId")).toString();
        const QByteArray reader =
            m_service.createToken(QStringLiteral("ann"), project, QStringLiteral("read=all"));
        const QByteArray stranger = m_service.createToken(QStringLiteral("eve"), QStringLiteral("elsewhere"),
                                                          QStringLiteral("read=all"));
        QVERIFY2(!reader.isEmpty() && !stranger.isEmpty(), qPrintable(m_service.failure()));
        const QStringList show{QStringLiteral("show"), m_planId, QStringLiteral("--rows"),
                               QStringLiteral("0")};

        Kvplan kvplan(m_service.baseUrl());
        const KvplanRun without = kvplan.run(show);
        QCOMPARE(without.faultOfFailure(1), QString());
        QVERIFY2(without.error().contains(QStringLiteral("the service answered 401")),
                 qPrintable(without.error()));
        QVERIFY2(without.error().contains(QStringLiteral("--token-file or KV_ACCESS_TOKEN")),
                 qPrintable(without.error()));

        kvplan.setEnvironment(QStringLiteral("KV_ACCESS_TOKEN"), QString::fromLatin1(stranger));
        const KvplanRun forbidden = kvplan.run(show);
        QCOMPARE(forbidden.faultOfFailure(1), QString());
        QVERIFY2(forbidden.error().contains(QStringLiteral("the service answered 403")),
                 qPrintable(forbidden.error()));
        QVERIFY2(forbidden.error().contains(QStringLiteral("no right 'read'")),
                 qPrintable(forbidden.error()));
        QVERIFY2(!forbidden.error().contains(project), qPrintable(forbidden.error())); // it is not theirs
        QVERIFY(!forbidden.errors.contains(stranger));

        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("token")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(reader + '\n');
        file.close();
        const KvplanRun allowed =
            kvplan.run(show + QStringList{QStringLiteral("--token-file"), file.fileName()});
        QCOMPARE(allowed.error(), QString());
        QCOMPARE(allowed.exitCode, 0);

        // Who may read may not delete, and is told which right is missing.
        const KvplanRun kept = kvplan.run({QStringLiteral("delete"), QStringLiteral("--yes"), m_planId,
                                           QStringLiteral("--token-file"), file.fileName()});
        QCOMPARE(kept.faultOfFailure(1), QString());
        QVERIFY2(kept.error().contains(QStringLiteral("403")) &&
                     kept.error().contains(QStringLiteral("'delete'")),
                 qPrintable(kept.error()));
    }
};

QTEST_GUILESS_MAIN(KvplanServiceTest)
#include "KvplanServiceTest.moc"
