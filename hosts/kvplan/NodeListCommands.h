#pragma once

#include <QtCore/QStringList>

/// kvplan nodes PLAN: the tasks of a plan that meet a filter, page by page, or their number.
int runNodes(const QStringList& arguments);

/// kvplan todo: the user's tasks that are not finished, the earliest planned finish first, page by page.
int runTodo(const QStringList& arguments);
