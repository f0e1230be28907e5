#include "NodeEdits.h"

#include "CellText.h"
#include "ProblemKind.h"
#include "Progress.h"
#include "RecordValues.h"

#include <KvPublicFun/KvPub.h>
#include <model/KvPlanDataUtils.h>

#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

namespace {

// The tasks of the file. A tree's would need to be numbered anew; it has to be flat.
bool listTasks(const QJsonDocument& file, QJsonArray& tasks, QStringList& problems)
{
    tasks = file.isArray() ? file.array() : file.object().value(QLatin1String("planNodes")).toArray();
    if (file.isArray() || file.object().value(QLatin1String("planNodes")).isArray())
        return true;
    problems.append(QStringLiteral("it holds no tasks; it has to be what \"kvplan nodes --json\" or \"kvplan "
                                   "show --json\" prints, edited"));
    return false;
}

// A task of the file as a person finds it again.
QString named(const QJsonObject& task, int index)
{
    const QString id = task.value(QLatin1String("id")).toString();
    const QString name = task.value(QLatin1String("name")).toString();
    QString text = QStringLiteral("task %1 of the file").arg(index + 1);
    if (!id.isEmpty())
        text += QStringLiteral(" (%1)").arg(fitted(id, 40));
    return name.isEmpty() ? text : text + QStringLiteral(" \"%1\"").arg(fitted(name, 40));
}

QString named(const KvPlanNode& node)
{
    return QStringLiteral("task %1 \"%2\"").arg(node.uniqueId).arg(fitted(node.name, 60));
}

QString shownValue(const QJsonValue& value)
{
    if (value.isArray() || value.isObject())
        return value.isArray() ? QStringLiteral("a JSON array") : QStringLiteral("a JSON object");
    return value.isNull() ? QStringLiteral("null")
                          : QStringLiteral("\"%1\"").arg(fitted(value.toVariant().toString(), 40));
}

// Who adds a link names the predecessor by its number; the rest is known.
void complete(KvPlanPredecessor& link, const KvPlanNode& target, const KvPlanNode& source)
{
    if (link.sourcePlanNodeId == 0)
        link.sourcePlanNodeId = source.planNodeId;
    if (link.sourcePlanNodeName.isEmpty())
        link.sourcePlanNodeName = source.name;
    if (link.targetPlanNodeId == 0)
        link.targetPlanNodeId = target.planNodeId;
    if (link.targetPlanNodeName.isEmpty())
        link.targetPlanNodeName = target.name;
    if (link.targetPlanNodeUniqueId.isEmpty())
        link.targetPlanNodeUniqueId = QString::number(target.uniqueId);
}

class Comparison
{
public:
    Comparison(const QString& planId, const QList<KvPlanNode>& stored, bool overwrites,
               EditFindings& findings)
        : m_planId(planId)
        , m_stored(stored)
        , m_overwrites(overwrites)
        , m_findings(findings)
        , m_overtaken(findings.problems)
        , m_emptied(findings.problems)
        , m_badValues(findings.problems)
        , m_unknownFields(findings.problems)
        , m_repeated(findings.problems)
        , m_unknownTasks(findings.problems)
        , m_shapes(findings.problems)
    {
        m_rows.reserve(stored.size());
        m_numbers.reserve(stored.size());
        for (int i = 0; i < stored.size(); ++i) {
            m_rows.insert(stored.at(i).id, i);
            m_numbers.insert(stored.at(i).uniqueId, i);
        }
    }

    void add(const QJsonValue& entry, int index)
    {
        if (!entry.isObject()) {
            m_shapes.add(
                [&] { return QStringLiteral("entry %1 of the file is no task object").arg(index + 1); });
            return;
        }
        const QJsonObject task = entry.toObject();
        const QJsonValue id = task.value(QLatin1String("id"));
        if (!id.isUndefined() && !id.isNull() && !id.isString()) {
            m_shapes.add(
                [&] { return QStringLiteral("%1 has an \"id\" that is no text").arg(named(task, index)); });
            return;
        }
        if (id.toString().isEmpty())
            addNew(task, index);
        else
            addKnown(task, index, id.toString());
    }

private:
    void addNew(const QJsonObject& task, int index)
    {
        NodeEdit edit;
        edit.isNew = true;
        if (!readFields(task, index, edit.node))
            return;
        edit.changes = changesBetween(KvPlanNode(), edit.node);
        edit.node.planId = m_planId;
        m_findings.edits.append(edit);
    }

    void addKnown(const QJsonObject& task, int index, const QString& id)
    {
        const int row = m_rows.value(id, -1);
        if (row < 0) {
            m_unknownTasks.add([&] {
                return QStringLiteral("%1 is none of the plan's; leave its \"id\" out to create it")
                    .arg(named(task, index));
            });
            return;
        }
        if (m_seen.contains(id)) {
            m_repeated.add(
                [&] { return QStringLiteral("%1 stands in the file twice").arg(named(task, index)); });
            return;
        }
        m_seen.insert(id);
        const KvPlanNode& before = m_stored.at(row);
        NodeEdit edit;
        edit.node = before;
        if (!readFields(task, index, edit.node))
            return;
        completeLinks(edit.node, before); // before it is compared: what is in the plan already is no change
        edit.changes = changesBetween(before, edit.node);
        if (edit.changes.isEmpty())
            return;
        checkEmptied(task, index, edit);
        checkOvertaken(task, before);
        m_findings.edits.append(edit);
    }

    bool readFields(const QJsonObject& task, int index, KvPlanNode& node)
    {
        bool isGood = true;
        for (auto member = task.begin(); member != task.end(); ++member) {
            const NodeField* field = nodeField(member.key());
            const QJsonValue value = member.value();
            if (!field) {
                isGood = false;
                m_unknownFields.add([&] { return unknownField(member.key(), named(task, index)); });
            } else if (!field->fixed && value != field->value(node) && !field->setValue(node, value)) {
                isGood = false;
                m_badValues.add([&] {
                    return QStringLiteral("%1 has \"%2\" %3; it takes %4")
                        .arg(named(task, index), field->name, shownValue(value), field->expectation());
                });
            }
        }
        return isGood;
    }

    void completeLinks(KvPlanNode& node, const KvPlanNode& before) const
    {
        if (toJson(node.predecessors) == toJson(before.predecessors))
            return;
        for (KvPlanPredecessor& link : node.predecessors) {
            const int row = m_numbers.value(link.sourcePlanNodeUniqueId, -1);
            if (row >= 0)
                complete(link, before, m_stored.at(row));
        }
    }

    static QString unknownField(const QString& name, const QString& task)
    {
        if (name == QLatin1String("children"))
            return QStringLiteral(
                       "%1 has \"children\", as in a tree; save what \"kvplan show --json\" prints")
                .arg(task);
        return QStringLiteral("%1 has \"%2\", which is no field of a task%3")
            .arg(task, fitted(name, 40), adviceOnField(name));
    }

    void checkEmptied(const QJsonObject& task, int index, const NodeEdit& edit)
    {
        for (const FieldChange& change : edit.changes) {
            if (change.field->isSent(edit.node))
                continue;
            m_emptied.add([&] {
                return QStringLiteral("%1: \"%2\" cannot be emptied; the service would keep %3")
                    .arg(named(task, index), change.field->name, change.field->shown(change.was));
            });
        }
    }

    void checkOvertaken(const QJsonObject& task, const KvPlanNode& before)
    {
        const QDateTime known =
            KvPub::getDateTimeByQString(task.value(QLatin1String("updatedAt")).toString());
        if (m_overwrites || !known.isValid() || !before.updatedAt.isValid() || before.updatedAt <= known)
            return;
        m_overtaken.add([&] {
            return QStringLiteral("%1 was changed%2 on %3, after the file's state of it; edit it anew, or "
                                  "--overwrite that")
                .arg(named(before),
                     before.updatedBy.isEmpty() ? QString()
                                                : QStringLiteral(" by ") + fitted(before.updatedBy, 40),
                     minuteText(before.updatedAt));
        });
    }

    QString m_planId;
    const QList<KvPlanNode>& m_stored;
    bool m_overwrites;
    EditFindings& m_findings;
    // The last goes first, and stands first then.
    ProblemKind m_overtaken;
    ProblemKind m_emptied;
    ProblemKind m_badValues;
    ProblemKind m_unknownFields;
    ProblemKind m_repeated;
    ProblemKind m_unknownTasks;
    ProblemKind m_shapes;
    QHash<QString, int> m_rows; // by id
    QHash<int, int> m_numbers;  // by unique id
    QSet<QString> m_seen;
};

bool changes(const NodeEdit& edit, const char* field)
{
    for (const FieldChange& change : edit.changes) {
        if (change.field->name == QLatin1String(field))
            return true;
    }
    return false;
}

// New tasks get the numbers that they lack, behind all others; a GUID that is another task's was copied along
// with it.
void completeNew(const QList<KvPlanNode>& stored, QVector<NodeEdit>& edits)
{
    int row = 0;
    int number = 0;
    QSet<QString> guids;
    for (const KvPlanNode& node : stored) {
        row = qMax(row, node.planNodeId);
        number = qMax(number, node.uniqueId);
        guids.insert(node.guid);
    }
    for (const NodeEdit& edit : qAsConst(edits)) {
        row = qMax(row, edit.node.planNodeId);
        number = qMax(number, edit.node.uniqueId);
    }
    for (NodeEdit& edit : edits) {
        if (!edit.isNew)
            continue;
        if (edit.node.planNodeId == -1)
            edit.node.planNodeId = ++row;
        if (edit.node.uniqueId == -1)
            edit.node.uniqueId = ++number;
        if (guids.contains(edit.node.guid))
            edit.node.guid.clear();
        edit.changes = changesBetween(KvPlanNode(), edit.node);
    }
}

QList<KvPlanNode> editedPlan(const QList<KvPlanNode>& stored, const QVector<NodeEdit>& edits)
{
    QHash<QString, const KvPlanNode*> edited;
    for (const NodeEdit& edit : edits) {
        if (!edit.isNew)
            edited.insert(edit.node.id, &edit.node);
    }
    QList<KvPlanNode> plan;
    plan.reserve(stored.size() + edits.size());
    for (const KvPlanNode& node : stored) {
        const KvPlanNode* after = edited.value(node.id);
        plan.append(after ? *after : node);
    }
    for (const NodeEdit& edit : edits) {
        if (edit.isNew)
            plan.append(edit.node);
    }
    return plan;
}

// What was wrong in the plan before is none of this file's business.
void checkNumbers(const QHash<int, int>& uses, EditFindings& findings)
{
    ProblemKind shared(findings.problems);
    for (const NodeEdit& edit : qAsConst(findings.edits)) {
        if (changes(edit, "uniqueId") && uses.value(edit.node.uniqueId) > 1) {
            shared.add([&] {
                return QStringLiteral("%1 would share its \"uniqueId\" with another task")
                    .arg(named(edit.node));
            });
        }
    }
}

void completeLinks(const QList<KvPlanNode>& plan, EditFindings& findings)
{
    QHash<int, const KvPlanNode*> byNumber;
    for (const KvPlanNode& node : plan)
        byNumber.insert(node.uniqueId, &node);
    ProblemKind loose(findings.problems);
    for (NodeEdit& edit : findings.edits) {
        for (FieldChange& change : edit.changes) {
            if (change.field->name != QLatin1String("predecessors"))
                continue;
            for (KvPlanPredecessor& link : edit.node.predecessors) {
                const KvPlanNode* source = byNumber.value(link.sourcePlanNodeUniqueId);
                if (!source) {
                    loose.add([&] {
                        return QStringLiteral("%1 has predecessor %2, which does not exist")
                            .arg(named(edit.node))
                            .arg(link.sourcePlanNodeUniqueId);
                    });
                    continue;
                }
                complete(link, edit.node, *source);
            }
            change.becomes = change.field->value(edit.node);
        }
    }
}

// A circle that the plan had before, and that the file leaves as it is, is none of its business either.
void checkCycles(const QList<KvPlanNode>& plan, EditFindings& findings)
{
    QSet<int> moved; // numbers of the tasks that get another place
    for (const NodeEdit& edit : qAsConst(findings.edits)) {
        if (changes(edit, "uniqueId") || changes(edit, "parentTaskId"))
            moved.insert(edit.node.uniqueId);
    }
    if (moved.isEmpty())
        return;
    ProblemKind circles(findings.problems);
    const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(plan);
    for (const QList<int>& cycle : cycles) {
        for (const int position : cycle) {
            if (!moved.contains(plan.at(position).uniqueId))
                continue;
            circles.add(
                [&] { return QStringLiteral("%1 would be its own ancestor").arg(named(plan.at(position))); });
            break;
        }
    }
}

} // namespace

EditFindings checkEdits(const QJsonDocument& file, const QString& planId, const QList<KvPlanNode>& stored,
                        bool overwrites)
{
    EditFindings findings;
    QJsonArray tasks;
    if (!listTasks(file, tasks, findings.problems))
        return findings;
    {
        Progress progress(QStringLiteral("comparing"));
        Comparison comparison(planId, stored, overwrites, findings);
        for (int i = 0; i < tasks.size(); ++i) {
            comparison.add(tasks.at(i), i);
            progress.show(i, tasks.size());
        }
    }
    if (!findings.problems.isEmpty())
        return findings;
    completeNew(stored, findings.edits);
    const QList<KvPlanNode> plan = editedPlan(stored, findings.edits);
    QHash<int, int> uses;
    for (const KvPlanNode& node : plan)
        ++uses[node.uniqueId];
    checkNumbers(uses, findings);
    completeLinks(plan, findings);
    checkCycles(plan, findings);
    return findings;
}
