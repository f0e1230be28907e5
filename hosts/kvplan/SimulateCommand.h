#pragma once

#include <QtCore/QStringList>

/// kvplan simulate PLAN OUTPUT: pictures of the plan's building along time. The drawing is done by a program
/// of planviewer's, which takes this one's place, so that this one needs nothing of what draws.
int runSimulate(const QStringList& arguments);
