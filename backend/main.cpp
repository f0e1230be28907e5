#include "commands/Commands.h"

#include <QCoreApplication>

#include <sqlite3.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>

using namespace PlanService;

namespace {

void complain(const QString& where, const QString& message)
{
    std::fprintf(stderr, "%s: %s\n", where.toUtf8().constData(), message.simplified().toUtf8().constData());
}

QString overview()
{
    QString text =
        QStringLiteral("Usage: planservice COMMAND [options]\n\nThe schedule service.\n\nCommands:\n");
    for (const Command& command : commands()) {
        text += QStringLiteral("  %1 %2\n").arg(command.name, -8).arg(command.summary);
    }
    return text + QStringLiteral("\nplanservice COMMAND --help tells more; --version prints the version.\n");
}

// Also what a report of a fault should name: how this copy was built, and what it runs on.
QString versionText()
{
    return QStringLiteral("planservice " PLANSERVICE_VERSION "\nQt %1, built with " QT_VERSION_STR
                          "\nSQLite %2\n" KV_BUILD_FACTS "\n")
        .arg(QLatin1String(qVersion()), QLatin1String(sqlite3_libversion()));
}

int run(const QStringList& arguments)
{
    const QString first = arguments.value(1);
    if (first == QLatin1String("--help")) {
        print(overview());
        return 0;
    }
    if (first == QLatin1String("--version")) {
        print(versionText());
        return 0;
    }
    for (const Command& command : commands()) {
        if (command.name != first) {
            continue;
        }
        try {
            return command.run(arguments.mid(2));
        } catch (const UsageError& error) {
            complain(QStringLiteral("planservice ") + first, error.message());
            return 2;
        } catch (const std::exception& error) {
            complain(QStringLiteral("planservice ") + first, QString::fromUtf8(error.what()));
            return 1;
        }
    }
    complain(QStringLiteral("planservice"),
             first.isEmpty() ? QStringLiteral("a command is needed; see planservice --help")
                             : QStringLiteral("'%1' is no command; see planservice --help").arg(first));
    return 2;
}

/// Qt complains of each statement that went down with its connection to PostgreSQL; the log has told it once.
void passOn(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (!message.startsWith(QLatin1String("Unable to free statement"))) {
        std::fprintf(stderr, "%s\n", qFormatLogMessage(type, context, message).toLocal8Bit().constData());
    }
}

/// Takes a password, and all options, out of what other users of the machine see of this process. They were
/// read before.
void hideSecrets(char* argument)
{
    char* address = std::strstr(argument, "postgres");
    char* server = address == nullptr ? nullptr : std::strstr(address, "://");
    if (server == nullptr) {
        return;
    }
    server += 3;
    char* const end = server + std::strlen(server);
    char* const path = server + std::strcspn(server, "/?#");
    char* const host =
        std::find(std::make_reverse_iterator(path), std::make_reverse_iterator(server), '@').base();
    char* const password = std::find(server, host, ':');
    if (password != host) {
        std::fill(password + 1, host - 1, '*');
    }
    char* const options = std::find(path, end, '?');
    std::fill(options == end ? end : options + 1, end, '*');
}

} // namespace

int main(int argc, char** argv)
{
#ifdef SIGXFSZ
    // A file that may not grow is as good as a full disk: an error to tell, no reason to end without a word.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    qInstallMessageHandler(passOn);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("planservice"));
    const QStringList arguments = QCoreApplication::arguments();
    std::for_each(argv + 1, argv + argc, hideSecrets);
    return run(arguments);
}
