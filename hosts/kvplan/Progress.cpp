#include "Progress.h"

#include "CellText.h"

#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

bool errorsGoToTerminal()
{
#ifdef Q_OS_UNIX
    return isatty(STDERR_FILENO);
#else
    return false;
#endif
}

} // namespace

Progress::Progress(const QString& step)
    : m_step(step)
    , m_isTerminal(errorsGoToTerminal())
{
    m_clock.start();
    if (!m_isTerminal)
        return;
    QObject::connect(&m_tick, &QTimer::timeout, &m_tick, [this] {
        const qint64 seconds = m_clock.elapsed() / 1000;
        write(seconds > 0 ? QStringLiteral("%1 … %2 s").arg(m_step).arg(seconds)
                          : m_step + QStringLiteral(" …"));
    });
    m_tick.start(500);
}

Progress::~Progress()
{
    if (m_cells > 0)
        write(QString());
}

void Progress::begin()
{
    if (m_isTerminal)
        write(m_step + QStringLiteral(" …"));
}

void Progress::show(qint64 done, qint64 total)
{
    if (!m_isTerminal || m_clock.elapsed() < m_nextAt)
        return;
    m_tick.stop(); // whose seconds would stand in turns with this
    m_nextAt = m_clock.elapsed() + 100;
    write(QStringLiteral("%1 … %2 %").arg(m_step).arg(total > 0 ? 100 * done / total : 100));
}

void Progress::write(const QString& line)
{
    const int cells = cellWidth(line);
    const QByteArray bytes =
        '\r' + line.toUtf8() + QByteArray(qMax(0, m_cells - cells), ' ') + (line.isEmpty() ? "\r" : "");
    m_cells = cells;
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}
