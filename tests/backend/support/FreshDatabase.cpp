#include "FreshDatabase.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>

namespace KvTest {

namespace {

QString server()
{
    return qEnvironmentVariable("KV_TEST_DATABASE");
}

QString complaint(const QString& sql)
{
    const QString name = QStringLiteral("KvTest-server");
    QString error;
    {
        const QUrl url(server());
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
        database.setHostName(url.host());
        database.setPort(url.port(5432));
        database.setUserName(url.userName());
        database.setPassword(url.password());
        database.setDatabaseName(QStringLiteral("postgres"));
        QSqlQuery query(database.open() ? database : QSqlDatabase());
        error = !database.isOpen() ? database.lastError().text()
                : !query.exec(sql) ? query.lastError().text()
                                   : QString();
    }
    QSqlDatabase::removeDatabase(name);
    return error;
}

} // namespace

FreshDatabase::FreshDatabase(const QString& file)
    : m_file(file)
{
}

FreshDatabase::~FreshDatabase()
{
    if (!m_made.isEmpty()) {
        complaint(QStringLiteral("DROP SCHEMA \"%1\" CASCADE").arg(m_made));
    }
}

bool FreshDatabase::isPostgres()
{
    return !server().isEmpty();
}

QString FreshDatabase::name()
{
    if (!isPostgres()) {
        return m_file;
    }
    if (m_made.isEmpty()) {
        static int number = 0;
        const QString name = QStringLiteral("kv_%1_%2").arg(QCoreApplication::applicationPid()).arg(++number);
        // Made and dropped in no time, other than whole databases.
        const QString error = complaint(QStringLiteral("CREATE SCHEMA \"%1\"").arg(name));
        if (!error.isEmpty()) {
            qFatal("no test database: %s", qPrintable(error));
        }
        m_made = name;
    }
    return server() + QStringLiteral("postgres?application_name=%1&options=-csearch_path%3D%1").arg(m_made);
}

} // namespace KvTest
