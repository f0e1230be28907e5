#pragma once

#include <QtCore/QStringList>

/// kvplan tree PLAN: the tasks of a plan as an indented tree, with dates, progress and bars.
int runTree(const QStringList& arguments);
