#include "UrlText.h"

#include "Reply.h"

#include <QTextCodec>

namespace PlanService {

namespace {

int hexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

[[noreturn]] void malformed(const QString& why)
{
    throw ApiError(400, QStringLiteral("malformedUrl"), why);
}

} // namespace

QString percentDecoded(const QByteArray& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) != '%') {
            bytes.append(text.at(i));
            continue;
        }
        const int high = i + 2 < text.size() ? hexValue(text.at(i + 1)) : -1;
        const int low = i + 2 < text.size() ? hexValue(text.at(i + 2)) : -1;
        if (high < 0 || low < 0) {
            malformed(QStringLiteral("the URL holds a '%' that is not followed by two hex digits; "
                                     "a percent sign itself is written %25"));
        }
        bytes.append(static_cast<char>(high * 16 + low));
        i += 2;
    }
    if (bytes.contains('\0')) {
        malformed(QStringLiteral("the URL holds a null character"));
    }
    static QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString decoded = utf8->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0) {
        malformed(QStringLiteral("the URL is not UTF-8 once its percent escapes are decoded"));
    }
    return decoded;
}

UrlText parsedTarget(const QByteArray& target)
{
    if (!target.startsWith('/')) {
        malformed(QStringLiteral("the request target has to begin with '/'"));
    }
    UrlText url;
    const int queryAt = target.indexOf('?');
    const QByteArray path = pathOf(target).mid(1);
    const QList<QByteArray> segments = path.split('/');
    for (const QByteArray& segment : segments) {
        url.segments.append(percentDecoded(segment));
    }
    if (queryAt >= 0) {
        const QList<QByteArray> parameters = target.mid(queryAt + 1).split('&');
        for (const QByteArray& parameter : parameters) {
            if (parameter.isEmpty()) {
                continue;
            }
            const int equals = parameter.indexOf('=');
            const QByteArray name = equals < 0 ? parameter : parameter.left(equals);
            const QByteArray value = equals < 0 ? QByteArray() : parameter.mid(equals + 1);
            url.query.insert(percentDecoded(name), percentDecoded(value));
        }
    }
    return url;
}

QByteArray pathOf(const QByteArray& target)
{
    const int queryAt = target.indexOf('?');
    return queryAt < 0 ? target : target.left(queryAt);
}

} // namespace PlanService
