// What a file of edited tasks means for a plan, and whether the plan then holds it.

#include <NodeEdits.h>
#include <RecordJson.h>
#include <SaveCheck.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

namespace {

// Three tasks, the second under the first and the third after the second.
QList<KvPlanNode> plan()
{
    QList<KvPlanNode> nodes;
    for (int row = 1; row <= 3; ++row) {
        KvPlanNode node;
        node.id = QStringLiteral("n%1").arg(row);
        node.guid = node.id;
        node.name = QStringLiteral("Task %1").arg(row);
        node.planId = QStringLiteral("p1");
        node.planNodeId = row;
        node.uniqueId = 10 * row;
        node.parentTaskId = row == 2 ? 10 : 0;
        node.updatedAt = QDateTime(QDate(2026, 3, 5), QTime(8, 30));
        node.updatedBy = QStringLiteral("ben");
        nodes.append(node);
    }
    KvPlanPredecessor link;
    link.sourcePlanNodeUniqueId = 20;
    link.sourcePlanNodeId = 2;
    link.sourcePlanNodeName = QStringLiteral("Task 2");
    link.targetPlanNodeUniqueId = QStringLiteral("30");
    link.targetPlanNodeId = 3;
    link.targetPlanNodeName = QStringLiteral("Task 3");
    nodes[2].predecessors.append(link);
    return nodes;
}

EditFindings check(const QByteArray& json, const QList<KvPlanNode>& stored = plan(), bool overwrites = false)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("the test's JSON: %s", qPrintable(error.errorString()));
    return checkEdits(document, QStringLiteral("p1"), stored, overwrites);
}

// "n1: name=A uniqueId=5; new: ..." for all that would be sent.
QString summary(const EditFindings& findings)
{
    QStringList edits;
    for (const NodeEdit& edit : findings.edits) {
        QStringList changes;
        for (const FieldChange& change : edit.changes)
            changes.append(change.field->name + QLatin1Char('=') + change.field->shown(change.becomes));
        edits.append((edit.isNew ? QStringLiteral("new") : edit.node.id) + QStringLiteral(": ") +
                     changes.join(QLatin1Char(' ')));
    }
    return edits.join(QStringLiteral("; "));
}

} // namespace

class NodeEditsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatWasPrintedIsNoChange()
    {
        const QJsonArray nodes = nodesToJson(plan());
        QCOMPARE(summary(check(QJsonDocument(nodes).toJson())), QString());
        const QJsonObject whole{{QStringLiteral("id"), QStringLiteral("p1")},
                                {QStringLiteral("planNodes"), nodes}};
        const EditFindings findings = check(QJsonDocument(whole).toJson());
        QCOMPARE(summary(findings), QString());
        QCOMPARE(findings.problems, QStringList());
    }

    void changes_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* json, const char* expected) {
            QTest::newRow(name) << QByteArray(json) << QString::fromUtf8(expected);
        };
        row("nothing", "[]", "");
        row("no fields", "[{\"id\":\"n1\"}]", "");
        row("a name", "[{\"id\":\"n2\",\"name\":\"第2层\"}]", "n2: name=第2层");
        row("the order of the file",
            "[{\"id\":\"n3\",\"name\":\"C\"},{\"id\":\"n1\",\"planWorkload\":4,\"name\":\"A\"}]",
            "n3: name=C; n1: name=A planWorkload=4");
        row("a date taken away", "[{\"id\":\"n1\",\"startDate\":null}]", "");
        row("a field that the library's save does not compare", "[{\"id\":\"n1\",\"remark\":\"look\"}]",
            "n1: remark=look");
        row("what the service tells", "[{\"id\":\"n1\",\"milestone\":true,\"updatedBy\":\"x\",\"notes\":5}]",
            "");
        row("a new task gets its numbers", "[{\"name\":\"D\",\"parentTaskId\":10}]",
            "new: name=D planNodeId=4 uniqueId=31 parentTaskId=10");
        row("an empty id is none", "[{\"id\":\"\",\"name\":\"D\"},{\"id\":null,\"name\":\"E\"}]",
            "new: name=D planNodeId=4 uniqueId=31; new: name=E planNodeId=5 uniqueId=32");
        row("numbers behind those of the file",
            "[{\"name\":\"D\"},{\"name\":\"E\",\"uniqueId\":70,\"planNodeId\":7}]",
            "new: name=D planNodeId=8 uniqueId=71; new: name=E planNodeId=7 uniqueId=70");
        row("a copied task", "[{\"guid\":\"n1\",\"planId\":\"p9\",\"name\":\"Task 1\"}]",
            "new: name=Task 1 planNodeId=4 uniqueId=31");
        row("a link by its number",
            "[{\"id\":\"n2\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":30,\"type\":1}]}]",
            "n2: predecessors=30/1");
        row("the same link by its number",
            "[{\"id\":\"n3\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":20}]}]", "");
        row("a link to a new task",
            "[{\"name\":\"D\",\"uniqueId\":40},{\"id\":\"n1\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":"
            "40}]}]",
            "new: name=D planNodeId=4 uniqueId=40; n1: predecessors=40/0");
        row("parents that change places",
            "[{\"id\":\"n2\",\"parentTaskId\":0},{\"id\":\"n1\",\"parentTaskId\":20}]",
            "n2: parentTaskId=0; n1: parentTaskId=20");
    }

    void changes()
    {
        QFETCH(QByteArray, json);
        const EditFindings findings = check(json);
        QCOMPARE(findings.problems, QStringList());
        QTEST(summary(findings), "expected");
        for (const NodeEdit& edit : findings.edits)
            QCOMPARE(edit.node.planId, QStringLiteral("p1"));
    }

    void linksAreCompleted()
    {
        const EditFindings findings =
            check("[{\"id\":\"n2\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":30}]},"
                  "{\"name\":\"D\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":10}]}]");
        const KvPlanPredecessor link = findings.edits.at(0).node.predecessors.first();
        QCOMPARE(link.sourcePlanNodeName, QStringLiteral("Task 3"));
        QCOMPARE(link.sourcePlanNodeId, 3);
        QCOMPARE(link.targetPlanNodeName, QStringLiteral("Task 2"));
        QCOMPARE(link.targetPlanNodeId, 2);
        QCOMPARE(link.targetPlanNodeUniqueId, QStringLiteral("20"));
        QCOMPARE(findings.edits.at(1).node.predecessors.first().targetPlanNodeUniqueId, QStringLiteral("31"));
    }

    void problems_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("problem");
        const auto row = [](const char* name, const char* json, const char* problem) {
            QTest::newRow(name) << QByteArray(json) << QString::fromUtf8(problem);
        };
        row("another object", "{\"AllTasks\":[]}", "it holds no tasks");
        row("tasks that are no list", "{\"planNodes\":{}}", "it holds no tasks");
        row("no object", "[1]", "entry 1 of the file is no task object");
        row("an id that is none", "[{\"id\":5}]", "task 1 of the file has an \"id\" that is no text");
        row("another plan's task", "[{\"id\":\"z\\u001b\",\"name\":\"A\"}]",
            "task 1 of the file (z ) \"A\" is none of the plan's; leave its \"id\" out to create it");
        row("twice", "[{\"id\":\"n1\"},{\"id\":\"n1\"}]", "task 2 of the file (n1) stands in the file twice");
        row("unknown field", "[{\"id\":\"n1\",\"nane\":\"A\"}]",
            "task 1 of the file (n1) has \"nane\", which is no field of a task (did you mean \"name\"?)");
        row("a tree", "[{\"id\":\"n1\",\"children\":[]}]", "has \"children\", as in a tree; save what");
        row("wrong type", "[{\"id\":\"n1\",\"name\":5}]",
            "task 1 of the file (n1) has \"name\" \"5\"; it takes a text");
        row("an object for a number", "[{\"id\":\"n1\",\"planWorkload\":{}}]",
            "has \"planWorkload\" a JSON object; it takes a whole number");
        row("no date", "[{\"id\":\"n1\",\"startDate\":\"5.3.2026\"}]",
            "has \"startDate\" \"5.3.2026\"; it takes a date");
        row("null for a list", "[{\"id\":\"n1\",\"userIds\":null}]",
            "has \"userIds\" null; it takes a list of identifiers");
        row("too many percent", "[{\"id\":\"n1\",\"finishedPercentage\":100.5}]",
            "has \"finishedPercentage\" \"100.5\"; it takes a number from 0 to 100");
        row("a name taken away", "[{\"id\":\"n1\",\"name\":\"\"}]",
            "task 1 of the file (n1): \"name\" cannot be emptied; the service would keep Task 1");
        row("a percentage taken away", "[{\"id\":\"n1\",\"finishedPercentage\":-1}]",
            "\"finishedPercentage\" cannot be emptied; the service would keep 0%");
        row("an old state", "[{\"id\":\"n1\",\"name\":\"A\",\"updatedAt\":\"2026-03-05T08:29:59.999\"}]",
            "task 10 \"Task 1\" was changed by ben on 2026-03-05 08:30, after the file's state of it");
        row("a shared number", "[{\"id\":\"n1\",\"uniqueId\":20}]",
            "task 20 \"Task 1\" would share its \"uniqueId\" with another task");
        row("a new task with a number that is taken", "[{\"name\":\"D\",\"uniqueId\":30}]",
            "task 30 \"D\" would share its \"uniqueId\" with another task");
        row("two new tasks of one number",
            "[{\"name\":\"D\",\"uniqueId\":50},{\"name\":\"E\",\"uniqueId\":50}]",
            "task 50 \"D\" would share its \"uniqueId\" with another task");
        row("no such predecessor", "[{\"id\":\"n1\",\"predecessors\":[{\"sourcePlanNodeUniqueId\":99}]}]",
            "task 10 \"Task 1\" has predecessor 99, which does not exist");
        row("a circle", "[{\"id\":\"n1\",\"parentTaskId\":20}]", "would be its own ancestor");
    }

    void problems()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, problem);
        const EditFindings findings = check(json);
        QVERIFY2(findings.problems.join(QLatin1Char('\n')).contains(problem),
                 qPrintable(findings.problems.join(QLatin1Char('\n'))));
    }

    void manyOfAKindAreCounted()
    {
        const QByteArray entry = "{\"nane\":1},";
        const EditFindings findings = check('[' + entry.repeated(999) + "{}]");
        QCOMPARE(findings.problems.size(), 6);
        QCOMPARE(findings.problems.last(), QStringLiteral("… and 994 more of this kind"));
    }

    void overwriting()
    {
        const QByteArray old = "[{\"id\":\"n1\",\"name\":\"A\",\"updatedAt\":\"2026-03-05T08:00:00.000\"}]";
        QCOMPARE(check(old).problems.size(), 1);
        QCOMPARE(summary(check(old, plan(), true)), QStringLiteral("n1: name=A"));
        // Others' changes of tasks that the file leaves alone are no trouble.
        QCOMPARE(
            check("[{\"id\":\"n1\",\"name\":\"Task 1\",\"updatedAt\":\"2026-03-05T08:00:00.000\"}]").problems,
            QStringList());
        QCOMPARE(check("[{\"id\":\"n1\",\"name\":\"A\",\"updatedAt\":\"2026-03-05T08:30:00.000\"}]").problems,
                 QStringList());
    }

    void whatWasWrongBeforeIsNoProblem()
    {
        QList<KvPlanNode> stored = plan();
        stored[0].uniqueId = 30;
        QCOMPARE(check("[{\"id\":\"n1\",\"name\":\"A\"}]", stored).problems, QStringList());
        stored = plan();
        stored[0].parentTaskId = 20; // a circle of the first two
        QCOMPARE(check("[{\"id\":\"n3\",\"parentTaskId\":10}]", stored).problems, QStringList());
        QCOMPARE(check("[{\"id\":\"n1\",\"parentTaskId\":0}]", stored).problems, QStringList());
    }

    void aLargeFile()
    {
        constexpr int count = 100000;
        QList<KvPlanNode> stored;
        QJsonArray file;
        for (int i = 0; i < count; ++i) {
            KvPlanNode node;
            node.id = QStringLiteral("n%1").arg(i);
            node.uniqueId = i;
            node.parentTaskId = i - 1;
            node.name = QStringLiteral("Task");
            stored.append(node);
            file.append(
                QJsonObject{{QStringLiteral("id"), node.id}, {QStringLiteral("planWorkload"), i + 1}});
        }
        file.append(QJsonObject{{QStringLiteral("parentTaskId"), count - 1}});
        const EditFindings findings = checkEdits(QJsonDocument(file), QStringLiteral("p1"), stored, false);
        QCOMPARE(findings.problems, QStringList());
        QCOMPARE(findings.edits.size(), count + 1);
    }

    void saved()
    {
        const EditFindings findings =
            check("[{\"id\":\"n1\",\"name\":\"A\"},{\"name\":\"D\",\"planWorkload\":-1}]");
        QList<KvPlanNode> after = plan();
        // Nothing was saved.
        SaveFindings kept = checkSaved(findings.edits, plan(), after);
        QCOMPARE(kept.problems,
                 (QStringList{QStringLiteral("task 4 \"D\" was not created"),
                              QStringLiteral("task 1 \"A\": \"name\" was to become A and is Task 1")}));
        QVERIFY(kept.created.isEmpty() && kept.updated.isEmpty());
        // All was saved; the service has its own value for what is not sent.
        after[0].name = QStringLiteral("A");
        KvPlanNode created = findings.edits.at(1).node;
        created.id = QStringLiteral("n9");
        created.planWorkload = 0;
        after.append(created);
        kept = checkSaved(findings.edits, plan(), after);
        QCOMPARE(kept.problems, QStringList());
        QCOMPARE(kept.created.size(), 1);
        QCOMPARE(kept.created.first().id, QStringLiteral("n9"));
        QCOMPARE(kept.updated.first().id, QStringLiteral("n1"));
        // A task of that number which was there before is not the one that was created.
        QCOMPARE(checkSaved(findings.edits, after, after).problems.size(), 1);
        // Somebody deleted the other.
        after.removeFirst();
        QCOMPARE(checkSaved(findings.edits, plan(), after).problems,
                 QStringList{QStringLiteral("task 1 \"A\" is gone")});
    }
};

QTEST_GUILESS_MAIN(NodeEditsTest)
#include "NodeEditsTest.moc"
