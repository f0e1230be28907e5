#include "Output.h"

#include "CellText.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

void holdStandardStreams()
{
#ifdef Q_OS_UNIX
    // Opened the wrong way round, so that using a closed stream still fails.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
#endif
}

void complain(const QString& message)
{
    const QByteArray line = "kvplan: " + fitted(message, 0).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

ExitCode say(const QByteArray& text)
{
    errno = 0;
    if (std::fwrite(text.constData(), 1, size_t(text.size()), stdout) == size_t(text.size()) &&
        std::fflush(stdout) == 0)
        return Success;
    if (errno != EPIPE)
        complain(QStringLiteral("cannot write to the standard output: %1")
                     .arg(QString::fromLocal8Bit(std::strerror(errno))));
    return OutputFailed;
}

ExitCode say(const QString& text)
{
    return say(text.toUtf8());
}

int terminalWidth()
{
#ifdef Q_OS_UNIX
    winsize size = {};
    if (isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0)
        return size.ws_col > 0 ? size.ws_col : 80;
#endif
    return 0;
}
