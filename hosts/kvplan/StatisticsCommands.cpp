#include "StatisticsCommands.h"

#include "Arguments.h"
#include "BarChart.h"
#include "CellText.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <iterator>

namespace {

constexpr int widestBar = 40;
constexpr int narrowestBar = 10;

struct Situation
{
    const char* word;
    ushort fill;
};

// In the order of the columns and bars. What a service has beside these comes behind them.
const Situation knownSituations[] = {{"ahead", 0x2588}, {"normal", 0x2593}, {"delay", 0x2591}};
constexpr ushort otherFill = 0x2592;

QString statusText(const QString& status)
{
    if (status == QLatin1String("unstart"))
        return QStringLiteral("not started");
    return status == QLatin1String("processing") ? QStringLiteral("under way") : status;
}

QChar fillOf(const QString& situation)
{
    for (const Situation& known : knownSituations) {
        if (situation == QLatin1String(known.word))
            return QChar(known.fill);
    }
    return QChar(otherFill);
}

QStringList situationsOf(const KvPlanStatistics& statistics)
{
    QStringList situations;
    for (const Situation& known : knownSituations)
        situations.append(QLatin1String(known.word));
    for (const KvStatusStatistics& status : statistics.items) {
        for (const KvSituationCount& count : status.items) {
            if (!situations.contains(count.situation))
                situations.append(count.situation);
        }
    }
    return situations;
}

int totalOf(const KvStatusStatistics& status, const QString& situation)
{
    int total = 0;
    for (const KvSituationCount& count : status.items)
        total += count.situation == situation ? count.total : 0;
    return total;
}

// What other columns leave of a line.
int barCells(int columnsWidth)
{
    const int width = terminalWidth();
    return width == 0 ? widestBar : qBound(narrowestBar, width - columnsWidth, widestBar);
}

QString statisticsText(const KvPlanStatistics& statistics)
{
    const QStringList situations = situationsOf(statistics);
    TextTable table;
    table.addTextColumn(QStringLiteral("Tasks"));
    table.addColumn(QStringLiteral("All"), TextTable::Right);
    QString legend;
    for (const QString& situation : situations) {
        table.addColumn(fitted(situation, 0), TextTable::Right);
        legend += QStringLiteral("%1 %2  ").arg(fillOf(situation)).arg(fitted(situation, 0));
    }
    table.addColumn(legend.trimmed());
    int most = 0;
    for (const KvStatusStatistics& status : statistics.items)
        most = qMax(most, status.total);
    const int cells = barCells(42);
    QVector<int> sums(situations.size(), 0);
    for (const KvStatusStatistics& status : statistics.items) {
        QStringList row{statusText(status.status), QString::number(status.total)};
        QVector<BarPart> parts;
        for (int i = 0; i < situations.size(); ++i) {
            const int total = totalOf(status, situations.at(i));
            sums[i] += total;
            row.append(QString::number(total));
            parts.append({total, fillOf(situations.at(i))});
        }
        table.addRow(row + QStringList(bar(parts, most, cells)));
    }
    QStringList all{QStringLiteral("all"), QString::number(statistics.total)};
    for (const int sum : qAsConst(sums))
        all.append(QString::number(sum));
    table.addRow(all);
    return table.toText(terminalWidth());
}

QString periodText(const KvStatisticsQuantity& quantity)
{
    const auto digits = [](int number, int count) {
        return QStringLiteral("%1").arg(number, count, 10, QLatin1Char('0'));
    };
    QString text = digits(quantity.year, 4);
    if (quantity.week != 0)
        return text + QStringLiteral("-W") + digits(quantity.week, 2);
    if (quantity.month != 0)
        text += QLatin1Char('-') + digits(quantity.month, 2);
    if (quantity.day != 0)
        text += QLatin1Char('-') + digits(quantity.day, 2);
    return text;
}

QString quantitiesText(const QList<KvStatisticsQuantity>& quantities, const QString& period)
{
    TextTable table;
    table.addColumn(period.left(1).toUpper() + period.mid(1));
    table.addColumn(QStringLiteral("Finished"), TextTable::Right);
    table.addColumn(QString());
    int most = 0;
    for (const KvStatisticsQuantity& quantity : quantities)
        most = qMax(most, quantity.total);
    const int cells = barCells(22);
    for (const KvStatisticsQuantity& quantity : quantities)
        table.addRow({periodText(quantity), QString::number(quantity.total),
                      bar({{quantity.total, QChar(0x2588)}}, most, cells)});
    return table.toText(terminalWidth());
}

} // namespace

int runStats(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("stats"),
        QStringLiteral("Shows how many of your tasks in the project have not begun, are under way\n"
                       "or finished, and how they stand against their planned dates."),
        QString());
    line.addOption("category", "name", "Category.");
    line.addJsonOption();
    if (!line.read(arguments, 0) || !line.needService() || !line.needProject())
        return line.exitCode();
    const Session session;
    KvPlanStatistics statistics;
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("counting"));
        isRead = KvPlanData::instance()->geStatistics(line.value("category"), statistics);
    }
    if (!isRead)
        return session.complainOfFailure(QStringLiteral("count your tasks"));
    if (line.wantsJson())
        return say(QJsonDocument(statisticsToJson(statistics)).toJson());
    return say(statistics.items.isEmpty() ? QStringLiteral("no tasks\n") : statisticsText(statistics));
}

int runQuantities(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("quantities"),
        QStringLiteral("Shows how many of your tasks in the project were finished in each period."),
        QString());
    line.addOption("period", "word", "day, week, month (when left out) or year.");
    line.addOption("category", "name", "Category.");
    line.addJsonOption();
    if (!line.read(arguments, 0) || !line.needService() || !line.needProject())
        return line.exitCode();
    const QString period = line.isSet("period") ? line.value("period") : QStringLiteral("month");
    const char* const periods[] = {"day", "week", "month", "year"};
    if (std::none_of(std::begin(periods), std::end(periods),
                     [&](const char* known) { return period == QLatin1String(known); })) {
        line.refuse(QStringLiteral("--period takes day, week, month or year, not \"%1\"").arg(period));
        return line.exitCode();
    }
    const Session session;
    QList<KvStatisticsQuantity> quantities;
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("counting"));
        isRead = KvPlanData::instance()->getPlanNodeQuantities(quantities, line.value("category"), period);
    }
    if (!isRead)
        return session.complainOfFailure(QStringLiteral("count your finished tasks"));
    if (line.wantsJson()) {
        QJsonArray array;
        for (const KvStatisticsQuantity& quantity : qAsConst(quantities))
            array.append(quantityToJson(quantity));
        return say(QJsonDocument(array).toJson());
    }
    return say(quantities.isEmpty() ? QStringLiteral("nothing finished\n")
                                    : quantitiesText(quantities, period));
}
