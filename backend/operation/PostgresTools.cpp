#include "PostgresTools.h"

#include "../Failure.h"

namespace PlanService {

namespace {

[[noreturn]] void fail(const QProcess& process)
{
    if (process.error() == QProcess::FailedToStart) {
        throw Failure(QStringLiteral("cannot run '%1': %2; install the package postgresql-client")
                          .arg(process.program(), process.errorString()));
    }
    // An error at a certain line of the script begins with where that is.
    throw Failure(QStringLiteral("'%1' failed: %2; the database is as it was")
                      .arg(process.program(),
                           QString::fromLocal8Bit(const_cast<QProcess&>(process).readAllStandardError())
                               .trimmed()
                               .section(QLatin1Char('\n'), 0, 0)));
}

} // namespace

PostgresTools::PostgresTools(const PostgresAddress& address)
    : m_address(address)
    , m_environment(QProcessEnvironment::systemEnvironment())
{
    const auto set = [this](const char* name, const QString& value) {
        if (!value.isEmpty()) {
            m_environment.insert(QLatin1String(name), value);
        }
    };
    set("PGHOST", address.host);
    set("PGPORT", address.port > 0 ? QString::number(address.port) : QString());
    set("PGUSER", address.user);
    set("PGPASSWORD", address.password);
    set("LC_MESSAGES", QStringLiteral("C"));
}

QString PostgresTools::databaseOption() const
{
    QString name = m_address.database;
    name.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QStringLiteral("--dbname=dbname='%1' %2").arg(name, m_address.options);
}

QByteArray PostgresTools::run(const QString& program, const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(program, arguments);
    // They take as long as the database is large, and end by themselves when the server goes.
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        fail(process);
    }
    return process.readAllStandardOutput();
}

void PostgresTools::startPsql(QProcess& psql) const
{
    psql.setProcessEnvironment(m_environment);
    psql.start(QStringLiteral("psql"),
               {QStringLiteral("--no-psqlrc"), QStringLiteral("--quiet"), QStringLiteral("--tuples-only"),
                QStringLiteral("--set=ON_ERROR_STOP=1"), QStringLiteral("--no-password"), databaseOption()});
    if (!psql.waitForStarted()) {
        fail(psql);
    }
}

void PostgresTools::awaitEcho(QProcess& psql, const QByteArray& word)
{
    QByteArray said;
    while (!said.contains(word + '\n')) {
        if (!psql.waitForReadyRead(-1)) {
            psql.waitForFinished();
            fail(psql);
        }
        said += psql.readAllStandardOutput();
    }
}

void PostgresTools::finish(QProcess& psql)
{
    psql.closeWriteChannel();
    if (!psql.waitForFinished(-1) || psql.exitStatus() != QProcess::NormalExit || psql.exitCode() != 0) {
        fail(psql);
    }
}

} // namespace PlanService
