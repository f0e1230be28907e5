#include "TlsFiles.h"

#include "../Failure.h"

#include <QFile>

#include <asio/ssl/context.hpp>

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

namespace PlanService {

namespace {

/// Why a file could not be opened; empty when it can be.
QString openingTroubleOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString() : file.errorString();
}

QString reasonOf(const asio::error_code& error, const QString& path)
{
    const QString trouble = openingTroubleOf(path);
    return trouble.isEmpty() ? QString::fromStdString(error.message()) : trouble;
}

} // namespace

std::shared_ptr<asio::ssl::context> tlsFrom(const TlsFiles& files)
{
    auto tls = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
    SSL_CTX* const context = tls->native_handle();
    // What is older has known holes; a client that renegotiates makes the service work for nothing.
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_options(context,
                        SSL_OP_NO_COMPRESSION | SSL_OP_NO_RENEGOTIATION | SSL_OP_CIPHER_SERVER_PREFERENCE);
    // A key with a password would have the service wait for somebody at the terminal.
    asio::error_code error;
    tls->set_password_callback(
        [](std::size_t, asio::ssl::context::password_purpose) { return std::string(); }, error);
    tls->use_certificate_chain_file(QFile::encodeName(files.certificate).toStdString(), error);
    if (error) {
        throw Failure(
            QStringLiteral("cannot use the certificate '%1': %2; it has to be a file in PEM form with "
                           "the certificate first")
                .arg(files.certificate, reasonOf(error, files.certificate)));
    }
    tls->use_private_key_file(QFile::encodeName(files.key).toStdString(), asio::ssl::context::pem, error);
    if (error && ERR_GET_REASON(static_cast<unsigned long>(error.value())) == X509_R_KEY_VALUES_MISMATCH) {
        throw Failure(
            QStringLiteral("the key '%1' is not that of the certificate '%2'; name the two that belong "
                           "together")
                .arg(files.key, files.certificate));
    }
    if (error) {
        throw Failure(QStringLiteral("cannot use the key '%1': %2; it has to be a file in PEM form without a "
                                     "password")
                          .arg(files.key, reasonOf(error, files.key)));
    }
    return tls;
}

QString complaintAbout(asio::ssl::context& tls, const TlsFiles& files)
{
    const X509* const certificate = SSL_CTX_get0_certificate(tls.native_handle());
    if (X509_cmp_current_time(X509_get0_notAfter(certificate)) < 0) {
        return QStringLiteral("the certificate '%1' has expired, clients will refuse it; get a new one")
            .arg(files.certificate);
    }
    if (X509_cmp_current_time(X509_get0_notBefore(certificate)) > 0) {
        return QStringLiteral("the certificate '%1' is not good yet, clients will refuse it; check the clock")
            .arg(files.certificate);
    }
    return QString();
}

} // namespace PlanService
