// The simulation in the window as a person uses it, on the real service, with what is drawn looked at pixel
// by pixel.

#include "KeptSettings.h"
#include "SimulationViewer.h"

#include <FloorHeightsPanel.h>
#include <GanttChart.h>
#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <SimulationExport.h>
#include <SimulationGaps.h>

#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QUndoStack>

using KvTest::ServiceProcess;

namespace {

using Viewer = SimulationViewer;

} // namespace

class SimulationTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_model;
    std::unique_ptr<Viewer> m_viewer; // of the tests that change nothing for those after them

    bool showBuilding()
    {
        if (!m_viewer) {
            m_viewer = std::make_unique<Viewer>();
            if (!m_viewer->openBuilding(m_model))
                return false;
        }
        m_viewer->window.showSimulation();
        m_viewer->page().selectTasks({});
        return m_viewer->simulation().hasModel();
    }

    static QDateTime day(int month, int number)
    {
        return QDateTime(QDate(2026, month, number), QTime(12, 0));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        m_model = m_folder.filePath(QStringLiteral("tower.gltf"));
        const QJsonObject seeded = m_service.seed({QStringLiteral("--model"), m_model});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(seeded.value(QLatin1String("projectId")).toString());
        SetSettingsDirectory(m_folder.path());
    }

    void cleanupTestCase() { m_viewer.reset(); }

    void thePageSaysWhatIsMissing()
    {
        Viewer viewer;
        viewer.window.showSimulation();
        QCOMPARE(viewer.simulation().message(), QStringLiteral("Open a plan first."));
        QVERIFY(!viewer.action("openModel")->isEnabled());
        viewer.open(0);
        QVERIFY2(viewer.simulation().message().contains(QStringLiteral("Open a model")),
                 qPrintable(viewer.simulation().message()));
        QVERIFY(viewer.action("openModel")->isEnabled());
        QVERIFY(!viewer.action("exportFrames")->isEnabled());
    }

    void badModelFilesAreTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("size"); // -1: there is none
        QTest::addColumn<QString>("said");
        QTest::newRow("missing") << QStringLiteral("gone.obj") << qint64(-1) << QStringLiteral("there is no");
        QTest::newRow("empty") << QStringLiteral("empty.gltf") << qint64(0) << QStringLiteral("is empty");
        QTest::newRow("200 MB") << QStringLiteral("huge.obj") << qint64(200 * 1024 * 1024)
                                << QStringLiteral("200 MB");
        QTest::newRow("no model") << QStringLiteral("zeros.obj") << qint64(100) << QStringLiteral("holds no");
    }
    void badModelFilesAreTold()
    {
        QFETCH(QString, name);
        QFETCH(qint64, size);
        QFETCH(QString, said);
        const QString path = m_folder.filePath(name);
        QFile file(path);
        QVERIFY(size < 0 || (file.open(QIODevice::WriteOnly) && file.resize(size)));
        Viewer viewer;
        QVERIFY(!viewer.openBuilding(path));
        QVERIFY2(viewer.simulation().message().contains(said) && viewer.simulation().message().contains(name),
                 qPrintable(viewer.simulation().message()));
        QVERIFY(viewer.simulation().settings()->modelFile().isEmpty()); // not kept for the next start
        file.remove();
    }

    void aModelOfAnotherBuildingIsTold()
    {
        const QString path = m_folder.filePath(QStringLiteral("other.obj"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("o elsewhere\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        file.close();
        Viewer viewer;
        QSignalSpy told(&viewer.simulation(), &SimulationPage::told);
        QVERIFY(viewer.openBuilding(path));
        QVERIFY(told.last().first().toString().contains(QStringLiteral("no task names")));
        const SimulationGapsModel& gaps = *viewer.simulation().gaps()->model();
        QCOMPARE(gaps.count(SimulationGapsModel::GeometryWithoutTasks), 1);
        QVERIFY(gaps.count(SimulationGapsModel::ElementsWithoutGeometry) > 500);
        viewer.simulation().settings()->setModelFile(QString());
    }

    void elementsHaveTheColoursOfTheirStates()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        QCOMPARE(viewer.simulation().message(), QString());
        QCOMPARE(viewer.simulation().gaps()->model()->count(SimulationGapsModel::ElementsWithoutGeometry), 0);
        viewer.lookFromAbove();
        viewer.page().selectTasks({});
        // No hints, which would stand before what is looked for.
        TimeLineSet set = viewer.simulation().settings()->set();
        set.NonStartClr = false;
        set.NotStartDelayClr = false;
        viewer.simulation().settings()->setSet(set);
        const QList<QColor> colours = viewer.simulation().settings()->colours();
        const SimulationPeriod period = viewer.simulation().playback()->clock().period();
        QVERIFY(period.isValid());
        QSet<QRgb> seen;
        for (const double part : {0.25, 0.45, 0.7, 1.0}) {
            const auto length = double(period.start.msecsTo(period.finish));
            viewer.simulation().playback()->setDate(period.start.addMSecs(qint64(part * length)));
            for (const auto which : {BuildingScene::Planned, BuildingScene::Actual}) {
                const int element = viewer.elementInSight(which, seen);
                if (element == BuildingModel::none)
                    continue;
                const QColor expected = viewer.view().looks(which)->look(element).colour;
                QVERIFY(colours.contains(expected) || expected == SimulatedBuilding::material());
                QTRY_COMPARE_WITH_TIMEOUT(viewer.screen().pixelColor(viewer.topOf(element, which)), expected,
                                          10000);
                seen.insert(expected.rgb());
            }
        }
        QVERIFY(seen.size() >= 2);

        // Not painted by state, it has the colour of its material.
        set.DisplayStateColor = false;
        viewer.simulation().settings()->setSet(set);
        const int element = viewer.elementInSight(BuildingScene::Planned);
        QTRY_COMPARE_WITH_TIMEOUT(viewer.screen().pixelColor(viewer.topOf(element, BuildingScene::Planned)),
                                  SimulatedBuilding::material(), 10000);
        set = TimeLineSet();
        viewer.simulation().settings()->setSet(set);
    }

    void aClickSelectsTasksAndTasksShowTheirElements()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        viewer.lookFromAbove();
        const SimulationPeriod period = viewer.simulation().playback()->clock().period();
        viewer.simulation().playback()->setDate(period.finish);
        const int element = viewer.elementInSight(BuildingScene::Planned);
        QVERIFY(element != BuildingModel::none);
        QTest::mouseClick(viewer.view().sceneWindow(), Qt::LeftButton, Qt::NoModifier,
                          viewer.topOf(element, BuildingScene::Planned));
        const QVector<int> tasks = viewer.page().selectedTasks();
        QVERIFY(!tasks.isEmpty());
        const QString& id = viewer.simulation().model()->elements().at(element).id;
        for (const int task : tasks) {
            QStringList linked;
            for (const QStringList& ids : viewer.model().tasks().at(task).node.links)
                linked += ids;
            QVERIFY(linked.contains(id));
        }
        QVERIFY(viewer.page().chart()->painter().selected().contains(tasks.first()));
        QVERIFY(viewer.view().looks(BuildingScene::Planned)->isHighlighted(element));

        // A click beside the building deselects.
        QTest::mouseClick(viewer.view().sceneWindow(), Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
        QCOMPARE(viewer.page().selectedTasks(), QVector<int>());
        QVERIFY(!viewer.view().looks(BuildingScene::Planned)->isHighlighted(element));

        // The whole building does not stand out from anything.
        viewer.page().selectTasks({viewer.model().tasks().roots().first()});
        QVERIFY(!viewer.view().looks(BuildingScene::Planned)->isHighlighted(element));

        // The other way round: a summary task shows the elements of all below it.
        const int summary = viewer.model().tasks().at(tasks.first()).parent;
        QVERIFY(summary != TaskList::none);
        viewer.page().selectTasks({summary});
        QVERIFY(viewer.view().looks(BuildingScene::Planned)->isHighlighted(element));
        QVERIFY(viewer.view().looks(BuildingScene::Actual)->isHighlighted(element));
        viewer.page().selectTasks({tasks.first()});
        QVERIFY(viewer.view().looks(BuildingScene::Planned)->isHighlighted(element));
        viewer.page().selectTasks({});
        const QImage plain = viewer.screen();
        viewer.page().selectTasks({tasks.first()});
        QTRY_VERIFY_WITH_TIMEOUT(viewer.screen() != plain, 10000);
    }

    void aDragTurnsAndTheWheelZooms()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        QWindow* const scene = viewer.view().sceneWindow();
        const QVector3D before = viewer.view().camera().position();
        QSignalSpy clicked(&viewer.view(), &SimulationView::elementClicked);
        QTest::mousePress(scene, Qt::LeftButton, Qt::NoModifier, QPoint(100, 60));
        QMouseEvent move(QEvent::MouseMove, QPointF(150, 80), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(scene, &move);
        QTest::mouseRelease(scene, Qt::LeftButton, Qt::NoModifier, QPoint(150, 80));
        QVERIFY(viewer.view().camera().position() != before);
        QCOMPARE(clicked.size(), 0);
        const double distance = viewer.view().camera().distance();
        QTest::keyClick(scene, Qt::Key_Plus);
        QVERIFY(viewer.view().camera().distance() < distance);
        QTest::keyClick(scene, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(scene, Qt::Key_Home);
        const QPointF centre = viewer.view().camera().seenAt(viewer.simulation().model()->box().centre(),
                                                             viewer.view().aspect());
        QVERIFY(qAbs(centre.x() - 0.5) < 0.01 && qAbs(centre.y() - 0.5) < 0.01);
    }

    void theDateLineFollowsThePlayback()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        PlaybackBar& playback = *viewer.simulation().playback();
        playback.setDate(day(7, 1));
        QCOMPARE(viewer.page().chart()->painter().markedDate(), playback.date());
        playback.play();
        playback.advance(4000);
        QVERIFY(playback.date() > day(7, 1));
        QCOMPARE(viewer.page().chart()->painter().markedDate(), playback.date());
        viewer.action("showSimulation")->trigger();
        QVERIFY(!viewer.page().chart()->painter().markedDate().isValid());
        QVERIFY(!playback.clock().isPlaying());
    }

    void floorsStandApart()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        const QStringList floors = viewer.simulation().model()->floors();
        QVERIFY(floors.size() > 10);
        viewer.simulation().settings()->setFloorHeight(floors.at(0), 5.0);
        viewer.simulation().floors()->findChild<QSlider*>(QStringLiteral("spread"))->setValue(1000000);
        QCOMPARE(viewer.simulation().floors()->spread(), 1.0);
        for (int i = 0; i < viewer.simulation().model()->elements().size(); ++i) {
            const int floor = viewer.simulation().model()->elements().at(i).floor;
            const float expected = floor <= 0 ? 0.0F : 5.0F + 3.0F * float(floor - 1);
            QCOMPARE(viewer.view().looks(BuildingScene::Actual)->lift(i), expected);
        }
        viewer.simulation().settings()->resetFloorHeights(floors);
    }

    void anEditIsSeen()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        const SimulationPeriod before = viewer.simulation().playback()->clock().period();
        int last = viewer.model().tasks().size() - 1;
        while (!viewer.model().tasks().at(last).children.isEmpty() || viewer.model().isMilestone(last))
            --last;
        const QDate later = before.finish.date().addDays(200);
        QVERIFY(viewer.model().setData(viewer.model().indexOf(last, TaskColumn::Finish),
                                       later.toString(Qt::ISODate)));
        QTRY_COMPARE(viewer.simulation().playback()->clock().period().finish.date(), later);
        while (viewer.page().undoStack()->canUndo())
            viewer.page().undoStack()->undo();
        QTRY_COMPARE(viewer.simulation().playback()->clock().period().finish, before.finish);
    }

    void framesAreWrittenAndCanceled()
    {
        QVERIFY(showBuilding());
        Viewer& viewer = *m_viewer;
        FrameExport::Sequence sequence = viewer.simulation().sequence();
        sequence.daysPerSecond = double(sequence.period.start.msecsTo(sequence.period.finish)) /
                                 86400000.0; // all of it in a second
        const QString folder = m_folder.filePath(QStringLiteral("frames/all"));
        const auto export_ = [&](double rate, const std::function<void(FrameExportDialog&)>& act) {
            FrameExportDialog dialog(viewer.simulation().pictureContent(), sequence);
            dialog.findChild<QLineEdit*>(QStringLiteral("frameFolder"))->setText(folder);
            dialog.findChild<QSpinBox*>(QStringLiteral("frameWidth"))->setValue(160);
            dialog.findChild<QSpinBox*>(QStringLiteral("frameHeight"))->setValue(90);
            dialog.findChild<QDoubleSpinBox*>(QStringLiteral("frameRate"))->setValue(rate);
            dialog.show();
            act(dialog);
            if (!QTest::qWaitFor([&] { return !dialog.isVisible(); }, 60000))
                return -1;
            return dialog.written();
        };
        const auto press = [](FrameExportDialog& dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("writeFrames")), Qt::LeftButton);
        };
        QCOMPARE(export_(5.0, press), 6);
        const QDir dir(folder);
        QCOMPARE(dir.entryList(QDir::Files).size(), 6);
        for (int i = 1; i <= 6; ++i) {
            const QImage frame(dir.filePath(QStringLiteral("frame-000%1.png").arg(i)));
            QCOMPARE(frame.size(), QSize(160, 90));
        }
        QVERIFY(QImage(dir.filePath(QStringLiteral("frame-0001.png"))) !=
                QImage(dir.filePath(QStringLiteral("frame-0006.png"))));

        // They are written over only when that is wanted.
        QFile first(dir.filePath(QStringLiteral("frame-0001.png")));
        QVERIFY(first.resize(0));
        Person::answer([](QWidget* dialog) { Person::click(dialog, "keep"); });
        QCOMPARE(export_(5.0,
                         [&press](FrameExportDialog& dialog) {
                             press(dialog);
                             dialog.close();
                         }),
                 0);
        QCOMPARE(first.size(), qint64(0));

        // Cancel leaves whole files alone.
        Person::answer([](QWidget* dialog) { Person::click(dialog, "overwrite"); });
        const int written = export_(120.0, [&press](FrameExportDialog& dialog) {
            auto* const progress = dialog.findChild<QProgressBar*>(QStringLiteral("frameProgress"));
            QObject::connect(progress, &QProgressBar::valueChanged, &dialog, [&dialog](int value) {
                if (value >= 3)
                    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("cancelFrames")),
                                      Qt::LeftButton);
            });
            press(dialog);
        });
        QVERIFY(written >= 3 && written < 100);
        const QStringList files = dir.entryList(QDir::Files | QDir::Hidden);
        QCOMPARE(files.size(), qMax(written, 6));
        for (const QString& file : files)
            QVERIFY2(!QImage(dir.filePath(file)).isNull(), qPrintable(file));
    }

    void aModelThatIsGoneAtTheNextStartIsTold()
    {
        m_viewer.reset();
        const QString path = m_folder.filePath(QStringLiteral("moved.gltf"));
        QVERIFY(QFile::copy(m_model, path));
        {
            Viewer viewer;
            QVERIFY(viewer.openBuilding(path));
        }
        QVERIFY(QFile::remove(path));
        Viewer viewer;
        viewer.open(0);
        QVERIFY(!viewer.simulation().isReading()); // nobody looks yet
        viewer.window.showSimulation();
        QTRY_VERIFY(!viewer.simulation().isReading());
        QVERIFY2(viewer.simulation().message().contains(QStringLiteral("there is no")) &&
                     viewer.simulation().message().contains(path),
                 qPrintable(viewer.simulation().message()));
    }

    // Everything that can be set, set by its control, and shown by the controls of another process.
    void settingsSurviveARestart()
    {
        QJsonObject expected;
        {
            Viewer viewer;
            QVERIFY(viewer.openBuilding(m_model));
            const QJsonObject before = Kept::shown(viewer);
            Kept::change(viewer);
            expected = Kept::shown(viewer);
            QVERIFY(before.size() > 30);
            for (const QString& key : before.keys())
                QVERIFY2(before.value(key) != expected.value(key) || key == QStringLiteral("elements"),
                         qPrintable(key));
            QVERIFY(expected.value(QLatin1String("elements")).toInt() > 500);
        }
        const QJsonObject shown = Kept::shownByAnother(m_service.baseUrl(), m_folder.path());
        for (const QString& key : expected.keys())
            QCOMPARE(qMakePair(key, shown.value(key)), qMakePair(key, expected.value(key)));
        QCOMPARE(shown, expected);
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (qEnvironmentVariableIsSet("KV_TEST_SHOW_KEPT"))
        return Kept::print();
    SimulationTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "SimulationTest.moc"
