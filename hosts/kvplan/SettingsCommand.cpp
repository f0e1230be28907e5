#include "SettingsCommand.h"

#include "Output.h"
#include "Session.h"
#include "SettingsFile.h"
#include "SettingsFileCommands.h"
#include "SettingsServiceCommands.h"
#include "SettingsText.h"

#include <KvNetwork/KvBaseApi.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

struct Part
{
    const char* name;
    int (*run)(const QStringList& arguments);
};

const Part parts[] = {
    {"columns", runColumnSettings},        {"hidden", runHiddenSettings}, {"colors", runColourSettings},
    {"simulation", runSimulationSettings}, {"get", runGetSetting},        {"set", runSetSetting},
};

int sayAll(const Arguments& line, bool asksService)
{
    KvPlanSetting& setting = *KvPlanSetting::instance();
    const Session session;
    if (asksService)
        setting.LoadPlanSetting();
    if (session.hasFailed())
        return session.complainOfFailure(QStringLiteral("read the hidden columns"));
    QMap<QString, int> widths;
    setting.GetGanttColumnWidth(widths);
    const QStringList hidden = setting.GetGanttHideHeader();
    if (line.wantsJson())
        return say(QJsonDocument(QJsonObject{
                                     {QStringLiteral("file"), settingsFile()},
                                     {QStringLiteral("columns"), columnsToJson(widths)},
                                     {QStringLiteral("hidden"),
                                      asksService ? QJsonValue(QJsonArray::fromStringList(hidden))
                                                  : QJsonValue(QJsonValue::Null)},
                                     {QStringLiteral("colors"), coloursToJson(setting)},
                                 })
                       .toJson());
    return say(QStringLiteral("%1\n\n%2\n%3\n%4")
                   .arg(settingsFile(), columnsText(widths),
                        asksService
                            ? hiddenText(hidden)
                            : QStringLiteral("hidden columns are kept on the service; none is named\n"),
                        coloursText(setting)));
}

} // namespace

int runSettings(const QStringList& arguments)
{
    const QString word = arguments.value(0);
    for (const Part& part : parts) {
        if (word == QLatin1String(part.name))
            return part.run(arguments.mid(1));
    }
    Arguments line(QStringLiteral("settings"),
                   QStringLiteral("Shows your presentation settings, all but those of single plans. A word\n"
                                  "behind \"settings\" names a part, to show or to change:\n"
                                  "  columns             widths of the Gantt chart's columns\n"
                                  "  hidden              its hidden columns, on the service\n"
                                  "  colors              colours of the simulation's states\n"
                                  "  simulation PLAN     how the simulation plays a plan\n"
                                  "  get KEY             any setting on the service\n"
                                  "  set KEY JSON        changes it"),
                   QString());
    addSettingsOptions(line);
    if (!word.isEmpty() && !word.startsWith(QLatin1Char('-'))) {
        line.refuse(QStringLiteral("there are no settings \"%1\"").arg(word));
        return line.exitCode();
    }
    if (!line.read(arguments, 0) || !useSettingsFolder(line))
        return line.exitCode();
    const bool asksService = !KvBaseApi::GetInstance().getBaseApi().isEmpty();
    if (asksService && !line.needService())
        return line.exitCode();
    return sayAll(line, asksService);
}
