#include "Exposure.h"

#include "../Failure.h"

namespace PlanService {

namespace {

/// Any other way to write these counts as reachable: that is wrong on the safe side.
bool isLoopback(const QString& address)
{
    return address == QLatin1String("localhost") || address == QLatin1String("::1") ||
           address.startsWith(QLatin1String("127."));
}

void requirePhrase(const char* option, const QString& said, const QString& phrase)
{
    if (!said.isEmpty() && said != phrase) {
        throw Failure(QStringLiteral("--%1 takes the words '%2' alone, not '%3'")
                          .arg(QLatin1String(option), phrase, said));
    }
}

} // namespace

QString withoutTokensPhrase()
{
    return QStringLiteral("everybody-may-read-and-change-everything");
}

QString withoutTlsPhrase()
{
    return QStringLiteral("tokens-and-plans-are-readable-on-the-way");
}

void refuseUnsafe(const Exposure& exposure)
{
    requirePhrase("without-tokens", exposure.withoutTokens, withoutTokensPhrase());
    requirePhrase("without-tls", exposure.withoutTls, withoutTlsPhrase());
    if (isLoopback(exposure.address)) {
        return;
    }
    if (!exposure.hasTokens && exposure.withoutTokens.isEmpty()) {
        throw Failure(QStringLiteral(
                          "refusing to listen on %1 without tokens, everybody could read and change "
                          "everything; create one with planservice token create, or listen on 127.0.0.1; who "
                          "wants just this says --without-tokens %2")
                          .arg(exposure.address, withoutTokensPhrase()));
    }
    if (!exposure.hasTls && exposure.withoutTls.isEmpty()) {
        throw Failure(
            QStringLiteral("refusing to listen on %1 without TLS, tokens and plans could be read on the way; "
                           "give --tls-certificate and --tls-key, or listen on 127.0.0.1 behind a proxy that "
                           "does TLS; who wants just this says --without-tls %2")
                .arg(exposure.address, withoutTlsPhrase()));
    }
}

} // namespace PlanService
