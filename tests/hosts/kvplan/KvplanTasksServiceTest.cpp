// Tasks at the real service: what kvplan lists, changes, saves, deletes and counts is what the service holds.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::ServiceProcess;
using KvTest::textOf;
using KvTest::words;

namespace {

QStringList idsOf(const QJsonArray& tasks)
{
    QStringList ids;
    for (const QJsonValue& task : tasks)
        ids.append(textOf(task, "id"));
    return ids;
}

} // namespace

class KvplanTasksServiceTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_planId;

    KvplanRun run(const QStringList& arguments) const
    {
        Kvplan kvplan(m_service.baseUrl());
        kvplan.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("sample-project"));
        return kvplan.run(arguments);
    }

    // The plan's tasks as the service has them now.
    QJsonArray tasks() const
    {
        return run({QStringLiteral("show"), m_planId, QStringLiteral("--json")})
            .object()
            .value(QLatin1String("planNodes"))
            .toArray();
    }

    QJsonObject task(const QString& id) const
    {
        const QJsonArray all = tasks();
        for (const QJsonValue& one : all) {
            if (textOf(one, "id") == id)
                return one.toObject();
        }
        return {};
    }

    QString write(const QByteArray& content) const
    {
        QFile file(m_folder.filePath(QStringLiteral("edits.json")));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    KvplanRun save(const QJsonArray& edits, const QString& option = QStringLiteral("--yes")) const
    {
        return run({QStringLiteral("save"), m_planId, write(QJsonDocument(edits).toJson()), option});
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = seeded.value(QLatin1String("planId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    }

    void pagesHoldEveryTask()
    {
        const QStringList expected = idsOf(tasks());
        QStringList paged;
        for (int page = 0; page < 10; ++page)
            paged += idsOf(
                run({QStringLiteral("nodes"), m_planId, QStringLiteral("--json"), QStringLiteral("--limit"),
                     QStringLiteral("100"), QStringLiteral("--skip"), QString::number(100 * page)})
                    .array());
        QVERIFY(expected.size() > 300);
        QCOMPARE(paged, expected);
        const KvplanRun counted = run({QStringLiteral("nodes"), m_planId, QStringLiteral("--count")});
        QCOMPARE(counted.text(), QStringLiteral("%1\n").arg(expected.size()));
    }

    void filters_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("kind");
        QTest::newRow("finished") << words("--finished") << 0;
        QTest::newRow("unfinished") << words("--unfinished") << 1;
        QTest::newRow("name") << QStringList{QStringLiteral("--name"), QStringLiteral("^混凝土.*pour")} << 2;
        QTest::newRow("responsible") << words("--user wang.fang") << 3;
        QTest::newRow("another category") << words("--category other") << 4;
    }

    void filters()
    {
        QFETCH(QStringList, options);
        QFETCH(int, kind);
        QStringList expected;
        const QJsonArray all = tasks();
        for (const QJsonValue& one : all) {
            const QString name = textOf(one, "name");
            const bool finished = !textOf(one, "actualFinishDate").isEmpty();
            const bool meets[] = {
                finished, !finished,
                name.startsWith(QStringLiteral("混凝土")) && name.contains(QStringLiteral("Pour")),
                one[QLatin1String("userIds")].toArray().contains(QStringLiteral("wang.fang")), false};
            if (meets[kind])
                expected.append(textOf(one, "id"));
        }
        QVERIFY(kind == 4 || (!expected.isEmpty() && expected.size() < all.size()));
        const QStringList found =
            idsOf(run(QStringList{QStringLiteral("nodes"), m_planId, QStringLiteral("--json"),
                                  QStringLiteral("--limit"), QStringLiteral("1000")} +
                      options)
                      .array());
        QCOMPARE(found, expected);
    }

    void todoIsWhatIsNotFinished()
    {
        const KvplanRun todo = run(words("todo --json --limit 1000"));
        QCOMPARE(todo.error(), QString());
        int open = 0;
        const QJsonArray all = tasks();
        for (const QJsonValue& one : all)
            open += textOf(one, "actualFinishDate").isEmpty() ? 1 : 0;
        QCOMPARE(todo.array().size(), open);
        QString last;
        for (const QJsonValue& one : todo.array()) {
            QVERIFY(textOf(one, "finishDate") >= last);
            last = textOf(one, "finishDate");
        }
    }

    // Each field by itself, and every other one stays.
    void update()
    {
        struct Change
        {
            const char* text;
            QJsonValue value;
        };
        const QString odd = QStringLiteral("第2层 \"&\" %41 #1+1? \\ 🏗");
        const QByteArray named = "name=" + odd.toUtf8();
        const QJsonArray entities{QStringLiteral("e1"), QStringLiteral("e2")};
        const Change changes[] = {
            {named.constData(), odd},
            {"finishedPercentage=12.5%", 12.5},
            {"planNodeId=1000", 1000},
            {"uniqueId=77", 77},
            {"parentTaskId=0", 0},
            {"guid=5a3f", QStringLiteral("5a3f")},
            {"startDate=2026-03-05 08:30", QStringLiteral("2026-03-05T08:30:00.000")},
            {"finishDate=", QJsonValue::Null},
            {"remark=a=b", QStringLiteral("a=b")},
            {"isDistributed=yes", true},
            {"dynamicEffect=3", 3},
            {"displaySimulation=no", false},
            {"entityHideDate=2026-03-05T08:30:15.250", QStringLiteral("2026-03-05T08:30:15.250")},
            {"entityHideType=2", 2},
            {"planWorkload=7", 7},
            {"actualWorkload=8", 8},
            {"actualStartDate=2026-03-05", QStringLiteral("2026-03-05T00:00:00.000")},
            {"actualFinishDate=2026-03-06", QStringLiteral("2026-03-06T00:00:00.000")},
            {"userIds=ann,ben", QJsonArray{QStringLiteral("ann"), QStringLiteral("ben")}},
            {"executeIds=carl", QJsonArray{QStringLiteral("carl")}},
            {"cooperateIds=[\"a,b\"]", QJsonArray{QStringLiteral("a,b")}},
            {"links={\"m1\":[\"e1\",\"e2\"]}", QJsonObject{{QStringLiteral("m1"), entities}}},
            {"materialBills={\"b1\":[\"e1\",\"e2\"]}", QJsonObject{{QStringLiteral("b1"), entities}}},
            {"category=fit-out", QStringLiteral("fit-out")},
        };
        QJsonObject expected = tasks().at(20).toObject();
        const QString id = textOf(expected, "id");
        // What comes of a change by itself, and what a reply does not bring along.
        const QStringList others{QStringLiteral("updatedAt"), QStringLiteral("updatedBy"),
                                 QStringLiteral("documents"), QStringLiteral("milestone"),
                                 QStringLiteral("summary")};
        const auto compared = [&](QJsonObject task) {
            for (const QString& other : others)
                task.remove(other);
            return task;
        };
        for (const Change& change : changes) {
            const QString text = QString::fromUtf8(change.text);
            const KvplanRun changed = run({QStringLiteral("update"), id, text, QStringLiteral("--json")});
            QCOMPARE(changed.error(), QString());
            const QString field = text.section(QLatin1Char('='), 0, 0);
            QVERIFY2(expected.value(field) != change.value, qPrintable(field));
            expected.insert(field, change.value);
            QVERIFY2(compared(changed.object()) == compared(expected), qPrintable(changed.text()));
        }
        QCOMPARE(compared(task(id)), compared(expected));
    }

    void updateOfNothing()
    {
        const QJsonObject before = tasks().at(30).toObject();
        const KvplanRun same = run({QStringLiteral("update"), textOf(before, "id"),
                                    QStringLiteral("name=") + textOf(before, "name")});
        QCOMPARE(same.error(), QString());
        QVERIFY2(same.text().endsWith(QStringLiteral("not sent, as it is so already: name\n")),
                 qPrintable(same.text()));
        QCOMPARE(task(textOf(before, "id")), before);
    }

    // Two people at once, each with a field of their own.
    void updatesAtTheSameTime()
    {
        const QString id = textOf(tasks().at(40), "id");
        Kvplan kvplan(m_service.baseUrl());
        const KvplanRun both = kvplan.runInShell(
            QStringLiteral(
                "for i in 1 2 3 4 5; do \"$0\" update \"$1\" planWorkload=$i & \"$0\" update \"$1\" "
                "actualWorkload=$i & \"$0\" update \"$1\" remark=$i & wait; done"),
            {id});
        QCOMPARE(both.error(), QString());
        const QJsonObject after = task(id);
        QCOMPARE(after.value(QLatin1String("planWorkload")).toInt(), 5);
        QCOMPARE(after.value(QLatin1String("actualWorkload")).toInt(), 5);
        QCOMPARE(textOf(after, "remark"), QStringLiteral("5"));
    }

    void savingAnEditedPlan()
    {
        QJsonArray edits = tasks();
        const int count = edits.size();
        const auto edit = [&](int row, const QJsonObject& changes) {
            QJsonObject one = edits.at(row).toObject();
            for (auto member = changes.begin(); member != changes.end(); ++member)
                one.insert(member.key(), member.value());
            edits[row] = one;
            return textOf(one, "id");
        };
        const QString renamed = edit(50, {{QStringLiteral("name"), QStringLiteral("围挡")},
                                          {QStringLiteral("startDate"), QJsonValue::Null}});
        const QString remarked = edit(51, {{QStringLiteral("remark"), QStringLiteral("look")}});
        edits.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("New 第1")},
                                 {QStringLiteral("startDate"), QStringLiteral("2026-03-05")}});
        const KvplanRun tried = save(edits, QStringLiteral("--dry-run"));
        QVERIFY2(tried.text().endsWith(QStringLiteral("\nthis would create 1 task and change 2\n")),
                 qPrintable(tried.text()));
        QCOMPARE(tasks().size(), count);

        const KvplanRun saved = save(edits);
        QCOMPARE(saved.error(), QString());
        QCOMPARE(saved.exitCode, 0);
        const QJsonArray after = tasks();
        QCOMPARE(after.size(), count + 1);
        QCOMPARE(textOf(task(renamed), "name"), QStringLiteral("围挡"));
        QVERIFY(task(renamed).value(QLatin1String("startDate")).isNull());
        QCOMPARE(textOf(task(remarked), "remark"), QStringLiteral("look"));
        const QJsonObject created = after.last().toObject();
        QCOMPARE(textOf(created, "name"), QStringLiteral("New 第1"));
        QCOMPARE(textOf(created, "planId"), m_planId);
        QCOMPARE(textOf(created, "projectId"), QStringLiteral("sample-project"));
        QVERIFY2(saved.text().contains(QStringLiteral("\ncreated  %1  New 第1\n").arg(textOf(created, "id"))),
                 qPrintable(saved.text()));
        for (int row = 0; row < count; ++row) {
            if (row != 50 && row != 51)
                QVERIFY(after.at(row) == edits.at(row) ||
                        textOf(after.at(row), "category") == QStringLiteral("fit-out"));
        }

        // The same edits again are none; the state of the file is an old one for others.
        edits.removeLast();
        QCOMPARE(save(edits).text(), QStringLiteral("nothing to save: the plan is as the file has it\n"));
        edit(50, {{QStringLiteral("name"), QStringLiteral("Fence")}});
        const KvplanRun overtaken = save(edits);
        QCOMPARE(overtaken.faultOfFailure(4), QString());
        QVERIFY2(overtaken.error().contains(QStringLiteral("\"围挡\" was changed")),
                 qPrintable(overtaken.error()));
        QCOMPARE(textOf(task(renamed), "name"), QStringLiteral("围挡"));
    }

    // It does not come with the tasks of the plan's own category.
    void savingATaskOfAnotherCategory()
    {
        const QString id = textOf(tasks().at(80), "id");
        QCOMPARE(run({QStringLiteral("update"), id, QStringLiteral("category=demolition")}).error(),
                 QString());
        QJsonObject expected = task(id);
        const KvplanRun saved =
            save({QJsonObject{{QStringLiteral("id"), id}, {QStringLiteral("planWorkload"), 4321}}});
        QCOMPARE(saved.error(), QString());
        QVERIFY2(saved.text().contains(QStringLiteral("\nchanged  ") + id), qPrintable(saved.text()));
        QJsonObject after = task(id);
        QVERIFY(after.take(QStringLiteral("updatedAt")) != expected.take(QStringLiteral("updatedAt")));
        expected.insert(QStringLiteral("planWorkload"), 4321);
        QCOMPARE(after, expected);
    }

    void savingManyTasks()
    {
        QJsonArray edits;
        constexpr int count = 2000;
        for (int i = 0; i < count; ++i)
            edits.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("Task %1").arg(i)},
                                     {QStringLiteral("planWorkload"), i}});
        const int before = tasks().size();
        const KvplanRun saved = run({QStringLiteral("save"), m_planId, write(QJsonDocument(edits).toJson()),
                                     QStringLiteral("--yes"), QStringLiteral("--json")});
        QCOMPARE(saved.error(), QString());
        const QStringList ids = idsOf(saved.object().value(QLatin1String("created")).toArray());
        QCOMPARE(ids.size(), count);
        QCOMPARE(tasks().size(), before + count);
        const KvplanRun gone =
            run(QStringList{QStringLiteral("delete-nodes"), QStringLiteral("--yes")} + ids);
        QCOMPARE(gone.error(), QString());
        QCOMPARE(tasks().size(), before);
    }

    // The service refuses one value, and so the whole file: nothing of it is saved.
    void savingWhatTheServiceRefuses()
    {
        const QJsonArray before = tasks();
        const QJsonArray edits{QJsonObject{{QStringLiteral("id"), textOf(before.at(60), "id")},
                                           {QStringLiteral("planWorkload"), 5}},
                               QJsonObject{{QStringLiteral("id"), textOf(before.at(61), "id")},
                                           {QStringLiteral("name"), QString(200000, QLatin1Char('x'))}}};
        const KvplanRun refused = save(edits);
        QCOMPARE(refused.exitCode, 1);
        QVERIFY2(refused.error().startsWith(QStringLiteral("kvplan: cannot change tasks at ")),
                 qPrintable(refused.error().left(400)));
        QVERIFY2(refused.error().contains(QStringLiteral("400")), qPrintable(refused.error().left(400)));
        QCOMPARE(tasks(), before);
    }

    void deleting()
    {
        const QJsonArray before = tasks();
        const QString first = textOf(before.at(70), "id");
        const QString second = textOf(before.at(71), "id");
        QCOMPARE(run({QStringLiteral("delete-nodes"), first}).exitCode, 5); // nobody said yes
        QCOMPARE(tasks().size(), before.size());
        const KvplanRun gone = run({QStringLiteral("delete-nodes"), QStringLiteral("--yes"), first, second});
        QCOMPARE(gone.error(), QString());
        QCOMPARE(gone.exitCode, 0);
        const QStringList left = idsOf(tasks());
        QCOMPARE(left.size(), before.size() - 2);
        QVERIFY(!left.contains(first) && !left.contains(second));
        const KvplanRun unknown = run({QStringLiteral("delete-nodes"), first});
        QCOMPARE(unknown.faultOfFailure(1), QString());
        QVERIFY2(unknown.error().contains(QStringLiteral("404")), qPrintable(unknown.error()));
    }
};

QTEST_GUILESS_MAIN(KvplanTasksServiceTest)
#include "KvplanTasksServiceTest.moc"
