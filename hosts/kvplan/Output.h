#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// What the program tells its caller.
enum ExitCode
{
    Success = 0,
    RequestFailed = 1,
    WrongUsage = 2,
    OutputFailed = 3,
    BadData = 4,
    NotAgreed = 5,
    CannotDraw = 6,
    Canceled = 130, ///< by Ctrl+C, the number that shells give that
};

/// Keeps the numbers of the three standard streams taken. To be called before anything else is opened: with a
/// stream closed by the caller, the next file or socket would get its number, and the output with it.
void holdStandardStreams();

/// Writes "kvplan: " and @p message, as one line, to the standard error stream.
void complain(const QString& message);

/// Writes @p text to the standard output stream, in UTF-8.
/// @return Success, or OutputFailed when it could not be written whole; complains then, unless it was the
/// reader who has seen enough.
ExitCode say(const QString& text);
ExitCode say(const QByteArray& text);

/// Cells of a line of the terminal on standard output; 0 when that is a file or a pipe.
int terminalWidth();
