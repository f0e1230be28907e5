#include "Arguments.h"

#include "Session.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QFile>
#include <QtCore/QUrl>

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
    if (m_parser.isSet(QStringLiteral("help"))) {
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

bool Arguments::wantsJson() const
{
    return m_parser.isSet(QStringLiteral("json"));
}

bool Arguments::refuse(const QString& message)
{
    complain(QStringLiteral("%1; \"kvplan %2 --help\" shows how to use it").arg(message, m_command));
    m_exitCode = WrongUsage;
    return false;
}

bool Arguments::configure()
{
    KvBaseApi& api = KvBaseApi::GetInstance();
    if (m_parser.isSet(QStringLiteral("server")))
        api.setBaseApi(m_parser.value(QStringLiteral("server")));
    if (api.getBaseApi().isEmpty())
        return refuse(QStringLiteral("no server: give --server or set KV_BASE_API"));
    const QUrl address(api.getBaseApi());
    if (!address.isValid() || address.host().isEmpty() ||
        (address.scheme() != QLatin1String("http") && address.scheme() != QLatin1String("https")))
        return refuse(QStringLiteral("\"%1\" is no server address; one looks like http://127.0.0.1:8080/")
                          .arg(api.getBaseApi()));
    if (m_parser.isSet(QStringLiteral("project")))
        GetSoftCache()->setCurrentProjectId(m_parser.value(QStringLiteral("project")));
    if (m_parser.isSet(QStringLiteral("timeout"))) {
        bool isNumber = false;
        const int milliseconds = m_parser.value(QStringLiteral("timeout")).toInt(&isNumber);
        if (!isNumber || milliseconds <= 0)
            return refuse(
                QStringLiteral("--timeout takes a number of milliseconds greater than 0, not \"%1\"")
                    .arg(m_parser.value(QStringLiteral("timeout"))));
        NetworkManager::instance().setTimeout(milliseconds);
    }
    return configureToken();
}

// A token never stands on the command line, where every user of the machine could read it.
bool Arguments::configureToken()
{
    if (!m_parser.isSet(QStringLiteral("token-file")))
        return true;
    QFile file(m_parser.value(QStringLiteral("token-file")));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(
            QStringLiteral("cannot read the token file \"%1\": %2").arg(file.fileName(), file.errorString()));
    const QString token = QString::fromUtf8(file.readLine(4096)).trimmed();
    if (token.isEmpty())
        return refuse(QStringLiteral("the token file \"%1\" has an empty first line").arg(file.fileName()));
    NetworkManager::instance().setAccessToken(token);
    return true;
}
