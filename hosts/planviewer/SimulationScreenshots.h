#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

class MainWindow;

/// Writes pictures of the simulation at a date into a folder: the window with plan and building, the page
/// with floors apart, and a strip of frames along the schedule. A model is open and in sight. Blocks while
/// events are handled. @return false when one could not be written; it is told on the standard error stream
/// then.
bool writeSimulationScreenshots(MainWindow& window, const QString& folder, const QDateTime& date);
