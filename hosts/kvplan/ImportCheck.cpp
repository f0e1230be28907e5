#include "ImportCheck.h"

#include "CellText.h"
#include "JsonFile.h"
#include "ProblemKind.h"
#include "Progress.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <utility>

namespace {

// English unless the host brings a translation.
QString say(const char* text)
{
    return QCoreApplication::translate("ImportCheck", text);
}

QString named(const KvPlanNode& task)
{
    return say(QT_TRANSLATE_NOOP("ImportCheck", "task %1 \"%2\""))
        .arg(task.uniqueId)
        .arg(fitted(task.name, 60));
}

bool isSchedule(const QJsonObject& schedule, QStringList& problems)
{
    if (schedule.value(QLatin1String("AllTasks")).isArray())
        return true;
    problems.append(
        schedule.contains(QLatin1String("AllPlanNodes"))
            ? say(QT_TRANSLATE_NOOP(
                  "ImportCheck",
                  "it holds \"AllPlanNodes\", as an exported plan does; a schedule file to import "
                  "has \"AllTasks\""))
            : say(QT_TRANSLATE_NOOP("ImportCheck",
                                    "there is no list \"AllTasks\" in it; is this a schedule file?")));
    return false;
}

// A date in another form than the exchange format's would be lost without a word.
void checkDates(const QJsonObject& entry, const KvPlanNode& task, ProblemKind& unreadable)
{
    const std::pair<QLatin1String, QDateTime> dates[] = {{QLatin1String("Start"), task.startDate},
                                                         {QLatin1String("Finish"), task.finishDate}};
    for (const auto& [key, date] : dates) {
        const QJsonValue value = entry.value(key);
        if (!date.isValid() && !value.isUndefined() && !value.isNull() && value != QJsonValue(QString())) {
            unreadable.add([&, k = key] {
                return say(QT_TRANSLATE_NOOP(
                               "ImportCheck",
                               "%1 has \"%2\" %3, which is no date as 2024-03-05T08:00:00 is one"))
                    .arg(named(task), k, fitted(value.toVariant().toString(), 40));
            });
        }
    }
}

// Entries that are no objects are told, and left out of the further checks.
void readTasks(const QJsonObject& schedule, ImportFindings& findings)
{
    KvPlanDataUtils::jsonObjectToPlanMPXJ(schedule, findings.plan);
    const QJsonArray entries = schedule.value(QLatin1String("AllTasks")).toArray();
    QList<KvPlanNode>& tasks = findings.plan.planNodes;
    QStringList badDates;
    {
        ProblemKind misplaced(findings.problems);
        ProblemKind unreadable(badDates);
        int kept = 0;
        for (int i = 0; i < tasks.size(); ++i) {
            const QJsonValue entry = entries.at(i);
            if (!entry.isObject()) {
                misplaced.add([&] {
                    return say(QT_TRANSLATE_NOOP("ImportCheck", "entry %1 of \"AllTasks\" is no task object"))
                        .arg(i + 1);
                });
                continue;
            }
            checkDates(entry.toObject(), tasks.at(i), unreadable);
            if (kept++ != i)
                tasks[kept - 1] = std::move(tasks[i]);
        }
        tasks.erase(tasks.begin() + kept, tasks.end());
    }
    findings.problems += badDates;
}

void checkNumbers(const QHash<int, int>& rowByNumber, ImportFindings& findings)
{
    ProblemKind repeated(findings.problems);
    for (int i = 0; i < findings.plan.planNodes.size(); ++i) {
        const KvPlanNode& task = findings.plan.planNodes.at(i);
        const int first = rowByNumber.value(task.uniqueId);
        if (first != i) {
            repeated.add([&] {
                return say(QT_TRANSLATE_NOOP("ImportCheck", "%1 has the unique id of %2"))
                    .arg(named(task), named(findings.plan.planNodes.at(first)));
            });
        }
    }
}

void checkReferences(const QHash<int, int>& rowByNumber, ImportFindings& findings)
{
    Progress progress(QStringLiteral("checking tasks"));
    ProblemKind loose(findings.problems);
    ProblemKind orphaned(findings.problems); // goes first, and stands first then
    const QList<KvPlanNode>& tasks = findings.plan.planNodes;
    for (int i = 0; i < tasks.size(); ++i) {
        const KvPlanNode& task = tasks.at(i);
        // 0 and -1 stand for "no parent".
        if (task.parentTaskId != 0 && task.parentTaskId != -1 && !rowByNumber.contains(task.parentTaskId)) {
            orphaned.add([&] {
                return say(QT_TRANSLATE_NOOP("ImportCheck", "%1 names parent %2, which does not exist"))
                    .arg(named(task))
                    .arg(task.parentTaskId);
            });
        }
        for (const KvPlanPredecessor& link : task.predecessors) {
            if (!rowByNumber.contains(link.sourcePlanNodeUniqueId)) {
                loose.add([&] {
                    return say(QT_TRANSLATE_NOOP("ImportCheck",
                                                 "%1 has predecessor %2, which does not exist"))
                        .arg(named(task))
                        .arg(link.sourcePlanNodeUniqueId);
                });
            }
        }
        progress.show(i, tasks.size());
    }
}

// The reader of the exchange format keeps of a link's target no more than a character, which the service may
// refuse, and has neither rows nor, in many files, names. The link stands at its target, so all are known.
void completeLinks(const QHash<int, int>& rowByNumber, QList<KvPlanNode>& tasks)
{
    for (int i = 0; i < tasks.size(); ++i) {
        KvPlanNode& target = tasks[i];
        for (KvPlanPredecessor& link : target.predecessors) {
            const KvPlanNode& source = tasks.at(rowByNumber.value(link.sourcePlanNodeUniqueId));
            link.sourcePlanNodeId = source.planNodeId;
            link.sourcePlanNodeName = source.name;
            link.targetPlanNodeId = target.planNodeId;
            link.targetPlanNodeName = target.name;
            link.targetPlanNodeUniqueId = QString::number(target.uniqueId);
        }
    }
}

void checkCycles(ImportFindings& findings)
{
    ProblemKind circles(findings.problems);
    const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(findings.plan.planNodes);
    for (const QList<int>& cycle : cycles) {
        circles.add([&] {
            QStringList numbers;
            for (int i = 0; i < qMin(cycle.size(), 10); ++i)
                numbers.append(QString::number(findings.plan.planNodes.at(cycle.at(i)).uniqueId));
            numbers.append(cycle.size() > numbers.size() ? QStringLiteral("…") : numbers.first());
            return say(QT_TRANSLATE_NOOP("ImportCheck", "parents in a circle: task %1"))
                .arg(numbers.join(say(QT_TRANSLATE_NOOP("ImportCheck", " under "))));
        });
    }
}

} // namespace

ImportFindings checkImport(QIODevice& file)
{
    ImportFindings findings;
    JsonFile read;
    if (!read.read(file, findings.problems))
        return findings;
    const QJsonObject schedule = read.document().object();
    if (!isSchedule(schedule, findings.problems))
        return findings;
    {
        Progress progress(QStringLiteral("reading the tasks"));
        if (read.isLong())
            progress.begin();
        readTasks(schedule, findings);
    }
    QHash<int, int> rowByNumber; // the first task of each unique id
    for (int i = findings.plan.planNodes.size() - 1; i >= 0; --i)
        rowByNumber.insert(findings.plan.planNodes.at(i).uniqueId, i);
    checkNumbers(rowByNumber, findings);
    checkReferences(rowByNumber, findings);
    checkCycles(findings);
    if (findings.problems.isEmpty())
        completeLinks(rowByNumber, findings.plan.planNodes);
    return findings;
}
