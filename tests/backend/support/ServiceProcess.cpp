#include "ServiceProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>

namespace KvTest {

namespace {

constexpr int startTimeoutMs = 30000 * KV_PATIENCE;

} // namespace

QString ServiceProcess::program()
{
    return QStringLiteral(PLANSERVICE_PROGRAM);
}

ServiceProcess::ServiceProcess()
{
    m_process.setProgram(program());
    // A pipe that nobody reads would stop the service once it is full.
    m_process.setStandardErrorFile(m_folder.filePath(QStringLiteral("service.log")), QIODevice::Append);
}

ServiceProcess::~ServiceProcess()
{
    kill();
}

ServiceRun ServiceProcess::run(const QStringList& arguments, int timeoutMs)
{
    QProcess process;
    process.start(program(), arguments);
    ServiceRun result;
    if (!process.waitForFinished(timeoutMs * KV_PATIENCE)) {
        process.kill();
        process.waitForFinished();
        result.errors = "planservice did not end: " + process.errorString().toUtf8();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

QJsonObject ServiceProcess::seed(const QStringList& arguments)
{
    const ServiceRun result = run(QStringList{QStringLiteral("seed"), QStringLiteral("--database"),
                                              database(), QStringLiteral("--json")} +
                                  arguments);
    m_failure = QString::fromUtf8(result.errors);
    return result.exitCode == 0 ? QJsonDocument::fromJson(result.output).object() : QJsonObject();
}

QByteArray ServiceProcess::createToken(const QString& user, const QString& project, const QString& rights,
                                       const QString& category)
{
    const ServiceRun result =
        run({QStringLiteral("token"), QStringLiteral("create"), QStringLiteral("--database"), database(),
             QStringLiteral("--user"), user, QStringLiteral("--project"), project, QStringLiteral("--rights"),
             rights, QStringLiteral("--category"), category});
    m_failure = QString::fromUtf8(result.errors);
    return result.exitCode == 0 ? result.output.trimmed().split('\n').last() : QByteArray();
}

bool ServiceProcess::start(const QStringList& arguments)
{
    kill();
    m_process.setArguments(QStringList{QStringLiteral("serve"), QStringLiteral("--database"), database(),
                                       QStringLiteral("--listen"), QStringLiteral("127.0.0.1"),
                                       QStringLiteral("--port"), QStringLiteral("0")} +
                           arguments);
    m_process.start();
    QElapsedTimer timer;
    timer.start();
    while (!m_process.canReadLine()) {
        const int left = startTimeoutMs - static_cast<int>(timer.elapsed());
        if (left <= 0 || !m_process.waitForReadyRead(left)) {
            kill();
            m_failure = QStringLiteral("planservice serve did not get ready: ") + QString::fromUtf8(log());
            return false;
        }
    }
    static const QByteArray ready = QByteArrayLiteral("planservice listening on ");
    const QByteArray line = m_process.readLine().trimmed();
    if (!line.startsWith(ready)) {
        kill();
        m_failure = QStringLiteral("planservice serve said: ") + QString::fromUtf8(line);
        return false;
    }
    m_baseUrl = QString::fromUtf8(line.mid(ready.size()));
    return true;
}

bool ServiceProcess::stop(int timeoutMs)
{
    terminate();
    return waitForEnd(timeoutMs);
}

void ServiceProcess::terminate()
{
    m_process.terminate();
}

bool ServiceProcess::waitForEnd(int timeoutMs)
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(timeoutMs * KV_PATIENCE)) {
        m_failure = QStringLiteral("planservice did not end within %1 ms").arg(timeoutMs);
        return false;
    }
    m_failure = QStringLiteral("planservice ended with code %1").arg(m_process.exitCode());
    const bool good = m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    if (!good) {
        // What a sanitizer found in the service stands there alone.
        qWarning("%s\n%s", qPrintable(m_failure), log().right(20000).constData());
    }
    return good;
}

void ServiceProcess::kill()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QByteArray ServiceProcess::log() const
{
    QFile file(m_folder.filePath(QStringLiteral("service.log")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace KvTest
