#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

/// Tells a waiting person how far long work is: one line on the standard error stream, rewritten in place.
/// Says nothing when that is no terminal, nor before half a second has passed. The line is gone when the
/// object is.
class Progress
{
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @p step in words, as in "checking tasks"; @p done of @p total, or 0 of 0 when nobody knows how many.
    void show(const QString& step, qint64 done = 0, qint64 total = 0);

private:
    void write(const QString& line);

    QElapsedTimer m_clock;
    qint64 m_nextAt = 500; // milliseconds
    int m_cells = 0;
    bool m_isTerminal;
};
