#pragma once

#include <QtCore/QStringList>

/// kvplan save PLAN FILE: creates and changes the tasks that differ from the plan, after showing them and
/// asking, and tells what the service kept.
int runSave(const QStringList& arguments);
