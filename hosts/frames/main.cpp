// planviewer-frames: what "kvplan simulate" becomes, with the same words behind it. A program of its own,
// because it needs a display server and the libraries that draw, and kvplan neither.
#include "PictureJob.h"

#include <GraphicsCheck.h>
#include <Translations.h>

#include <QtCore/QTextCodec>
#include <QtGui/QGuiApplication>

#include <cstdlib>

namespace {

// What Qt and graphics drivers say of themselves helps nobody here. The one thing that ends the program comes
// before anything else: that there is no display.
void takeMessage(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type != QtFatalMsg)
        return;
    complain(
        QStringLiteral("nothing can be drawn: there is no display server; run it in a desktop's session, "
                       "or set DISPLAY to a display such as Xvfb's"));
    std::_Exit(CannotDraw);
}

} // namespace

int main(int argc, char* argv[])
{
    holdStandardStreams();
#ifndef Q_OS_WIN
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    qInstallMessageHandler(takeMessage);
    QGuiApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kvplan"));
    setProgramsFolder(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                      QStringLiteral(KV_PROGRAMS_PATH));
    installTranslations();
    installProgramTranslations(QStringLiteral("planviewer"));

    SimulateOptions options;
    int exitCode = Success;
    if (!readSimulateOptions(QCoreApplication::arguments().mid(1), options, exitCode))
        return exitCode;
    if (!GraphicsCheck::fault().isEmpty()) {
        complain(GraphicsCheck::fault());
        return CannotDraw;
    }
    int result = -1;
    PictureJob job(options);
    QObject::connect(&job, &PictureJob::finished, &application, [&](int code) {
        result = code;
        QCoreApplication::quit();
    });
    job.start();
    if (result >= 0)
        return result;
    QCoreApplication::exec();
    return result;
}
