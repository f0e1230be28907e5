#pragma once

class QNetworkRequest;

namespace KvTrust {

/// Has the request trust the authorities in the PEM file that KV_CA_FILE names, beside those it trusts
/// anyway. The variable is read once; without it, or when the file holds no certificate, nothing changes, so
/// that connections fail as they would without it.
void apply(QNetworkRequest& request);

} // namespace KvTrust
