#pragma once

// What is reported back on plan nodes, as the store keeps and counts it.

#include "../filters/Filter.h"
#include "Visibility.h"

#include <QByteArray>

#include <optional>

namespace PlanService {

/// By actual dates.
enum class NodeStatus
{
    Unstart,
    Processing,
    Finished,
};

/// By planned against actual dates, day by day: a finished node by its finish; one that is being worked on by
/// its start, and late once its planned finish has passed; one that is not begun is late once its planned
/// start has passed. Where a planned date is missing nothing is late or early.
enum class NodeSituation
{
    Normal,
    Delay,
    Ahead,
};

/// Which nodes of a project are counted.
struct NodeScope
{
    QString projectId;
    std::optional<QString> category; ///< nothing: every category
    Visibility visible;
    std::optional<QString> person; ///< only nodes that are this user's own; nothing: everybody's
};

struct NodeCount
{
    NodeStatus status = NodeStatus::Unstart;
    NodeSituation situation = NodeSituation::Normal;
    int total = 0;
};

struct DayCount
{
    QString day; ///< yyyy-MM-dd
    int total = 0;
};

/// What somebody reported on a node.
struct ResponseRecord
{
    QString id;
    QString planNodeId;
    QString createdAt;
    QByteArray document; ///< the response's JSON object without "documents"
};

/// The one metering state of a task.
struct TaskStateRecord
{
    QString id;
    QString projectId;
    QString planId;
    QString taskId;     ///< a plan node
    QString responseId; ///< of the task; empty: none
    int state = 0;
};

/// Asks for the states of one project's tasks.
struct TaskStateQuery
{
    QString projectId;
    Visibility visible; ///< of the tasks
    Filter where;
};

} // namespace PlanService
