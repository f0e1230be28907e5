#include "SettingsServiceCommands.h"

#include "Arguments.h"
#include "Output.h"
#include "Session.h"
#include "SettingsText.h"

#include <plandata/KvPlanData.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QJsonDocument>

namespace {

bool readHidden(Arguments& line, QStringList& names)
{
    if (line.isSet("show-all"))
        names.clear();
    const QStringList shown = line.values("show");
    for (const QString& name : shown) {
        if (names.removeAll(name) == 0)
            return line.refuse(QStringLiteral("there is no hidden column \"%1\"").arg(name));
    }
    const QStringList hidden = line.values("hide");
    for (const QString& name : hidden) {
        if (name.isEmpty())
            return line.refuse(QStringLiteral("--hide takes a column's name, not \"\""));
        if (!names.contains(name))
            names.append(name);
    }
    return true;
}

// A document holds an object or an array only; any other value has to stand in one.
bool readJson(Arguments& line, const QString& text, QJsonValue& value)
{
    QJsonParseError error;
    const QJsonArray array = QJsonDocument::fromJson('[' + text.toUtf8() + ']', &error).array();
    if (error.error == QJsonParseError::NoError && array.size() == 1) {
        value = array.first();
        return true;
    }
    return line.refuse(QStringLiteral("\"%1\" is no JSON value%2")
                           .arg(text, error.error == QJsonParseError::NoError
                                          ? QString()
                                          : QStringLiteral(": ") + error.errorString()));
}

ExitCode sayJson(const QJsonValue& value)
{
    if (value.isObject())
        return say(QJsonDocument(value.toObject()).toJson());
    if (value.isArray())
        return say(QJsonDocument(value.toArray()).toJson());
    const QByteArray inBrackets = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return say(inBrackets.mid(1, inBrackets.size() - 2) + '\n');
}

} // namespace

int runHiddenSettings(const QStringList& arguments)
{
    Arguments line(QStringLiteral("settings hidden"),
                   QStringLiteral("Shows the Gantt chart's hidden columns, which the service keeps, after\n"
                                  "changing them."),
                   QString());
    line.addOption("hide", "name", "Hide this column; may be given several times.");
    line.addOption("show", "name", "Show this column again; may be given several times.");
    line.addOption("show-all", nullptr, "Show all columns again.");
    line.addJsonOption();
    if (!line.read(arguments, 0) || !line.needService())
        return line.exitCode();
    KvPlanSetting& setting = *KvPlanSetting::instance();
    const Session session;
    setting.LoadPlanSetting();
    if (session.hasFailed())
        return session.complainOfFailure(QStringLiteral("read the hidden columns"));
    QStringList names = setting.GetGanttHideHeader();
    if (!readHidden(line, names))
        return line.exitCode();
    if (!setting.SetGanttHideHeader(names))
        return session.complainOfFailure(QStringLiteral("store the hidden columns"));
    return line.wantsJson() ? say(QJsonDocument(QJsonArray::fromStringList(names)).toJson())
                            : say(hiddenText(names));
}

int runGetSetting(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("settings get"),
        QStringLiteral("Shows a setting that the service keeps for you, as JSON; null: there is none."),
        QStringLiteral("KEY"));
    line.addJsonOption();
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    const QString key = line.positional(0);
    QJsonObject object;
    if (!KvPlanData::instance()->loadSetting(key, object))
        return session.complainOfFailure(QStringLiteral("read the setting \"%1\"").arg(key));
    const auto value = object.constFind(key);
    return sayJson(value == object.constEnd() ? QJsonValue(QJsonValue::Null) : value.value());
}

int runSetSetting(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("settings set"),
        QStringLiteral("Changes a setting that the service keeps for you, and shows it. Hosts keep\n"
                       "theirs there, so know what a key is for."),
        QStringLiteral("KEY JSON"));
    line.addJsonOption();
    QJsonValue value;
    if (!line.read(arguments, 2) || !line.needService() || !readJson(line, line.positional(1), value))
        return line.exitCode();
    const Session session;
    const QString key = line.positional(0);
    if (!KvPlanData::instance()->saveSetting(key, {{QStringLiteral("value"), value}}))
        return session.complainOfFailure(QStringLiteral("store the setting \"%1\"").arg(key));
    return sayJson(value);
}
