#include "Appearance.h"
#include "GanttChart.h"
#include "GanttExport.h"
#include "MainWindow.h"
#include "PlanClient.h"
#include "PlanListPanel.h"
#include "PlanPage.h"
#include "Screenshots.h"
#include "SimulationPage.h"
#include "SimulationScreenshots.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QTextStream>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace {

bool askAgain(const PlanFailure& failure)
{
    QMessageBox box(QMessageBox::Warning, QCoreApplication::translate("main", "Not done"), failure.text,
                    QMessageBox::NoButton, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.setDetailedText(failure.details);
    box.setObjectName(QStringLiteral("failureDialog"));
    QPushButton* const again =
        box.addButton(QCoreApplication::translate("main", "&Try again"), QMessageBox::AcceptRole);
    QPushButton* const leave =
        box.addButton(QCoreApplication::translate("main", "&Leave it"), QMessageBox::RejectRole);
    box.setDefaultButton(leave);
    box.setEscapeButton(leave);
    box.exec();
    return box.clickedButton() == again;
}

bool complain(const QString& failure)
{
    QTextStream(stderr) << failure << '\n';
    return false;
}

KvPlan planOf(const MainWindow& window, const QString& id)
{
    const QList<KvPlan> plans = window.planList()->plans();
    for (const KvPlan& plan : plans) {
        if (id.isEmpty() || plan.id == id)
            return plan;
    }
    return {};
}

// As soon as the model is read.
bool writeWithModel(MainWindow& window, const QString& folder, const QDateTime& date)
{
    const SimulationPage& simulation = *window.simulationPage();
    while (simulation.isReading())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (!simulation.hasModel())
        return complain(simulation.message());
    return writeSimulationScreenshots(window, folder, date);
}

// Also what a report of a fault should name: how this copy was built, and which Qt it runs on.
QString versionText()
{
    return QStringLiteral(PLANVIEWER_VERSION "\nQt %1, built with " QT_VERSION_STR "\n" KV_BUILD_FACTS)
        .arg(QLatin1String(qVersion()));
}

bool asksForText(int argc, const char* const* argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char* argument) {
        const QByteArray text = QByteArray::fromRawData(argument, int(qstrlen(argument)));
        return text == "-h" || text == "--help" || text == "-v" || text == "--version";
    });
}

} // namespace

int main(int argc, char* argv[])
{
    if (asksForText(argc, argv))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // a text needs no display
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("planviewer"));
    QCoreApplication::setApplicationVersion(versionText());

    QCommandLineParser line;
    line.setApplicationDescription(QStringLiteral("Shows and edits the plans of the schedule service."));
    line.addHelpOption();
    line.addVersionOption();
    const auto option = [&line](const char* name, const char* text, const char* value) {
        const QCommandLineOption made(QString::fromLatin1(name), QString::fromLatin1(text),
                                      QString::fromLatin1(value));
        line.addOption(made);
        return made.names().first();
    };
    const QString server = option("server", "Base address of the service (KV_BASE_API).", "address");
    const QString project = option("project", "The project (KV_PROJECT_ID).", "id");
    const QString language = option("language", "zh or en; that of the system when left out.", "code");
    const QString theme = option("theme", "light, dark or system.", "name");
    const QString plan = option("plan", "Opens this plan.", "id");
    const QString model =
        option("model", "Opens this model of the plan's building (gltf, glb, obj).", "file");
    const QString gantt = option("gantt", "Writes the plan's Gantt chart (png, svg, pdf) and ends.", "file");
    const QString levels = option("levels", "Levels of the task tree in the written chart.", "number");
    const QString screenshots =
        option("screenshots",
               "Writes pictures of the main views, or with --model of the simulation, and ends.", "folder");
    const QString now = option("now", "The moment taken for now, as 2026-06-15T12:00.", "time");
    line.process(application);

    if (line.isSet(server))
        KvBaseApi::GetInstance().setBaseApi(line.value(server));
    if (line.isSet(project))
        GetSoftCache()->setCurrentProjectId(line.value(project));
    Appearance::applyLanguage(line.isSet(language) ? line.value(language) : Preferences::language());
    Preferences::Theme look = Preferences::theme();
    if (line.isSet(theme))
        look = line.value(theme) == QLatin1String("dark")    ? Preferences::Theme::Dark
               : line.value(theme) == QLatin1String("light") ? Preferences::Theme::Light
                                                             : Preferences::Theme::System;
    Appearance::apply(look);

    PlanClient client;
    const bool isUnattended = line.isSet(gantt) || line.isSet(screenshots);
    client.setAskAgain(isUnattended ? [](const PlanFailure& failure) {
        return complain(failure.text + QLatin1Char('\n') + failure.details);
    } : askAgain);
    MainWindow window(&client);
    const QDateTime moment = QDateTime::fromString(line.value(now), Qt::ISODate);
    if (moment.isValid())
        window.planPage()->setNow(moment);
    if (!isUnattended || line.isSet(screenshots))
        window.show();
    window.start();
    if (line.isSet(plan) || isUnattended) {
        const KvPlan found = planOf(window, line.value(plan));
        if (found.id.isEmpty() || !window.openPlan(found)) {
            complain(QStringLiteral("there is no such plan in the project"));
            if (isUnattended)
                return 1;
        }
    }
    if (line.isSet(model)) {
        if (window.planPage()->plan().id.isEmpty()) {
            complain(QStringLiteral("of which plan is the building the model? name it by --plan"));
            return 1;
        }
        window.showSimulation();
        window.simulationPage()->openModel(line.value(model));
    }
    if (line.isSet(model) && line.isSet(screenshots))
        return writeWithModel(window, line.value(screenshots), moment) ? 0 : 3;
    if (line.isSet(screenshots))
        return writeScreenshots(window, line.value(screenshots)) ? 0 : 3;
    if (line.isSet(gantt)) {
        constexpr int width = 1600; // of the chart's part of the picture
        window.planPage()->chart()->zoomToFit(width);
        if (line.isSet(levels))
            window.planPage()->expandLevels(qMax(1, line.value(levels).toInt()));
        const QString fault = exportGantt(*window.planPage(), line.value(gantt));
        if (!fault.isEmpty())
            complain(fault);
        return fault.isEmpty() ? 0 : 3;
    }
    return window.isVisible() ? QApplication::exec() : 0;
}
