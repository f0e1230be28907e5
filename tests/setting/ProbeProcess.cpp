#include "ProbeProcess.h"

#include <QtCore/QJsonDocument>

namespace KvTest {

void prepareProbe(QProcess& process, const QString& folder, const QList<QJsonArray>& calls)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KV_SETTINGS_DIR"), folder);
    process.setProcessEnvironment(environment);
    process.setProgram(QStringLiteral(SETTING_PROBE));
    QStringList arguments;
    for (const QJsonArray& call : calls)
        arguments.append(QString::fromUtf8(QJsonDocument(call).toJson(QJsonDocument::Compact)));
    process.setArguments(arguments);
}

QJsonArray probe(const QString& folder, const QList<QJsonArray>& calls)
{
    QProcess process;
    prepareProbe(process, folder, calls);
    process.start();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return {QStringLiteral("exit code %1, %2, %3")
                    .arg(process.exitCode())
                    .arg(process.errorString(), QString::fromUtf8(process.readAllStandardError()))};
    QJsonArray returned;
    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines) {
        if (!line.isEmpty())
            returned.append(QJsonDocument::fromJson(line).array().at(0));
    }
    return returned;
}

} // namespace KvTest
