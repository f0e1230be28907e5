#pragma once

#include <QtCore/QStringList>

/// kvplan settings: what the library keeps of a user's presentation settings, in the settings file and on the
/// service. A word behind it names a part to show or change.
int runSettings(const QStringList& arguments);
