#pragma once

#include "SimulationViewer.h"

#include <FloorHeightsPanel.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QProcess>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDateTimeEdit>
#include <QtWidgets/QTableView>

#include <cstdio>

/// Everything of the simulation that is kept from one start to the next, as its controls show it.
namespace Kept {

inline QString of(const QAbstractItemModel& model, int row, int column)
{
    return model.index(row, column).data().toString();
}

inline QAbstractItemModel* floors(SimulationViewer& viewer)
{
    return viewer.simulation()
        .floors()
        ->findChild<QAbstractItemView*>(QStringLiteral("floorHeights"))
        ->model();
}

/// By the names of the controls.
inline QJsonObject shown(SimulationViewer& viewer)
{
    QJsonObject all;
    SimulationPage& page = viewer.simulation();
    for (const char* name : {"daysPerSecond", "speed"})
        all.insert(QLatin1String(name), page.findChild<QDoubleSpinBox*>(QLatin1String(name))->value());
    for (const char* name : {"timeStart", "timeFinish"})
        all.insert(QLatin1String(name),
                   page.findChild<QDateTimeEdit*>(QLatin1String(name))->dateTime().toString(Qt::ISODate));
    for (const char* name : {"views", "share"})
        all.insert(QLatin1String(name), page.findChild<QComboBox*>(QLatin1String(name))->currentIndex());
    QStringList flags{QStringLiteral("usePlanTime"), QStringLiteral("displayDelay"),
                      QStringLiteral("displayStateColor")};
    for (int state = 0; state < TaskState::count; ++state) {
        flags.append(QStringLiteral("paintState%1").arg(state));
        all.insert(QStringLiteral("colour %1").arg(state), page.settings()->colours().at(state).name());
    }
    for (const QString& name : qAsConst(flags))
        all.insert(name, page.findChild<QAbstractButton*>(name)->isChecked());
    const QAbstractItemModel& heights = *floors(viewer);
    for (int row = 0; row < heights.rowCount(); ++row)
        all.insert(QStringLiteral("floor ") + of(heights, row, 0), of(heights, row, 1));
    all.insert(QStringLiteral("elements"), page.model()->elements().size());
    return all;
}

/// Sets each by its control to something else.
inline void change(SimulationViewer& viewer)
{
    SimulationPage& page = viewer.simulation();
    page.findChild<QDoubleSpinBox*>(QStringLiteral("daysPerSecond"))->setValue(7.5);
    page.findChild<QAbstractButton*>(QStringLiteral("usePlanTime"))->click();
    page.findChild<QDateTimeEdit*>(QStringLiteral("timeStart"))
        ->setDateTime(QDateTime(QDate(2026, 4, 1), QTime(9, 30)));
    page.findChild<QDateTimeEdit*>(QStringLiteral("timeFinish"))
        ->setDateTime(QDateTime(QDate(2026, 9, 30), QTime(18, 0)));
    page.findChild<QAbstractButton*>(QStringLiteral("displayDelay"))->click();
    page.findChild<QComboBox*>(QStringLiteral("share"))->setCurrentIndex(1);
    page.findChild<QComboBox*>(QStringLiteral("views"))->setCurrentIndex(2);
    for (int state = 0; state < TaskState::count; ++state) {
        page.findChild<QAbstractButton*>(QStringLiteral("paintState%1").arg(state))->click();
        page.settings()->setColour(state, QColor(10 + state, 20, 30));
    }
    page.findChild<QAbstractButton*>(QStringLiteral("displayStateColor"))->click();
    QAbstractItemModel& heights = *floors(viewer);
    for (int row = 0; row < heights.rowCount(); ++row)
        heights.setData(heights.index(row, 1), 3.5 + row);
}

/// What a process of its own shows, that starts with what is kept in a folder; empty when it cannot.
inline QJsonObject shownByAnother(const QString& service, const QString& folder)
{
    QProcess other;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KV_TEST_SHOW_KEPT"), QStringLiteral("1"));
    environment.insert(QStringLiteral("KV_BASE_API"), service);
    environment.insert(QStringLiteral("KV_PROJECT_ID"), GetSoftCache()->currentProjectId());
    environment.insert(QStringLiteral("KV_SETTINGS_DIR"), folder);
    other.setProcessEnvironment(environment);
    other.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    other.start(QCoreApplication::applicationFilePath(), {});
    constexpr int longestWait = 100000;
    if (!other.waitForFinished(longestWait) || other.exitCode() != 0)
        return {};
    return QJsonDocument::fromJson(other.readAllStandardOutput()).object();
}

/// Prints what the window of a process that has just started shows. @return the exit code
inline int print()
{
    QApplication::setQuitOnLastWindowClosed(false);
    SimulationViewer viewer;
    viewer.simulation().setReaderProgram(QStringLiteral(MODEL_READER));
    viewer.open(0);
    viewer.window.showSimulation();
    if (!QTest::qWaitFor([&] { return viewer.simulation().hasModel(); }, 60000))
        return 1;
    std::puts(QJsonDocument(shown(viewer)).toJson(QJsonDocument::Compact).constData());
    return 0;
}

} // namespace Kept
