#pragma once

#include <QtCore/QByteArray>

/// One plan of about @p nodes nodes as the service sends it, from the service's own sample generator.
/// Ends the program with a message when the generator cannot be run.
QByteArray samplePlanJson(int nodes);

/// The same, generated once for each number of nodes.
const QByteArray& keptSamplePlanJson(int nodes);
