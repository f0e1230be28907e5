#include <support/TlsIdentity.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QSsl>

namespace KvTest {

TlsIdentity TlsIdentity::selfSigned(const QString& commonName)
{
    const QTemporaryDir directory;
    const QString keyPath = directory.filePath(QStringLiteral("key.pem"));
    const QString certificatePath = directory.filePath(QStringLiteral("certificate.pem"));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("rsa:2048"), QStringLiteral("-nodes"), QStringLiteral("-batch"),
                   QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
                   QStringLiteral("/CN=") + commonName, QStringLiteral("-keyout"), keyPath,
                   QStringLiteral("-out"), certificatePath});
    const bool isMade = openssl.waitForFinished() && openssl.exitCode() == 0;
    QFile keyFile(keyPath);
    QFile certificateFile(certificatePath);
    TlsIdentity identity;
    if (isMade && keyFile.open(QIODevice::ReadOnly) && certificateFile.open(QIODevice::ReadOnly)) {
        identity.key = QSslKey(&keyFile, QSsl::Rsa);
        identity.certificate = QSslCertificate(&certificateFile);
    }
    return identity;
}

} // namespace KvTest
