#include "Progress.h"

#include "TextTable.h"

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

Progress::Progress()
    : m_isTerminal(errorsGoToTerminal())
{
    m_clock.start();
}

Progress::~Progress()
{
    if (m_cells > 0)
        write(QString());
}

void Progress::show(const QString& step, qint64 done, qint64 total)
{
    if (!m_isTerminal || m_clock.elapsed() < m_nextAt)
        return;
    m_nextAt = m_clock.elapsed() + 100;
    write(total > 0 ? QStringLiteral("%1: %2 %").arg(step).arg(100 * done / total)
                    : step + QStringLiteral(" …"));
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
