// A plan on the real service whose elements have known places and known states at known dates: what is on the
// screen, pixel by pixel.

#include "SimulationStreet.h"

#include <FloorHeightsPanel.h>
#include <GanttChart.h>
#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtWidgets/QScrollBar>
#include <QtWidgets/QSlider>

using KvTest::ServiceProcess;

using namespace SimulationStreet;

Q_DECLARE_METATYPE(Shows)

class SimulationPixelsTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_model;
    std::unique_ptr<Street> m_street;

    QVector<Expected> slabs(const Shows& onPlan, const Shows& onSite)
    {
        QVector<Expected> all;
        for (int i = 0; i < TaskState::count; ++i) {
            all.append(m_street->slabIn(i, planned, onPlan.at(i).state, onPlan.at(i).share));
            all.append(m_street->slabIn(i, actual, onSite.at(i).state, onSite.at(i).share));
        }
        return all;
    }

    // In the middle of June every state is there: planned as it should be, actual as it is.
    QVector<Expected> slabsInTheMiddle()
    {
        return slabs({{0, 0}, {2, 0.25}, {2, 0.5}, {4, 1}, {4, 1}, {4, 1}, {4, 1}},
                     {{0, 0}, {1, 0}, {2, 0.5}, {3, 0.5}, {4, 1}, {5, 1}, {6, 1}});
    }

    // As in the middle, with some slabs tinted: two thirds of the highlight.
    QVector<Expected> highlighted(const QVector<int>& numbers)
    {
        QVector<Expected> all = slabsInTheMiddle();
        for (const int number : numbers) {
            for (const int i : {2 * number, 2 * number + 1}) {
                const QColor plain = all.at(i).colour;
                all[i].colour =
                    QColor((plain.red() + 2 * 255) / 3, (plain.green() + 2 * 170) / 3, plain.blue() / 3);
            }
        }
        return all;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        QVERIFY2(m_service.start({QStringLiteral("--create")}), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(QStringLiteral("street"));
        SetSettingsDirectory(m_folder.path());
        KvPlan plan;
        plan.name = QStringLiteral("Street");
        plan.projectId = QStringLiteral("street");
        QVERIFY(KvPlanData::instance()->createPlan(plan));
        QList<KvPlanNode> nodes = tasks();
        QVERIFY(KvPlanData::instance()->createPlanNodes(plan.id, nodes));
        m_model = m_folder.filePath(QStringLiteral("street.glb"));
        QVERIFY(Models::write(m_model, Models::glb(street())));
        m_street = std::make_unique<Street>();
        QVERIFY(m_street->openStreet(m_model));
    }

    void cleanupTestCase() { m_street.reset(); }

    void init()
    {
        m_street->setSet(TimeLineSet());
        m_street->lookFrom(0.0, 65.0);
    }

    void statesHaveTheirColoursAtEachDate_data()
    {
        QTest::addColumn<QDateTime>("date");
        QTest::addColumn<Shows>("onPlan");
        QTest::addColumn<Shows>("onSite");
        const Shows none(TaskState::count, {TaskState::NotStarted, 0});
        QTest::newRow("before all") << at(5, 20) << none << none;
        QTest::newRow("not late yet")
            << at(6, 9)
            << Shows{{0, 0}, {0, 0}, {0, 0}, {2, 8 / 11.0}, {2, 8 / 9.0}, {2, 8 / 9.0}, {2, 8 / 9.0}}
            << Shows{{0, 0}, {0, 0}, {0, 0}, {2, 0.5}, {2, 8 / 9.0}, {5, 1}, {2, 8 / 11.0}};
        QTest::newRow("begun, but nothing stands")
            << at(6, 10) << Shows{{0, 0}, {2, 0}, {2, 0}, {2, 9 / 11.0}, {4, 1}, {4, 1}, {4, 1}}
            << Shows{{0, 0}, {0, 0}, {2, 0}, {2, 0.5}, {4, 1}, {5, 1}, {2, 9 / 11.0}};
        QTest::newRow("each in its own")
            << at(6, 15) << Shows{{0, 0}, {2, 0.25}, {2, 0.5}, {4, 1}, {4, 1}, {4, 1}, {4, 1}}
            << Shows{{0, 0}, {1, 0}, {2, 0.5}, {3, 0.5}, {4, 1}, {5, 1}, {6, 1}};
        QTest::newRow("at the end") << at(8, 1) << Shows(TaskState::count, {TaskState::Finished, 1})
                                    << Shows{{1, 0}, {1, 0}, {3, 0.5}, {3, 0.5}, {4, 1}, {5, 1}, {6, 1}};
    }
    void statesHaveTheirColoursAtEachDate()
    {
        QFETCH(QDateTime, date);
        QFETCH(Shows, onPlan);
        QFETCH(Shows, onSite);
        m_street->goTo(date);
        QCOMPARE(m_street->faults(slabs(onPlan, onSite)), QString());
    }

    // What stands of a state that is switched off has the colour of its material, what does not stand is not
    // hinted at; all other states stay as they are.
    void eachStateCanBeSwitchedOff_data()
    {
        QTest::addColumn<int>("state");
        for (int state = 0; state < TaskState::count; ++state)
            QTest::addRow("state %d", state) << state;
    }
    void eachStateCanBeSwitchedOff()
    {
        QFETCH(int, state);
        TimeLineSet set;
        setStateFlag(state, false, set);
        m_street->setSet(set);
        m_street->goTo(at(6, 15));
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }

    void withoutStateColoursAllIsMaterial()
    {
        TimeLineSet set;
        set.DisplayStateColor = false;
        m_street->setSet(set);
        m_street->goTo(at(6, 15));
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }

    void delaysCanBeLeftOut()
    {
        TimeLineSet set;
        set.DisplayDelay = false;
        m_street->setSet(set);
        m_street->goTo(at(6, 15));
        QVector<Expected> all = slabsInTheMiddle();
        QCOMPARE(all.at(3).colour, m_street->stateColour(TaskState::NotStarted));
        QCOMPARE(all.at(13).colour, m_street->stateColour(TaskState::Finished));
        QCOMPARE(m_street->faults(all), QString());
    }

    void anotherColourIsSeenAtOnce()
    {
        m_street->goTo(at(6, 15));
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
        m_street->settings().setColour(TaskState::FinishedLate, QColor(10, 200, 250));
        const QVector<Expected> all = slabsInTheMiddle();
        QCOMPARE(all.last().colour, QColor(10, 200, 250));
        QCOMPARE(m_street->faults(all), QString());
        m_street->settings().setColours(m_street->settings().defaultColours());
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }

    // Half of each cube stands, and on the right side.
    void elementsGrowInTheirDirections_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QVector3D>("standing"); // from the middle of the cube
        QTest::addColumn<QVector3D>("missing");  // null: none is
        QTest::newRow("front to back") << 0 << QVector3D(0, 1, 0.5F) << QVector3D(0, 1, -0.5F);
        QTest::newRow("back to front") << 1 << QVector3D(0, 1, -0.5F) << QVector3D(0, 1, 0.5F);
        QTest::newRow("left to right") << 2 << QVector3D(-0.5F, 1, 0) << QVector3D(0.5F, 1, 0);
        QTest::newRow("right to left") << 3 << QVector3D(0.5F, 1, 0) << QVector3D(-0.5F, 1, 0);
        QTest::newRow("top to bottom") << 4 << QVector3D(0, 0.5F, 1) << QVector3D(0, -0.5F, 1);
        QTest::newRow("bottom to top") << 5 << QVector3D(0, -0.5F, 1) << QVector3D(0, 0.5F, 1);
        QTest::newRow("appear") << 6 << QVector3D(0, 0.5F, 1) << QVector3D();
        QTest::newRow("disappear") << 7 << QVector3D(0, -0.5F, 1) << QVector3D(0, 0.5F, 1);
    }
    void elementsGrowInTheirDirections()
    {
        QFETCH(int, number);
        QFETCH(QVector3D, standing);
        QFETCH(QVector3D, missing);
        const bool isUpright = standing.z() == 1.0F;
        m_street->lookFrom(0.0, isUpright ? 5.0 : 65.0);
        TimeLineSet set;
        set.NonStartClr = false; // no hints of the slabs behind
        set.NotStartDelayClr = false;
        m_street->setSet(set);
        const QVector3D middle(float(number) * 3 + 1, 5, 9);
        const auto shaded = [isUpright](const QColor& colour) {
            constexpr double front = 0.6; // of the light on an upper side
            return isUpright ? QColor::fromRgbF(colour.redF() * front, colour.greenF() * front,
                                                colour.blueF() * front)
                             : colour;
        };
        const auto expect = [&](const QDateTime& date, const QColor& built, const QColor& gone) {
            m_street->goTo(date);
            QVector<Expected> all;
            for (const auto view : {planned, actual}) {
                all.append({QStringLiteral("what stands"), view, middle + standing, built});
                if (!missing.isNull())
                    all.append({QStringLiteral("what does not"), view, middle + missing, gone});
            }
            return m_street->faults(all);
        };
        const QColor none = m_street->background();
        const QColor working = shaded(m_street->stateColour(TaskState::InProgress));
        const QColor finished = shaded(m_street->stateColour(TaskState::Finished));
        const QColor material = shaded(SimulatedBuilding::material());
        const bool isTakenDown = directions[number] == Kv::GrowDisappear;
        QCOMPARE(expect(at(6, 9), isTakenDown ? material : none, isTakenDown ? material : none), QString());
        QCOMPARE(expect(at(6, 15), working, none), QString());
        QCOMPARE(expect(at(6, 20), isTakenDown ? none : finished, isTakenDown ? none : finished), QString());
    }

    void whatIsHiddenIsGone()
    {
        const auto expect = [this](const QDateTime& date, int hidden, int whenFinished) {
            m_street->goTo(date);
            QVector<Expected> all;
            for (const auto view : {planned, actual}) {
                const auto add = [&](int number, const char* what, const QColor& colour, float high) {
                    all.append({QString::fromLatin1(what), view, QVector3D(float(number) * 3 + 1, high, -4),
                                colour});
                };
                const auto colour = [this](int state) {
                    return state == none ? m_street->background() : m_street->stateColour(state);
                };
                const double share =
                    qMin(1.0, double(at(6, 1).msecsTo(date)) / double(at(6, 1).msecsTo(at(6, 18))));
                add(0, "hidden", colour(hidden), 1);
                add(1, "hidden when finished", colour(whenFinished), float(share));
                add(2, "outside of the simulation", colour(none), 1);
                add(3, "named by no task", SimulatedBuilding::material(), 1);
            }
            return m_street->faults(all);
        };
        QCOMPARE(expect(at(6, 16).addSecs(-1), TaskState::Finished, TaskState::InProgress), QString());
        QCOMPARE(expect(at(6, 16), none, TaskState::InProgress), QString());
        QCOMPARE(expect(at(6, 18), none, none), QString());
        QCOMPARE(expect(at(8, 1), none, none), QString());
        QCOMPARE(expect(at(6, 16).addSecs(-1), TaskState::Finished, TaskState::InProgress), QString());
    }

    void aClickSelectsInTreeAndGantt_data()
    {
        QTest::addColumn<int>("view");
        QTest::newRow("in the planned view") << int(planned);
        QTest::newRow("in the actual view") << int(actual);
    }
    void aClickSelectsInTreeAndGantt()
    {
        QFETCH(int, view);
        m_street->goTo(at(6, 15));
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
        const auto click = [&](const QVector3D& place, Qt::KeyboardModifiers keys) {
            QTest::mouseClick(m_street->view().sceneWindow(), Qt::LeftButton, keys,
                              m_street->seenAt(place, BuildingScene::View(view)));
        };
        const auto top = [](int number) {
            return QVector3D(float(number) * 3 + 1, 1, 2);
        };
        click(top(5), Qt::NoModifier);
        QCOMPARE(m_street->selectedNames(), QStringList({slab(5)}));
        QCOMPARE(m_street->page().chart()->painter().selected(), QSet<int>({m_street->positionOf(slab(5))}));
        QCOMPARE(m_street->faults(highlighted({5})), QString());
        click(top(6), Qt::ControlModifier);
        QCOMPARE(m_street->selectedNames(), QStringList({slab(5), slab(6)}));
        QCOMPARE(m_street->page().chart()->painter().selected().size(), 2);
        QCOMPARE(m_street->faults(highlighted({5, 6})), QString());
        click(top(4), Qt::NoModifier);
        QCOMPARE(m_street->selectedNames(), QStringList({slab(4)}));
        // What is not built yet is looked through.
        click(top(0), Qt::NoModifier);
        QCOMPARE(m_street->selectedNames(), QStringList());
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }

    void tasksChosenInTreeAndGanttAreHighlighted()
    {
        m_street->goTo(at(6, 15));
        QTreeView* const tree = m_street->page().tree();
        const QModelIndex row = m_street->model().indexOf(m_street->positionOf(slab(4)));
        tree->scrollTo(row);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualRect(row).center());
        QCOMPARE(m_street->selectedNames(), QStringList({slab(4)}));
        QCOMPARE(m_street->faults(highlighted({4})), QString());

        GanttChart& chart = *m_street->page().chart();
        const int position = m_street->positionOf(slab(3));
        chart.showTask(position);
        const QPoint scrolled(chart.horizontalScrollBar()->value(), chart.verticalScrollBar()->value());
        QTest::mouseClick(chart.viewport(), Qt::LeftButton, Qt::NoModifier,
                          chart.painter().barOf(position).center().toPoint() - scrolled);
        QCOMPARE(m_street->selectedNames(), QStringList({slab(3)}));
        QCOMPARE(m_street->faults(highlighted({3})), QString());
        m_street->page().selectTasks({});
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }

    // Where it is drawn, and in sight also when the period is wider than the chart.
    void theDateLineFollowsThePlayback()
    {
        PlaybackBar& playback = *m_street->simulation().playback();
        GanttChart& chart = *m_street->page().chart();
        while (chart.horizontalScrollBar()->maximum() < 2 * chart.viewport()->width())
            chart.zoomIn();
        playback.setDate(at(5, 10));
        chart.showDate(at(5, 10));
        playback.setSpeed(3.0);
        playback.play();
        int scrolls = 0;
        int left = chart.horizontalScrollBar()->value();
        while (playback.clock().isPlaying()) {
            playback.advance(1000);
            const QDateTime date = playback.date();
            const int scrolled = chart.horizontalScrollBar()->value();
            scrolls += scrolled == left ? 0 : 1;
            left = scrolled;
            const QImage image = chart.viewport()->grab().toImage();
            const int expected = int(chart.scale().xOf(date)) - scrolled;
            QVERIFY(expected >= 0 && expected < image.width());
            bool isMarked = false;
            for (int x = qMax(0, expected - 1); x <= qMin(image.width() - 1, expected + 1); ++x) {
                const QColor pixel = image.pixelColor(x, image.height() - 2);
                isMarked = isMarked || (pixel.red() > pixel.green() + 60 && pixel.red() > pixel.blue() + 60);
            }
            QVERIFY2(isMarked, qPrintable(date.toString(Qt::ISODate)));
        }
        QCOMPARE(playback.date(), at(8, 1));
        QVERIFY(scrolls > 1);
    }

    void floorsStandApart()
    {
        m_street->goTo(at(8, 1));
        const QVector3D top(4, 6, 9);       // of a finished cube
        const QVector3D slabTop(10, 1, -4); // of what no task names
        const QColor finished = m_street->stateColour(TaskState::Finished);
        const auto slider = m_street->simulation().floors()->findChild<QSlider*>(QStringLiteral("spread"));
        const auto expect = [&](float lift) {
            QVector<Expected> all;
            for (const auto view : {planned, actual}) {
                all.append({QStringLiteral("above"), view, top + QVector3D(0, lift, 0), finished});
                all.append({QStringLiteral("below"), view, slabTop, SimulatedBuilding::material()});
            }
            return m_street->faults(all);
        };
        m_street->lookFrom(0.0, 55.0);
        QCOMPARE(expect(0.0F), QString());
        slider->setValue(slider->maximum());
        QCOMPARE(expect(3.0F), QString());
        m_street->settings().setFloorHeight(m_street->floors.first(), 5.0);
        QCOMPARE(expect(5.0F), QString());
        // Where it stood there is nothing.
        QCOMPARE(m_street->faults({{QStringLiteral("its old place"), planned, QVector3D(4, 4.2F, 10),
                                    m_street->background()}}),
                 QString());
        slider->setValue(0);
        QCOMPARE(expect(0.0F), QString());
        m_street->settings().resetFloorHeights(m_street->floors);
    }

    void oneViewHasTheWholePicture()
    {
        m_street->goTo(at(6, 15));
        for (const auto view : {planned, actual}) {
            m_street->settings().setViews(view == planned ? SimulationViews::Planned
                                                          : SimulationViews::Actual);
            m_street->lookFrom(0.0, 65.0);
            const QVector<Expected> both = slabsInTheMiddle();
            QVector<Expected> all;
            for (Expected expected : both) {
                if (expected.view == view)
                    all.append(expected);
            }
            QCOMPARE(all.size(), int(TaskState::count));
            QCOMPARE(m_street->faults(all), QString());
        }
        m_street->settings().setViews(SimulationViews::Both);
        m_street->lookFrom(0.0, 65.0);
        QCOMPARE(m_street->faults(slabsInTheMiddle()), QString());
    }
};

QTEST_MAIN(SimulationPixelsTest)
#include "SimulationPixelsTest.moc"
