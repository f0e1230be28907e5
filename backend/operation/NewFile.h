#pragma once

#include <QString>
#include <QTemporaryFile>

namespace PlanService {

enum class Existing
{
    Keep,    ///< a file that is there already is an error
    Replace, ///< it gives way, at once and only to a file that is whole
};

/// A file that is written beside its place and put there whole or not at all. Its owner alone may read it.
class NewFile
{
public:
    /// Creates the file beside @p path. Throws Failure when it cannot be, or when @p path is taken.
    NewFile(const QString& path, Existing existing);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    /// Removes what was not published. A process that is killed leaves it, under a name that ends in ".part".
    ~NewFile() = default;

    const QString& path() const { return m_path; }
    /// Where to write meanwhile; an empty file is there.
    QString writingPath() const { return m_file.fileName(); }

    /// Brings the file to the disk and then to its place; afterwards it outlasts a power failure. Throws
    /// Failure, also when somebody has taken the place meanwhile, and removes the file then.
    void publish();

private:
    QString m_path;
    Existing m_existing;
    QTemporaryFile m_file;
};

/// Whether both paths lead to the same file.
bool isSameFile(const QString& one, const QString& other);

} // namespace PlanService
