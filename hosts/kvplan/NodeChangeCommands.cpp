#include "NodeChangeCommands.h"

#include "Arguments.h"
#include "CellText.h"
#include "NodeChanges.h"
#include "Output.h"
#include "Progress.h"
#include "Question.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>

#include <algorithm>

namespace {

constexpr int widestHelp = 78;
constexpr int namedInQuestion = 10;

struct Assignment
{
    const NodeField* field;
    QJsonValue value;
};

// What "--help" says before the options: the fields, as the names alone do not fit into an error.
QString updateSummary()
{
    QString text =
        QStringLiteral("Changes fields of one task. Only what differs is sent, so that what others\n"
                       "change meanwhile stays. A list is written as in userIds=ann,ben, a date as in\n"
                       "startDate=2026-03-05 or startDate=2026-03-05T08:00, empty for none;\n"
                       "predecessors, links and materialBills as JSON.\n\nFields:");
    int width = widestHelp;
    for (const NodeField& field : nodeFields()) {
        if (field.fixed)
            continue;
        const QString word = QLatin1Char(' ') + field.name;
        if (width + word.size() > widestHelp) {
            text += QStringLiteral("\n ");
            width = 1;
        }
        text += word;
        width += word.size();
    }
    return text;
}

// @return what is wrong with "FIELD=VALUE", empty for nothing.
QString readAssignment(const QString& text, Assignment& assignment)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 1)
        return QStringLiteral("\"%1\" is no FIELD=VALUE").arg(text);
    const QString name = text.left(equals);
    const QString value = text.mid(equals + 1);
    const NodeField* field = nodeField(name);
    if (!field)
        return QStringLiteral("there is no field \"%1\"%2").arg(name, adviceOnField(name));
    if (field->fixed)
        return QStringLiteral("\"%1\" cannot be changed: %2").arg(name, QLatin1String(field->fixed));
    assignment = {field, field->read(value)};
    KvPlanNode trial;
    if (!field->setValue(trial, assignment.value) || (!value.isEmpty() && !field->isSent(trial)))
        return QStringLiteral("\"%1\" takes %2, not \"%3\"").arg(name, field->expectation(), value);
    if (!field->isSent(trial))
        return QStringLiteral("\"%1\" cannot be emptied: the service would keep what it has").arg(name);
    assignment.value = field->value(trial);
    return QString();
}

bool readAssignments(Arguments& line, QVector<Assignment>& assignments)
{
    const QStringList texts = line.positionalsFrom(1);
    for (const QString& text : texts) {
        Assignment assignment;
        const QString fault = readAssignment(text, assignment);
        if (!fault.isEmpty())
            return line.refuse(fault);
        for (const Assignment& earlier : qAsConst(assignments)) {
            if (earlier.field == assignment.field)
                return line.refuse(QStringLiteral("\"%1\" is given twice").arg(assignment.field->name));
        }
        assignments.append(assignment);
    }
    return true;
}

QString changesText(const KvPlanNode& node, const QVector<FieldChange>& changes,
                    const QVector<Assignment>& assignments)
{
    QString text = fitted(node.id, 0) + QStringLiteral("  ") + fitted(node.name, 0) + QLatin1Char('\n');
    TextTable table;
    table.addColumn(QStringLiteral("Field"));
    table.addTextColumn(QStringLiteral("Was"));
    table.addTextColumn(QStringLiteral("Is now"));
    QStringList unchanged;
    for (const Assignment& assignment : assignments)
        unchanged.append(assignment.field->name);
    for (const FieldChange& change : changes) {
        table.addRow({change.field->name, change.field->shown(change.was),
                      change.field->shown(change.field->value(node))});
        unchanged.removeOne(change.field->name);
    }
    if (!changes.isEmpty())
        text += QLatin1Char('\n') + table.toText(terminalWidth());
    if (!unchanged.isEmpty())
        text +=
            QStringLiteral("\nnot sent, as it is so already: %1\n").arg(unchanged.join(QStringLiteral(", ")));
    return text;
}

// A service may take a request and keep something else.
ExitCode complainOfOthers(const KvPlanNode& node, const QVector<FieldChange>& changes)
{
    ExitCode code = Success;
    for (const FieldChange& change : changes) {
        const QJsonValue kept = change.field->value(node);
        if (kept == change.becomes)
            continue;
        complain(
            QStringLiteral("the service took %1 for \"%2\" and kept %3")
                .arg(change.field->shown(change.becomes), change.field->name, change.field->shown(kept)));
        code = RequestFailed;
    }
    return code;
}

QString questionOn(const QList<KvPlanNode>& nodes)
{
    const bool hasSummary =
        std::any_of(nodes.begin(), nodes.end(), [](const KvPlanNode& node) { return node.summary; });
    const QString rest = hasSummary ? QStringLiteral(" The tasks below stay, at the top level.") : QString();
    if (nodes.size() == 1)
        return QStringLiteral("Delete the task \"%1\"?").arg(fitted(nodes.first().name, 0)) + rest;
    QString text;
    for (int i = 0; i < qMin(nodes.size(), namedInQuestion); ++i)
        text += QStringLiteral("  %1  %2\n").arg(fitted(nodes.at(i).id, 0), fitted(nodes.at(i).name, 0));
    if (nodes.size() > namedInQuestion)
        text += QStringLiteral("  … and %1 more\n").arg(nodes.size() - namedInQuestion);
    return text + QStringLiteral("Delete these %1 tasks?").arg(nodes.size()) + rest;
}

} // namespace

int runUpdate(const QStringList& arguments)
{
    Arguments line(QStringLiteral("update"), updateSummary(), QStringLiteral("NODE FIELD=VALUE..."));
    line.addJsonOption();
    QVector<Assignment> assignments;
    if (!line.read(arguments, 2) || !line.needService() || !readAssignments(line, assignments))
        return line.exitCode();

    const Session session;
    const QString id = line.positional(0);
    KvPlanNode before;
    if (!session.readNode(id, before))
        return RequestFailed;
    KvPlanNode node = before;
    for (const Assignment& assignment : qAsConst(assignments))
        assignment.field->setValue(node, assignment.value);
    const QVector<FieldChange> changes = changesBetween(before, node);
    if (!changes.isEmpty()) {
        const int links = node.predecessors.size();
        node.id = id; // the library compares with what it read under that identifier
        if (!KvPlanData::instance()->updatePlanNode(node))
            return session.complainOfFailure(QStringLiteral("change the task \"%1\"").arg(id));
        node.predecessors = node.predecessors.mid(links); // those of the reply stand behind those sent
    }
    const ExitCode said = line.wantsJson() ? say(QJsonDocument(nodeToJson(node)).toJson())
                                           : say(changesText(node, changes, assignments));
    const ExitCode kept = complainOfOthers(node, changes);
    return said == Success ? kept : said;
}

int runDeleteNodes(const QStringList& arguments)
{
    Arguments line(QStringLiteral("delete-nodes"),
                   QStringLiteral("Deletes tasks, after asking; says nothing when done. Several are deleted\n"
                                  "all or not at all."),
                   QStringLiteral("NODE..."));
    line.addOption("yes", nullptr, "Do not ask.");
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    QStringList ids = line.positionalsFrom(0);
    ids.removeDuplicates();
    if (!line.isSet("yes")) {
        QList<KvPlanNode> nodes;
        for (const QString& id : qAsConst(ids)) {
            nodes.append(KvPlanNode());
            if (!session.readNode(id, nodes.last()))
                return RequestFailed;
        }
        if (!agrees(questionOn(nodes))) {
            complain(QStringLiteral("nothing was deleted"));
            return NotAgreed;
        }
    }
    bool isDone = false;
    {
        const Progress progress(QStringLiteral("deleting"));
        isDone = ids.size() == 1 ? KvPlanData::instance()->deletePlanNodeById(ids.first())
                                 : KvPlanData::instance()->deletePlanNodesByIds(ids);
    }
    if (!isDone)
        return session.complainOfFailure(ids.size() == 1
                                             ? QStringLiteral("delete the task \"%1\"").arg(ids.first())
                                             : QStringLiteral("delete the %1 tasks").arg(ids.size()));
    return Success;
}
