// The task tree: a correct Qt model, edits that are taken or refused, undo, summary tasks, states.

#include <TaskColumns.h>
#include <TaskModel.h>
#include <TaskState.h>

#include <KGanttGlobal>

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>
#include <QtWidgets/QUndoStack>

namespace {

QDateTime day(int number, int hour)
{
    return QDateTime(QDate(2026, 3, number), QTime(hour, 0));
}

KvPlanNode task(int number, int parent, const QString& name, int start, int finish)
{
    KvPlanNode node;
    node.id = QStringLiteral("n%1").arg(number);
    node.uniqueId = number;
    node.planNodeId = number;
    node.parentTaskId = parent;
    node.name = name;
    node.startDate = day(start, 8);
    node.finishDate = day(finish, 17);
    return node;
}

KvPlanPredecessor link(int from, int type, double lag = 0, int units = 2)
{
    KvPlanPredecessor predecessor;
    predecessor.sourcePlanNodeUniqueId = from;
    predecessor.type = type;
    predecessor.lag.value = lag;
    predecessor.lag.units = units;
    return predecessor;
}

// Structure > Floor 1 > (Rebar, Concrete), then Roof.
QList<KvPlanNode> tower()
{
    QList<KvPlanNode> nodes{
        task(4, 2, QStringLiteral("Concrete"), 6, 9), task(1, -1, QStringLiteral("Structure"), 2, 9),
        task(3, 2, QStringLiteral("Rebar"), 2, 5), task(2, 1, QStringLiteral("Floor 1"), 2, 9),
        task(5, -1, QStringLiteral("Roof"), 10, 12)};
    nodes[0].predecessors = {link(3, 1, 2), link(5, 0), link(99, 1)};
    return nodes;
}

} // namespace

class TaskModelTest : public QObject
{
    Q_OBJECT

private:
    QUndoStack m_undo;

private Q_SLOTS:
    void isACorrectModelThroughEdits()
    {
        TaskModel model(&m_undo);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setTasks(tower());
        QCOMPARE(model.rowCount(), 2);
        model.addTask(model.positionOf(model.index(1, 0)), QStringLiteral("Tiles"), QStringLiteral("p"));
        model.addTask(TaskList::none, QStringLiteral("Garden"), QStringLiteral("p"));
        QVERIFY(model.setData(model.index(0, 0), QStringLiteral("Frame")));
        while (m_undo.canUndo())
            m_undo.undo();
        while (m_undo.canRedo())
            m_undo.redo();
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.index(0, 0, model.index(1, 0)).data().toString(), QStringLiteral("Tiles"));
        model.setTasks({});
        QCOMPARE(model.rowCount(), 0);
    }

    void tasksStandInReadingOrder()
    {
        TaskModel model(&m_undo);
        model.setTasks(tower());
        QStringList names;
        for (int i = 0; i < model.tasks().size(); ++i)
            names.append(model.tasks().at(i).node.name);
        QCOMPARE(names,
                 QStringList({QStringLiteral("Structure"), QStringLiteral("Floor 1"), QStringLiteral("Rebar"),
                              QStringLiteral("Concrete"), QStringLiteral("Roof")}));
        const QModelIndex concrete = model.indexOf(3);
        QCOMPARE(concrete.parent().parent().data().toString(), QStringLiteral("Structure"));
        QCOMPARE(model.data(model.indexOf(3, TaskColumn::Predecessors)).toString(),
                 QStringLiteral("3FS+2d, 5FF, ?FS"));
        QCOMPARE(model.tasks().links().size(), 2); // the third names no task
        QCOMPARE(model.data(model.indexOf(0), KGantt::ItemTypeRole).toInt(), int(KGantt::TypeSummary));
        QCOMPARE(model.data(concrete, KGantt::ItemTypeRole).toInt(), int(KGantt::TypeTask));
    }

    void anEdit_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QVariant>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("a name") << int(TaskColumn::Name) << QVariant(QStringLiteral(" 钢筋 "))
                                << QStringLiteral("钢筋") << true;
        QTest::newRow("no name") << int(TaskColumn::Name) << QVariant(QStringLiteral("  "))
                                 << QStringLiteral("Rebar") << false;
        QTest::newRow("a start") << int(TaskColumn::Start) << QVariant(QStringLiteral("2026-03-04"))
                                 << QStringLiteral("2026-03-04") << true;
        QTest::newRow("a start behind the finish")
            << int(TaskColumn::Start) << QVariant(QStringLiteral("2026-03-06"))
            << QStringLiteral("2026-03-02") << false;
        QTest::newRow("no start") << int(TaskColumn::Start) << QVariant(QString()) << QString() << true;
        QTest::newRow("no date") << int(TaskColumn::Finish) << QVariant(QStringLiteral("tomorrow"))
                                 << QStringLiteral("2026-03-05") << false;
        QTest::newRow("a day that does not exist")
            << int(TaskColumn::Finish) << QVariant(QStringLiteral("2026-02-30"))
            << QStringLiteral("2026-03-05") << false;
        QTest::newRow("progress") << int(TaskColumn::Progress) << QVariant(40) << QStringLiteral("40 %")
                                  << true;
        QTest::newRow("too much progress")
            << int(TaskColumn::Progress) << QVariant(101) << QStringLiteral("0 %") << false;
        QTest::newRow("an actual start")
            << int(TaskColumn::ActualStart) << QVariant(QStringLiteral("2026-03-03"))
            << QStringLiteral("2026-03-03") << true;
    }

    void anEdit()
    {
        QFETCH(int, column);
        QFETCH(QVariant, typed);
        QFETCH(QString, shown);
        QFETCH(bool, isTaken);
        TaskModel model(&m_undo);
        model.setTasks(tower());
        QSignalSpy rejected(&model, &TaskModel::rejected);
        const QModelIndex cell = model.indexOf(2, column);
        const QString before = cell.data().toString();
        QCOMPARE(model.setData(cell, typed), isTaken);
        QCOMPARE(cell.data().toString(), shown);
        QCOMPARE(rejected.size(), isTaken ? 0 : 1);
        QCOMPARE(m_undo.canUndo(), isTaken);
        QCOMPARE(model.touched().isEmpty(), !isTaken);
        if (isTaken) {
            m_undo.undo();
            QCOMPARE(cell.data().toString(), before);
            m_undo.redo();
            QCOMPARE(cell.data().toString(), shown);
        }
    }

    void aDateKeepsItsTimeOfDay()
    {
        TaskModel model(&m_undo);
        QList<KvPlanNode> nodes = tower();
        nodes[2].finishDate = day(5, 13);
        model.setTasks(nodes);
        QVERIFY(model.setData(model.indexOf(2, TaskColumn::Finish), QStringLiteral("2026-03-07")));
        QCOMPARE(model.tasks().at(2).node.finishDate, day(7, 13));
        QVERIFY(model.setData(model.indexOf(2, TaskColumn::ActualStart), QStringLiteral("2026-03-03")));
        QCOMPARE(model.tasks().at(2).node.actualStartDate, day(3, 8)); // a working day's beginning
    }

    void summaryTasksFollow()
    {
        TaskModel model(&m_undo);
        model.setTasks(tower());
        QVERIFY(!(model.flags(model.indexOf(1, TaskColumn::Start)) & Qt::ItemIsEditable));
        QVERIFY(model.flags(model.indexOf(1, TaskColumn::Name)) & Qt::ItemIsEditable);
        QVERIFY(model.setData(model.indexOf(3, TaskColumn::Finish), QStringLiteral("2026-03-20")));
        for (const int above : {0, 1})
            QCOMPARE(model.tasks().at(above).node.finishDate, day(20, 17));
        QCOMPARE(model.touched().size(), 3); // and these will be saved
        m_undo.undo();
        for (const int above : {0, 1})
            QCOMPARE(model.tasks().at(above).node.finishDate, day(9, 17));
        m_undo.redo();
        QCOMPARE(model.tasks().at(0).node.finishDate, day(20, 17));
    }

    void aLockedModelTellsWhy()
    {
        TaskModel model(&m_undo);
        model.setTasks(tower());
        model.setEditable(false, QStringLiteral("because"));
        QVERIFY(!(model.flags(model.indexOf(2, TaskColumn::Name)) & Qt::ItemIsEditable));
        QVERIFY(!model.setData(model.indexOf(2), QStringLiteral("x")));
        QCOMPARE(model.data(model.indexOf(2), Qt::ToolTipRole).toString(), QStringLiteral("because"));
    }

    void aNewTaskGetsFreeNumbers()
    {
        TaskModel model(&m_undo);
        model.setTasks(tower());
        model.addTask(1, QStringLiteral("Cure"), QStringLiteral("p1"));
        const KvPlanNode node = model.tasks().at(5).node;
        QCOMPARE(node.uniqueId, 6);
        QCOMPARE(node.planNodeId, 6);
        QCOMPARE(node.parentTaskId, 2);
        QCOMPARE(node.planId, QStringLiteral("p1"));
        QVERIFY(node.id.isEmpty());
        QCOMPARE(model.parent(model.indexOf(5)), model.indexOf(1));
        m_undo.undo();
        QCOMPARE(model.tasks().size(), 5);
        QVERIFY(model.touched().isEmpty());
    }

    void whatWasNotSavedIsEditedAgain()
    {
        TaskModel model(&m_undo);
        model.setTasks(tower());
        KvPlanNode before = model.tasks().at(3).node;
        before.name = QStringLiteral("as it was"); // somebody else gave it the name that it has now
        KvPlanNode edited = before;
        edited.finishedPercentage = 40;
        KvPlanNode unknown;
        unknown.id = QStringLiteral("gone");
        unknown.name = QStringLiteral("Gone");
        KvPlanNode added;
        added.uniqueId = 3; // taken by now
        added.name = QStringLiteral("Cure");
        KvPlanNode below;
        below.uniqueId = 77;
        below.parentTaskId = 3;
        const QString name = model.tasks().at(3).node.name;
        model.editAgain({{before, edited}, {KvPlanNode(), unknown}}, {added, below});
        QCOMPARE(model.tasks().at(3).node.finishedPercentage, 40.0);
        QCOMPARE(model.tasks().at(3).node.name, name);
        QCOMPARE(model.touched().size(), 3);
        QCOMPARE(model.tasks().at(5).node.name, added.name);
        QCOMPARE(model.tasks().at(5).node.uniqueId, 6);
        QCOMPARE(model.tasks().at(6).parent, 5); // it moved along
        m_undo.undo();
        QCOMPARE(model.tasks().at(3).node.finishedPercentage, 0.0);
        QCOMPARE(model.tasks().size(), 5);
        QVERIFY(!m_undo.canUndo());
        model.editAgain({{before, before}}, {});
        QVERIFY(!m_undo.canUndo()); // nothing was edited, so there is nothing to undo
    }

    void parentsInACircleAreShownAllTheSame()
    {
        QList<KvPlanNode> nodes = tower();
        nodes[1].parentTaskId = 2; // Structure under Floor 1 under Structure
        TaskModel model(&m_undo);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setTasks(nodes);
        QCOMPARE(model.tasks().size(), 5);
        const int structure = model.tasks().positionOf(1);
        QCOMPARE(model.tasks().at(structure).node.parentTaskId, 2); // what was read is not changed
        QVERIFY(!model.hasChildren(model.indexOf(model.tasks().positionOf(5))));
    }

    void aChainOfAHundredThousandTasks()
    {
        QList<KvPlanNode> nodes;
        for (int i = 1; i <= 100000; ++i)
            nodes.append(task(i, i - 1, QStringLiteral("t"), 2, 3));
        TaskModel model(&m_undo);
        model.setTasks(nodes);
        QCOMPARE(model.tasks().size(), 100000);
        QCOMPARE(model.tasks().at(TaskList::deepest).parent, TaskList::deepest - 1);
        QCOMPARE(model.tasks().at(99999).parent, TaskList::deepest - 1); // deeper than can be shown
        QCOMPARE(model.tasks().at(99999).node.parentTaskId, 99999);      // and kept as it is
    }

    void theState_data()
    {
        QTest::addColumn<int>("actualStart"); // days of March; 0: none
        QTest::addColumn<int>("actualFinish");
        QTest::addColumn<double>("done");
        QTest::addColumn<int>("today");
        QTest::addColumn<int>("state");
        // Planned from 5 to 9.
        QTest::newRow("before its start") << 0 << 0 << 0.0 << 4 << 0;
        QTest::newRow("on the day of its start") << 0 << 0 << 0.0 << 5 << 0;
        QTest::newRow("should have started") << 0 << 0 << 0.0 << 6 << 1;
        QTest::newRow("started") << 5 << 0 << 20.0 << 9 << 2;
        QTest::newRow("progress without a start") << 0 << 0 << 20.0 << 6 << 2;
        QTest::newRow("should be finished") << 5 << 0 << 90.0 << 10 << 3;
        QTest::newRow("finished on its day") << 5 << 9 << 100.0 << 12 << 4;
        QTest::newRow("all done, no date") << 5 << 0 << 100.0 << 12 << 4;
        QTest::newRow("finished early") << 5 << 8 << 100.0 << 12 << 5;
        QTest::newRow("finished late") << 5 << 10 << 100.0 << 12 << 6;
    }

    void theState()
    {
        QFETCH(int, actualStart);
        QFETCH(int, actualFinish);
        QFETCH(double, done);
        QFETCH(int, today);
        QFETCH(int, state);
        KvPlanNode node = task(1, 0, QStringLiteral("Rebar"), 5, 9);
        node.finishedPercentage = done;
        if (actualStart)
            node.actualStartDate = day(actualStart, 9);
        if (actualFinish)
            node.actualFinishDate = day(actualFinish, 11);
        QCOMPARE(taskState(node, QDate(2026, 3, today)), state);
    }
};

QTEST_MAIN(TaskModelTest)
#include "TaskModelTest.moc"
