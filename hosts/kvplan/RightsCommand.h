#pragma once

#include <QtCore/QStringList>

/// kvplan rights: what the user may do in the project.
int runRights(const QStringList& arguments);
