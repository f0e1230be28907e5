#include "Question.h"

#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

bool answersComeFromTerminal()
{
#ifdef Q_OS_UNIX
    return isatty(STDIN_FILENO);
#else
    return true;
#endif
}

} // namespace

bool agrees(const QString& question)
{
    const QByteArray prompt = question.toUtf8() + " [y/N] ";
    std::fwrite(prompt.constData(), 1, size_t(prompt.size()), stderr);
    char answer[16] = {};
    const bool isAnswered = std::fgets(answer, sizeof answer, stdin);
    if (!isAnswered || !answersComeFromTerminal())
        std::fputc('\n', stderr); // what comes next begins a line all the same
    const QByteArray word = QByteArray(answer).trimmed().toLower();
    return isAnswered && (word == "y" || word == "yes");
}
