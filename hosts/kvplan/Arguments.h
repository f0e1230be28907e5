#pragma once

#include <QtCore/QCommandLineParser>
#include <QtCore/QDateTime>
#include <QtCore/QStringList>

/// The command line of one subcommand, with the options that all of them share: server, project, access
/// token and time-out. What an option leaves open, the environment decides.
class Arguments
{
public:
    /// @p usage names the positional arguments as shown in the help, as in "PLAN". A last one that ends in
    /// "..." may be given several times.
    Arguments(const QString& command, const QString& summary, const QString& usage);

    /// An option of this command alone; @p valueName null: one without a value.
    void addOption(const char* name, const char* valueName, const char* description);

    /// The option --json, for commands that have something to tell to programs.
    void addJsonOption();

    /// Reads @p arguments (without program and command) and configures the platform libraries. No positional
    /// argument may be empty; one named "PLAN" or "NODE" must be an identifier that can be asked for.
    /// @param positionalCount how many there have to be.
    /// @return false when the command is to end now, with exitCode().
    bool read(const QStringList& arguments, int positionalCount);

    /// Reads an option's value as a number from @p lowest to @p highest; @p number stays when it is left out.
    /// @return false when it is something else; the command is then to end with exitCode().
    bool readNumber(const char* option, int lowest, int highest, int& number);

    /// Reads an option's value as a day; @p day stays when it is left out.
    /// @return false when it is something else; the command is then to end with exitCode().
    bool readDay(const char* option, QDate& day);

    /// Reads an option's value as a number, with a decimal point if need be, from @p lowest to @p highest;
    /// @p number stays when it is left out.
    /// @return false when it is something else; the command is then to end with exitCode().
    bool readDecimal(const char* option, double lowest, double highest, double& number);

    /// Reads an option's value as a date with or without a time, in the site's time; without one it is the
    /// beginning of the day. @p moment stays when the option is left out.
    /// @return false when it is something else; the command is then to end with exitCode().
    bool readMoment(const char* option, QDateTime& moment);

    /// @return false when the value of @p option is no identifier that can be asked for; the command is then
    /// to end with exitCode().
    bool checkIdentifier(const char* option);

    /// Reads the options --from and --to as the days of a filter; open ends reach from 1970 to the last day
    /// that the date text can hold.
    /// @param[out] allTime neither is given
    /// @return false when they are no days or stand the wrong way round; the command is then to end with
    /// exitCode().
    bool readPeriod(bool& allTime, QDateTime& start, QDateTime& end);

    /// Complains that @p message, for what the options say together, and sets exitCode(). @return false.
    bool refuse(const QString& message);

    /// @return false when neither option nor environment gives a usable address of the service; the command
    /// is then to end.
    bool needService();

    /// @return false when neither option nor environment names a project; the command is then to end.
    bool needProject();

    bool isSet(const char* option) const { return m_parser.isSet(QLatin1String(option)); }
    QString value(const char* option) const { return m_parser.value(QLatin1String(option)); }
    int exitCode() const { return m_exitCode; }
    QStringList values(const char* option) const { return m_parser.values(QLatin1String(option)); }
    QString positional(int index) const { return m_parser.positionalArguments().at(index); }
    QStringList positionalsFrom(int index) const { return m_parser.positionalArguments().mid(index); }
    bool wantsJson() const { return isSet("json"); } ///< needs addJsonOption()

private:
    bool readNumber(const QString& source, const QString& text, int lowest, int highest, int& number);
    void addSharedOptions();
    QString parserFault() const;
    bool checkPositionals(int count);
    bool configure();
    bool configureTimeout();
    bool configureToken();

    QString m_command;
    QCommandLineParser m_parser;
    QStringList m_usage;
    int m_exitCode = 0;
};
