#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// Filter of plan range queries. The caller fills every field.
struct KvPlanCondition
{
    bool allTime =
        false; ///< true: any date; false: created or changed from `startDate` to the end of `endDate`
    QDateTime startDate; ///< first day of the date filter
    QDateTime endDate;   ///< last day of the date filter, inclusive
    QString name;        ///< case-insensitive pattern on the name; empty: any
    QString category;    ///< plan category; empty: any
};

/// Filter of plan-node range queries. The caller fills every field.
struct KvPlanNodeCondition
{
    bool allTime = false;     ///< true: any date; false: created from `startDate` to the end of `endDate`
    QDateTime startDate;      ///< first day of the date filter
    QDateTime endDate;        ///< last day of the date filter, inclusive
    QString name;             ///< case-insensitive pattern on the node's display name; empty: any
    int listType = 0;         ///< 0 all, 1 received, 2 posted
    bool withoutPlan = false; ///< only nodes that belong to no plan
    QString planId;           ///< owning plan; empty: none
    QString userId;           ///< responsible user; empty: any
    QString relativeUserId;   ///< related user (responsible, executing, cooperating or creator); empty: any
    int finishState = 0;      ///< -1 any, 1 finished, any other value unfinished
    QString category;         ///< plan category; empty: any
};
