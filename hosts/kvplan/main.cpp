#include "ExchangeCommands.h"
#include "NodeChangeCommands.h"
#include "NodeListCommands.h"
#include "Output.h"
#include "PlanCommands.h"
#include "ResponseCommands.h"
#include "RightsCommand.h"
#include "SaveCommand.h"
#include "SettingsCommand.h"
#include "ShowCommand.h"
#include "SimulateCommand.h"
#include "StateCommand.h"
#include "StatisticsCommands.h"
#include "Translations.h"
#include "TreeCommand.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>

namespace {

struct Command
{
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

const Command commands[] = {
    {"plans", "the project's plans", runPlans},
    {"show", "one plan and its tasks as a table", runShow},
    {"tree", "one plan's tasks as a tree, with bars", runTree},
    {"create", "make an empty plan", runCreate},
    {"copy", "copy a plan with its tasks", runCopy},
    {"rename", "give a plan another name", runRename},
    {"delete", "delete a plan with its tasks", runDelete},
    {"import", "make a plan from exchange JSON", runImport},
    {"export", "write a plan as exchange JSON", runExport},
    {"nodes", "tasks of a plan that meet a filter", runNodes},
    {"todo", "your tasks that are not finished", runTodo},
    {"update", "change fields of a task", runUpdate},
    {"save", "save edited tasks", runSave},
    {"delete-nodes", "delete tasks", runDeleteNodes},
    {"simulate", "draw how the building grows", runSimulate},
    {"settings", "presentation settings of yours", runSettings},
    {"respond", "report progress on a task", runRespond},
    {"responses", "what was reported on a task", runResponses},
    {"stats", "your tasks by status and situation", runStats},
    {"quantities", "your finished tasks by period", runQuantities},
    {"rights", "what you may do", runRights},
    {"state", "metering states of tasks", runState},
};

QString help()
{
    QString text =
        QStringLiteral("Usage: kvplan COMMAND [OPTIONS]\n\nWorks with the plans of the schedule service.\n\n"
                       "Commands:\n");
    for (const Command& command : commands)
        text += QStringLiteral("  %1  %2\n")
                    .arg(QLatin1String(command.name), -12)
                    .arg(QLatin1String(command.summary));
    text +=
        QStringLiteral("\n\"kvplan COMMAND --help\" shows a command's options. KV_BASE_API, KV_PROJECT_ID,\n"
                       "KV_ACCESS_TOKEN and KV_NETWORK_TIMEOUT_MS stand in for those left out.\n\n"
                       "Exit status: 0 done, 1 the service did not do it, 2 wrong usage, 3 output not\n"
                       "written, 4 the file or the plan is not in order, 5 you did not agree,\n"
                       "6 nothing can be drawn, 130 canceled.\n");
    return text;
}

// Also what a report of a fault should name: how this copy was built, and which Qt it runs on.
QString versionText()
{
    return QStringLiteral("kvplan %1\nQt %2, built with " QT_VERSION_STR "\n" KV_BUILD_FACTS "\n")
        .arg(QCoreApplication::applicationVersion(), QLatin1String(qVersion()));
}

} // namespace

int main(int argc, char* argv[])
{
    holdStandardStreams();
#ifndef Q_OS_WIN
    // Names come in and go out as UTF-8 whatever the locale: under "C" those of other alphabets would be
    // lost.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kvplan"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KVPLAN_VERSION));

    installTranslations();

    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        complain(QStringLiteral("which command? \"kvplan --help\" lists them"));
        return WrongUsage;
    }
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h"))
        return say(help());
    if (name == QLatin1String("--version"))
        return say(versionText());
    for (const Command& command : commands) {
        if (name == QLatin1String(command.name))
            return command.run(arguments);
    }
    complain(QStringLiteral("there is no command \"%1\"; \"kvplan --help\" lists them").arg(name));
    return WrongUsage;
}
