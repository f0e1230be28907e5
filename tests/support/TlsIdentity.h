#pragma once

#include <QtCore/QString>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslKey>

namespace KvTest {

/// A certificate and its private key, made for one test run.
struct TlsIdentity
{
    QSslCertificate certificate;
    QSslKey key;

    bool isNull() const { return certificate.isNull() || key.isNull(); }

    /// Makes a self-signed certificate for @p commonName (host name or address) with the openssl command
    /// line, in a temporary directory that is removed again. Blocks for about 0.2 s. Null when openssl is
    /// missing.
    static TlsIdentity selfSigned(const QString& commonName);
};

} // namespace KvTest
