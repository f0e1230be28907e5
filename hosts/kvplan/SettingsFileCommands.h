#pragma once

#include <QtCore/QStringList>

/// kvplan settings columns [NAME=WIDTH...]: widths of the Gantt chart's columns.
int runColumnSettings(const QStringList& arguments);

/// kvplan settings colors [STATE=COLOUR...]: colours of the simulation's states.
int runColourSettings(const QStringList& arguments);

/// kvplan settings simulation PLAN [SETTING=VALUE...]: how the simulation plays a plan.
int runSimulationSettings(const QStringList& arguments);
