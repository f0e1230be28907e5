#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QProcess>
#include <QtCore/QString>

namespace KvTest {

/// A process that makes these calls on its own settings object, on the settings folder @p folder. Arguments
/// and environment are set; it is not started.
void prepareProbe(QProcess& process, const QString& folder, const QList<QJsonArray>& calls);

/// Has a process make these calls to its end. @return what they returned, in their order; a single text that
/// tells what went wrong when the process did not end well.
QJsonArray probe(const QString& folder, const QList<QJsonArray>& calls);

} // namespace KvTest
