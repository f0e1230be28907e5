#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

/// How many tasks are in one situation (normal, delay, ahead).
struct KvSituationCount
{
    int total = 0;     ///< number of tasks
    QString situation; ///< the service's word: "normal", "delay" or "ahead"
};

/// How many tasks have one status, divided by situation.
struct KvStatusStatistics
{
    int total = 0;                 ///< number of tasks
    QString status;                ///< the service's word: "unstart", "processing" or "finished"
    QList<KvSituationCount> items; ///< in received order
};

/// How many tasks there are, divided by status.
struct KvPlanStatistics
{
    int total = 0;                   ///< number of tasks
    QList<KvStatusStatistics> items; ///< in received order
};

/// One bucket of the quantity statistics: tasks in one day, week, month or year.
struct KvStatisticsQuantity
{
    QString type;  ///< period word of the service
    int year = 0;  ///< 0: does not apply to `type`, as for the fields below
    int month = 0; ///< 1 to 12
    int week = 0;  ///< of the year, 1 to 53
    int day = 0;   ///< of the month, 1 to 31
    int total = 0; ///< number of tasks
};
