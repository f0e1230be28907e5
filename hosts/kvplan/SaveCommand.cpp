#include "SaveCommand.h"

#include "Arguments.h"
#include "CellText.h"
#include "EditText.h"
#include "JsonFile.h"
#include "NodeEdits.h"
#include "Output.h"
#include "Progress.h"
#include "Question.h"
#include "RecordJson.h"
#include "SaveCheck.h"
#include "Session.h"

#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QFile>
#include <QtCore/QSet>

#include <cstdio>
#include <limits>

namespace {

constexpr int usualRows = 100;

// The tasks of one plan, as the library has them in its cache, which it compares with when it saves.
class PlanTasks
{
public:
    PlanTasks(const Session& session, const QString& planId)
        : m_session(session)
        , m_planId(planId)
    {
    }

    // All that may fail here have complained about it when they return false.
    bool read()
    {
        KvPlan plan;
        if (!m_session.readPlan(m_planId, plan))
            return false;
        // Tasks are listed and created in the current project; those of a plan stand in the plan's.
        GetSoftCache()->setCurrentProjectId(plan.projectId);
        {
            const Progress progress(QStringLiteral("reading the tasks"));
            KvPlanData::instance()->getPlanNodesByPlanId(m_planId, m_nodes);
        }
        if (m_session.hasFailed()) {
            complain(m_session.failure(QStringLiteral("read the tasks of \"%1\"").arg(m_planId)));
            return false;
        }
        // The list, which the cache was filled from, is that of the plan's category. Tasks may have another.
        QSet<QString> listed;
        for (const KvPlanNode& node : qAsConst(m_nodes))
            listed.insert(node.id);
        for (const KvPlanNode& node : qAsConst(plan.planNodes)) {
            if (listed.contains(node.id))
                continue;
            m_nodes.append(node);
            m_uncached.insert(node.id);
        }
        return true;
    }

    // The library sends a task that it has not cached whole, over what others change meanwhile.
    bool cacheAll(const QVector<NodeEdit>& edits) const
    {
        for (const NodeEdit& edit : edits) {
            KvPlanNode node;
            if (m_uncached.contains(edit.node.id) && !m_session.readNode(edit.node.id, node))
                return false;
        }
        return true;
    }

    bool readAgain()
    {
        KvPlan plan;
        const bool isRead = m_session.readPlan(m_planId, plan);
        m_nodes = plan.planNodes;
        return isRead;
    }

    const QList<KvPlanNode>& nodes() const { return m_nodes; }

private:
    const Session& m_session;
    QString m_planId;
    QList<KvPlanNode> m_nodes;
    QSet<QString> m_uncached;
};

bool readFile(const Arguments& line, JsonFile& file)
{
    const QString path = line.positional(1);
    QFile source(path);
    const bool isOpen = path == QLatin1String("-") ? source.open(stdin, QIODevice::ReadOnly)
                                                   : source.open(QIODevice::ReadOnly);
    if (!isOpen) {
        complain(QStringLiteral("cannot read \"%1\": %2").arg(path, source.errorString()));
        return false;
    }
    QStringList problems;
    const bool isRead = file.read(source, problems);
    for (const QString& problem : qAsConst(problems))
        complain(QStringLiteral("%1: %2").arg(path, problem));
    return isRead;
}

// The library's own save leaves out tasks that differ in nothing that it compares, as in the remark alone.
void save(const QString& planId, const QVector<NodeEdit>& edits)
{
    QList<KvPlanNode> nodes;
    nodes.reserve(edits.size());
    for (const NodeEdit& edit : edits)
        nodes.append(edit.node);
    QList<KvPlanNode> toCreate;
    QList<KvPlanNode> toUpdate;
    QStringList toDeleteIds;
    KvPlanData::instance()->distributePlanNodes(nodes, toCreate, toUpdate, toDeleteIds);
    QSet<QString> saved;
    for (const KvPlanNode& node : qAsConst(toUpdate))
        saved.insert(node.id);
    QList<KvPlanNode> rest;
    for (const NodeEdit& edit : edits) {
        if (!edit.isNew && !saved.contains(edit.node.id))
            rest.append(edit.node);
    }
    const Progress progress(QStringLiteral("saving"));
    KvPlanData::instance()->savePlanNodes(planId, nodes);
    if (!rest.isEmpty())
        KvPlanData::instance()->updatePlanNodes(rest);
}

ExitCode saySaved(const Arguments& line, const SaveFindings& findings, int rows)
{
    if (line.wantsJson())
        return say(
            QJsonDocument(QJsonObject{
                              {QStringLiteral("created"), nodesToJson(findings.created)},
                              {QStringLiteral("updated"), nodesToJson(findings.updated)},
                              {QStringLiteral("problems"), QJsonArray::fromStringList(findings.problems)},
                          })
                .toJson());
    QString text;
    int left = rows;
    const auto addLines = [&](const QString& what, const QList<KvPlanNode>& nodes) {
        for (int i = 0; i < nodes.size() && left > 0; ++i, --left)
            text += QStringLiteral("%1  %2  %3\n")
                        .arg(what, fitted(nodes.at(i).id, 0), fitted(nodes.at(i).name, 0));
    };
    addLines(QStringLiteral("created"), findings.created);
    addLines(QStringLiteral("changed"), findings.updated);
    const int saved = findings.created.size() + findings.updated.size();
    if (saved > rows)
        text += QStringLiteral("… and %1 more\n").arg(saved - rows);
    return say(text);
}

ExitCode sayOutcome(const Arguments& line, const Session& session, const QVector<NodeEdit>& edits,
                    PlanTasks& tasks, int rows)
{
    // Whatever the requests came to, what counts is what the plan holds now.
    const QList<KvPlanNode> before = tasks.nodes();
    if (session.hasFailed("POST"))
        complain(session.failure(QStringLiteral("create tasks"), "POST"));
    if (session.hasFailed("PUT"))
        complain(session.failure(QStringLiteral("change tasks"), "PUT"));
    if (!tasks.readAgain()) {
        complain(QStringLiteral("so it is not known what was saved; \"kvplan show\" tells when the service "
                                "can be reached again"));
        return RequestFailed;
    }
    const SaveFindings findings = checkSaved(edits, before, tasks.nodes());
    for (const QString& problem : findings.problems)
        complain(problem);
    const ExitCode said = saySaved(line, findings, rows);
    return said == Success && !findings.problems.isEmpty() ? RequestFailed : said;
}

ExitCode showEdits(const Arguments& line, const QVector<NodeEdit>& edits, int rows)
{
    if (line.wantsJson())
        return line.isSet("dry-run") ? say(QJsonDocument(editsToJson(edits)).toJson()) : Success;
    if (edits.isEmpty())
        return say(QStringLiteral("nothing to save: the plan is as the file has it\n"));
    return say(editsTable(edits, rows) + (line.isSet("dry-run")
                                              ? QStringLiteral("this would %1\n").arg(editsSentence(edits))
                                              : QString()));
}

} // namespace

int runSave(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("save"),
        QStringLiteral("Saves the tasks in FILE, in the form that \"kvplan nodes --json\" and\n"
                       "\"kvplan show --json\" print: those without an \"id\" are created, others\n"
                       "changed where they differ. Nothing is deleted."),
        QStringLiteral("PLAN FILE"));
    line.addOption("dry-run", nullptr, "Show what would be saved; save nothing.");
    line.addOption("yes", nullptr, "Do not ask.");
    line.addOption("overwrite", nullptr, "Also undo what others changed since the file was written.");
    line.addOption("rows", "count", "Lines to show at most (100); JSON has all.");
    line.addJsonOption();
    int rows = usualRows;
    if (!line.read(arguments, 2) || !line.needService() ||
        !line.readNumber("rows", 0, std::numeric_limits<int>::max(), rows))
        return line.exitCode();
    if (line.positional(1) == QLatin1String("-") && !line.isSet("yes") && !line.isSet("dry-run")) {
        line.refuse(QStringLiteral("tasks from the standard input need --yes or --dry-run, as nobody can "
                                   "answer there"));
        return line.exitCode();
    }
    JsonFile file;
    if (!readFile(line, file))
        return BadData;

    const Session session;
    const QString planId = line.positional(0);
    PlanTasks tasks(session, planId);
    if (!tasks.read())
        return RequestFailed;
    const EditFindings findings = checkEdits(file.document(), planId, tasks.nodes(), line.isSet("overwrite"));
    file = JsonFile(); // as large as the plan, and read
    for (const QString& problem : findings.problems)
        complain(QStringLiteral("%1: %2").arg(line.positional(1), problem));
    if (!findings.problems.isEmpty())
        return BadData;
    const ExitCode shown = showEdits(line, findings.edits, rows);
    if (shown != Success || line.isSet("dry-run"))
        return shown;
    if (findings.edits.isEmpty())
        return saySaved(line, {}, rows);
    if (!line.isSet("yes")) {
        QString question = editsSentence(findings.edits);
        question[0] = question.at(0).toUpper();
        if (!agrees(question + QLatin1Char('?'))) {
            complain(QStringLiteral("nothing was saved"));
            return NotAgreed;
        }
    }
    if (!tasks.cacheAll(findings.edits))
        return RequestFailed;
    save(planId, findings.edits);
    return sayOutcome(line, session, findings.edits, tasks, rows);
}
