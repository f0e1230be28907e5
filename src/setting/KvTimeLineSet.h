#pragma once

#include <QtCore/QDateTime>

/// How the simulation plays one plan's schedule. The fields are named as their keys in the settings file.
struct TimeLineSet
{
    double DayForS = 0.5;           ///< speed, in days of the schedule per second
    QDateTime TimeStart;            ///< start of the simulated period; invalid: not set
    QDateTime TimeFinish;           ///< end of the simulated period; invalid: not set
    bool UsePlanTime = true;        ///< the period is the plan's own
    bool DisplayDelay = true;       ///< show delays
    bool DisplayStateColor = true;  ///< paint elements by state; the flags below say which states
    bool NonStartClr = true;        ///< state 0, not started
    bool NotStartDelayClr = true;   ///< state 1, not started, delayed
    bool ProcessingClr = true;      ///< state 2, in progress
    bool ProcessingDelayClr = true; ///< state 3, in progress, delayed
    bool FinishClr = true;          ///< state 4, finished
    bool FinishAheadClr = true;     ///< state 5, finished ahead of time
    bool FinishBehindClr = true;    ///< state 6, finished late
};
