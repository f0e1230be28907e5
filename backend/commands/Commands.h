#pragma once

#include "../Failure.h"

#include <QCommandLineParser>

#include <vector>

namespace PlanService {

/// The command line itself is wrong.
class UsageError : public Failure
{
public:
    using Failure::Failure;
};

struct Command
{
    QString name;
    QString summary;
    int (*run)(const QStringList& arguments) =
        nullptr; ///< throws Failure or UsageError; returns the exit code
};

const std::vector<Command>& commands();

int runServe(const QStringList& arguments);
int runSeed(const QStringList& arguments);
int runSample(const QStringList& arguments);
int runToken(const QStringList& arguments);
int runBackup(const QStringList& arguments);
int runRestore(const QStringList& arguments);

/// The options of one command. Reading them throws UsageError naming option and value.
class Options
{
public:
    /// @param positional names of arguments beside the options, as they stand in the usage line.
    Options(const QString& command, const QString& description, const QStringList& positional = {});

    void add(const QString& name, const QString& description, const QString& valueName = QString(),
             const QString& defaultValue = QString());

    /// @return false when --help was asked for and has been printed.
    bool parse(const QStringList& arguments);

    bool has(const QString& name) const { return m_parser.isSet(name); }
    QString text(const QString& name) const { return m_parser.value(name); }
    QString required(const QString& name) const;
    /// A text that the database keeps in indexes, of at most longestIndexedName; may be missing.
    QString indexedName(const QString& name) const;
    int number(const QString& name, int smallest, int largest) const;
    /// yyyy-MM-dd; null when the option is not given and has no default.
    QDate date(const QString& name) const;
    const QStringList& arguments() const { return m_arguments; }

private:
    QString m_command;
    QStringList m_positional;
    QStringList m_arguments;
    QCommandLineParser m_parser;
};

/// Prints UTF-8 to stdout and flushes it.
void print(const QByteArray& text);
void print(const QString& text);

} // namespace PlanService
