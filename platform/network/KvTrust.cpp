#include "KvTrust.h"

#include <QtNetwork/QNetworkRequest>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

namespace {

QList<QSslCertificate> authoritiesFromEnvironment()
{
    const QString path = qEnvironmentVariable("KV_CA_FILE");
    return path.isEmpty() ? QList<QSslCertificate>() : QSslCertificate::fromPath(path);
}

} // namespace

void KvTrust::apply(QNetworkRequest& request)
{
    // Never destroyed: static objects of hosts may still call.
    static const QList<QSslCertificate>* const own = new QList<QSslCertificate>(authoritiesFromEnvironment());
    if (own->isEmpty())
        return;
    static const QList<QSslCertificate>* const system =
        new QList<QSslCertificate>(QSslConfiguration::systemCaCertificates());
    // Named in full: a list of one's own ends the loading of the system's on demand.
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    const QList<QSslCertificate> usual = configuration.caCertificates();
    configuration.setCaCertificates((usual.isEmpty() ? *system : usual) + *own);
    request.setSslConfiguration(configuration);
}
