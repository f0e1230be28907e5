#include "SimulateOptions.h"

#include "Arguments.h"
#include "SettingsFile.h"

#include <QtCore/QFileInfo>

namespace {

void addOptions(Arguments& line)
{
    line.addOption("model", "file",
                   "Model of the building, glTF or OBJ (the one opened for the plan in planviewer).");
    line.addOption("at", "date", "One picture, .png or .jpg, at this date.");
    line.addOption("from", "date", "The first frame's date (the start of the plan's simulation).");
    line.addOption("to", "date", "The last frame's date, a whole day if it tells no time (its end).");
    line.addOption("rate", "number", "Frames in a second, 0.1 to 120 (25).");
    line.addOption("speed", "days", "Days of the schedule in a second, 0.01 to 365 (the plan's).");
    line.addOption("size", "widthxheight", "Pixels of a picture (1280x720).");
    line.addOption("views", "dates", "planned, actual or both side by side (as set for the plan).");
    line.addOption("spread", "number", "How far the floors stand apart: 0 as built, 1 by their height (0).");
    line.addOption("yes", nullptr, "Write over files without asking.");
    addSettingsFolderOption(line);
}

bool readSize(Arguments& line, QSize& size)
{
    if (!line.isSet("size"))
        return true;
    const QStringList sides = line.value("size").split(QLatin1Char('x'));
    bool isWidth = false;
    bool isHeight = false;
    size = QSize(sides.first().toInt(&isWidth), sides.last().toInt(&isHeight));
    return (sides.size() == 2 && isWidth && isHeight) ||
           line.refuse(QStringLiteral("--size takes width and height as in 1280x720, not \"%1\"")
                           .arg(line.value("size")));
}

bool readViews(Arguments& line, QString& views)
{
    views = line.value("views");
    return !line.isSet("views") || views == QLatin1String("planned") || views == QLatin1String("actual") ||
           views == QLatin1String("both") ||
           line.refuse(QStringLiteral("--views takes planned, actual or both, not \"%1\"").arg(views));
}

bool readPeriod(Arguments& line, SimulateOptions& options)
{
    if (!line.readMoment("from", options.from) || !line.readMoment("to", options.to))
        return false;
    if (options.from.isValid() && options.to.isValid() && options.to < options.from)
        return line.refuse(
            QStringLiteral("--to %1 is before --from %2").arg(line.value("to"), line.value("from")));
    if (line.isSet("to") && !line.value("to").contains(QLatin1Char(':')))
        options.to = options.to.addDays(1);
    return true;
}

bool readPicture(Arguments& line, SimulateOptions& options)
{
    if (!line.isSet("at"))
        return true;
    for (const char* const ofFrames : {"from", "to", "rate", "speed"}) {
        if (line.isSet(ofFrames))
            return line.refuse(
                QStringLiteral("--at asks for one picture, which has no --%1").arg(QLatin1String(ofFrames)));
    }
    const QString ending = QFileInfo(options.output).suffix().toLower();
    if (ending != QLatin1String("png") && ending != QLatin1String("jpg"))
        return line.refuse(
            QStringLiteral("the picture of --at is a file that ends in .png or .jpg, not \"%1\"")
                .arg(options.output));
    return line.readMoment("at", options.at);
}

bool readModelFile(Arguments& line, QString& path)
{
    path = line.value("model");
    return !line.isSet("model") || !path.isEmpty() ||
           line.refuse(QStringLiteral("--model takes a file, not \"\""));
}

} // namespace

bool readSimulateOptions(const QStringList& arguments, SimulateOptions& options, int& exitCode)
{
    Arguments line(
        QStringLiteral("simulate"),
        QStringLiteral("Draws how the building of a plan grows along its schedule: frame-0001.png and\n"
                       "so on, or with --at one picture. It needs a display server, though it opens no\n"
                       "window, and that planviewer is installed."),
        QStringLiteral("PLAN OUTPUT"));
    addOptions(line);
    if (line.read(arguments, 2)) {
        options.planId = line.positional(0);
        options.output = line.positional(1);
        options.mayReplace = line.isSet("yes");
        constexpr double slowestRate = 0.1;
        constexpr double fastestRate = 120.0;
        constexpr double slowest = 0.01;
        constexpr double fastest = 365.0;
        constexpr double farthest = 10.0;
        if (readModelFile(line, options.modelFile) && readPicture(line, options) &&
            readPeriod(line, options) &&
            line.readDecimal("rate", slowestRate, fastestRate, options.framesPerSecond) &&
            line.readDecimal("speed", slowest, fastest, options.daysPerSecond) &&
            readSize(line, options.size) && readViews(line, options.views) &&
            line.readDecimal("spread", 0.0, farthest, options.spread) && useSettingsFolder(line) &&
            line.needService())
            return true;
    }
    exitCode = line.exitCode();
    return false;
}
