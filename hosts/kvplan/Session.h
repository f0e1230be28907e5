#pragma once

#include <KvNetwork/KvNetworkReport.h>

#include <QtCore/QObject>
#include <QtCore/QString>

/// Why the last request failed, in words for a person: what failed, with which value, and what to try.
///
/// The library answers with a flag alone; the network library's report tells the rest.
class Session : public QObject
{
    Q_OBJECT

public:
    Session();

    /// Whether a request failed since the object was made. Some operations of the library answer true all the
    /// same.
    bool hasFailed() const { return m_hasFailed; }

    /// One line; @p task says what was tried, as in "read the plan \"65f0\"".
    QString failure(const QString& task) const;

private:
    KvNetworkReport m_lastFailure;
    bool m_hasFailed = false;
};

/// Writes "kvplan: " and @p message to the standard error stream.
void complain(const QString& message);

/// Writes @p text to the standard output stream, in UTF-8.
/// @return false when it could not be written whole (disk full, reader gone).
bool say(const QString& text);
bool say(const QByteArray& text);

/// Cells of a line of the terminal on standard output; 0 when that is a file or a pipe.
int terminalWidth();

/// What the program tells its caller.
enum ExitCode
{
    Success = 0,
    RequestFailed = 1,
    WrongUsage = 2,
    OutputFailed = 3,
    BadData = 4,
    NotAgreed = 5,
};
