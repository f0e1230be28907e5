#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

/// How many tasks are in one situation (normal, delay, ahead).
struct KvSituationCount
{
    int total = 0;
    QString situation;
};

/// How many tasks have one status, divided by situation.
struct KvStatusStatistics
{
    int total = 0;
    QString status;
    QList<KvSituationCount> items;
};

/// How many tasks there are, divided by status.
struct KvPlanStatistics
{
    int total = 0;
    QList<KvStatusStatistics> items;
};

/// One bucket of the quantity statistics: tasks in one day, week, month or year.
struct KvStatisticsQuantity
{
    QString type; ///< period word of the service
    int year = 0; ///< 0: does not apply to `type`, as for the fields below
    int month = 0;
    int week = 0;
    int day = 0;
    int total = 0;
};
