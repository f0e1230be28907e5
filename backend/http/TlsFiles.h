#pragma once

#include <QString>

#include <memory>

namespace asio {
namespace ssl {
class context;
}
} // namespace asio

namespace PlanService {

/// Where the service's certificate and its private key are. Both empty: it speaks plain HTTP.
struct TlsFiles
{
    QString certificate; ///< PEM: the certificate, then those of its issuers up to, but not necessarily with,
                         ///< the root
    QString key;         ///< PEM, without a password
};

/// What connections are secured with: TLS 1.2 or newer. Reads the files. Throws Failure with one line that
/// names the file at fault.
std::shared_ptr<asio::ssl::context> tlsFrom(const TlsFiles& files);

/// What is to be said of a certificate that clients will refuse, as it is too old or too new; empty: nothing.
QString complaintAbout(asio::ssl::context& tls, const TlsFiles& files);

} // namespace PlanService
