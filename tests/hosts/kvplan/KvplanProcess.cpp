#include "KvplanProcess.h"

#include <QtCore/QEventLoop>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimer>

#ifdef Q_OS_UNIX
#include <QtCore/QSocketNotifier>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace KvTest {

namespace {

constexpr int longestRun = 60000; // milliseconds

} // namespace

QJsonObject KvplanRun::object() const
{
    return QJsonDocument::fromJson(output).object();
}

QJsonArray KvplanRun::array() const
{
    return QJsonDocument::fromJson(output).array();
}

QString KvplanRun::faultOfFailure(int code) const
{
    if (exitCode != code)
        return QStringLiteral("exit code %1; ").arg(exitCode) + error();
    if (!errors.startsWith("kvplan: ") || errors.count('\n') != 1 || !errors.endsWith('\n'))
        return QStringLiteral("no single line of kvplan: ") + error();
    if (!output.isEmpty())
        return QStringLiteral("output: ") + text();
    return QString();
}

QStringList words(const char* line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '));
}

Kvplan::Kvplan(const QString& server)
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const char* name : {"KV_BASE_API", "KV_PROJECT_ID", "KV_SETTINGS_DIR", "KV_ACCESS_TOKEN",
                             "KV_CA_FILE", "KV_NETWORK_TIMEOUT_MS"})
        m_environment.remove(QLatin1String(name));
    if (!server.isEmpty())
        m_environment.insert(QStringLiteral("KV_BASE_API"), server);
}

void Kvplan::setEnvironment(const QString& name, const QString& value)
{
    if (value.isNull())
        m_environment.remove(name);
    else
        m_environment.insert(name, value);
}

QString Kvplan::program()
{
    return QStringLiteral(KVPLAN_PROGRAM);
}

KvplanRun Kvplan::run(const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    if (!m_outputFile.isEmpty())
        process.setStandardOutputFile(m_outputFile, QIODevice::Append);
    process.start(program(), arguments);
    process.write(m_input);
    process.closeWriteChannel();
    return finish(process);
}

KvplanRun Kvplan::runInShell(const QString& line, const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(QStringLiteral("/bin/sh"), QStringList{QStringLiteral("-c"), line, program()} + arguments);
    process.closeWriteChannel();
    return finish(process);
}

KvplanRun Kvplan::finish(QProcess& process) const
{
    QEventLoop loop;
    QObject::connect(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &loop,
                     &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            loop.quit();
    });
    QTimer::singleShot(longestRun, &loop, &QEventLoop::quit);
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    KvplanRun run;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        run.errors = "did not end\n";
    } else if (process.exitStatus() == QProcess::NormalExit && process.error() != QProcess::FailedToStart) {
        run.exitCode = process.exitCode();
    }
    if (!process.isReadable()) // all went to a terminal
        return run;
    run.output = process.readAllStandardOutput();
    run.errors += process.readAllStandardError();
    return run;
}

#ifdef Q_OS_UNIX
KvplanRun Kvplan::runOnTerminal(const QStringList& arguments, int columns) const
{
    const int screen = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (screen < 0 || grantpt(screen) != 0 || unlockpt(screen) != 0)
        return {};
    const QString terminal = QString::fromLocal8Bit(ptsname(screen));
    // Kept open here, so that the terminal and its size outlast the moment before the program opens it.
    const int own = open(terminal.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    winsize size = {};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = 24;
    ioctl(own, TIOCSWINSZ, &size);
    termios settings = {};
    tcgetattr(own, &settings);
    settings.c_lflag &= ~tcflag_t(ECHO);
    tcsetattr(own, TCSANOW, &settings);
    fcntl(screen, F_SETFL, O_NONBLOCK);
    if (!m_input.isEmpty() && write(screen, m_input.constData(), size_t(m_input.size())) < 0)
        return {};

    QByteArray shown;
    const auto readScreen = [&] {
        char piece[4096];
        for (ssize_t length = 0; (length = read(screen, piece, sizeof piece)) > 0;)
            shown.append(piece, int(length));
    };
    QSocketNotifier notifier(screen, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, readScreen);
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setStandardInputFile(terminal);
    process.setStandardOutputFile(terminal);
    process.setStandardErrorFile(terminal);
    process.start(program(), arguments);
    KvplanRun run = finish(process);
    notifier.setEnabled(false);
    // What was written comes through in order, though not at once: all is here when a last mark is.
    static const QByteArray mark = QByteArrayLiteral("\x03the end\x03");
    pollfd readable = {screen, POLLIN, 0};
    if (write(own, mark.constData(), size_t(mark.size())) != mark.size())
        run.exitCode = -1;
    do
        readScreen();
    while (!shown.endsWith(mark) && poll(&readable, 1, longestRun) > 0);
    if (shown.endsWith(mark))
        shown.chop(mark.size());
    else
        run.exitCode = -1;
    close(own);
    close(screen);
    run.output = shown.replace("\r\n", "\n");
    return run;
}
#endif

} // namespace KvTest
