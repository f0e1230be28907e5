#include <support/TlsAuthority.h>

#include <QtCore/QProcess>

namespace KvTest {

namespace {

bool openssl(const QString& arguments)
{
    QProcess process;
    process.start(QStringLiteral("openssl"), QProcess::splitCommand(arguments));
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

QString newKey()
{
    return QStringLiteral("-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -batch");
}

} // namespace

TlsAuthority::TlsAuthority()
{
    const QString file = filePath(QStringLiteral("authority.pem"));
    if (openssl(QStringLiteral("req -x509 %1 -days 2 -subj \"/CN=Authority of a test\" -keyout %2 -out %3")
                    .arg(newKey(), filePath(QStringLiteral("authority.key")), file))) {
        m_file = file;
    }
}

TlsFilePair TlsAuthority::issue(const QString& name, int days)
{
    const QString stem = filePath(QString::number(++m_issued));
    const TlsFilePair pair{stem + QStringLiteral(".pem"), stem + QStringLiteral(".key")};
    const bool isIssued =
        openssl(QStringLiteral("req %1 -subj /CN=service -addext subjectAltName=%2 -keyout %3 -out %4.csr")
                    .arg(newKey(), name, pair.key, stem)) &&
        openssl(QStringLiteral("x509 -req -in %1.csr -CA %2 -CAkey %3 -CAcreateserial -copy_extensions copy "
                               "-days %4 -out %5")
                    .arg(stem, m_file, filePath(QStringLiteral("authority.key")))
                    .arg(days)
                    .arg(pair.certificate));
    return isIssued ? pair : TlsFilePair();
}

} // namespace KvTest
