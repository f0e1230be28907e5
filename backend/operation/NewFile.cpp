#include "NewFile.h"

#include "../Failure.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace PlanService {

namespace {

[[noreturn]] void refuseTaken(const QString& path)
{
    throw Failure(
        QStringLiteral("'%1' is there already; name another file, or replace it with --force").arg(path));
}

[[noreturn]] void failToWrite(const QString& path, const QString& reason)
{
    throw Failure(
        QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to").arg(path, reason));
}

#ifdef Q_OS_UNIX
/// Puts the file, or a folder's list of files, on the disk.
bool flush(const QString& path, int flags)
{
    const int handle = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    const bool done = handle >= 0 && ::fsync(handle) == 0;
    const int reason = errno;
    if (handle >= 0) {
        ::close(handle);
    }
    errno = reason;
    return done;
}
#endif

} // namespace

NewFile::NewFile(const QString& path, Existing existing)
    : m_path(path)
    , m_existing(existing)
    , m_file(path + QStringLiteral(".XXXXXX.part"))
{
    const QFileInfo info(path);
    if (info.isDir()) {
        throw Failure(QStringLiteral("'%1' is a folder; name a file in it").arg(path));
    }
    if (info.exists() && existing == Existing::Keep) {
        refuseTaken(path);
    }
    if (info.exists() && !info.isFile()) {
        throw Failure(
            QStringLiteral("'%1' is no file that another could replace; name another one").arg(path));
    }
    if (!m_file.open()) {
        failToWrite(path, m_file.errorString());
    }
    m_file.close();
}

void NewFile::publish()
{
#ifdef Q_OS_UNIX
    const QByteArray from = QFile::encodeName(writingPath());
    const QByteArray to = QFile::encodeName(m_path);
    if (!flush(writingPath(), O_RDONLY)) {
        failToWrite(m_path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    if (m_existing == Existing::Keep) {
        // A link, unlike a new name, never takes another file's place.
        if (::link(from.constData(), to.constData()) == 0) {
            m_file.remove();
        } else if (errno == EEXIST || QFileInfo::exists(m_path)) {
            refuseTaken(m_path);
        } else if (std::rename(from.constData(), to.constData()) != 0) {
            failToWrite(m_path, QString::fromLocal8Bit(std::strerror(errno)));
        }
    } else if (std::rename(from.constData(), to.constData()) != 0) {
        failToWrite(m_path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    flush(QFileInfo(m_path).absolutePath(), O_RDONLY | O_DIRECTORY);
#else
    if (m_existing == Existing::Replace) {
        QFile::remove(m_path);
    }
    if (!QFile::rename(writingPath(), m_path)) {
        refuseTaken(m_path);
    }
#endif
    m_file.setAutoRemove(false);
}

bool isSameFile(const QString& one, const QString& other)
{
    const QString path = QFileInfo(one).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(other).canonicalFilePath();
}

} // namespace PlanService
