#pragma once

#include <QtCore/QStringList>

/// kvplan settings hidden: the Gantt chart's hidden columns.
int runHiddenSettings(const QStringList& arguments);

/// kvplan settings get KEY: any setting that the service keeps for the user.
int runGetSetting(const QStringList& arguments);

/// kvplan settings set KEY JSON: changes it.
int runSetSetting(const QStringList& arguments);
