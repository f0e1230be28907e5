#include "SettingsFileCommands.h"

#include "CellText.h"
#include "SettingsFile.h"
#include "SettingsText.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QTextCodec>

namespace {

constexpr int widest = 100000; // of a column

/// "NAME=VALUE" taken apart at its last "=", as a value holds none. @return false when there is none.
bool takeApart(Arguments& line, const QString& assignment, QString& name, QString& value)
{
    const int end = assignment.lastIndexOf(QLatin1Char('='));
    if (end < 0)
        return line.refuse(QStringLiteral("\"%1\" has no \"=\"").arg(assignment));
    name = assignment.left(end);
    value = assignment.mid(end + 1);
    return true;
}

// The file's codec makes "?" of other characters, and two columns could become one.
bool isStorable(const QString& name)
{
    const QTextCodec* const codec = QTextCodec::codecForName("GB2312");
    return !codec || codec->toUnicode(codec->fromUnicode(name)) == name;
}

bool readWidths(Arguments& line, QMap<QString, int>& widths)
{
    const QStringList removed = line.values("remove");
    for (const QString& name : removed) {
        if (widths.remove(name) == 0)
            return line.refuse(QStringLiteral("there is no width of a column \"%1\"").arg(name));
    }
    const QStringList assignments = line.positionalsFrom(0);
    for (const QString& assignment : assignments) {
        QString name;
        QString value;
        if (!takeApart(line, assignment, name, value))
            return false;
        bool isNumber = false;
        const int width = value.toInt(&isNumber);
        if (!isNumber || width < 1 || width > widest)
            return line.refuse(
                QStringLiteral("the width of \"%1\" is a whole number from 1 to %2, not \"%3\"")
                    .arg(name, QString::number(widest), value));
        if (!isStorable(name))
            return line.refuse(
                QStringLiteral("the settings file cannot hold the name \"%1\": it is written in GB2312")
                    .arg(name));
        widths.insert(name, width);
    }
    return true;
}

/// A state as its number or its label. @return -1 when it is none.
int stateOf(const QString& text, const QStringList& labels)
{
    for (int state = 0; state < labels.size(); ++state) {
        if (text == QString::number(state) || text.compare(labels.at(state), Qt::CaseInsensitive) == 0)
            return state;
    }
    return -1;
}

bool readColours(Arguments& line, const QStringList& labels, QList<QColor>& colours)
{
    const QStringList assignments = line.positionalsFrom(0);
    for (const QString& assignment : assignments) {
        QString name;
        QString value;
        if (!takeApart(line, assignment, name, value))
            return false;
        const int state = stateOf(name, labels);
        if (state < 0 || state >= colours.size())
            return line.refuse(QStringLiteral("there is no state \"%1\"; states are 0 to %2")
                                   .arg(name, QString::number(labels.size() - 1)));
        if (!QColor::isValidColor(value))
            return line.refuse(
                QStringLiteral("\"%1\" is no colour; one looks like #ff0000, #80ff0000 or red").arg(value));
        colours[state] = QColor(value);
    }
    return true;
}

} // namespace

int runColumnSettings(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("settings columns"),
        QStringLiteral("Shows the widths of the Gantt chart's columns, after changing those that are\n"
                       "given."),
        QStringLiteral("NAME=WIDTH..."));
    line.addOption("remove", "name", "Forget the width of this column; may be given several times.");
    addSettingsOptions(line);
    if (!line.read(arguments, 0) || !useSettingsFolder(line))
        return line.exitCode();
    KvPlanSetting& setting = *KvPlanSetting::instance();
    QMap<QString, int> widths;
    setting.GetGanttColumnWidth(widths);
    const QMap<QString, int> before = widths;
    if (!readWidths(line, widths))
        return line.exitCode();
    if (widths != before) {
        const SettingsWrite write;
        setting.SetGanttColumnWidth(widths);
        if (write.check() != Success)
            return OutputFailed;
    }
    return line.wantsJson() ? say(QJsonDocument(columnsToJson(widths)).toJson()) : say(columnsText(widths));
}

int runColourSettings(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("settings colors"),
        QStringLiteral("Shows the colours of the simulation's states, after changing those that are\n"
                       "given."),
        QStringLiteral("STATE=COLOUR..."));
    line.addOption("reset", nullptr, "Take the default colours first.");
    addSettingsOptions(line);
    if (!line.read(arguments, 0) || !useSettingsFolder(line))
        return line.exitCode();
    KvPlanSetting& setting = *KvPlanSetting::instance();
    const QList<QColor> before = setting.GetSimulateColor();
    QList<QColor> colours = line.isSet("reset") ? setting.GetDefaultSimulateColor() : before;
    if (!readColours(line, setting.GetSimulateColorTypeStr(), colours))
        return line.exitCode();
    if (colours != before) {
        const SettingsWrite write;
        setting.SetSimulateColor(colours);
        if (write.check() != Success)
            return OutputFailed;
    }
    return line.wantsJson() ? say(QJsonDocument(coloursToJson(setting)).toJson()) : say(coloursText(setting));
}

int runSimulationSettings(const QStringList& arguments)
{
    Arguments line(QStringLiteral("settings simulation"),
                   QStringLiteral("Shows how the simulation plays a plan, after changing what is given."),
                   QStringLiteral("PLAN SETTING=VALUE..."));
    addSettingsOptions(line);
    if (!line.read(arguments, 1) || !useSettingsFolder(line))
        return line.exitCode();
    KvPlanSetting& setting = *KvPlanSetting::instance();
    const QString planId = line.positional(0);
    TimeLineSet set;
    bool isStored = setting.GetSimulateSetting(planId, set); // also keeps those of other plans in the file
    const QJsonObject before = isStored ? simulationToJson(set) : QJsonObject();
    const QStringList assignments = line.positionalsFrom(1);
    for (const QString& assignment : assignments) {
        const QString name = assignment.section(QLatin1Char('='), 0, 0);
        const QString problem = assignment.contains(QLatin1Char('='))
                                    ? changeSimulation(set, name, assignment.mid(name.size() + 1))
                                    : QStringLiteral("\"%1\" has no \"=\"").arg(assignment);
        if (!problem.isEmpty()) {
            line.refuse(problem);
            return line.exitCode();
        }
    }
    if (!assignments.isEmpty() && simulationToJson(set) != before) {
        const SettingsWrite write;
        setting.SetSimulateSetting(planId, set);
        if (write.check() != Success)
            return OutputFailed;
        isStored = true;
    }
    if (!line.wantsJson())
        return say(
            (isStored
                 ? QString()
                 : QStringLiteral("the plan \"%1\" has the default settings\n\n").arg(fitted(planId, 0))) +
            simulationText(set));
    QJsonObject json = simulationToJson(set);
    json.insert(QStringLiteral("plan"), planId);
    json.insert(QStringLiteral("isStored"), isStored);
    return say(QJsonDocument(json).toJson());
}
