#pragma once

#include <QtCore/QStringList>

/// kvplan show PLAN: one plan and its nodes as a table.
int runShow(const QStringList& arguments);
