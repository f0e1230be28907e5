#include "ImportCheck.h"

#include "Progress.h"
#include "TextTable.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

constexpr int shownOfAKind = 5;
constexpr int largestFile = 1 << 30; // bytes; Qt's JSON reader takes no more

// Problems of one kind: the first few as lines, the others as a number.
class Kind
{
public:
    explicit Kind(QStringList& problems)
        : m_problems(problems)
    {
    }

    ~Kind()
    {
        if (m_count > shownOfAKind)
            m_problems.append(QStringLiteral("… and %1 more of this kind").arg(m_count - shownOfAKind));
    }

    Kind(const Kind&) = delete;
    Kind& operator=(const Kind&) = delete;

    template<class Describe>
    void add(Describe describe)
    {
        if (m_count++ < shownOfAKind)
            m_problems.append(describe());
    }

private:
    QStringList& m_problems;
    int m_count = 0;
};

QString named(const KvPlanNode& task)
{
    return QStringLiteral("task %1 \"%2\"").arg(task.uniqueId).arg(fitted(task.name, 60));
}

// Line and column, both from 1, of a byte; columns count characters.
QString placeOf(int offset, const QByteArray& file)
{
    const QByteArray before = file.left(offset);
    const int lineStart = before.lastIndexOf('\n') + 1;
    return QStringLiteral("line %1, column %2")
        .arg(before.count('\n') + 1)
        .arg(QString::fromUtf8(before.mid(lineStart)).size() + 1);
}

bool readTasks(const QByteArray& file, ImportFindings& findings)
{
    if (file.trimmed().isEmpty()) {
        findings.problems.append(QStringLiteral("the file is empty"));
        return false;
    }
    if (file.size() > largestFile) {
        findings.problems.append(QStringLiteral("the file has %1 bytes, more than the %2 that can be read")
                                     .arg(file.size())
                                     .arg(largestFile));
        return false;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file, &error);
    if (error.error != QJsonParseError::NoError) {
        findings.problems.append(
            QStringLiteral("%1: %2").arg(placeOf(error.offset, file), error.errorString()));
        return false;
    }
    const QJsonValue tasks = document.object().value(QLatin1String("AllTasks"));
    if (!tasks.isArray()) {
        findings.problems.append(
            QStringLiteral("there is no list \"AllTasks\" in it; is this a schedule file?"));
        return false;
    }
    const QJsonArray array = tasks.toArray();
    Kind misplaced(findings.problems);
    int index = 0;
    for (const QJsonValue& task : array) {
        ++index;
        if (!task.isObject())
            misplaced.add(
                [&] { return QStringLiteral("entry %1 of \"AllTasks\" is no task object").arg(index); });
    }
    KvPlanDataUtils::jsonObjectToPlanMPXJ(document.object(), findings.plan);
    return true;
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

void checkReferences(const QHash<int, int>& rowByNumber, ImportFindings& findings, Progress& progress)
{
    Kind orphaned(findings.problems);
    Kind loose(findings.problems);
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
        progress.show(QStringLiteral("checking tasks"), i, tasks.size());
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
            if (cycle.size() > numbers.size())
                numbers.append(QStringLiteral("…"));
            return QStringLiteral("parents in a circle: tasks %1")
                .arg(numbers.join(QStringLiteral(" under ")));
        });
    }
}

} // namespace

ImportFindings checkImport(const QByteArray& file, Progress& progress)
{
    ImportFindings findings;
    progress.show(QStringLiteral("reading the file"));
    if (!readTasks(file, findings))
        return findings;
    QHash<int, int> rowByNumber; // the first task of each unique id
    for (int i = findings.plan.planNodes.size() - 1; i >= 0; --i)
        rowByNumber.insert(findings.plan.planNodes.at(i).uniqueId, i);
    checkNumbers(rowByNumber, findings);
    checkReferences(rowByNumber, findings, progress);
    checkCycles(findings);
    return findings;
}
