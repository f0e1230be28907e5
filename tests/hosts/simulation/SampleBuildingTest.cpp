// The sample building with its plan, as the real service gives it: what the simulation shows and what it
// cannot.

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <SimulationClock.h>
#include <SimulationGaps.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QJsonObject>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QTreeView>

using KvTest::ServiceProcess;

class SampleBuildingTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QList<KvPlanNode> m_nodes;
    QVector<const KvPlanNode*> m_list;
    QStringList m_geometry;

    QString nameOf(const QModelIndex& index) const { return index.data().toString(); }

    /// How many elements look so, by their presence and, when it is given, their state.
    static int count(const SimulationTimeline& timeline, SimulationPresence presence, int state = -1)
    {
        int found = 0;
        for (int i = 0; i < timeline.elementCount(); ++i)
            found +=
                timeline.stateOf(i).presence == presence && (state < 0 || timeline.stateOf(i).state == state)
                    ? 1
                    : 0;
        return found;
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString model = m_folder.filePath(QStringLiteral("tower.obj"));
        const QJsonObject seeded = m_service.seed({QStringLiteral("--model"), model});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(seeded.value(QLatin1String("projectId")).toString());
        SetSettingsDirectory(m_folder.path());
        QVERIFY(KvPlanData::instance()->getPlanNodesByPlanId(seeded.value(QLatin1String("planId")).toString(),
                                                             m_nodes));
        for (const KvPlanNode& node : qAsConst(m_nodes))
            m_list.append(&node);
        QFile file(model);
        QVERIFY(file.open(QIODevice::ReadOnly));
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("o "))
                m_geometry.append(QString::fromUtf8(line.mid(2)));
        }
        QVERIFY(m_geometry.size() > 500);
    }

    void everyElementHasItsGeometry()
    {
        SimulationTimeline timeline;
        timeline.setTasks(m_list, {});
        QCOMPARE(timeline.elementCount(), m_geometry.size());
        SimulationGapsPanel panel;
        panel.model()->setPlan(m_list, timeline, m_geometry);
        QCOMPARE(panel.model()->count(SimulationGapsModel::ElementsWithoutGeometry), 0);
        QCOMPARE(panel.model()->count(SimulationGapsModel::TasksWithoutElements), 0);
        QCOMPARE(panel.model()->count(SimulationGapsModel::GeometryWithoutTasks), 0);
        QCOMPARE(panel.findChild<QLabel*>(QStringLiteral("gapsSummary"))->text(),
                 QStringLiteral("Every task has elements, and every element its geometry."));
    }

    void whatIsMissingIsListed()
    {
        QList<KvPlanNode> nodes = m_nodes;
        int unlinked = -1; // the first task with elements
        for (int i = 0; unlinked < 0; ++i) {
            if (!nodes.at(i).links.isEmpty())
                unlinked = i;
        }
        nodes[unlinked].links.clear();
        QVector<const KvPlanNode*> list;
        for (const KvPlanNode& node : qAsConst(nodes))
            list.append(&node);
        SimulationTimeline timeline;
        timeline.setTasks(list, {});
        QStringList geometry = m_geometry;
        const QString lost = timeline.elementId(timeline.elementCount() - 1);
        geometry.removeOne(lost);
        geometry.append(QStringLiteral("neighbour"));

        SimulationGapsPanel panel;
        panel.model()->setPlan(list, timeline, geometry);
        const SimulationGapsModel& model = *panel.model();
        QCOMPARE(model.rowCount(), int(SimulationGapsModel::GroupCount));
        const QModelIndex elements = model.index(SimulationGapsModel::ElementsWithoutGeometry, 0);
        QCOMPARE(nameOf(elements), QStringLiteral("Elements without geometry: 1"));
        QCOMPARE(model.rowCount(elements), 1);
        QCOMPARE(nameOf(model.index(0, 0, elements)), lost);
        const int lostTask = timeline.tasksOf(timeline.elementOf(lost)).first();
        QCOMPARE(model.index(0, SimulationGapsModel::Tasks, elements).data().toString(),
                 QString::number(nodes.at(lostTask).planNodeId));
        const QModelIndex tasks = model.index(SimulationGapsModel::TasksWithoutElements, 0);
        QCOMPARE(model.rowCount(tasks), 1);
        QCOMPARE(nameOf(model.index(0, 0, tasks)), nodes.at(unlinked).name);
        const QModelIndex geometries = model.index(SimulationGapsModel::GeometryWithoutTasks, 0);
        // Those of the task, and the one that is no part of the plan.
        QCOMPARE(model.rowCount(geometries), 1 + m_geometry.size() - timeline.elementCount());
        QCOMPARE(nameOf(model.index(model.rowCount(geometries) - 1, 0, geometries)),
                 QStringLiteral("neighbour"));
        QCOMPARE(model.parent(model.index(0, 1, tasks)), tasks);
        QCOMPARE(model.parent(tasks), QModelIndex());
        QVERIFY(!panel.findChild<QLabel*>(QStringLiteral("gapsSummary"))
                     ->text()
                     .contains(QStringLiteral("Every")));

        // Return on an entry asks for its task, or for the element where there is none.
        QSignalSpy activatedTasks(&panel, &SimulationGapsPanel::taskActivated);
        QSignalSpy activatedElements(&panel, &SimulationGapsPanel::elementActivated);
        panel.show();
        panel.view()->expandAll();
        const auto activate = [&panel](const QModelIndex& index) {
            panel.view()->setCurrentIndex(index);
            panel.view()->setFocus();
            QTest::keyClick(panel.view(), Qt::Key_Return);
        };
        activate(model.index(0, 0, tasks));
        activate(model.index(0, 0, elements));
        activate(tasks);
        activate(model.index(model.rowCount(geometries) - 1, 0, geometries));
        QCOMPARE(activatedTasks.size(), 2);
        QCOMPARE(activatedTasks.at(0).first().toInt(), unlinked);
        QCOMPARE(activatedTasks.at(1).first().toInt(), lostTask);
        QCOMPARE(activatedElements.size(), 1);
        QCOMPARE(activatedElements.first().first().toString(), QStringLiteral("neighbour"));
    }

    void momentsAndSummariesNeedNoElements()
    {
        KvPlanNode summary;
        summary.summary = true;
        KvPlanNode milestone;
        milestone.milestone = true;
        KvPlanNode moment;
        moment.startDate = moment.finishDate = QDateTime(QDate(2026, 3, 2), QTime(8, 0));
        KvPlanNode unseen;
        unseen.displaySimulation = false;
        KvPlanNode emptyLink;
        emptyLink.links.insert(QStringLiteral("model"), {});
        emptyLink.name = QStringLiteral("nothing linked");
        const QVector<const KvPlanNode*> list{&summary, &milestone, &moment, &unseen, &emptyLink};
        SimulationTimeline timeline;
        timeline.setTasks(list, {});
        SimulationGapsModel model;
        model.setPlan(list, timeline, {});
        const QModelIndex tasks = model.index(SimulationGapsModel::TasksWithoutElements, 0);
        QCOMPARE(model.rowCount(tasks), 1);
        QCOMPARE(nameOf(model.index(0, 0, tasks)), emptyLink.name);
    }

    // The tower from the first day to the last, once as planned and once as it went.
    void theBuildingGrowsAlongItsPlan()
    {
        const SimulationPeriod period = planPeriod(m_list);
        QVERIFY(period.isValid());
        SimulationTimeline planned;
        planned.setTasks(m_list, {SimulationDates::Planned, SimulationShare::ByTime});
        planned.moveTo(period.start.addDays(-1));
        const int ground = count(planned, SimulationPresence::Complete); // that the pit takes away
        QVERIFY(ground > 0);
        QCOMPARE(count(planned, SimulationPresence::Absent), planned.elementCount() - ground);
        int most = 0;
        int growing = 0;
        for (QDateTime date = period.start; date <= period.finish; date = date.addDays(1)) {
            planned.moveTo(date);
            const int built = count(planned, SimulationPresence::Complete, TaskState::Finished);
            QVERIFY(built >= most - 6); // temporary works are hidden again
            most = std::max(most, built);
            growing = std::max(growing, count(planned, SimulationPresence::Growing));
        }
        QVERIFY(growing > 4);
        planned.moveTo(period.finish.addDays(1));
        QCOMPARE(count(planned, SimulationPresence::Growing), 0);
        QCOMPARE(count(planned, SimulationPresence::Absent), ground);
        const int hidden = count(planned, SimulationPresence::Hidden);
        QVERIFY(hidden > 0);
        QCOMPARE(count(planned, SimulationPresence::Complete), planned.elementCount() - ground - hidden);

        SimulationTimeline actual;
        actual.setTasks(m_list, {SimulationDates::Actual, SimulationShare::ByProgress});
        QSet<int> seen;
        for (QDateTime date = period.start; date <= period.finish; date = date.addDays(1)) {
            actual.moveTo(date);
            for (int i = 0; i < actual.elementCount(); ++i)
                seen.insert(actual.stateOf(i).state);
        }
        QCOMPARE(seen.size(), TaskState::count); // all seven
        QVERIFY(count(actual, SimulationPresence::Absent, TaskState::NotStartedLate) > 100);
    }
};

QTEST_MAIN(SampleBuildingTest)
#include "SampleBuildingTest.moc"
