#pragma once

#include "FreshDatabase.h"

#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

namespace KvTest {

/// What a run of the program to its end came to.
struct ServiceRun
{
    int exitCode = -1; ///< -1: it did not start, crashed or did not end in time
    QByteArray output;
    QByteArray errors;
};

/// The built planservice on a database of its own in a temporary folder, on a free loopback port. The calls
/// block and need no running event loop. What fails tells why in failure().
class ServiceProcess
{
public:
    ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    /// Kills the service when it still runs.
    ~ServiceProcess();

    /// Path of the built planservice.
    static QString program();
    /// Runs planservice with any arguments until it ends, at most @p timeoutMs; like all times of this class
    /// that is longer for a sanitized service.
    static ServiceRun run(const QStringList& arguments, int timeoutMs = 60000);

    /// `planservice seed` into the database with these further arguments. @return the summary it prints:
    /// "planId", "projectId", "category", "name", "nodes", "added"; empty when seeding failed.
    QJsonObject seed(const QStringList& arguments = {});
    /// `planservice token create`. @return the token, empty on failure. From the first token on every request
    /// needs one.
    QByteArray createToken(const QString& user, const QString& project, const QString& rights,
                           const QString& category = QString());

    /// Starts `planservice serve` and waits until it is ready. @return false on failure, which also ends the
    /// process.
    bool start(const QStringList& arguments = {});
    /// SIGTERM; waits for the end. @return true when the service ended by itself with exit code 0.
    bool stop(int timeoutMs = 20000);
    /// SIGTERM without waiting; waitForEnd() does that.
    void terminate();
    bool waitForEnd(int timeoutMs = 20000);
    /// Ends the service at once, as a crash would.
    void kill();

    /// As "http://127.0.0.1:41234/"; empty before start(). A restart takes another port.
    QString baseUrl() const { return m_baseUrl; }
    quint16 port() const { return static_cast<quint16>(QUrl(m_baseUrl).port(0)); }
    /// What its --database names: databaseFile(), or what FreshDatabase says.
    QString database() { return m_database.name(); }
    /// Of an SQLite database.
    QString databaseFile() const { return m_folder.filePath(QStringLiteral("plans.db")); }
    /// Everything the service wrote to stderr so far: the access log, one JSON object a line.
    QByteArray log() const;
    QString failure() const { return m_failure; }
    qint64 processId() const { return m_process.processId(); }

private:
    QTemporaryDir m_folder;
    FreshDatabase m_database{databaseFile()};
    QProcess m_process;
    QString m_baseUrl;
    QString m_failure;
};

} // namespace KvTest
