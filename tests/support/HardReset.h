#pragma once

class QAbstractSocket;

namespace KvTest {

/// Closes the connection so that the other side sees it reset, not ended.
void resetHard(QAbstractSocket& socket);

} // namespace KvTest
