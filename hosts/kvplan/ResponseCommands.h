#pragma once

#include <QtCore/QStringList>

/// kvplan respond NODE: reports progress on a task and tells what the task has become.
int runRespond(const QStringList& arguments);

/// kvplan responses NODE: what was reported on a task, oldest first.
int runResponses(const QStringList& arguments);
