#pragma once

#include <QtCore/QStringList>

/// kvplan stats: the user's tasks by status and situation, as a chart.
int runStats(const QStringList& arguments);

/// kvplan quantities: how many of the user's tasks were finished in each day, week, month or year.
int runQuantities(const QStringList& arguments);
