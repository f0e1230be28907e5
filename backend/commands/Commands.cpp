#include "Commands.h"

#include "../records/FieldReader.h"

#include <QDate>

#include <cstdio>

namespace PlanService {

const std::vector<Command>& commands()
{
    static const std::vector<Command> all{
        {QStringLiteral("serve"), QStringLiteral("answer requests until SIGTERM or Ctrl+C"), runServe},
        {QStringLiteral("seed"), QStringLiteral("put a sample project into a database"), runSeed},
        {QStringLiteral("sample"), QStringLiteral("write a sample plan as JSON, without a database"),
         runSample},
        {QStringLiteral("token"), QStringLiteral("create, list and revoke access tokens"), runToken},
        {QStringLiteral("backup"), QStringLiteral("copy a database into a file, while a service runs on it"),
         runBackup},
        {QStringLiteral("restore"), QStringLiteral("give a database the contents of a backup"), runRestore},
    };
    return all;
}

Options::Options(const QString& command, const QString& description, const QStringList& positional)
    : m_command(command)
    , m_positional(positional)
{
    m_parser.setApplicationDescription(description);
    m_parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    for (const QString& name : positional) {
        m_parser.addPositionalArgument(name, QString());
    }
    m_parser.addOption({QStringLiteral("help"), QStringLiteral("Show this help.")});
}

void Options::add(const QString& name, const QString& description, const QString& valueName,
                  const QString& defaultValue)
{
    m_parser.addOption({name, description, valueName, defaultValue});
}

bool Options::parse(const QStringList& arguments)
{
    const QString program = QStringLiteral("planservice ") + m_command;
    if (!m_parser.parse(QStringList{program} + arguments)) {
        throw UsageError(m_parser.errorText().simplified() + QStringLiteral(" See ") + program +
                         QStringLiteral(" --help"));
    }
    m_arguments = m_parser.positionalArguments();
    if (m_parser.isSet(QStringLiteral("help"))) {
        QString help = m_parser.helpText();
        // The parser takes the usage line's first word from the running program's name.
        const int end = help.indexOf(QLatin1Char('\n'));
        help.replace(0, end,
                     QStringLiteral("Usage: %1 [options] %2")
                         .arg(program, m_positional.join(QLatin1Char(' ')))
                         .trimmed());
        print(help);
        return false;
    }
    if (m_arguments.size() > m_positional.size()) {
        throw UsageError(QStringLiteral("'%1' is one argument too many; see %2 --help")
                             .arg(m_arguments.at(m_positional.size()), program));
    }
    return true;
}

QString Options::required(const QString& name) const
{
    const QString value = text(name);
    if (value.isEmpty()) {
        throw UsageError(QStringLiteral("--%1 is needed; see planservice %2 --help").arg(name, m_command));
    }
    return value;
}

QString Options::indexedName(const QString& name) const
{
    const QString value = text(name);
    const int bytes = value.toUtf8().size();
    if (bytes > longestIndexedName) {
        throw UsageError(QStringLiteral("--%1 has %2 bytes in UTF-8, at most %3 are accepted")
                             .arg(name)
                             .arg(bytes)
                             .arg(longestIndexedName));
    }
    return value;
}

int Options::number(const QString& name, int smallest, int largest) const
{
    bool isNumber = false;
    const int value = text(name).toInt(&isNumber);
    if (!isNumber || value < smallest || value > largest) {
        throw UsageError(QStringLiteral("--%1 '%2' has to be a number from %3 to %4")
                             .arg(name, text(name))
                             .arg(smallest)
                             .arg(largest));
    }
    return value;
}

QDate Options::date(const QString& name) const
{
    const QString value = text(name);
    const QDate date = QDate::fromString(value, QStringLiteral("yyyy-MM-dd"));
    if (!value.isEmpty() && !date.isValid()) {
        throw UsageError(QStringLiteral("--%1 '%2' has to be a date like 2026-03-02").arg(name, value));
    }
    return date;
}

void print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

void print(const QString& text)
{
    print(text.toUtf8());
}

} // namespace PlanService
