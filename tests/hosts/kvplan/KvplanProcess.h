#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QStringList>

namespace KvTest {

/// What a run of kvplan came to.
struct KvplanRun
{
    int exitCode = -1; ///< -1: it did not start, crashed or did not end in time
    QByteArray output;
    QByteArray errors;

    QString text() const { return QString::fromUtf8(output); }
    QString error() const { return QString::fromUtf8(errors); }
    QJsonObject object() const; ///< the output as JSON; empty when it is none or of the other kind
    QJsonArray array() const;

    /// What is wrong with a failure: it is to end with @p code, one line that begins with "kvplan: " on the
    /// standard error stream and nothing on the standard output. Empty when all is as it should be.
    QString faultOfFailure(int code) const;
};

/// A command line as its words: "show p1 --rows 2" as four.
QStringList words(const char* line);

/// A text of a record; empty when there is none of that name.
inline QString textOf(const QJsonValue& record, const char* field)
{
    return record.toObject().value(QLatin1String(field)).toString();
}

inline QString utf8(const char* text)
{
    return QString::fromUtf8(text);
}

/// The built kvplan, with what a caller can give it. A run handles events of this thread meanwhile, so that a
/// server of the test can answer.
class Kvplan
{
public:
    /// As called from a shell in which nothing of it is configured but @p server, when that is not empty.
    explicit Kvplan(const QString& server = QString());

    /// An environment variable; a null @p value takes it away.
    void setEnvironment(const QString& name, const QString& value);
    /// What comes on the standard input; without it that is at its end at once.
    void setInput(const QByteArray& input) { m_input = input; }
    /// A file that the output goes to instead of coming back.
    void setOutputFile(const QString& path) { m_outputFile = path; }

    KvplanRun run(const QStringList& arguments) const;

    /// The program called by a shell, as in `"$0" "$@" >&-`.
    KvplanRun runInShell(const QString& line, const QStringList& arguments) const;

    /// All three streams on a terminal of @p columns; what stands on it comes back as the output, with plain
    /// line ends.
    KvplanRun runOnTerminal(const QStringList& arguments, int columns) const;

    /// Path of the built program.
    static QString program();

private:
    KvplanRun finish(QProcess& process) const;

    QProcessEnvironment m_environment;
    QByteArray m_input;
    QString m_outputFile;
};

} // namespace KvTest
