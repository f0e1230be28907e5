#include "KvNetworkLimits.h"

#include <QtCore/QByteArray>

int KvNetworkLimits::idleMsFromEnvironment()
{
    bool isNumber = false;
    const int milliseconds = qgetenv("KV_NETWORK_TIMEOUT_MS").trimmed().toInt(&isNumber);
    return isNumber && milliseconds > 0 ? milliseconds : defaultIdleMs;
}
