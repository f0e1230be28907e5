#pragma once

#include <QtCore/QStringList>

/// kvplan import FILE: checks a schedule in exchange JSON and creates a plan from it.
int runImport(const QStringList& arguments);

/// kvplan export PLAN FILE: writes a plan as exchange JSON.
int runExport(const QStringList& arguments);
