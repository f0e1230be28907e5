#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// Terminal cells that @p text takes.
int cellWidth(const QString& text);

/// @p text on one line, shortened to @p width cells with "…" at its end; 0 shortens nothing. Control
/// characters become spaces and characters that turn the direction of writing go, so that a name can neither
/// move the cursor nor colour the terminal nor pose as another.
QString fitted(const QString& text, int width);

/// A date-time for people, to the minute; empty when it is not set.
QString minuteText(const QDateTime& dateTime);

/// The day of a date-time for people; empty when it is not set.
QString dayText(const QDateTime& dateTime);

/// Progress for people, in whole percent; empty when it is not set.
QString percentText(double percentage);
