// Plans that nobody would draw: odd names and dates, none at all, very many, very deep; on the screen and as
// pictures.

#include <GanttChart.h>
#include <GanttExport.h>
#include <GanttRows.h>
#include <PlanClient.h>
#include <PlanPage.h>
#include <TaskColumns.h>
#include <TaskModel.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <support/ScriptedServer.h>

#include <QtGui/QImage>
#include <QtTest/QtTest>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

namespace {

KvPlanNode task(int number, const QString& name)
{
    KvPlanNode node;
    node.id = QStringLiteral("n%1").arg(number);
    node.uniqueId = number;
    node.planNodeId = number;
    node.name = name;
    node.startDate = QDateTime(QDate(2026, 3, 2 + number % 20), QTime(8, 0));
    node.finishDate = node.startDate.addDays(3);
    return node;
}

QList<KvPlanNode> tasks(int count)
{
    QList<KvPlanNode> nodes;
    for (int i = 1; i <= count; ++i)
        nodes.append(task(i, QStringLiteral("Task %1").arg(i)));
    return nodes;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// In points.
QSizeF pageOf(const QByteArray& pdf)
{
    const QByteArray key = "/MediaBox [0 0 ";
    const QList<QByteArray> numbers =
        pdf.mid(pdf.indexOf(key) + key.size(), 60).split(']').first().split(' ');
    return numbers.size() == 2 ? QSizeF(numbers.at(0).toDouble(), numbers.at(1).toDouble()) : QSizeF();
}

// Whether anything but one colour is in that line of pixels.
bool isPainted(const QImage& image, int y)
{
    for (int x = 1; x < image.width(); ++x) {
        if (image.pixel(x, y) != image.pixel(0, y))
            return true;
    }
    return false;
}

} // namespace

class OddPlansTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_settings;
    PlanClient m_client;

    static void show(PlanPage& page, const QList<KvPlanNode>& nodes)
    {
        page.model()->setTasks(nodes);
        page.resize(1200, 600);
        page.show();
        page.chart()->followTree();
        page.chart()->zoomToFit();
    }

    QString written(PlanPage& page, const char* name)
    {
        const QString path = m_settings.filePath(QString::fromLatin1(name));
        const QString fault = exportGantt(page, path);
        return fault.isEmpty() ? path : fault;
    }

private Q_SLOTS:
    void initTestCase() { SetSettingsDirectory(m_settings.path()); }

    void anOddName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("ten thousand characters") << QString(10000, QLatin1Char('W'));
        QTest::newRow("ten thousand ideographs") << QString(10000, QChar(0x6a11));
        QTest::newRow("from right to left") << QStringLiteral("صب الخرسانة للطابق الأول");
        QTest::newRow("emoji") << QStringLiteral("🏗️👷🏽‍♀️ 🧱");
        QTest::newRow("lines") << QStringLiteral("one\ntwo\r\n\tthree");
        QTest::newRow("markup") << QStringLiteral("<b>bold</b> <img src='x'> & <script>");
        QTest::newRow("marks of Qt") << QStringLiteral("100 %1 [*] &Save");
        QTest::newRow("none") << QString();
    }

    void anOddName()
    {
        QFETCH(QString, name);
        PlanPage page(&m_client);
        show(page, {task(1, name), task(2, QStringLiteral("other"))});
        QVERIFY(!page.grab().isNull());
        const QModelIndex cell = page.model()->index(0, TaskColumn::Name);
        QCOMPARE(cell.data(Qt::EditRole).toString(), name); // whole, wherever it is edited
        const QString shown = cell.data().toString();
        QVERIFY(shown.size() <= 1000 && !shown.contains(QLatin1Char('\n')));
        const QString toolTip = cell.data(Qt::ToolTipRole).toString();
        if (name.contains(QLatin1Char('<')))
            QVERIFY2(toolTip.contains(QStringLiteral("&lt;b&gt;")), qPrintable(toolTip));
        page.model()->setData(cell, QStringLiteral("x"));
        QVERIFY(page.undoStack()->undoText().size() < 200);
        page.undoStack()->undo();
        for (const char* const file : {"odd.png", "odd.svg", "odd.pdf"})
            QVERIFY2(contentOf(written(page, file)).size() > 1000, qPrintable(written(page, file)));
        QVERIFY(QImage(m_settings.filePath(QStringLiteral("odd.png"))).width() < 4000);
    }

    void aPlanWithoutTasks()
    {
        PlanPage page(&m_client);
        show(page, {});
        QVERIFY(!page.grab().isNull());
        QVERIFY(!page.find(QStringLiteral("x")));
        QTest::keyClick(page.chart(), Qt::Key_Down);
        page.chart()->zoomIn();
        for (const char* const file : {"empty.png", "empty.svg", "empty.pdf"})
            QVERIFY2(!contentOf(written(page, file)).isEmpty(), qPrintable(written(page, file)));
    }

    void tasksWithoutDates()
    {
        QList<KvPlanNode> nodes = tasks(3);
        nodes[0].startDate = nodes[0].finishDate = QDateTime();
        nodes[1].finishDate = QDateTime();
        nodes[2].finishDate = nodes[2].startDate.addDays(-5); // ends before it begins
        PlanPage page(&m_client);
        show(page, nodes);
        QVERIFY(page.chart()->painter().barOf(0).isNull());
        QVERIFY(page.chart()->painter().barOf(2).width() > 0);
        QVERIFY(!page.grab().isNull());
        QVERIFY(!contentOf(written(page, "dateless.png")).isEmpty());
    }

    void datesOfAllTimes()
    {
        QList<KvPlanNode> nodes = tasks(2);
        nodes[0].startDate = QDateTime(QDate(1, 1, 1), QTime(0, 0));
        nodes[1].finishDate = QDateTime(QDate(9999, 12, 31), QTime(0, 0));
        PlanPage page(&m_client);
        show(page, nodes);
        for (int step = 0; step < GanttScale::stepCount(); ++step) {
            page.chart()->zoomIn();
            QVERIFY(page.chart()->scale().width() > 0);
            page.chart()->horizontalScrollBar()->setValue(page.chart()->horizontalScrollBar()->maximum());
            QVERIFY(!page.chart()->grab().isNull());
        }
    }

    // Each kind has the size of the whole chart.
    void picturesAreOfOneSize()
    {
        PlanPage page(&m_client);
        show(page, tasks(40));
        const QImage image(written(page, "forty.png"));
        QCOMPARE(image.height(), 34 + 48 + 40 * page.chart()->painter().rowHeight());
        QVERIFY(image.width() > page.chart()->scale().width());
        const QByteArray svg = contentOf(written(page, "forty.svg"));
        const QByteArray box =
            "viewBox=\"0 0 " + QByteArray::number(image.width()) + ' ' + QByteArray::number(image.height());
        QVERIFY2(svg.contains(box), box.constData());
        const QByteArray pdf = contentOf(written(page, "forty.pdf"));
        QVERIFY(qAbs(pageOf(pdf).width() - image.width() * 0.75) <= 1.0);
        QVERIFY(qAbs(pageOf(pdf).height() - image.height() * 0.75) <= 1.0);
        QCOMPARE(pdf.count("/Type /Page\n"), 1);
    }

    // Further down than Qt paints in one piece.
    void aLongPictureIsPaintedToItsEnd()
    {
        PlanPage page(&m_client);
        show(page, tasks(1300));
        while (page.chart()->scale().width() > 800)
            page.chart()->zoomOut();
        const QImage image(written(page, "long.png"));
        const int rowHeight = page.chart()->painter().rowHeight();
        QCOMPARE(image.height(), 34 + 48 + 1300 * rowHeight);
        QVERIFY(image.height() > 32767);
        for (const int row : {0, 700, 1299})
            QVERIFY2(isPainted(image, 34 + 48 + row * rowHeight + rowHeight / 2),
                     qPrintable(QString::number(row)));
        const QByteArray pdf = contentOf(written(page, "long.pdf"));
        QVERIFY(pdf.count("/Type /Page\n") > 5);
        QVERIFY(pageOf(pdf).height() > 100 && pageOf(pdf).height() < 14400);
    }

    void aPictureThatWouldBeTooLargeIsRefusedInWords()
    {
        PlanPage page(&m_client);
        show(page, tasks(20000));
        page.chart()->zoomIn();
        page.chart()->zoomIn();
        page.chart()->zoomIn();
        const QString fault = written(page, "huge.png");
        QVERIFY2(fault.contains(QStringLiteral("too large")), qPrintable(fault));
        QVERIFY(!QFile::exists(m_settings.filePath(QStringLiteral("huge.png"))));
    }

    void aPictureThatCannotBeWritten()
    {
        PlanPage page(&m_client);
        show(page, tasks(2));
        QVERIFY(!exportGantt(page, m_settings.filePath(QStringLiteral("missing/x.png"))).isEmpty());
        QVERIFY(!exportGantt(page, m_settings.filePath(QStringLiteral("x.doc"))).isEmpty());
    }

    // The event loop answers while the tasks come, and what is shown at first does not grow with them.
    void aHundredThousandTasksOpen()
    {
        constexpr int count = 100000;
        QByteArray body("[");
        for (int i = 1; i <= count; ++i) {
            const QByteArray number = QByteArray::number(i);
            body +=
                (i == 1 ? "{\"_id\":\"n" : ",{\"_id\":\"n") + number + "\",\"uniqueId\":" + number +
                ",\"parentTaskID\":" + QByteArray::number(i % 100 == 1 ? 0 : i - (i - 1) % 100) +
                ",\"name\":\"Task " + number +
                "\",\"startDate\":\"2026-03-02T08:00:00.000\",\"finishDate\":\"2026-03-05T17:00:00.000\"}";
        }
        body += ']';
        KvTest::ScriptedServer server;
        KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
        server.setHandler([&body](const KvTest::Request& request) {
            KvTest::Reply reply = KvTest::Reply::json(QJsonObject());
            if (request.target.contains("/planNodes"))
                reply.body = body;
            return reply;
        });
        PlanPage page(&m_client);
        page.resize(1200, 600);
        page.show();
        int answers = 0;
        QTimer ticks;
        connect(&ticks, &QTimer::timeout, &ticks, [&answers] { ++answers; });
        ticks.start(0);
        KvPlan plan;
        plan.id = QStringLiteral("p1");
        QVERIFY(page.open(plan));
        // A window that did not answer would count none or one; a quick machine leaves time for some dozens.
        QVERIFY2(answers >= 10, qPrintable(QString::number(answers)));
        QCOMPARE(page.model()->tasks().size(), count);
        QVERIFY(page.rows()->count() <= 2000);
        const int before = answers;
        QTRY_VERIFY(answers > before); // and it goes on
        QVERIFY(page.find(QStringLiteral("Task 100000")));
        QVERIFY(page.rows()->count() <= 2100);
        QVERIFY(!page.grab().isNull());
    }

    // A date at its end moves every summary task above that is shown.
    void aDeepChainIsEditedAndExpanded()
    {
        constexpr int depth = 100000;
        QList<KvPlanNode> nodes = tasks(depth);
        for (int i = 1; i < depth; ++i) {
            nodes[i].parentTaskId = i;
            nodes[i].startDate = nodes.first().startDate;
            nodes[i].finishDate = nodes.first().finishDate;
        }
        PlanPage page(&m_client);
        show(page, nodes);
        page.expandAll();
        QVERIFY(!page.grab().isNull());
        const QModelIndex last = page.model()->indexOf(depth - 1, TaskColumn::Finish);
        QVERIFY(page.model()->setData(last, QStringLiteral("2026-05-01")));
        QCOMPARE(page.model()->tasks().at(0).node.finishDate.date(), QDate(2026, 5, 1));
        page.undoStack()->undo();
        QCOMPARE(page.model()->tasks().at(0).node.finishDate, nodes.first().finishDate);
        page.collapseAll();
        QVERIFY(page.find(QStringLiteral("Task 100000")));
        QCOMPARE(page.model()->positionOf(page.tree()->currentIndex()), depth - 1);
    }
};

QTEST_MAIN(OddPlansTest)
#include "OddPlansTest.moc"
