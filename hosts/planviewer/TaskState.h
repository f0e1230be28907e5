#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QDate>

/// The state of a task on a day, as the simulation counts them: 0 not started, 1 not started though it should
/// have, 2 in progress, 3 in progress though it should be finished, 4 finished, 5 finished ahead of time, 6
/// finished late. A date counts as its day.
int taskState(const KvPlanNode& task, const QDate& today);

/// Its label, in the user's language.
QString taskStateText(int state);
