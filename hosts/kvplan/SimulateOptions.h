#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QSize>
#include <QtCore/QStringList>

/// What "kvplan simulate" is to draw. What was left out is what the simulation of the plan is set to.
struct SimulateOptions
{
    QString planId;
    QString output;        ///< folder of the frames, or file of the one picture
    QString modelFile;     ///< empty: left out
    QDateTime at;          ///< of the one picture; null: frames
    QDateTime from;        ///< null: left out
    QDateTime to;          ///< null: left out; not before from
    QSize size{1280, 720}; ///< pixels
    double framesPerSecond = 25.0;
    double daysPerSecond = 0.0; ///< 0: left out
    QString views;              ///< planned, actual or both; empty: left out
    double spread = 0.0;        ///< how far floors stand apart: 0 as built, 1 by their own height
    bool mayReplace = false;    ///< files that are there, without asking
};

/// Reads the words behind "kvplan simulate" and configures the platform libraries by them.
/// @return false when the command is to end now, with @p exitCode.
bool readSimulateOptions(const QStringList& arguments, SimulateOptions& options, int& exitCode);
