#pragma once

#include "../store/PostgresAddress.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryFile>

#include <functional>
#include <memory>

namespace PlanService {

/// A program that does not outlive this object.
class RunningProgram : public QProcess
{
public:
    RunningProgram() = default;
    ~RunningProgram() override
    {
        if (state() != NotRunning) {
            kill();
            waitForFinished();
        }
    }
};

/// PostgreSQL's own programs, run against one database. The password goes to them by their environment, what
/// else is secret in the address by a file that the owner alone may read, so that no list of processes shows
/// it. All of it throws Failure with the first line of what the program said.
class PostgresTools
{
public:
    explicit PostgresTools(const PostgresAddress& address);

    /// How they are told the database: everything of the address but host, user and what is secret.
    QString databaseOption() const;

    /// Runs a program to its end.
    /// @param takeLine is handed its output as it comes, line by line; without it nobody reads the output.
    void run(const QString& program, const QStringList& arguments,
             const std::function<void(const QByteArray&)>& takeLine = nullptr) const;

    /// Starts psql, which reads its standard input and ends at the first error.
    void startPsql(QProcess& psql) const;
    /// Waits until psql has echoed @p word.
    static void awaitEcho(QProcess& psql, const QByteArray& word);
    /// Ends its input and waits for its end.
    static void finish(QProcess& psql);

private:
    void handOverSecrets();

    PostgresAddress m_address;
    std::unique_ptr<QTemporaryFile> m_secrets;
    QProcessEnvironment m_environment;
};

} // namespace PlanService
