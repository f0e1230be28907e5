#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QProcess>
#include <QtCore/QString>

namespace KvTest {

/// A call for the probe, with up to two arguments.
inline QJsonArray call(const char* name, const QJsonValue& value = QJsonValue(),
                       const QJsonValue& second = QJsonValue())
{
    return {QLatin1String(name), value, second};
}

/// A process that makes these calls on its own settings object, on the settings folder @p folder. Arguments
/// and environment are set; it is not started.
void prepareProbe(QProcess& process, const QString& folder, const QList<QJsonArray>& calls);

/// Has a process make these calls to its end. @return what they returned, in their order; a single text that
/// tells what went wrong when the process did not end well.
QJsonArray probe(const QString& folder, const QList<QJsonArray>& calls);

} // namespace KvTest
