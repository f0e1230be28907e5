#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>
#include <QtCore/QTimer>

/// Tells a waiting person how far long work is: one line on the standard error stream, rewritten in place.
/// Says nothing when that is no terminal, nor, as a rule, before half a second has passed. The line is gone
/// when the object is; complain only then.
class Progress
{
public:
    /// @p step in words, as in "checking tasks". While events are handled, as during a request, the line
    /// tells the seconds by itself.
    explicit Progress(const QString& step);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// For work that can be expected to be long and handles no events: tells the step at once.
    void begin();

    /// Instead of the seconds, for work that handles no events or can be counted: call it often; @p done of
    /// @p total.
    void show(qint64 done, qint64 total);

private:
    void write(const QString& line);

    QString m_step;
    QElapsedTimer m_clock;
    QTimer m_tick;
    qint64 m_nextAt = 500; // milliseconds
    int m_cells = 0;
    bool m_isTerminal;
};
