#include "TaskState.h"

#include <setting/KvPlanSetting.h>

int taskState(const KvPlanNode& task, const QDate& today)
{
    const QDate start = task.startDate.date();
    const QDate finish = task.finishDate.date();
    const QDate finished = task.actualFinishDate.date();
    if (finished.isValid()) {
        if (!finish.isValid() || finished == finish)
            return 4;
        return finished < finish ? 5 : 6;
    }
    if (task.finishedPercentage >= 100.0)
        return 4;
    if (task.actualStartDate.isValid() || task.finishedPercentage > 0.0)
        return finish.isValid() && finish < today ? 3 : 2;
    return start.isValid() && start < today ? 1 : 0;
}

QString taskStateText(int state)
{
    return KvPlanSetting::instance()->GetSimulateColorTypeStr().value(state);
}
