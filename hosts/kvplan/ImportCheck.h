#pragma once

#include <model/KvPlan.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

class Progress;

/// What a look at a schedule file found. Nothing in it may be sent while `problems` has an entry.
struct ImportFindings
{
    QStringList
        problems; ///< one line each, in the words of the file; the first few of each kind, then a count
    KvPlan plan;  ///< what the file holds, as far as it could be read
};

/// Reads a schedule in exchange JSON and checks it: size, JSON (with line and column), numbers that two tasks
/// share, parents that do not exist, parents in a circle, predecessors that name no task.
ImportFindings checkImport(const QByteArray& file, Progress& progress);
