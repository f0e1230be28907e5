#pragma once

#include <QtCore/QStringList>

/// kvplan state PLAN...: the metering states of the plans' tasks; kvplan state --task NODE --set CODE sets
/// one.
int runState(const QStringList& arguments);
