#pragma once

#include "../store/PostgresAddress.h"

#include <QProcess>
#include <QStringList>

namespace PlanService {

/// PostgreSQL's own programs, run against one database. The password goes to them by their environment, so
/// that no list of processes shows it. All of it throws Failure with the first line of what the program said.
class PostgresTools
{
public:
    explicit PostgresTools(const PostgresAddress& address);

    /// How they are told the database: everything of the address but host, user and password.
    QString databaseOption() const;

    /// Runs a program to its end. @return its output.
    QByteArray run(const QString& program, const QStringList& arguments) const;

    /// Starts psql, which reads its standard input and ends at the first error.
    void startPsql(QProcess& psql) const;
    /// Waits until psql has echoed @p word.
    static void awaitEcho(QProcess& psql, const QByteArray& word);
    /// Ends its input and waits for its end.
    static void finish(QProcess& psql);

private:
    PostgresAddress m_address;
    QProcessEnvironment m_environment;
};

} // namespace PlanService
