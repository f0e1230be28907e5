#pragma once

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

namespace KvTest {

/// A certificate and its key, as files.
struct TlsFilePair
{
    QString certificate;
    QString key;
};

/// An authority of a test's own, made with the openssl command line in a folder that lasts as long as it
/// does. Each call blocks for some 0.1 s.
class TlsAuthority
{
public:
    TlsAuthority();

    /// The authority's certificate; empty when openssl is missing.
    QString file() const { return m_file; }

    /// A certificate for @p name, as "IP:127.0.0.1" or "DNS:schedule.example", good for so many days from
    /// now; with -1 it has expired. Both empty on failure.
    TlsFilePair issue(const QString& name, int days = 2);

    /// A path in the folder.
    QString filePath(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
    QString m_file;
    int m_issued = 0;
};

} // namespace KvTest
