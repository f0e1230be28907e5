#pragma once

#include <QtCore/QtGlobal>

/// How long one request may take and how much it may bring. Every value is above 0: nothing waits for ever.
struct KvNetworkLimits
{
    static constexpr int defaultIdleMs = 30 * 1000;
    static constexpr int defaultTotalMs = 10 * 60 * 1000;
    static constexpr qint64 defaultReplyBytes = qint64(512) * 1024 * 1024;

    int idleMs = defaultIdleMs;   ///< longest time without a byte in either direction
    int totalMs = defaultTotalMs; ///< longest time from sending to the last byte
    qint64 replyBytes = defaultReplyBytes;

    /// The idle time of KV_NETWORK_TIMEOUT_MS; the default when that is unset, no number, or not above 0.
    static int idleMsFromEnvironment();
};
