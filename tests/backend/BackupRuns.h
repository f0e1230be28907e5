#pragma once

// What the tests of backups share on either database.

#include "PlanRequests.h"
#include "RawHttp.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QDir>
#include <QtTest>

#include <atomic>
#include <thread>

namespace KvTest {

inline ServiceRun backUp(const QString& database, const QString& file, const QStringList& more = {})
{
    return ServiceProcess::run(QStringList{"backup"_s, file, "--database"_s, database} + more);
}

inline ServiceRun restore(const QString& file, const QString& database, const QStringList& more = {})
{
    return ServiceProcess::run(QStringList{"restore"_s, file, "--database"_s, database} + more);
}

/// The files that restores have left beside this one.
inline QStringList keptBeside(const QString& path)
{
    const QFileInfo file(path);
    QStringList names =
        file.dir().entryList({file.fileName() + ".before-restore-*"_s}, QDir::Files, QDir::Name);
    for (QString& name : names) {
        name = file.dir().filePath(name);
    }
    return names;
}

/// Who may come in after a restore. Fills the service's database and starts it; @p file is then a backup with
/// tokens.
inline void tryTokensOfBackups(ServiceProcess& service, const QString& file)
{
    QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
    const QString open = file + ".open"_s;
    QCOMPARE(backUp(service.database(), open).exitCode, 0);
    const QByteArray revoked = service.createToken("ann"_s, "sample-project"_s, "read=all"_s);
    QCOMPARE(backUp(service.database(), file).exitCode, 0);
    const QStringList onDatabase{"--database"_s, service.database()};
    QCOMPARE(ServiceProcess::run(QStringList{"token"_s, "revoke"_s, "1"_s} + onDatabase).exitCode, 0);
    const QByteArray later = service.createToken("bo"_s, "sample-project"_s, "read=all"_s);
    QVERIFY2(service.start(), qPrintable(service.failure()));
    const auto status = [&](const QByteArray& token) {
        return RawHttp(service.port())
            .get("/task-service/projects/sample-project/plans",
                 token.isEmpty() ? QByteArray() : bearer(token))
            .status;
    };
    // An old copy brings no revoked token back, and none that came later is lost.
    QCOMPARE(restore(file, service.database(), {"--force"_s}).exitCode, 0);
    QCOMPARE(status(revoked), 401);
    QCOMPARE(status(later), 200);
    // A copy without tokens does not open the service.
    QCOMPARE(restore(open, service.database(), {"--force"_s}).exitCode, 0);
    QCOMPARE(status(QByteArray()), 401);
    QCOMPARE(status(later), 200);
    const ServiceRun refused = restore(open, service.database(), {"--force"_s, "--with-tokens"_s});
    QCOMPARE(refused.exitCode, 1);
    QCOMPARE(refused.errors.count('\n'), 1);
    QVERIFY2(refused.errors.contains("--with-tokens"), refused.errors.constData());
    QCOMPARE(status(QByteArray()), 401);
    // Unless one says so.
    QCOMPARE(restore(file, service.database(), {"--force"_s, "--with-tokens"_s}).exitCode, 0);
    QCOMPARE(status(revoked), 200);
    QCOMPARE(status(later), 401);
    QVERIFY2(service.stop(), qPrintable(service.failure()));
}

/// A client that stores one setting after the other, k0, k1 and so on, until it goes.
class SettingWriter
{
public:
    explicit SettingWriter(quint16 port)
        : m_thread([this, port] { write(port); })
    {
    }
    ~SettingWriter() { stop(); }

    void stop()
    {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    int acknowledged() const { return m_acknowledged; }
    /// A status other than 200 and 503; 0: there was none. For when it is stopped.
    int wrongStatus() const { return m_wrongStatus; }

private:
    void write(quint16 port)
    {
        RawHttp http(port);
        for (int i = 0; !m_stop && m_wrongStatus == 0; ++i) {
            const RawReply reply =
                http.request("PUT", "/user-service/settings/k" + QByteArray::number(i), "{\"value\":1}");
            m_acknowledged += reply.status == 200 ? 1 : 0;
            m_wrongStatus = reply.status == 200 || reply.status == 503 ? 0 : qMax(1, reply.status);
        }
    }

    std::atomic<bool> m_stop{false};
    std::atomic<int> m_acknowledged{0};
    std::atomic<int> m_wrongStatus{0};
    std::thread m_thread;
};

} // namespace KvTest
