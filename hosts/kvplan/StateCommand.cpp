#include "StateCommand.h"

#include "Arguments.h"
#include "CellText.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>

#include <limits>

namespace {

// @return false when the options ask for nothing that can be done.
bool checkOptions(Arguments& line)
{
    const bool names = !line.positionalsFrom(0).isEmpty();
    if (!line.isSet("task") && (line.isSet("set") || line.isSet("response")))
        return line.refuse(QStringLiteral("--set and --response need --task"));
    if (!line.isSet("task"))
        return names || line.refuse(QStringLiteral("PLAN is missing, or --task with --set"));
    if (names)
        return line.refuse(QStringLiteral("--task names the one task; leave the plans out"));
    if (!line.isSet("set"))
        return line.refuse(QStringLiteral("--task needs --set"));
    return line.checkIdentifier("task");
}

QString statesText(const QList<KvMeteringState>& states)
{
    TextTable table;
    table.addColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("State"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Plan"));
    table.addTextColumn(QStringLiteral("Response"));
    for (const KvMeteringState& state : states)
        table.addRow({state.taskId, QString::number(state.state), state.planId, state.responseId});
    return table.toText(terminalWidth());
}

ExitCode sayStates(const Arguments& line)
{
    const Session session;
    const QStringList planIds = line.positionalsFrom(0);
    QList<KvMeteringState> states;
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("reading the states"));
        isRead = KvPlanData::instance()->getMeteringState(planIds, states);
    }
    if (!isRead)
        return session.complainOfFailure(QStringLiteral("read the metering states"));
    if (line.wantsJson()) {
        QJsonArray array;
        for (const KvMeteringState& state : qAsConst(states))
            array.append(stateToJson(state));
        return say(QJsonDocument(array).toJson());
    }
    return say(states.isEmpty() ? QStringLiteral("no metering states\n") : statesText(states));
}

ExitCode setState(const Arguments& line, int code)
{
    const Session session;
    KvMeteringState state;
    state.taskId = line.value("task");
    state.responseId = line.value("response");
    const QString failure = QStringLiteral("set the metering state of the task \"%1\"").arg(state.taskId);
    // Only creating a state takes a response; only updating one takes a code.
    if (line.isSet("response") && !KvPlanData::instance()->createMeteringState(state))
        return session.complainOfFailure(failure);
    state.taskId = line.value("task");
    state.state = code;
    if (!KvPlanData::instance()->updateMeteringState(state))
        return session.complainOfFailure(failure);
    return line.wantsJson() ? say(QJsonDocument(stateToJson(state)).toJson())
                            : say(QStringLiteral("%1  %2\n").arg(fitted(state.taskId, 0)).arg(state.state));
}

} // namespace

int runState(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("state"),
        QStringLiteral("Lists the metering states of the tasks of plans, or sets that of one task."),
        QStringLiteral("PLAN..."));
    line.addOption("task", "node", "Set the state of this task.");
    line.addOption("set", "code", "Its state code.");
    line.addOption("response", "id", "The response that it rests on.");
    line.addJsonOption();
    int code = 0;
    if (!line.read(arguments, 0) || !line.needService() || !checkOptions(line) ||
        !line.readNumber("set", std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), code) ||
        !line.needProject())
        return line.exitCode();
    return line.isSet("task") ? setState(line, code) : sayStates(line);
}
