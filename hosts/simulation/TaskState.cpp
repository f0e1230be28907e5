#include "TaskState.h"

#include <setting/KvPlanSetting.h>

int taskState(const KvPlanNode& task, const QDate& today)
{
    const QDate start = task.startDate.date();
    const QDate finish = task.finishDate.date();
    const QDate finished = task.actualFinishDate.date();
    if (finished.isValid()) {
        if (!finish.isValid() || finished == finish)
            return TaskState::Finished;
        return finished < finish ? TaskState::FinishedAhead : TaskState::FinishedLate;
    }
    if (task.finishedPercentage >= 100.0)
        return TaskState::Finished;
    if (task.actualStartDate.isValid() || task.finishedPercentage > 0.0)
        return finish.isValid() && finish < today ? TaskState::InProgressLate : TaskState::InProgress;
    return start.isValid() && start < today ? TaskState::NotStartedLate : TaskState::NotStarted;
}

QString taskStateText(int state)
{
    return KvPlanSetting::instance()->GetSimulateColorTypeStr().value(state);
}
