#include "SettingsText.h"

#include "CellText.h"
#include "Output.h"
#include "RecordValues.h"
#include "TextTable.h"

#include <cmath>

namespace {

struct Date
{
    const char* name;
    QDateTime TimeLineSet::*field;
    const char* meaning;
};

const Date dates[] = {
    {"TimeStart", &TimeLineSet::TimeStart, "start of the simulated period"},
    {"TimeFinish", &TimeLineSet::TimeFinish, "end of the simulated period"},
};

struct Flag
{
    const char* name;
    bool TimeLineSet::*field;
    const char* meaning;
};

const Flag flags[] = {
    {"UsePlanTime", &TimeLineSet::UsePlanTime, "the period is the plan's own"},
    {"DisplayDelay", &TimeLineSet::DisplayDelay, "show delays"},
    {"DisplayStateColor", &TimeLineSet::DisplayStateColor, "paint elements by state"},
    {"NonStartClr", &TimeLineSet::NonStartClr, "paint state 0, not started"},
    {"NotStartDelayClr", &TimeLineSet::NotStartDelayClr, "paint state 1, not started, delayed"},
    {"ProcessingClr", &TimeLineSet::ProcessingClr, "paint state 2, in progress"},
    {"ProcessingDelayClr", &TimeLineSet::ProcessingDelayClr, "paint state 3, in progress, delayed"},
    {"FinishClr", &TimeLineSet::FinishClr, "paint state 4, finished"},
    {"FinishAheadClr", &TimeLineSet::FinishAheadClr, "paint state 5, finished ahead of time"},
    {"FinishBehindClr", &TimeLineSet::FinishBehindClr, "paint state 6, finished late"},
};

const QLatin1String speed("DayForS");

QString colourName(const QColor& colour)
{
    return colour.name(colour.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
}

// As the conventions of terminals have it: NO_COLOR speaks for the user, TERM for the terminal.
bool showsColours()
{
    return terminalWidth() > 0 && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

constexpr int swatchWidth = 6; // cells, the gap behind it included

QString swatch(const QColor& colour)
{
    return QStringLiteral("\x1b[48;2;%1;%2;%3m    \x1b[0m  ")
        .arg(colour.red())
        .arg(colour.green())
        .arg(colour.blue());
}

QString boolText(bool flag)
{
    return flag ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

QString columnsText(const QMap<QString, int>& widths)
{
    if (widths.isEmpty())
        return QStringLiteral("no column widths\n");
    TextTable table;
    table.addTextColumn(QStringLiteral("Column"));
    table.addColumn(QStringLiteral("Width"), TextTable::Right);
    for (auto column = widths.constBegin(); column != widths.constEnd(); ++column)
        table.addRow({column.key(), QString::number(column.value())});
    return table.toText(terminalWidth());
}

QString hiddenText(const QStringList& names)
{
    if (names.isEmpty())
        return QStringLiteral("no hidden columns\n");
    TextTable table;
    table.addTextColumn(QStringLiteral("Hidden column"));
    for (const QString& name : names)
        table.addRow({name});
    return table.toText(terminalWidth());
}

QString coloursText(KvPlanSetting& setting)
{
    const QList<QColor> colours = setting.GetSimulateColor();
    const QStringList labels = setting.GetSimulateColorTypeStr();
    TextTable table;
    table.addColumn(QStringLiteral("State"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Meaning"));
    table.addColumn(QStringLiteral("Colour"));
    for (int state = 0; state < colours.size(); ++state)
        table.addRow({QString::number(state), labels.value(state), colourName(colours.at(state))});
    if (!showsColours())
        return table.toText(terminalWidth());
    const QStringList lines = table.toText(qMax(1, terminalWidth() - swatchWidth)).split(QLatin1Char('\n'));
    QString text;
    for (int i = 0; i < colours.size() + 2; ++i) // two lines of titles before them
        text += (i < 2 ? QString(swatchWidth, QLatin1Char(' ')) : swatch(colours.at(i - 2))) + lines.at(i) +
                QLatin1Char('\n');
    return text;
}

QString simulationText(const TimeLineSet& set)
{
    TextTable table;
    table.addColumn(QStringLiteral("Setting"));
    table.addColumn(QStringLiteral("Value"));
    table.addTextColumn(QStringLiteral("Meaning"));
    table.addRow({speed, QString::number(set.DayForS), QStringLiteral("days of the schedule per second")});
    for (const Date& date : dates)
        table.addRow({QLatin1String(date.name), minuteText(set.*date.field), QLatin1String(date.meaning)});
    for (const Flag& flag : flags)
        table.addRow({QLatin1String(flag.name), boolText(set.*flag.field), QLatin1String(flag.meaning)});
    return table.toText(terminalWidth());
}

QJsonObject columnsToJson(const QMap<QString, int>& widths)
{
    QJsonObject json;
    for (auto column = widths.constBegin(); column != widths.constEnd(); ++column)
        json.insert(column.key(), column.value());
    return json;
}

QJsonArray coloursToJson(KvPlanSetting& setting)
{
    const QList<QColor> colours = setting.GetSimulateColor();
    const QStringList labels = setting.GetSimulateColorTypeStr();
    QJsonArray json;
    for (int state = 0; state < colours.size(); ++state)
        json.append(QJsonObject{{QStringLiteral("state"), state},
                                {QStringLiteral("label"), labels.value(state)},
                                {QStringLiteral("color"), colourName(colours.at(state))}});
    return json;
}

QJsonObject simulationToJson(const TimeLineSet& set)
{
    QJsonObject json{{speed, set.DayForS}};
    for (const Date& date : dates)
        json.insert(QLatin1String(date.name), toJson(set.*date.field));
    for (const Flag& flag : flags)
        json.insert(QLatin1String(flag.name), set.*flag.field);
    return json;
}

QString changeSimulation(TimeLineSet& set, const QString& name, const QString& value)
{
    const auto refusal = [&](const char* kind) {
        return QStringLiteral("%1 takes %2, not \"%3\"").arg(name, QLatin1String(kind), value);
    };
    if (name == speed) {
        bool isNumber = false;
        const double read = value.toDouble(&isNumber);
        if (!isNumber || !std::isfinite(read) || read <= 0)
            return refusal("a number above 0");
        set.DayForS = read;
        return QString();
    }
    for (const Date& date : dates) {
        if (name != QLatin1String(date.name))
            continue;
        QDateTime read;
        if (!value.isEmpty() && !fromJson(QJsonValue(value), read))
            return refusal("a date as in 2026-03-05T08:00:00, or nothing");
        set.*date.field = read;
        return QString();
    }
    QStringList names{speed};
    for (const Date& date : dates)
        names.append(QLatin1String(date.name));
    for (const Flag& flag : flags) {
        names.append(QLatin1String(flag.name));
        if (name != QLatin1String(flag.name))
            continue;
        if (value != boolText(true) && value != boolText(false))
            return refusal("true or false");
        set.*flag.field = value == boolText(true);
        return QString();
    }
    return QStringLiteral("there is no setting \"%1\"; there are %2")
        .arg(name, names.join(QStringLiteral(", ")));
}
