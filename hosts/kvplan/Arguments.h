#pragma once

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

/// The command line of one subcommand, with the options that all of them share: server, project, access
/// token, time-out and JSON output. What an option leaves open, the environment decides.
class Arguments
{
public:
    /// @p usage names the positional arguments as shown in the help, as in "PLAN".
    Arguments(const QString& command, const QString& summary, const QString& usage);

    QCommandLineParser& parser() { return m_parser; }

    /// Reads @p arguments (without program and command) and configures the platform libraries.
    /// @return false when the command is to end now, with exitCode().
    bool read(const QStringList& arguments, int positionalCount);

    int exitCode() const { return m_exitCode; }
    QString positional(int index) const { return m_parser.positionalArguments().at(index); }
    bool wantsJson() const;

private:
    bool refuse(const QString& message);
    bool configure();
    bool configureToken();

    QString m_command;
    QCommandLineParser m_parser;
    QStringList m_usage;
    int m_exitCode = 0;
};
