#pragma once

#include <QtCore/QStringList>

/// kvplan plans: the project's plans in natural order of their names, or those that meet a filter, page by
/// page.
int runPlans(const QStringList& arguments);

/// kvplan create NAME: an empty plan.
int runCreate(const QStringList& arguments);

/// kvplan copy PLAN: a copy of a plan with its tasks.
int runCopy(const QStringList& arguments);

/// kvplan rename PLAN NAME: changes the name and nothing else.
int runRename(const QStringList& arguments);

/// kvplan delete PLAN: asks first.
int runDelete(const QStringList& arguments);
