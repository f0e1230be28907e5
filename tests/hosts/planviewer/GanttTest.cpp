// The Gantt chart: in step with the tree, to scale at every zoom, arrows of all types, pictures.

#include <GanttChart.h>
#include <GanttRows.h>
#include <TaskDelegate.h>
#include <TaskModel.h>

#include <QtTest/QtTest>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

namespace {

KvPlanNode task(int number, int parent, int startDay, int days)
{
    KvPlanNode node;
    node.uniqueId = number;
    node.planNodeId = number;
    node.parentTaskId = parent;
    node.name = QStringLiteral("Task %1").arg(number);
    node.startDate = QDateTime(QDate(2026, 3, 2).addDays(startDay), QTime(8, 0));
    node.finishDate = days == 0 ? node.startDate : node.startDate.addDays(days);
    return node;
}

// Tree and chart side by side, as a page has them.
struct Pane
{
    QUndoStack undo;
    TaskModel model{&undo};
    QWidget window;
    QTreeView* tree = new QTreeView(&window);
    GanttRows* rows = nullptr;
    GanttChart* chart = nullptr;

    explicit Pane(const QList<KvPlanNode>& nodes)
    {
        tree->setUniformRowHeights(true);
        tree->setItemDelegate(new TaskDelegate(tree));
        tree->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        tree->setModel(&model);
        rows = new GanttRows(tree, &model, &window);
        chart = new GanttChart(tree, &model, rows, &window);
        model.setTasks(nodes);
        window.resize(1000, 400);
        tree->setGeometry(0, 0, 400, 400);
        chart->setGeometry(400, 0, 600, 400);
        window.show();
        chart->followTree();
        chart->horizontalScrollBar()->setValue(0);
    }
    int position(int number) const { return model.tasks().positionOf(number); }
};

QColor pixelAt(const Pane& pane, const QPointF& chartPoint)
{
    const QPoint offset(pane.chart->horizontalScrollBar()->value(), pane.chart->verticalScrollBar()->value());
    return pane.chart->viewport()->grab().toImage().pixelColor(chartPoint.toPoint() - offset);
}

} // namespace

class GanttTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowsAreThoseOfTheTree()
    {
        Pane pane({task(1, 0, 0, 5), task(2, 1, 0, 2), task(3, 1, 2, 3), task(4, 0, 5, 1)});
        QCOMPARE(pane.rows->count(), 2);
        QCOMPARE(pane.rows->rowOf(pane.position(2)), GanttRows::hidden);
        pane.tree->expand(pane.model.index(0, 0));
        QCOMPARE(pane.rows->count(), 4);
        for (int row = 0; row < 4; ++row) {
            const int position = pane.rows->positionAt(row);
            const QRect inTree = pane.tree->visualRect(pane.model.indexOf(position));
            const QRectF bar = pane.chart->painter().barOf(position);
            QCOMPARE(inTree.top(), row * pane.chart->painter().rowHeight());
            QVERIFY(bar.top() > inTree.top() && bar.bottom() < inTree.bottom());
        }
        pane.tree->collapse(pane.model.index(0, 0));
        QCOMPARE(pane.rows->count(), 2);
    }

    void bothScrollTogether()
    {
        QList<KvPlanNode> nodes;
        for (int i = 1; i <= 100; ++i)
            nodes.append(task(i, 0, i, 3));
        Pane pane(nodes);
        pane.tree->scrollToBottom();
        QVERIFY(pane.chart->verticalScrollBar()->value() > 0);
        QCOMPARE(pane.chart->verticalScrollBar()->value(), pane.tree->verticalScrollBar()->value());
        pane.chart->verticalScrollBar()->setValue(60);
        QCOMPARE(pane.tree->verticalScrollBar()->value(), 60);
        QCOMPARE(pane.chart->viewport()->height(), pane.tree->viewport()->height());
    }

    void zoomReachesFromHoursToYears()
    {
        Pane pane({task(1, 0, 0, 2), task(2, 0, 4000, 2)});
        pane.chart->zoomToFit();
        QVERIFY(pane.chart->scale().width() <= pane.chart->viewport()->width() + 100);
        const double wide = pane.chart->painter().barOf(0).width();
        for (int step = 0; step < GanttScale::stepCount(); ++step)
            pane.chart->zoomIn();
        QCOMPARE(pane.chart->scale().step(), 0);
        const double day = pane.chart->scale().xOf(QDateTime(QDate(2026, 3, 3), QTime())) -
                           pane.chart->scale().xOf(QDateTime(QDate(2026, 3, 2), QTime()));
        QVERIFY(day >= 24 * 20); // an hour can be told from the next
        QCOMPARE(qRound(pane.chart->painter().barOf(0).width()), qRound(2 * day));
        QVERIFY(pane.chart->painter().barOf(0).width() > wide);
        for (int step = 0; step < GanttScale::stepCount(); ++step)
            pane.chart->zoomOut();
        QCOMPARE(pane.chart->scale().step(), GanttScale::stepCount() - 1);
        const double year = pane.chart->scale().xOf(QDateTime(QDate(2027, 1, 1), QTime())) -
                            pane.chart->scale().xOf(QDateTime(QDate(2026, 1, 1), QTime()));
        QVERIFY(year > 30 && year < 100);
    }

    void zoomKeepsTheMiddle()
    {
        Pane pane({task(1, 0, 0, 2), task(2, 0, 400, 2)});
        const QDateTime middle(QDate(2026, 9, 1), QTime(12, 0));
        pane.chart->horizontalScrollBar()->setValue(qRound(pane.chart->scale().xOf(middle)) -
                                                    pane.chart->viewport()->width() / 2);
        const int half = pane.chart->viewport()->width() / 2;
        pane.chart->zoomIn();
        const QDateTime kept = pane.chart->scale().dateAt(pane.chart->horizontalScrollBar()->value() + half);
        QVERIFY2(qAbs(kept.secsTo(middle)) < 6 * 3600, qPrintable(kept.toString(Qt::ISODate)));
    }

    void milestonesStandAroundTheirMoment()
    {
        Pane pane({task(1, 0, 0, 5), task(2, 0, 3, 0)});
        QVERIFY(pane.model.isMilestone(1));
        const QRectF diamond = pane.chart->painter().barOf(1);
        QCOMPARE(qRound(diamond.center().x()),
                 qRound(pane.chart->scale().xOf(pane.model.tasks().at(1).node.startDate)));
        QCOMPARE(diamond.width(), diamond.height());
    }

    void whatWasDoneEndsTodayUntilItIsFinished()
    {
        QList<KvPlanNode> nodes{task(1, 0, 0, 5)};
        nodes[0].actualStartDate = nodes.at(0).startDate.addDays(1);
        Pane pane(nodes);
        const QDateTime now = nodes.at(0).startDate.addDays(4);
        pane.chart->setNow(now);
        QCOMPARE(qRound(pane.chart->painter().actualBarOf(0).right()), qRound(pane.chart->scale().xOf(now)));
        QCOMPARE(qRound(pane.chart->painter().actualBarOf(0).left()),
                 qRound(pane.chart->scale().xOf(nodes.at(0).actualStartDate)));
    }

    void colours()
    {
        Pane pane({task(1, 0, 0, 20)});
        const QRectF bar = pane.chart->painter().barOf(0);
        const QPointF place(bar.center().x(), bar.center().y());
        pane.chart->setNow(QDateTime(QDate(2027, 1, 1), QTime()));
        pane.chart->painter().setPlanColour(QColor(10, 200, 30));
        pane.chart->setColouring(GanttPainter::Colouring::ByPlan);
        const QColor byPlan = pixelAt(pane, place);
        QVERIFY2(byPlan.green() > byPlan.red() + 40 && byPlan.green() > byPlan.blue() + 40,
                 qPrintable(byPlan.name()));
        pane.chart->setColouring(GanttPainter::Colouring::ByState);
        QVERIFY(pixelAt(pane, place) != byPlan);
    }

    void anArrow_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("fromStart");
        QTest::addColumn<bool>("toStart");
        QTest::newRow("finish to finish") << 0 << false << false;
        QTest::newRow("finish to start") << 1 << false << true;
        QTest::newRow("start to finish") << 2 << true << false;
        QTest::newRow("start to start") << 3 << true << true;
    }

    // The picture with the link differs from the one without just outside the ends that the type names.
    void anArrow()
    {
        QFETCH(int, type);
        QFETCH(bool, fromStart);
        QFETCH(bool, toStart);
        QList<KvPlanNode> nodes{task(1, 0, 3, 4), task(2, 0, 12, 4)};
        for (KvPlanNode& node : nodes)
            node.name.clear();
        Pane without(nodes);
        nodes[1].predecessors.append(KvPlanPredecessor());
        nodes[1].predecessors[0].sourcePlanNodeUniqueId = 1;
        nodes[1].predecessors[0].type = type;
        Pane with(nodes);
        for (Pane* const pane : {&without, &with})
            pane->chart->painter().setCurrent(TaskList::none); // the focus marks a row in one of them
        const QImage bare = without.chart->viewport()->grab().toImage();
        const QImage drawn = with.chart->viewport()->grab().toImage();
        const auto differsNear = [&](const QRectF& bar, bool atStart) {
            const int x = qRound(atStart ? bar.left() - 4 : bar.right() + 4);
            for (int y = qRound(bar.top()); y <= qRound(bar.bottom()); ++y) {
                if (bare.pixel(x, y) != drawn.pixel(x, y))
                    return true;
            }
            return false;
        };
        const QRectF source = with.chart->painter().barOf(0);
        const QRectF target = with.chart->painter().barOf(1);
        QVERIFY(differsNear(source, fromStart));
        QVERIFY(!differsNear(source, !fromStart));
        QVERIFY(differsNear(target, toStart));
        QVERIFY(!differsNear(target, !toStart));
    }

    void keysMoveTheCurrentTask()
    {
        Pane pane({task(1, 0, 0, 5), task(2, 0, 3, 2)});
        pane.tree->setCurrentIndex(pane.model.index(0, 0));
        QTest::keyClick(pane.chart, Qt::Key_Down);
        QCOMPARE(pane.tree->currentIndex(), pane.model.index(1, 0));
        QVERIFY(pane.chart->accessibleDescription().contains(QStringLiteral("Task 2")));
        QTest::keyClick(pane.chart, Qt::Key_Up);
        QCOMPARE(pane.tree->currentIndex(), pane.model.index(0, 0));
        QTest::mouseClick(pane.chart->viewport(), Qt::LeftButton, {},
                          QPoint(20, pane.chart->painter().rowHeight() * 3 / 2));
        QCOMPARE(pane.tree->currentIndex(), pane.model.index(1, 0));
    }

    void aHundredThousandTasksExpanded()
    {
        QList<KvPlanNode> nodes;
        for (int i = 1; i <= 100000; ++i)
            nodes.append(task(i, i % 100 == 1 ? 0 : i - (i - 1) % 100, i % 900, 4));
        Pane pane(nodes);
        pane.tree->expandAll();
        pane.rows->invalidate();
        QCOMPARE(pane.rows->count(), 100000);
        pane.tree->scrollToBottom();
        const QRectF bar = pane.chart->painter().barOf(99999);
        QVERIFY(pane.chart->verticalScrollBar()->value() + pane.chart->viewport()->height() >= bar.bottom());
        QVERIFY(!pane.chart->viewport()->grab().isNull());
    }
};

QTEST_MAIN(GanttTest)
#include "GanttTest.moc"
