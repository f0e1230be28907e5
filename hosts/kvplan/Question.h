#pragma once

#include <QtCore/QString>

/// Puts @p question to the person at the standard input, on the standard error stream. Only a whole "y" or
/// "yes" is a yes; no answer at all is a no.
bool agrees(const QString& question);
