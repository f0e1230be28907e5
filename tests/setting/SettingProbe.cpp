// Another process with its own settings object, for tests of what a next process finds and of what happens
// when one is killed. Its arguments are the calls, as JSON arrays, as in ["SetGanttColumnWidth", {"a": 1}];
// on the standard output stands what each returned, a line of JSON each.

#include <setting/KvPlanSetting.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cstdio>

#include <unistd.h>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

namespace {

KvPlanSetting& setting()
{
    return *KvPlanSetting::instance();
}

QMap<QString, int> widthsFrom(const QJsonObject& object)
{
    QMap<QString, int> widths;
    for (auto column = object.constBegin(); column != object.constEnd(); ++column)
        widths.insert(column.key(), column.value().toInt());
    return widths;
}

/// Many columns of one width.
QMap<QString, int> manyColumns(int width)
{
    QMap<QString, int> widths;
    for (int i = 0; i < 2000; ++i)
        widths.insert(QStringLiteral("第%1列").arg(i), width);
    return widths;
}

QJsonValue columnWidths()
{
    QMap<QString, int> widths;
    setting().GetGanttColumnWidth(widths);
    QJsonObject object;
    for (auto column = widths.constBegin(); column != widths.constEnd(); ++column)
        object.insert(column.key(), column.value());
    return object;
}

QJsonValue colourNumbers()
{
    QJsonArray numbers;
    const QList<QColor> colours = setting().GetSimulateColor();
    for (const QColor& colour : colours)
        numbers.append(double(colour.rgba()));
    return numbers;
}

QJsonValue speedOf(const QString& planId)
{
    TimeLineSet set;
    return setting().GetSimulateSetting(planId, set) ? QJsonValue(set.DayForS) : QJsonValue();
}

void setSpeed(const QString& planId, double speed)
{
    TimeLineSet set;
    set.DayForS = speed;
    setting().SetSimulateSetting(planId, set);
}

void setColours(const QJsonArray& numbers)
{
    QList<QColor> colours;
    for (const QJsonValue number : numbers)
        colours.append(QColor::fromRgba(static_cast<QRgb>(number.toDouble())));
    setting().SetSimulateColor(colours);
}

void say(const QJsonValue& value)
{
    const QByteArray line = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}

/// Rules for files do not hold for the superuser.
bool becomeAnOrdinaryUser()
{
    if (geteuid() != 0)
        return true;
    constexpr unsigned nobody = 65534;
    if (setgid(nobody) != 0 || setuid(nobody) != 0)
        return false;
#ifdef Q_OS_LINUX
    prctl(PR_SET_DUMPABLE, 1); // a leak check needs it
#endif
    return true;
}

bool call(const QJsonArray& words)
{
    const QString name = words.at(0).toString();
    const QJsonValue value = words.at(1);
    if (name == QLatin1String("BecomeAnOrdinaryUser"))
        return becomeAnOrdinaryUser();
    if (name == QLatin1String("GetGanttColumnWidth"))
        say(columnWidths());
    else if (name == QLatin1String("SetGanttColumnWidth"))
        setting().SetGanttColumnWidth(widthsFrom(value.toObject()));
    else if (name == QLatin1String("GetSimulateColor"))
        say(colourNumbers());
    else if (name == QLatin1String("SetSimulateColor"))
        setColours(value.toArray());
    else if (name == QLatin1String("GetSimulateSetting"))
        say(speedOf(value.toString()));
    else if (name == QLatin1String("SetSimulateSetting"))
        setSpeed(value.toString(), words.at(2).toDouble());
    else if (name == QLatin1String("SetManyColumns"))
        setting().SetGanttColumnWidth(manyColumns(value.toInt()));
    else if (name == QLatin1String("SetManyColumnsForEver")) {
        for (bool isFirst = true;; isFirst = !isFirst) {
            setting().SetGanttColumnWidth(manyColumns(words.at(isFirst ? 1 : 2).toInt()));
            say(true);
        }
    } else
        return false;
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList calls = QCoreApplication::arguments().mid(1);
    for (const QString& text : calls) {
        if (!call(QJsonDocument::fromJson(text.toUtf8()).array()))
            return 1;
    }
    return 0;
}
