#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QDate>

/// The states of a task as the simulation counts them: the numbers of KvPlanSetting::GetSimulateColor() and
/// GetSimulateColorTypeStr().
namespace TaskState {

enum : int
{
    NotStarted = 0,
    NotStartedLate = 1, ///< though it should have
    InProgress = 2,
    InProgressLate = 3, ///< though it should be finished
    Finished = 4,
    FinishedAhead = 5,
    FinishedLate = 6,
};
constexpr int count = 7;

} // namespace TaskState

/// The state of a task on a day, by what is known of it now. A date counts as its day; simulationState()
/// tells the state at a moment of the past or the future.
int taskState(const KvPlanNode& task, const QDate& today);

/// Its label, in the user's language.
QString taskStateText(int state);
