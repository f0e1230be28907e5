#pragma once

#include <QtCore/QString>

class PlanPage;

/// Writes the Gantt chart of a page, with the tasks' names at its left, as a picture: all rows that the tree
/// shows and the whole time axis at the present zoom. The file's ending decides: png, svg or pdf. A PDF that
/// would be longer than readers take has several pages; a PNG of more than 200 million pixels is refused.
/// @return why it could not be written; empty when it was.
QString exportGantt(const PlanPage& page, const QString& path);
