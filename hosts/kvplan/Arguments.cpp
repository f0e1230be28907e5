#include "Arguments.h"

#include "Output.h"
#include "RecordValues.h"
#include "Session.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <algorithm>
#include <limits>

namespace {

constexpr int longestToken = 16 * 1024; // bytes, with the line end

bool isToken(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

// Whether the service will be asked for this plan and nothing else: these characters end or change the path,
// so that to delete "a?b" would be to delete "a".
bool isIdentifier(const QString& id)
{
    const auto isHexDigit = [](QChar c) {
        const char digit = c.toLower().toLatin1();
        return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
    };
    for (int i = id.indexOf(QLatin1Char('%')); i >= 0 && i + 2 < id.size();
         i = id.indexOf(QLatin1Char('%'), i + 1)) {
        if (isHexDigit(id.at(i + 1)) && isHexDigit(id.at(i + 2)))
            return false;
    }
    return !id.contains(QLatin1Char('/')) && !id.contains(QLatin1Char('?')) && id != QLatin1String(".") &&
           id != QLatin1String("..");
}

const QLatin1String several("...");

QString withoutDots(const QString& name)
{
    return name.endsWith(several) ? name.chopped(several.size()) : name;
}

QString meaningOf(const QString& positional, const QString& command)
{
    const QString name = withoutDots(positional);
    if (name == QLatin1String("PLAN"))
        return QStringLiteral("Identifier of the plan; \"kvplan plans\" lists them.");
    if (name == QLatin1String("NODE"))
        return QStringLiteral("Identifier of the task; \"kvplan nodes\" lists them.");
    if (name == QLatin1String("FIELD=VALUE"))
        return QStringLiteral("Field of the task and what it becomes.");
    if (name == QLatin1String("NAME=WIDTH"))
        return QStringLiteral("Column and what its width becomes.");
    if (name == QLatin1String("STATE=COLOUR"))
        return QStringLiteral("State, by number or meaning, and its colour, as in 3=#ff0000.");
    if (name == QLatin1String("SETTING=VALUE"))
        return QStringLiteral("Setting of the simulation and what it becomes.");
    if (name == QLatin1String("KEY"))
        return QStringLiteral("Key of the setting.");
    if (name == QLatin1String("JSON"))
        return QStringLiteral("What it becomes, as JSON.");
    if (name == QLatin1String("OUTPUT"))
        return QStringLiteral("Folder of the frames, or file of the picture.");
    if (command == QLatin1String("save"))
        return QStringLiteral("Tasks as JSON; \"-\" is the standard input.");
    if (name == QLatin1String("NAME"))
        return QStringLiteral("Name of the plan.");
    return QStringLiteral("File in exchange JSON.");
}

} // namespace

Arguments::Arguments(const QString& command, const QString& summary, const QString& usage)
    : m_command(command)
    , m_usage(usage.split(QLatin1Char(' '), Qt::SkipEmptyParts))
{
    m_parser.setApplicationDescription(summary);
    for (const QString& name : qAsConst(m_usage))
        m_parser.addPositionalArgument(name, meaningOf(name, command));
}

bool Arguments::read(const QStringList& arguments, int positionalCount)
{
    addSharedOptions();
    if (!m_parser.parse(QStringList(QStringLiteral("kvplan %1").arg(m_command)) + arguments))
        return refuse(parserFault());
    if (isSet("help")) {
        // The parser knows the program's path only; people type its name and the command.
        QString help = m_parser.helpText();
        const int begin = help.indexOf(QLatin1Char(' ')) + 1;
        help.replace(begin, help.indexOf(QLatin1String("[options]")) - begin,
                     QStringLiteral("kvplan %1 ").arg(m_command));
        m_exitCode = say(help);
        return false;
    }
    return checkPositionals(positionalCount) && configure();
}

bool Arguments::checkPositionals(int count)
{
    const QStringList positional = m_parser.positionalArguments();
    const bool isOpen = !m_usage.isEmpty() && m_usage.last().endsWith(several);
    if (positional.size() > count && !isOpen)
        return refuse(QStringLiteral("unexpected argument \"%1\"").arg(positional.at(count)));
    for (int i = 0; i < qMax(count, positional.size()); ++i) {
        const QString name = withoutDots(m_usage.at(qMin(i, m_usage.size() - 1)));
        if (positional.value(i).isEmpty())
            return refuse(
                QStringLiteral("%1 is %2")
                    .arg(name, i < positional.size() ? QStringLiteral("empty") : QStringLiteral("missing")));
        const bool isPlan = name == QLatin1String("PLAN");
        if ((isPlan || name == QLatin1String("NODE")) && !isIdentifier(positional.at(i)))
            return refuse(
                QStringLiteral("\"%1\" is no %2 identifier")
                    .arg(positional.at(i), isPlan ? QStringLiteral("plan") : QStringLiteral("task")));
    }
    return true;
}

void Arguments::addSharedOptions()
{
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
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")},
    });
}

// The parser's sentence as the beginning of ours.
QString Arguments::parserFault() const
{
    QString fault = m_parser.errorText();
    if (fault.endsWith(QLatin1Char('.')))
        fault.chop(1);
    return fault.left(1).toLower() + fault.mid(1);
}

void Arguments::addOption(const char* name, const char* valueName, const char* description)
{
    m_parser.addOption(
        {QString::fromUtf8(name), QString::fromUtf8(description), QString::fromUtf8(valueName)});
}

void Arguments::addJsonOption()
{
    addOption("json", nullptr, "Write JSON for programs instead of text for people.");
}

bool Arguments::readNumber(const char* option, int lowest, int highest, int& number)
{
    return !isSet(option) ||
           readNumber(QStringLiteral("--") + QLatin1String(option), value(option), lowest, highest, number);
}

bool Arguments::readNumber(const QString& source, const QString& text, int lowest, int highest, int& number)
{
    bool isNumber = false;
    const int read = text.toInt(&isNumber);
    if (!isNumber || read < lowest || read > highest)
        return refuse(QStringLiteral("%1 takes a whole number from %2 to %3, not \"%4\"")
                          .arg(source)
                          .arg(lowest)
                          .arg(highest)
                          .arg(text));
    number = read;
    return true;
}

bool Arguments::readDay(const char* option, QDate& day)
{
    if (!isSet(option))
        return true;
    day = QDate::fromString(value(option), QStringLiteral("yyyy-MM-dd"));
    return day.isValid() || refuse(QStringLiteral("--%1 takes a day as in 2026-03-05, not \"%2\"")
                                       .arg(QLatin1String(option), value(option)));
}

bool Arguments::readDecimal(const char* option, double lowest, double highest, double& number)
{
    if (!isSet(option))
        return true;
    bool isNumber = false;
    const double read = value(option).toDouble(&isNumber);
    // Written so that what is no number at all is refused too.
    if (!isNumber || !(read >= lowest && read <= highest))
        return refuse(QStringLiteral("--%1 takes a number from %2 to %3, not \"%4\"")
                          .arg(QLatin1String(option))
                          .arg(lowest)
                          .arg(highest)
                          .arg(value(option)));
    number = read;
    return true;
}

bool Arguments::readMoment(const char* option, QDateTime& moment)
{
    if (!isSet(option))
        return true;
    const QString text = value(option);
    return (!text.isEmpty() && fromJson(text, moment)) ||
           refuse(QStringLiteral("--%1 takes a date as in 2026-03-05 or 2026-03-05T08:00, not \"%2\"")
                      .arg(QLatin1String(option), text));
}

bool Arguments::checkIdentifier(const char* option)
{
    const QString id = value(option);
    return (!id.isEmpty() && isIdentifier(id)) ||
           refuse(QStringLiteral("--%1 takes an identifier, not \"%2\"").arg(QLatin1String(option), id));
}

bool Arguments::readPeriod(bool& allTime, QDateTime& start, QDateTime& end)
{
    QDate from(1970, 1, 1);
    QDate to(9999, 12, 30); // the day after it is the last that the date text can hold
    if (!readDay("from", from) || !readDay("to", to))
        return false;
    if (to < from)
        return refuse(QStringLiteral("--to %1 is before --from %2")
                          .arg(to.toString(Qt::ISODate), from.toString(Qt::ISODate)));
    allTime = !isSet("from") && !isSet("to");
    start = from.startOfDay();
    end = to.startOfDay();
    return true;
}

bool Arguments::needService()
{
    const QString base = KvBaseApi::GetInstance().getBaseApi();
    if (base.isEmpty())
        return refuse(QStringLiteral("no server: give --server or set KV_BASE_API"));
    const QUrl address(base);
    if (!address.isValid() || address.host().isEmpty() || address.hasQuery() || address.hasFragment() ||
        (address.scheme() != QLatin1String("http") && address.scheme() != QLatin1String("https")))
        return refuse(QStringLiteral("\"%1\" is no server address; one looks like http://127.0.0.1:8700/")
                          .arg(withoutSecrets(base)));
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
    return configureTimeout() && configureToken();
}

bool Arguments::configureTimeout()
{
    const QString name = QStringLiteral("KV_NETWORK_TIMEOUT_MS");
    const QString environment = qEnvironmentVariable("KV_NETWORK_TIMEOUT_MS").trimmed();
    const int longest = std::numeric_limits<int>::max();
    int milliseconds = 0;
    if (isSet("timeout") ? !readNumber("timeout", 1, longest, milliseconds)
                         : !environment.isEmpty() && !readNumber(name, environment, 1, longest, milliseconds))
        return false;
    if (milliseconds > 0)
        NetworkManager::instance().setTimeout(milliseconds);
    return true;
}

// A token never stands on the command line, where every user of the machine could read it.
bool Arguments::configureToken()
{
    if (!isSet("token-file"))
        return isToken(qgetenv("KV_ACCESS_TOKEN").trimmed()) ||
               refuse(QStringLiteral("KV_ACCESS_TOKEN holds a token that cannot be one"));
    QFile file(value("token-file"));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(
            QStringLiteral("cannot read the token file \"%1\": %2").arg(file.fileName(), file.errorString()));
    const QByteArray firstLine = file.readLine(longestToken);
    const bool isWhole = firstLine.endsWith('\n') || file.atEnd();
    const QByteArray token = firstLine.trimmed();
    if (token.isEmpty())
        return refuse(QStringLiteral("the token file \"%1\" has an empty first line").arg(file.fileName()));
    if (!isWhole || !isToken(token))
        return refuse(
            QStringLiteral("the token file \"%1\" holds a token that cannot be one").arg(file.fileName()));
    NetworkManager::instance().setAccessToken(QString::fromLatin1(token));
    return true;
}
