#pragma once

#include <QtCore/QStringList>

/// kvplan update NODE FIELD=VALUE...: changes fields of one task and tells what became of each.
int runUpdate(const QStringList& arguments);

/// kvplan delete-nodes NODE...: asks first.
int runDeleteNodes(const QStringList& arguments);
