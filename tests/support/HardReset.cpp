#include "HardReset.h"

#include <QtNetwork/QAbstractSocket>

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

namespace KvTest {

void resetHard(QAbstractSocket& socket)
{
    // Closing with a linger time of zero is what makes the system send RST instead of FIN.
    struct linger lingering = {};
    lingering.l_onoff = 1;
    lingering.l_linger = 0;
#ifdef Q_OS_WIN
    ::setsockopt(static_cast<SOCKET>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<const char*>(&lingering), sizeof lingering);
#else
    ::setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &lingering,
                 sizeof lingering);
#endif
    socket.abort();
}

} // namespace KvTest
