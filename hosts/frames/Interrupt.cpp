#include "Interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t isWanted = 0;

} // namespace

extern "C" {
static void takeSignal(int signal)
{
    isWanted = 1;
    std::signal(signal, SIG_DFL);
}
}

bool Interrupt::hasCome()
{
    return isWanted != 0;
}

Interrupt::Interrupt(QObject* parent)
    : QObject(parent)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        if (std::signal(signal, takeSignal) == SIG_IGN) // as of a program in the background
            std::signal(signal, SIG_IGN);
    }
    constexpr int interval = 50; // milliseconds; a handler may do nothing that wakes the loop up
    connect(&m_look, &QTimer::timeout, this, [this] {
        if (!isWanted)
            return;
        m_look.stop();
        Q_EMIT wanted();
    });
    m_look.start(interval);
}
