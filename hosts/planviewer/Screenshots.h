#pragma once

#include <QtCore/QString>

class MainWindow;

/// Writes pictures of the main views of the window, whose plan is open, into a folder. @return false when one
/// could not be written; it is told on the standard error stream then.
bool writeScreenshots(MainWindow& window, const QString& folder);
