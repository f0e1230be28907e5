#include "ModelReader.h"

#include "ModelFile.h"
#include "ReaderExit.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

ModelReader::ModelReader(QObject* parent)
    : QObject(parent)
    , m_program(programFor(QCoreApplication::applicationDirPath()))
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(longestMinutes * 60 * 1000);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        stop();
        Q_EMIT failed(tr("reading the model file %1 was given up after %2 minutes; export the model without "
                         "details that the schedule does not name")
                          .arg(QDir::toNativeSeparators(m_path))
                          .arg(longestMinutes));
    });
}

QString ModelReader::programFor(const QString& folder)
{
    return QDir::cleanPath(folder + QLatin1Char('/') + QStringLiteral(KV_MODEL_READER));
}

ModelReader::~ModelReader()
{
    stop();
}

void ModelReader::read(const QString& path)
{
    stop();
    m_path = path;
    const QString fault = ModelFile::fault(path);
    if (!fault.isEmpty()) {
        Q_EMIT failed(fault);
        return;
    }
    m_process = new QProcess(this);
    m_process->setStandardErrorFile(QProcess::nullDevice());
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &ModelReader::finish);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return; // finished() tells of the others
        stop();
        Q_EMIT failed(
            tr("the program %1, which reads model files, cannot be started; install planviewer again")
                .arg(QDir::toNativeSeparators(m_program)));
    });
    m_patience.start();
    m_process->start(m_program, {path});
}

void ModelReader::cancel()
{
    if (!m_process)
        return;
    stop();
    Q_EMIT canceled();
}

void ModelReader::stop()
{
    m_patience.stop();
    if (!m_process)
        return;
    QProcess* const process = m_process;
    m_process = nullptr;
    process->disconnect(this);
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    // Waits for the end of a program that is told to end at once; it holds nothing that would be lost.
    process->kill();
    process->waitForFinished();
    process->deleteLater();
}

void ModelReader::finish(int exitCode, QProcess::ExitStatus status)
{
    ModelData data;
    QString fault;
    if (status == QProcess::CrashExit)
        fault =
            tr("the model file %1 cannot be read: the importer failed at it; export the model again, as glTF "
               "2.0 or OBJ")
                .arg(QDir::toNativeSeparators(m_path));
    else if (exitCode != ReaderExit::Done)
        fault = faultOf(exitCode);
    else if (!readModelData(m_process->readAllStandardOutput(), data))
        fault = faultOf(ReaderExit::NotWritten);
    stop();
    if (fault.isEmpty())
        Q_EMIT done(data);
    else
        Q_EMIT failed(fault);
}

QString ModelReader::faultOf(int exitCode) const
{
    const QString name = QDir::toNativeSeparators(m_path);
    switch (exitCode) {
    case ReaderExit::NotAModel:
        return tr("the file %1 holds no building model that can be read; export the model again, as glTF 2.0 "
                  "or "
                  "OBJ")
            .arg(name);
    case ReaderExit::NoGeometry:
        return tr("the model file %1 holds no triangles; export the model with its geometry").arg(name);
    case ReaderExit::NoGraphics:
        return tr("the model file %1 cannot be read without OpenGL 3.2; use a desktop with a graphics driver "
                  "or "
                  "set LIBGL_ALWAYS_SOFTWARE=1")
            .arg(name);
    default:
        return tr("reading the model file %1 broke off; try again with fewer programs running").arg(name);
    }
}
