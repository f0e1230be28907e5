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
    if (!address.secrets.isEmpty()) {
        handOverSecrets();
    }
}

/// libpq reads them from its environment in no other way than as those of a service, whose file tells them.
void PostgresTools::handOverSecrets()
{
    if (m_environment.contains(QStringLiteral("PGSERVICE")) ||
        m_address.options.contains(QLatin1String("service="))) {
        throw Failure(QStringLiteral("the address of the PostgreSQL database has '%1' beside a service; "
                                     "write it into the file of the service")
                          .arg(m_address.secrets.first().first));
    }
    m_secrets = std::make_unique<QTemporaryFile>();
    QByteArray lines = "[planservice]\n";
    for (const auto& [key, value] : qAsConst(m_address.secrets)) {
        lines += key.toUtf8() + '=' + value.toUtf8() + '\n';
    }
    if (!m_secrets->open() || m_secrets->write(lines) != lines.size() || !m_secrets->flush()) {
        throw Failure(QStringLiteral("cannot write '%1': %2; is the disk full?")
                          .arg(m_secrets->fileName(), m_secrets->errorString()));
    }
    m_environment.insert(QStringLiteral("PGSERVICEFILE"), m_secrets->fileName());
    m_environment.insert(QStringLiteral("PGSERVICE"), QStringLiteral("planservice"));
}

QString PostgresTools::databaseOption() const
{
    QString name = m_address.database;
    name.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QStringLiteral("--dbname=dbname='%1' %2").arg(name, m_address.options);
}

void PostgresTools::run(const QString& program, const QStringList& arguments,
                        const std::function<void(const QByteArray&)>& takeLine) const
{
    RunningProgram process;
    process.setProcessEnvironment(m_environment);
    if (!takeLine) {
        process.setStandardOutputFile(QProcess::nullDevice());
    }
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        fail(process);
    }
    // They take as long as the database is large, and end by themselves when the server goes.
    while (takeLine && (process.waitForReadyRead(-1) || process.canReadLine())) {
        while (process.canReadLine()) {
            takeLine(process.readLine());
        }
    }
    process.waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        fail(process);
    }
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
