// Where nothing can be drawn in three dimensions, the page of the simulation says so and all else works.
// CTest runs it without OpenGL and with an old one.

#include "Person.h"

#include <GanttChart.h>
#include <GraphicsCheck.h>
#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <PlaybackBar.h>
#include <SimulationPage.h>

#include <QtCore/QProcess>
#include <QtWidgets/QUndoStack>

using KvTest::ServiceProcess;

class NoGraphicsTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_model;
    QString m_planId;

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        m_model = m_folder.filePath(QStringLiteral("tower.gltf"));
        const QJsonObject seeded = m_service.seed({QStringLiteral("--model"), m_model});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = seeded.value(QLatin1String("planId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(seeded.value(QLatin1String("projectId")).toString());
        SetSettingsDirectory(m_folder.path());
    }

    void thePageSaysSo()
    {
        Person viewer;
        SimulationPage& simulation = *viewer.window.simulationPage();
        viewer.window.showSimulation();
        QVERIFY2(simulation.message().contains(QStringLiteral("there is no OpenGL 3.2 here")),
                 qPrintable(simulation.message()));
        viewer.open(0);
        QCOMPARE(simulation.message(), GraphicsCheck::fault());
        simulation.openModel(m_model);
        QVERIFY(!simulation.isReading());
        QVERIFY(!simulation.hasModel());
        QVERIFY(!simulation.view());
        QCOMPARE(simulation.message(), GraphicsCheck::fault());
        for (const char* const action : {"playSimulation", "fitBuilding", "exportSimulation", "exportFrames"})
            QVERIFY2(!viewer.action(action)->isEnabled(), action);
    }

    void allElseWorks()
    {
        Person viewer;
        viewer.open(0);
        viewer.window.showSimulation();
        // The playback without the building: the chart's date line.
        PlaybackBar& playback = *viewer.window.simulationPage()->playback();
        playback.setDate(QDateTime(QDate(2026, 6, 15), QTime(12, 0)));
        QCOMPARE(viewer.page().chart()->painter().markedDate(), playback.date());
        const int task = viewer.model().tasks().size() - 1;
        viewer.page().selectTasks({task});
        QVERIFY(
            viewer.model().setData(viewer.model().indexOf(task, TaskColumn::Name), QStringLiteral("Edited")));
        QCOMPARE(viewer.positionOf(QStringLiteral("Edited")), task);
        while (viewer.page().undoStack()->canUndo())
            viewer.page().undoStack()->undo();
        viewer.action("showSimulation")->trigger();
        QVERIFY(!viewer.page().chart()->painter().markedDate().isValid());
        QVERIFY(viewer.failures.isEmpty());
    }

    // The program itself, with a model that it is told to open: it goes on, and ends as asked.
    void theProgramStarts()
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KV_BASE_API"), m_service.baseUrl());
        environment.insert(QStringLiteral("KV_PROJECT_ID"), GetSoftCache()->currentProjectId());
        environment.insert(QStringLiteral("KV_SETTINGS_DIR"), m_folder.path());
        program.setProcessEnvironment(environment);
        const QStringList common{QStringLiteral("--language"), QStringLiteral("en"),
                                 QStringLiteral("--plan"),     m_planId,
                                 QStringLiteral("--model"),    m_model};
        const QString chart = m_folder.filePath(QStringLiteral("chart.png"));
        program.start(QStringLiteral(PLANVIEWER), common + QStringList{QStringLiteral("--gantt"), chart});
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!QImage(chart).isNull());

        program.start(QStringLiteral(PLANVIEWER),
                      common + QStringList{QStringLiteral("--screenshots"),
                                           m_folder.filePath(QStringLiteral("shots"))});
        QVERIFY(program.waitForFinished(60000));
        const QString said = QString::fromUtf8(program.readAllStandardError());
        QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 3, qPrintable(said));
        QVERIFY2(said.contains(QStringLiteral("there is no OpenGL 3.2 here")), qPrintable(said));
    }
};

QTEST_MAIN(NoGraphicsTest)
#include "NoGraphicsTest.moc"
