#include "ImportCheck.h"

#include "CellText.h"
#include "Progress.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QHash>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr int shownOfAKind = 5;
constexpr int longFile = 4 << 20;       // bytes; takes a person's time
constexpr qint64 largestFile = 1 << 30; // bytes; a byte array holds hardly more

// Problems of one kind: the first few as lines, the others as a number. They join the rest when the object
// goes.
class Kind
{
public:
    explicit Kind(QStringList& problems)
        : m_problems(problems)
    {
    }

    ~Kind()
    {
        m_problems += m_first;
        if (m_count > shownOfAKind)
            m_problems.append(QStringLiteral("… and %1 more of this kind").arg(m_count - shownOfAKind));
    }

    Kind(const Kind&) = delete;
    Kind& operator=(const Kind&) = delete;

    template<class Describe>
    void add(Describe describe)
    {
        if (m_count++ < shownOfAKind)
            m_first.append(describe());
    }

private:
    QStringList& m_problems;
    QStringList m_first;
    int m_count = 0;
};

QString named(const KvPlanNode& task)
{
    return QStringLiteral("task %1 \"%2\"").arg(task.uniqueId).arg(fitted(task.name, 60));
}

bool readFile(QIODevice& file, QByteArray& content, QStringList& problems)
{
    Progress progress(QStringLiteral("reading the file"));
    const qint64 size = file.size(); // 0 for a pipe
    QByteArray piece;
    do {
        if (qMax(size, qint64(content.size())) > largestFile) {
            problems.append(
                QStringLiteral("the file has more than %1 bytes, too many for one plan").arg(largestFile));
            return false;
        }
        piece = file.read(1 << 20);
        content += piece;
        progress.show(content.size(), size);
    } while (!piece.isEmpty());
    if (!file.atEnd()) {
        problems.append(QStringLiteral("it could not be read to its end: %1").arg(file.errorString()));
        return false;
    }
    return true;
}

// The reader mostly stops behind the character that it could not use.
int faultOffset(const QJsonParseError& error, int size)
{
    switch (error.error) {
    case QJsonParseError::GarbageAtEnd:
    case QJsonParseError::IllegalEscapeSequence:
    case QJsonParseError::IllegalNumber:
    case QJsonParseError::IllegalUTF8String:
    case QJsonParseError::TerminationByNumber:
        return error.offset;
    case QJsonParseError::IllegalValue:
        return error.offset - 1;
    default:
        return error.offset < size ? error.offset - 1 : size; // more was expected there
    }
}

// Line and column, both from 1, of a byte; columns count characters.
QString placeOf(int offset, const QByteArray& file)
{
    const auto begin = file.begin();
    const auto place = begin + qBound(0, offset, file.size());
    const auto lineStart =
        std::find(std::make_reverse_iterator(place), std::make_reverse_iterator(begin), '\n').base();
    const auto beginsCharacter = [](char byte) {
        return (uchar(byte) & 0xc0) != 0x80;
    };
    return QStringLiteral("line %1, column %2")
        .arg(std::count(begin, place, '\n') + 1)
        .arg(std::count_if(lineStart, place, beginsCharacter) + 1);
}

bool parse(const QByteArray& content, QJsonObject& schedule, QStringList& problems)
{
    if (content.trimmed().isEmpty()) {
        problems.append(QStringLiteral("the file is empty"));
        return false;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError) {
        problems.append(QStringLiteral("no valid JSON at %1: %2")
                            .arg(placeOf(faultOffset(error, content.size()), content), error.errorString()));
        return false;
    }
    schedule = document.object();
    if (schedule.value(QLatin1String("AllTasks")).isArray())
        return true;
    problems.append(
        schedule.contains(QLatin1String("AllPlanNodes"))
            ? QStringLiteral("it holds \"AllPlanNodes\", as an exported plan does; a schedule file to import "
                             "has \"AllTasks\"")
            : QStringLiteral("there is no list \"AllTasks\" in it; is this a schedule file?"));
    return false;
}

// A date in another form than the exchange format's would be lost without a word.
void checkDates(const QJsonObject& entry, const KvPlanNode& task, Kind& unreadable)
{
    const std::pair<QLatin1String, QDateTime> dates[] = {{QLatin1String("Start"), task.startDate},
                                                         {QLatin1String("Finish"), task.finishDate}};
    for (const auto& [key, date] : dates) {
        const QJsonValue value = entry.value(key);
        if (!date.isValid() && !value.isUndefined() && !value.isNull() && value != QJsonValue(QString())) {
            unreadable.add([&, k = key] {
                return QStringLiteral("%1 has \"%2\" %3, which is no date as 2024-03-05T08:00:00 is one")
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
        Kind misplaced(findings.problems);
        Kind unreadable(badDates);
        int kept = 0;
        for (int i = 0; i < tasks.size(); ++i) {
            const QJsonValue entry = entries.at(i);
            if (!entry.isObject()) {
                misplaced.add(
                    [&] { return QStringLiteral("entry %1 of \"AllTasks\" is no task object").arg(i + 1); });
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
    Kind repeated(findings.problems);
    for (int i = 0; i < findings.plan.planNodes.size(); ++i) {
        const KvPlanNode& task = findings.plan.planNodes.at(i);
        const int first = rowByNumber.value(task.uniqueId);
        if (first != i) {
            repeated.add([&] {
                return QStringLiteral("%1 has the unique id of %2")
                    .arg(named(task), named(findings.plan.planNodes.at(first)));
            });
        }
    }
}

void checkReferences(const QHash<int, int>& rowByNumber, ImportFindings& findings)
{
    Progress progress(QStringLiteral("checking tasks"));
    Kind loose(findings.problems);
    Kind orphaned(findings.problems); // goes first, and stands first then
    const QList<KvPlanNode>& tasks = findings.plan.planNodes;
    for (int i = 0; i < tasks.size(); ++i) {
        const KvPlanNode& task = tasks.at(i);
        // 0 and -1 stand for "no parent".
        if (task.parentTaskId != 0 && task.parentTaskId != -1 && !rowByNumber.contains(task.parentTaskId)) {
            orphaned.add([&] {
                return QStringLiteral("%1 names parent %2, which does not exist")
                    .arg(named(task))
                    .arg(task.parentTaskId);
            });
        }
        for (const KvPlanPredecessor& link : task.predecessors) {
            if (!rowByNumber.contains(link.sourcePlanNodeUniqueId)) {
                loose.add([&] {
                    return QStringLiteral("%1 has predecessor %2, which does not exist")
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
    Kind circles(findings.problems);
    const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(findings.plan.planNodes);
    for (const QList<int>& cycle : cycles) {
        circles.add([&] {
            QStringList numbers;
            for (int i = 0; i < qMin(cycle.size(), 10); ++i)
                numbers.append(QString::number(findings.plan.planNodes.at(cycle.at(i)).uniqueId));
            numbers.append(cycle.size() > numbers.size() ? QStringLiteral("…") : numbers.first());
            return QStringLiteral("parents in a circle: task %1")
                .arg(numbers.join(QStringLiteral(" under ")));
        });
    }
}

} // namespace

ImportFindings checkImport(QIODevice& file)
{
    ImportFindings findings;
    QJsonObject schedule;
    QByteArray content;
    if (!readFile(file, content, findings.problems))
        return findings;
    {
        Progress progress(QStringLiteral("reading the tasks"));
        if (content.size() > longFile)
            progress.begin();
        if (!parse(content, schedule, findings.problems))
            return findings;
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
