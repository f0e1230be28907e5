#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <sys/stat.h>

namespace KvTest {

/// A file as it is now: its bytes, and the inode and time that any write would change.
class FileState
{
public:
    explicit FileState(const QString& path)
    {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            m_bytes = file.readAll();
        struct stat state = {};
        if (stat(QFile::encodeName(path).constData(), &state) == 0) {
            m_inode = state.st_ino;
            m_seconds = state.st_mtim.tv_sec;
            m_nanoseconds = state.st_mtim.tv_nsec;
        }
    }

    const QByteArray& bytes() const { return m_bytes; }

    bool operator==(const FileState& other) const
    {
        return m_bytes == other.m_bytes && m_inode == other.m_inode && m_seconds == other.m_seconds &&
               m_nanoseconds == other.m_nanoseconds;
    }

private:
    QByteArray m_bytes;
    ino_t m_inode = 0;
    time_t m_seconds = 0;
    long m_nanoseconds = 0;
};

} // namespace KvTest
