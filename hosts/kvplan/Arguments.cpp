#include "Arguments.h"

#include "Session.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <limits>

Arguments::Arguments(const QString& command, const QString& summary, const QString& usage)
    : m_command(command)
    , m_usage(usage.split(QLatin1Char(' '), Qt::SkipEmptyParts))
{
    m_parser.setApplicationDescription(summary);
    m_parser.addOptions({
        {QStringLiteral("server"), QStringLiteral("Address of the service [KV_BASE_API]."),
         QStringLiteral("url")},
        {QStringLiteral("project"), QStringLiteral("Current project [KV_PROJECT_ID]."), QStringLiteral("id")},
        {QStringLiteral("token-file"),
         QStringLiteral(
             "File whose first line is the access token [KV_ACCESS_TOKEN holds the token itself]."),
         QStringLiteral("file")},
        {QStringLiteral("timeout"),
         QStringLiteral("Longest wait for the service's next sign of life [KV_NETWORK_TIMEOUT_MS]."),
         QStringLiteral("ms")},
        {QStringLiteral("json"), QStringLiteral("Write JSON for programs instead of text for people.")},
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")},
    });
    for (const QString& name : qAsConst(m_usage))
        m_parser.addPositionalArgument(name, QString());
}

bool Arguments::read(const QStringList& arguments, int positionalCount)
{
    if (!m_parser.parse(QStringList(QStringLiteral("kvplan %1").arg(m_command)) + arguments))
        return refuse(m_parser.errorText());
    if (isSet("help")) {
        QString help = m_parser.helpText();
        // The parser shows the program's own name only; people type the command behind it.
        help.replace(help.indexOf(QLatin1String("[options]")), 0, m_command + QLatin1Char(' '));
        m_exitCode = say(help) ? Success : OutputFailed;
        return false;
    }
    const QStringList positional = m_parser.positionalArguments();
    if (positional.size() < positionalCount)
        return refuse(QStringLiteral("%1 is missing").arg(m_usage.value(positional.size())));
    if (positional.size() > positionalCount)
        return refuse(QStringLiteral("unexpected argument \"%1\"").arg(positional.at(positionalCount)));
    return configure();
}

void Arguments::addOption(const char* name, const char* valueName, const char* description)
{
    m_parser.addOption(
        {QString::fromUtf8(name), QString::fromUtf8(description), QString::fromUtf8(valueName)});
}

bool Arguments::readNumber(const char* option, int lowest, int highest, int& number)
{
    if (!isSet(option))
        return true;
    bool isNumber = false;
    const int read = value(option).toInt(&isNumber);
    if (!isNumber || read < lowest || read > highest)
        return refuse(QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\"")
                          .arg(QLatin1String(option))
                          .arg(lowest)
                          .arg(highest)
                          .arg(value(option)));
    number = read;
    return true;
}

bool Arguments::needService()
{
    const QString base = KvBaseApi::GetInstance().getBaseApi();
    if (base.isEmpty())
        return refuse(QStringLiteral("no server: give --server or set KV_BASE_API"));
    const QUrl address(base);
    if (!address.isValid() || address.host().isEmpty() ||
        (address.scheme() != QLatin1String("http") && address.scheme() != QLatin1String("https")))
        return refuse(
            QStringLiteral("\"%1\" is no server address; one looks like http://127.0.0.1:8080/").arg(base));
    return true;
}

bool Arguments::needProject()
{
    return !GetSoftCache()->currentProjectId().isEmpty() ||
           refuse(QStringLiteral("no project: give --project or set KV_PROJECT_ID"));
}

bool Arguments::refuse(const QString& message)
{
    complain(QStringLiteral("%1; \"kvplan %2 --help\" shows how to use it").arg(message, m_command));
    m_exitCode = WrongUsage;
    return false;
}

bool Arguments::configure()
{
    if (isSet("server"))
        KvBaseApi::GetInstance().setBaseApi(value("server"));
    if (isSet("project"))
        GetSoftCache()->setCurrentProjectId(value("project"));
    int milliseconds = 0;
    if (!readNumber("timeout", 1, std::numeric_limits<int>::max(), milliseconds))
        return false;
    if (milliseconds > 0)
        NetworkManager::instance().setTimeout(milliseconds);
    return configureToken();
}

// A token never stands on the command line, where every user of the machine could read it.
bool Arguments::configureToken()
{
    if (!isSet("token-file"))
        return true;
    QFile file(value("token-file"));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(
            QStringLiteral("cannot read the token file \"%1\": %2").arg(file.fileName(), file.errorString()));
    const QString token = QString::fromUtf8(file.readLine(4096)).trimmed();
    if (token.isEmpty())
        return refuse(QStringLiteral("the token file \"%1\" has an empty first line").arg(file.fileName()));
    NetworkManager::instance().setAccessToken(token);
    return true;
}
