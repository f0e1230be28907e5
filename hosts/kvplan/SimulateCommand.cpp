#include "SimulateCommand.h"

#include "Output.h"
#include "SimulateOptions.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#ifdef Q_OS_UNIX
#include <unistd.h>

#include <vector>
#else
#include <QtCore/QProcess>
#endif

namespace {

#ifdef Q_OS_UNIX
// Only when that fails does it return. Streams, terminal and signals are the other program's from then on.
void become(const QString& program, const QStringList& arguments)
{
    std::vector<QByteArray> words{QFile::encodeName(program)};
    for (const QString& argument : arguments)
        words.push_back(argument.toLocal8Bit());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execv(pointers.front(), pointers.data());
}
#endif

int draw(const QString& program, const QStringList& arguments)
{
#ifdef Q_OS_UNIX
    become(program, arguments);
#else
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start(program, arguments);
    if (process.waitForStarted() && process.waitForFinished(-1))
        return process.exitCode();
#endif
    complain(QStringLiteral("the program \"%1\", which draws the simulation, cannot be started; install "
                            "planviewer")
                 .arg(QDir::toNativeSeparators(program)));
    return CannotDraw;
}

} // namespace

int runSimulate(const QStringList& arguments)
{
    SimulateOptions options;
    int exitCode = Success;
    if (!readSimulateOptions(arguments, options, exitCode))
        return exitCode;
    const QString program = QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                                            QStringLiteral(KV_FRAMES_PROGRAM));
    return draw(program, arguments);
}
