// The look at a schedule file before anything is sent: what it finds, in which words, and how fast.

#include <ImportCheck.h>

#include <QtCore/QBuffer>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

ImportFindings check(const QByteArray& content)
{
    QBuffer file;
    file.setData(content);
    file.open(QIODevice::ReadOnly);
    return checkImport(file);
}

QJsonObject task(int uniqueId, int parent = 0, const QList<int>& predecessors = {})
{
    QJsonArray links;
    for (const int predecessor : predecessors)
        links.append(QJsonObject{{QStringLiteral("SourceTaskUniqueID"), predecessor}});
    return {{QStringLiteral("UniqueID"), uniqueId},
            {QStringLiteral("ParentTask"), parent},
            {QStringLiteral("Name"), QStringLiteral("第%1层").arg(uniqueId)},
            {QStringLiteral("Predecessors"), links}};
}

QByteArray schedule(const QJsonArray& tasks)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("AllTasks"), tasks}}).toJson();
}

// Fails a file in the middle of reading, as a disk may.
class BrokenFile : public QIODevice
{
public:
    bool isSequential() const override { return true; }
    bool atEnd() const override { return false; }

protected:
    qint64 readData(char* data, qint64 length) override
    {
        if (m_isBroken) {
            setErrorString(QStringLiteral("Input/output error"));
            return -1;
        }
        m_isBroken = true;
        const qint64 given = qMin<qint64>(length, 2);
        memcpy(data, "{}", size_t(given));
        return given;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    bool m_isBroken = false;
};

} // namespace

class ImportCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aGoodFile()
    {
        const ImportFindings findings =
            check(schedule({task(1), task(2, 1), task(3, 1, {2}), task(4, -1, {2, 3}), task(0)}));
        QCOMPARE(findings.problems, QStringList());
        QCOMPARE(findings.plan.planNodes.size(), 5);
        QCOMPARE(findings.plan.planNodes.at(2).uniqueId, 3);
    }

    // Numbers whose low byte is none of a text, as 256, are no trouble either.
    void linksNameBothTheirTasks()
    {
        QJsonObject target = task(256, 0, {300});
        target.insert(QStringLiteral("ID"), 4);
        QJsonObject source = task(300);
        source.insert(QStringLiteral("ID"), 9);
        const ImportFindings findings = check(schedule({target, source}));
        QCOMPARE(findings.problems, QStringList());
        const KvPlanPredecessor link = findings.plan.planNodes.first().predecessors.first();
        QCOMPARE(link.sourcePlanNodeUniqueId, 300);
        QCOMPARE(link.sourcePlanNodeId, 9);
        QCOMPARE(link.sourcePlanNodeName, QStringLiteral("第300层"));
        QCOMPARE(link.targetPlanNodeUniqueId, QStringLiteral("256"));
        QCOMPARE(link.targetPlanNodeId, 4);
        QCOMPARE(link.targetPlanNodeName, QStringLiteral("第256层"));
    }

    void nameAndFileOfThePlan()
    {
        const ImportFindings findings =
            check(R"({"Name": "总进度", "MPPFilePath": "D:/总.mpp", "AllTasks": []})");
        QCOMPARE(findings.problems, QStringList());
        QCOMPARE(findings.plan.name, QStringLiteral("总进度"));
        QCOMPARE(findings.plan.mppFilePath, QStringLiteral("D:/总.mpp"));
    }

    void aByteOrderMarkIsNoFault()
    {
        QCOMPARE(check("\xef\xbb\xbf{\"AllTasks\": []}").problems, QStringList());
    }

    void unreadableContent_data()
    {
        const QString noList =
            QStringLiteral("there is no list \"AllTasks\" in it; is this a schedule file?");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("problem");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("the file is empty");
        QTest::newRow("white space") << QByteArray(" \r\n\t") << QStringLiteral("the file is empty");
        QTest::newRow("a list") << QByteArray("[]") << noList;
        QTest::newRow("no tasks") << QByteArray("{\"Name\": \"a\"}") << noList;
        QTest::newRow("tasks that are no list") << QByteArray("{\"AllTasks\": {}}") << noList;
        QTest::newRow("an exported file")
            << QByteArray("{\"AllPlanNodes\": []}")
            << QStringLiteral(
                   "it holds \"AllPlanNodes\", as an exported plan does; a schedule file to import "
                   "has \"AllTasks\"");
        QTest::newRow("JSON, first line")
            << QByteArray("{\"a\": x}")
            << QStringLiteral("no valid JSON at line 1, column 7: illegal number");
        QTest::newRow("JSON, a word that is none")
            << QByteArray("{\"a\": trie}")
            << QStringLiteral("no valid JSON at line 1, column 9: illegal value");
        QTest::newRow("JSON, third line")
            << QByteArray("{\n\"a\": 1,\n  \"b\" 2}")
            << QStringLiteral("no valid JSON at line 3, column 7: missing name separator");
        QTest::newRow("JSON, Windows lines")
            << QByteArray("{\r\n\"a\": 1,\r\n  \"b\" 2}")
            << QStringLiteral("no valid JSON at line 3, column 7: missing name separator");
        QTest::newRow("JSON, Chinese before it in the line")
            << QByteArray("{\"第二层\": 1,\n\"第三层\" 2}")
            << QStringLiteral("no valid JSON at line 2, column 7: missing name separator");
        QTest::newRow("JSON, emoji before it in the line")
            << QByteArray("{\"😀😀\" 2}")
            << QStringLiteral("no valid JSON at line 1, column 7: missing name separator");
        QTest::newRow("JSON, ends too early")
            << QByteArray("{\"AllTasks\": [\n{}")
            << QStringLiteral("no valid JSON at line 2, column 3: unterminated array");
        QTest::newRow("JSON, goes on behind its end")
            << QByteArray("{\"AllTasks\": []}\n x")
            << QStringLiteral("no valid JSON at line 2, column 2: garbage at the end");
        QTest::newRow("JSON, bytes that are no text")
            << QByteArray("{\"a\": \"b\xff\"}")
            << QStringLiteral("no valid JSON at line 1, column 9: invalid UTF8 string");
        QTest::newRow("JSON, nested without end")
            << QByteArray(5000, '[') << QStringLiteral("no valid JSON at line 1, column ");
        QTest::newRow("no JSON at all")
            << QByteArray("<html>") << QStringLiteral("no valid JSON at line 1, column 1: illegal value");
    }

    void unreadableContent()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, problem);
        const QStringList problems = check(content).problems;
        QCOMPARE(problems.size(), 1);
        QVERIFY2(problems.first().startsWith(problem), qPrintable(problems.first()));
    }

    void aFileThatIsTooLarge()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("large.json")));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.resize((qint64(1) << 30) + 1)); // takes no room on the disk
        QCOMPARE(
            checkImport(file).problems,
            QStringList(QStringLiteral("the file has more than 1073741824 bytes, too many for one plan")));
        QCOMPARE(file.pos(), 0); // told by its size, before it was read
    }

    void aFileThatBreaksOff()
    {
        BrokenFile file;
        file.open(QIODevice::ReadOnly);
        QCOMPARE(checkImport(file).problems,
                 QStringList(QStringLiteral("it could not be read to its end: Input/output error")));
    }

    void problems_data()
    {
        QTest::addColumn<QJsonArray>("tasks");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("a number twice")
            << QJsonArray{task(1), task(2), task(1)}
            << QStringList(QStringLiteral("task 1 \"第1层\" has the unique id of task 1 \"第1层\""));
        QTest::newRow("a missing parent")
            << QJsonArray{task(1, 7)}
            << QStringList(QStringLiteral("task 1 \"第1层\" names parent 7, which does not exist"));
        QTest::newRow("a negative parent that is missing")
            << QJsonArray{task(1, -2)}
            << QStringList(QStringLiteral("task 1 \"第1层\" names parent -2, which does not exist"));
        QTest::newRow("no parent") << QJsonArray{task(1, 0), task(2, -1)} << QStringList();
        QTest::newRow("its own parent") << QJsonArray{task(1, 1)} << QStringList();
        QTest::newRow("children of task 0") << QJsonArray{task(0), task(1, 0)} << QStringList();
        QTest::newRow("a circle of two")
            << QJsonArray{task(1, 2), task(2, 1), task(3, 1)}
            << QStringList(QStringLiteral("parents in a circle: task 1 under 2 under 1"));
        QTest::newRow("two circles")
            << QJsonArray{task(1, 2), task(2, 1), task(3, 4), task(4, 5), task(5, 3)}
            << QStringList{QStringLiteral("parents in a circle: task 1 under 2 under 1"),
                           QStringLiteral("parents in a circle: task 3 under 4 under 5 under 3")};
        QTest::newRow("a predecessor that is missing")
            << QJsonArray{task(1), task(2, 0, {1, 9})}
            << QStringList(QStringLiteral("task 2 \"第2层\" has predecessor 9, which does not exist"));
        QTest::newRow("entries that are no tasks")
            << QJsonArray{QStringLiteral("a"), task(1), 5, task(2, 1), QJsonArray()}
            << QStringList{QStringLiteral("entry 1 of \"AllTasks\" is no task object"),
                           QStringLiteral("entry 3 of \"AllTasks\" is no task object"),
                           QStringLiteral("entry 5 of \"AllTasks\" is no task object")};
        QJsonObject dated = task(1);
        dated.insert(QStringLiteral("Start"), QStringLiteral("2024-03-05"));
        dated.insert(QStringLiteral("Finish"), QStringLiteral("2024-03-05T17:00:00"));
        QJsonObject numbered = task(2);
        numbered.insert(QStringLiteral("Start"), QJsonValue(QJsonValue::Null));
        numbered.insert(QStringLiteral("Finish"), 5);
        QJsonObject undated = task(3);
        undated.insert(QStringLiteral("Start"), QString());
        QTest::newRow("dates in another form")
            << QJsonArray{dated, numbered, undated}
            << QStringList{QStringLiteral("task 1 \"第1层\" has \"Start\" 2024-03-05, which is no date as "
                                          "2024-03-05T08:00:00 is one"),
                           QStringLiteral("task 2 \"第2层\" has \"Finish\" 5, which is no date as "
                                          "2024-03-05T08:00:00 is one")};
        QTest::newRow("control characters in a name")
            << QJsonArray{QJsonObject{{QStringLiteral("UniqueID"), 1},
                                      {QStringLiteral("ParentTask"), 7},
                                      {QStringLiteral("Name"), QStringLiteral("\x1b[2J\n\u202e第")}}}
            << QStringList(QStringLiteral("task 1 \" [2J 第\" names parent 7, which does not exist"));
    }

    void problems()
    {
        QFETCH(QJsonArray, tasks);
        QTEST(check(schedule(tasks)).problems, "expected");
    }

    void aLongCircleIsCutShort()
    {
        QJsonArray tasks;
        for (int i = 1; i <= 11; ++i)
            tasks.append(task(i, i % 11 + 1));
        QCOMPARE(
            check(schedule(tasks)).problems,
            QStringList(QStringLiteral("parents in a circle: task 1 under 2 under 3 under 4 under 5 under "
                                       "6 under 7 under 8 under 9 under 10 under …")));
    }

    void exactlyTheShownNumber()
    {
        QJsonArray tasks;
        for (int i = 1; i <= 5; ++i)
            tasks.append(task(i, 100 + i));
        const QStringList problems = check(schedule(tasks)).problems;
        QCOMPARE(problems.size(), 5);
        QVERIFY(problems.last().startsWith(QStringLiteral("task 5 ")));
    }

    void severalKindsStandApart()
    {
        QJsonArray tasks{task(1), task(1), 1};
        for (int i = 10; i < 17; ++i)
            tasks.append(task(i, 100 + i, {200 + i}));
        tasks.append(task(20, 21));
        tasks.append(task(21, 20));
        const QStringList expected{
            QStringLiteral("entry 3 of \"AllTasks\" is no task object"),
            QStringLiteral("task 1 \"第1层\" has the unique id of task 1 \"第1层\""),
            QStringLiteral("task 10 \"第10层\" names parent 110, which does not exist"),
            QStringLiteral("task 11 \"第11层\" names parent 111, which does not exist"),
            QStringLiteral("task 12 \"第12层\" names parent 112, which does not exist"),
            QStringLiteral("task 13 \"第13层\" names parent 113, which does not exist"),
            QStringLiteral("task 14 \"第14层\" names parent 114, which does not exist"),
            QStringLiteral("… and 2 more of this kind"),
            QStringLiteral("task 10 \"第10层\" has predecessor 210, which does not exist"),
            QStringLiteral("task 11 \"第11层\" has predecessor 211, which does not exist"),
            QStringLiteral("task 12 \"第12层\" has predecessor 212, which does not exist"),
            QStringLiteral("task 13 \"第13层\" has predecessor 213, which does not exist"),
            QStringLiteral("task 14 \"第14层\" has predecessor 214, which does not exist"),
            QStringLiteral("… and 2 more of this kind"),
            QStringLiteral("parents in a circle: task 20 under 21 under 20"),
        };
        QCOMPARE(check(schedule(tasks)).problems.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
    }

    // Measured against the mere reading of the JSON, so that a slow machine does not matter.
    void manyTasksQuickly()
    {
        QJsonArray tasks;
        for (int i = 1; i <= 100000; ++i)
            tasks.append(task(i, i - 1, {i - 1 ? i - 1 : 2, i}));
        const QByteArray content = schedule(tasks);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(QJsonDocument::fromJson(content).isObject());
        const qint64 reading = clock.restart();
        const ImportFindings findings = check(content);
        const qint64 checking = clock.elapsed();
        QCOMPARE(findings.problems, QStringList());
        QCOMPARE(findings.plan.planNodes.size(), 100000);
        QVERIFY2(checking < 8 * reading + 500,
                 qPrintable(QStringLiteral("%1 ms, reading alone %2 ms").arg(checking).arg(reading)));
    }
};

QTEST_GUILESS_MAIN(ImportCheckTest)
#include "ImportCheckTest.moc"
