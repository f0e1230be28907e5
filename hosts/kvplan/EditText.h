#pragma once

#include "NodeEdits.h"

#include <QtCore/QJsonObject>

/// What would be created and changed, as a table of at most @p rows lines, the rest as a number; and in a
/// sentence, as in "create 2 tasks and change 3".
QString editsTable(const QVector<NodeEdit>& edits, int rows);
QString editsSentence(const QVector<NodeEdit>& edits);

/// The same for programs: {"toCreate": tasks, "toUpdate": [{"id", "name", "changes": {field: {"was",
/// "becomes"}}}]}.
QJsonObject editsToJson(const QVector<NodeEdit>& edits);
