#pragma once

#include <QString>

namespace PlanService {

/// Where the service is about to listen, and what protects it there.
struct Exposure
{
    QString address;
    bool hasTokens = false;
    bool hasTls = false;
    QString withoutTokens; ///< what the operator said to --without-tokens; empty: nothing
    QString withoutTls;    ///< to --without-tls
};

/// What has to be said to do without. Each names its consequence, so that nobody takes it from somewhere
/// without having read it.
QString withoutTokensPhrase();
QString withoutTlsPhrase();

/// Throws Failure when others than this machine could reach the service and tokens or TLS are missing, unless
/// their phrase was said. Throws it for anything else that was said, wherever it listens.
void refuseUnsafe(const Exposure& exposure);

} // namespace PlanService
