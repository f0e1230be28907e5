#include "SqlWords.h"

namespace PlanService {

namespace {

bool isLetter(QChar c)
{
    return c >= QLatin1Char('a') && c <= QLatin1Char('z');
}

QString filledIn(QString meaning, const QString& argument)
{
    if (!meaning.contains(QLatin1String("%2"))) {
        return meaning.replace(QLatin1String("%1"), argument);
    }
    const int point = argument.indexOf(QLatin1Char('.')) + 1;
    return meaning.replace(QLatin1String("%1"), argument.left(point))
        .replace(QLatin1String("%2"), argument.mid(point));
}

} // namespace

QString inWords(const QString& sql, const SqlWords& words)
{
    QString text;
    text.reserve(sql.size() * 2);
    int done = 0;
    for (int open = sql.indexOf(QLatin1Char('{')); open >= 0;
         open = sql.indexOf(QLatin1Char('{'), open + 1)) {
        int end = open + 1;
        while (end < sql.size() && isLetter(sql.at(end))) {
            ++end;
        }
        const auto meaning = words.constFind(sql.mid(open + 1, end - open - 1));
        if (meaning == words.constEnd()) {
            continue; // JSON text has braces of its own
        }
        const int close = sql.indexOf(QLatin1Char('}'), end);
        text += sql.midRef(done, open - done) + filledIn(*meaning, sql.mid(end, close - end).trimmed());
        done = close + 1;
    }
    return text + sql.midRef(done);
}

} // namespace PlanService
