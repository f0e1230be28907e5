// The settings of the simulation as a person uses them, and what they keep.

#include "Controls.h"

#include <FloorHeightsPanel.h>
#include <KvSoftBase/KvSoftBase.h>
#include <PlaybackBar.h>
#include <SimulationSettings.h>
#include <StateLegend.h>
#include <TimeLineSetPanel.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDateTimeEdit>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

namespace {

const QString tower = QStringLiteral("plan-tower");

/// What a program that starts now finds of a plan.
QJsonObject afterRestart()
{
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--tell"), GetSettings()->settingsDirectory()});
    if (!program.waitForFinished() || program.exitCode() != 0)
        return {};
    return QJsonDocument::fromJson(program.readAllStandardOutput()).object();
}

QJsonObject toldSettings()
{
    SimulationSettings settings;
    settings.setPlan(tower);
    const TimeLineSet& set = settings.set();
    QJsonArray flags;
    QJsonArray colours;
    for (int state = 0; state < TaskState::count; ++state) {
        flags.append(isStateFlagged(state, set));
        colours.append(settings.colours().at(state).name(QColor::HexArgb));
    }
    return {{QStringLiteral("speed"), set.DayForS},
            {QStringLiteral("start"), set.TimeStart.toString(Qt::ISODate)},
            {QStringLiteral("finish"), set.TimeFinish.toString(Qt::ISODate)},
            {QStringLiteral("usePlanTime"), set.UsePlanTime},
            {QStringLiteral("displayDelay"), set.DisplayDelay},
            {QStringLiteral("displayStateColor"), set.DisplayStateColor},
            {QStringLiteral("flags"), flags},
            {QStringLiteral("colours"), colours},
            {QStringLiteral("views"), int(settings.views())},
            {QStringLiteral("share"), int(settings.share())},
            {QStringLiteral("model"), settings.modelFile()},
            {QStringLiteral("F1"), settings.floorHeight(QStringLiteral("F1"))},
            {QStringLiteral("F2"), settings.floorHeight(QStringLiteral("F2"))}};
}

} // namespace

class ControlsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase() { SetSettingsDirectory(m_folder.path()); }

    void cleanup()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        settings.setSet(TimeLineSet());
        settings.setColours(settings.defaultColours());
        settings.setViews(SimulationViews::Both);
        settings.setShare(SimulationShare::ByProgress);
        settings.setModelFile(QString());
        settings.resetFloorHeights({QStringLiteral("F1"), QStringLiteral("F2")});
    }

    void everythingHasANameToBeReadOut()
    {
        SimulationSettings settings;
        PlaybackBar bar;
        FloorHeightsPanel floors(&settings);
        TimeLineSetPanel set(&settings);
        for (QWidget* const panel : std::initializer_list<QWidget*>{&bar, &floors, &set}) {
            QSet<const QWidget*> labelled;
            const QList<QLabel*> labels = panel->findChildren<QLabel*>();
            for (const QLabel* const label : labels)
                labelled.insert(label->buddy());
            const QList<QWidget*> parts = panel->findChildren<QWidget*>();
            for (const QWidget* const widget : parts) {
                if (widget->focusPolicy() == Qt::NoFocus ||
                    widget->objectName().startsWith(QLatin1String("qt_")))
                    continue;
                const bool isLabelled = qobject_cast<const QAbstractButton*>(widget) &&
                                        !qobject_cast<const QAbstractButton*>(widget)->text().isEmpty();
                QVERIFY2(isLabelled || labelled.contains(widget) || !widget->accessibleName().isEmpty() ||
                             qobject_cast<const QLineEdit*>(widget),
                         qPrintable(widget->objectName()));
            }
        }
    }

    void eachControlIsOneSetting_data()
    {
        QTest::addColumn<QByteArray>("control");
        QTest::addColumn<int>("state"); // of the flag; -1: none
        QTest::newRow("dates of the plan") << QByteArray("usePlanTime") << -1;
        QTest::newRow("delays") << QByteArray("displayDelay") << -1;
        QTest::newRow("by state") << QByteArray("displayStateColor") << -1;
        for (int state = 0; state < TaskState::count; ++state)
            QTest::addRow("state %d", state) << "paintState" + QByteArray::number(state) << state;
    }
    void eachControlIsOneSetting()
    {
        QFETCH(QByteArray, control);
        QFETCH(int, state);
        SimulationSettings settings;
        settings.setPlan(tower);
        TimeLineSetPanel panel(&settings);
        auto* const box = part<QCheckBox>(panel, control.constData());
        QVERIFY(box->isChecked());
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Space);
        TimeLineSet expected;
        if (state >= 0)
            setStateFlag(state, false, expected);
        else if (control == "usePlanTime")
            expected.UsePlanTime = false;
        else if (control == "displayDelay")
            expected.DisplayDelay = false;
        else
            expected.DisplayStateColor = false;
        TimeLineSet kept;
        QVERIFY(KvPlanSetting::instance()->GetSimulateSetting(tower, kept));
        QCOMPARE(kept.UsePlanTime, expected.UsePlanTime);
        QCOMPARE(kept.DisplayDelay, expected.DisplayDelay);
        QCOMPARE(kept.DisplayStateColor, expected.DisplayStateColor);
        for (int other = 0; other < TaskState::count; ++other)
            QCOMPARE(isStateFlagged(other, kept), isStateFlagged(other, expected));
        // And another panel shows it.
        TimeLineSetPanel second(&settings);
        QVERIFY(!part<QCheckBox>(second, control.constData())->isChecked());
        QTest::keyClick(box, Qt::Key_Space);
        QVERIFY(part<QCheckBox>(second, control.constData())->isChecked());
    }

    void statesCanBeChosenWhileTheyArePainted()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        TimeLineSetPanel panel(&settings);
        QVERIFY(part<QCheckBox>(panel, "paintState3")->isEnabled());
        QTest::keyClick(part<QCheckBox>(panel, "displayStateColor"), Qt::Key_Space);
        QVERIFY(!part<QCheckBox>(panel, "paintState3")->isEnabled());
    }

    void whichDatesAreSeen()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        QSignalSpy changes(&settings, &SimulationSettings::viewsChanged);
        TimeLineSetPanel panel(&settings);
        auto* const views = part<QComboBox>(panel, "views");
        auto* const share = part<QComboBox>(panel, "share");
        QVERIFY(settings.views() == SimulationViews::Both);
        QTest::keyClick(views, Qt::Key_Down);
        QVERIFY(settings.views() == SimulationViews::Planned);
        QVERIFY(!share->isEnabled()); // a plan knows no unfinished tasks
        QTest::keyClick(views, Qt::Key_Down);
        QVERIFY(settings.views() == SimulationViews::Actual);
        QVERIFY(settings.share() == SimulationShare::ByProgress);
        QTest::keyClick(share, Qt::Key_Down);
        QVERIFY(settings.share() == SimulationShare::ByTime);
        QCOMPARE(changes.size(), 3);
        settings.setPlan(QStringLiteral("plan-other"));
        QCOMPARE(views->currentIndex(), 0);
        QCOMPARE(share->currentIndex(), 0);
        settings.setPlan(tower);
        QVERIFY(settings.views() == SimulationViews::Actual);
        QCOMPARE(share->currentIndex(), 1);
    }

    void aPeriodOfItsOwn()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        TimeLineSetPanel panel(&settings);
        panel.setPlanPeriod({day(2, 8), day(27, 17)});
        auto* const start = part<QDateTimeEdit>(panel, "timeStart");
        auto* const finish = part<QDateTimeEdit>(panel, "timeFinish");
        QVERIFY(!start->isEnabled());
        QCOMPARE(start->dateTime(), day(2, 8));
        QCOMPARE(finish->dateTime(), day(27, 17));
        QTest::keyClick(part<QCheckBox>(panel, "usePlanTime"), Qt::Key_Space);
        QVERIFY(start->isEnabled());
        QCOMPARE(start->dateTime(), day(2, 8)); // the plan's until another is set
        QVERIFY(!settings.set().TimeStart.isValid());
        start->setDateTime(day(5));
        QCOMPARE(settings.set().TimeStart, day(5));
        QVERIFY(!settings.set().TimeFinish.isValid());
        panel.setPlanPeriod({day(2, 8), day(29, 17)});
        QCOMPARE(finish->dateTime(), day(29, 17)); // goes on following the plan
        finish->setDateTime(day(9));
        QCOMPARE(settings.set().TimeFinish, day(9));
        const SimulationPeriod period = simulatedPeriod({day(2, 8), day(29, 17)}, settings.set());
        QCOMPARE(period.start, day(5));
        QCOMPARE(period.finish, day(9));
    }

    void theLegendSaysTheStates()
    {
        SimulationSettings settings;
        StateLegend legend(&settings);
        const QStringList labels = KvPlanSetting::instance()->GetSimulateColorTypeStr();
        for (int state = 0; state < TaskState::count; ++state) {
            const QByteArray name = "paintState" + QByteArray::number(state);
            QCOMPARE(part<QCheckBox>(legend, name.constData())->text(), labels.at(state));
            const QByteArray colour = "colourOfState" + QByteArray::number(state);
            const QImage icon =
                part<QToolButton>(legend, colour.constData())->icon().pixmap(28, 14).toImage();
            QCOMPARE(icon.pixelColor(icon.width() / 2, icon.height() / 2),
                     settings.defaultColours().at(state));
        }
    }

    void aColourIsChangedAndBroughtBack()
    {
        SimulationSettings settings;
        QSignalSpy changes(&settings, &SimulationSettings::coloursChanged);
        StateLegend legend(&settings);
        auto* const defaults = part<QPushButton>(legend, "defaultColours");
        QVERIFY(!defaults->isEnabled());
        QColor asked;
        QColor answer(1, 2, 3, 200);
        legend.setAskForColour([&](const QColor& present, const QString&) {
            asked = present;
            return answer;
        });
        QTest::mouseClick(part<QToolButton>(legend, "colourOfState2"), Qt::LeftButton);
        QCOMPARE(asked, settings.defaultColours().at(2));
        QCOMPARE(KvPlanSetting::instance()->GetSimulateColor(2), answer);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(part<QToolButton>(legend, "colourOfState2")->accessibleDescription(),
                 QStringLiteral("#c8010203"));
        answer = QColor(); // the dialog was left
        QTest::mouseClick(part<QToolButton>(legend, "colourOfState4"), Qt::LeftButton);
        QCOMPARE(settings.colours().at(4), settings.defaultColours().at(4));
        QVERIFY(defaults->isEnabled());
        QTest::mouseClick(defaults, Qt::LeftButton);
        QCOMPARE(KvPlanSetting::instance()->GetSimulateColor(), settings.defaultColours());
        QCOMPARE(changes.size(), 2);
    }

    void wrongColoursAreNotTaken()
    {
        SimulationSettings settings;
        settings.setColours({Qt::red});
        QCOMPARE(settings.colours(), settings.defaultColours());
        settings.setColour(7, Qt::red);
        settings.setColour(-1, Qt::red);
        QCOMPARE(settings.colours(), settings.defaultColours());
        KvPlanSetting::instance()->SetSimulateColor({Qt::red}); // another host's
        QCOMPARE(settings.colours(), settings.defaultColours());
    }

    void floorsAreEdited()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        FloorHeightsPanel panel(&settings);
        panel.setFloors({QStringLiteral("F1"), QStringLiteral("F2")});
        panel.show();
        auto* const table = part<QTableView>(panel, "floorHeights");
        QCOMPARE(table->model()->rowCount(), 2);
        const QModelIndex top = table->model()->index(0, FloorHeightsModel::Height);
        QCOMPARE(table->model()->index(0, 0).data().toString(), QStringLiteral("F2")); // the highest
        QCOMPARE(top.data().toString(), QStringLiteral("3.00"));
        QSignalSpy changes(&settings, &SimulationSettings::floorHeightsChanged);
        table->setCurrentIndex(top);
        table->setFocus();
        QTest::keyClick(table, Qt::Key_F2);
        auto* const editor = table->viewport()->findChild<QDoubleSpinBox*>();
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, QStringLiteral("4.25"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(settings.floorHeight(QStringLiteral("F2")), 4.25);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(top.data().toString(), QStringLiteral("4.25"));
        QCOMPARE(settings.floorHeight(QStringLiteral("F1")), 3.0);
        for (const QVariant& bad :
             {QVariant(0.0), QVariant(-2.0), QVariant(QStringLiteral("x")), QVariant(1e9)})
            QVERIFY(!part<QTableView>(panel, "floorHeights")->model()->setData(top, bad, Qt::EditRole));
        QCOMPARE(settings.floorHeight(QStringLiteral("F2")), 4.25);
        QTest::mouseClick(part<QPushButton>(panel, "defaultHeights"), Qt::LeftButton);
        QCOMPARE(settings.floorHeight(QStringLiteral("F2")), 3.0);
    }

    void floorsOfPlansAreTheirOwn()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        settings.setFloorHeight(QStringLiteral("F1"), 4.5);
        settings.setPlan(QStringLiteral("plan-other"));
        QCOMPARE(settings.floorHeight(QStringLiteral("F1")), 3.0);
        settings.setPlan(tower);
        QCOMPARE(settings.floorHeight(QStringLiteral("F1")), 4.5);
    }

    void floorsAreTakenApart()
    {
        SimulationSettings settings;
        FloorHeightsPanel panel(&settings);
        QSignalSpy spreads(&panel, &FloorHeightsPanel::spreadChanged);
        QCOMPARE(panel.spread(), 0.0);
        auto* const slider = part<QSlider>(panel, "spread");
        QTest::keyClick(slider, Qt::Key_End);
        QCOMPARE(panel.spread(), 1.0);
        QTest::keyClick(slider, Qt::Key_PageDown);
        QCOMPARE(panel.spread(), 0.75);
        QCOMPARE(spreads.size(), 2);
        QCOMPARE(spreads.last().first().toDouble(), 0.75);
    }

    void allSurvivesARestart()
    {
        SimulationSettings settings;
        settings.setPlan(tower);
        TimeLineSet set;
        set.DayForS = 2.25;
        set.TimeStart = day(5, 8);
        set.TimeFinish = day(9, 17);
        set.UsePlanTime = false;
        set.DisplayDelay = false;
        set.ProcessingClr = false;
        set.FinishBehindClr = false;
        settings.setSet(set);
        settings.setColour(3, QColor(10, 20, 30, 40));
        settings.setFloorHeight(QStringLiteral("F2"), 3.6);
        settings.setViews(SimulationViews::Actual);
        settings.setShare(SimulationShare::ByTime);
        settings.setModelFile(QStringLiteral("/models/塔楼.gltf"));
        const QJsonObject told = afterRestart();
        QVERIFY(!told.isEmpty());
        QCOMPARE(told, toldSettings());
        QCOMPARE(told.value(QLatin1String("speed")).toDouble(), 2.25);
        QCOMPARE(told.value(QLatin1String("F2")).toDouble(), 3.6);
        QCOMPARE(told.value(QLatin1String("views")).toInt(), int(SimulationViews::Actual));
        QCOMPARE(told.value(QLatin1String("share")).toInt(), int(SimulationShare::ByTime));
        QCOMPARE(told.value(QLatin1String("model")).toString(), QStringLiteral("/models/塔楼.gltf"));
        QCOMPARE(told.value(QLatin1String("F1")).toDouble(), 3.0);
        QCOMPARE(told.value(QLatin1String("colours")).toArray().at(3).toString(),
                 QStringLiteral("#280a141e"));
        QCOMPARE(told.value(QLatin1String("start")).toString(), QStringLiteral("2026-03-05T08:00:00"));
    }

    void settingsOfOtherPlansStay()
    {
        {
            SimulationSettings settings;
            settings.setPlan(QStringLiteral("plan-other"));
            TimeLineSet set;
            set.DayForS = 9.0;
            settings.setSet(set);
        }
        SimulationSettings settings;
        settings.setPlan(tower);
        TimeLineSet set;
        set.DayForS = 4.0;
        settings.setSet(set);
        settings.setPlan(QStringLiteral("plan-other"));
        QCOMPARE(settings.set().DayForS, 9.0);
        settings.setPlan(QStringLiteral("plan-without"));
        QCOMPARE(settings.set().DayForS, 0.5);
    }

    void aFileWrittenByHandIsReadAsFarAsItCanBe()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("planviewer.ini")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[floorHeights]\n1\\floor=plan-tower/F1\n1\\height=high\n2\\floor=plan-tower/F2\n"
                   "2\\height=-4\n3\\height=5\n4\\floor=plan-tower/F3\n4\\height=5\nsize=4\n");
        file.close();
        SetSettingsDirectory(folder.path());
        SimulationSettings settings;
        settings.setPlan(tower);
        SetSettingsDirectory(m_folder.path());
        QCOMPARE(settings.floorHeight(QStringLiteral("F1")), 3.0);
        QCOMPARE(settings.floorHeight(QStringLiteral("F2")), 3.0);
        QCOMPARE(settings.floorHeight(QStringLiteral("F3")), 5.0);
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--tell") == 0) {
        SetSettingsDirectory(QString::fromLocal8Bit(argv[2]));
        QTextStream(stdout) << QString::fromUtf8(QJsonDocument(toldSettings()).toJson());
        return 0;
    }
    ControlsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ControlsTest.moc"
