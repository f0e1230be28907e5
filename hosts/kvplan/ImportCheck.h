#pragma once

#include <model/KvPlan.h>

#include <QtCore/QStringList>

class QIODevice;

/// What a look at a schedule file found. Nothing in it may be sent while `problems` has an entry.
struct ImportFindings
{
    /// One line each, in the words of the file; the first few of each kind, then a count.
    QStringList problems;
    /// What the file holds, as far as it could be read; without problems, its links name both their tasks.
    KvPlan plan;
};

/// Reads a schedule in exchange JSON and checks it: size, JSON (with line and column), entries that are no
/// tasks, numbers that two tasks share, parents that do not exist, predecessors that name no task, parents in
/// a circle. Tells a waiting person how far it is.
ImportFindings checkImport(QIODevice& file);
