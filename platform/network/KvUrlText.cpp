#include "KvUrlText.h"

namespace KvUrlText {

namespace {

bool isAsciiLetterOrDigit(ushort c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isHexDigit(QChar c)
{
    const ushort u = c.unicode();
    return (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
}

bool isEncodedAt(const QString& text, int at)
{
    return at + 2 < text.size() && isHexDigit(text.at(at + 1)) && isHexDigit(text.at(at + 2));
}

bool isOneOf(ushort c, const char* set)
{
    for (; *set != '\0'; ++set) {
        if (c == static_cast<uchar>(*set))
            return true;
    }
    return false;
}

// Sent as they are: the unreserved characters, '/' in a path, and in a query the punctuation of filters and
// dates, which would triple in length without any service reading it differently.
bool isPlainInPath(ushort c)
{
    return isAsciiLetterOrDigit(c) || isOneOf(c, "-._~/");
}

bool isPlainInQuery(ushort c)
{
    return isAsciiLetterOrDigit(c) || isOneOf(c, "-._~:,$/@!*()");
}

// Appends the character at @p at, two units long when it is a surrogate pair, percent-encoded as UTF-8.
// Returns the position after it.
int appendEncoded(QByteArray& out, const QString& text, int at)
{
    static const char hexDigits[] = "0123456789ABCDEF";
    const bool isPair =
        text.at(at).isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
    const int length = isPair ? 2 : 1;
    const QByteArray utf8 = QStringView(text).mid(at, length).toUtf8();
    for (const char byte : utf8) {
        const auto value = static_cast<uchar>(byte);
        out += '%';
        out += hexDigits[value >> 4];
        out += hexDigits[value & 0xf];
    }
    return at + length;
}

int appendPath(QByteArray& out, const QString& text, int at)
{
    while (at < text.size() && text.at(at) != QLatin1Char('?')) {
        const ushort c = text.at(at).unicode();
        if (isPlainInPath(c) || (c == '%' && isEncodedAt(text, at))) {
            out += static_cast<char>(c);
            ++at;
        } else {
            at = appendEncoded(out, text, at);
        }
    }
    return at;
}

// Where the JSON value beginning at @p begin ends, or begin itself when what stands there is no JSON value.
// It need not be valid JSON; it must close its brackets and strings, and have nothing outside strings that
// only a parameter of its own could have. A failed search ends at the next '&' or quotation mark at the
// latest, so that a text full of false beginnings still takes linear time.
int jsonEnd(const QString& text, int begin)
{
    int depth = 0;
    bool inString = false;
    for (int at = begin; at < text.size(); ++at) {
        const ushort c = text.at(at).unicode();
        if (inString) {
            if (c == '\\')
                ++at;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            if (--depth == 0)
                return at + 1;
        } else if (!isAsciiLetterOrDigit(c) && !isOneOf(c, ":,.+- \t\r\n%")) {
            return begin;
        }
    }
    return begin;
}

int appendJson(QByteArray& out, const QString& text, int at, int end)
{
    bool inString = false;
    bool isEscaped = false;
    while (at < end) {
        const ushort c = text.at(at).unicode();
        if (!inString) {
            inString = c == '"';
        } else if (isEscaped) {
            isEscaped = false;
        } else {
            isEscaped = c == '\\';
            inString = c != '"';
        }
        if (isPlainInQuery(c) || (c == '%' && !inString && isEncodedAt(text, at))) {
            out += static_cast<char>(c);
            ++at;
        } else {
            at = appendEncoded(out, text, at);
        }
    }
    return at;
}

void appendQuery(QByteArray& out, const QString& text, int at)
{
    bool isName = true;
    while (at < text.size()) {
        const ushort c = text.at(at).unicode();
        if (c == '&') {
            out += '&';
            ++at;
            isName = true;
        } else if (c == '=' && isName) {
            out += '=';
            ++at;
            isName = false;
            if (at < text.size() && (text.at(at) == QLatin1Char('{') || text.at(at) == QLatin1Char('[')))
                at = appendJson(out, text, at, jsonEnd(text, at));
        } else if (isPlainInQuery(c) || (c == '%' && isEncodedAt(text, at))) {
            out += static_cast<char>(c);
            ++at;
        } else {
            at = appendEncoded(out, text, at);
        }
    }
}

// Where the path begins: at the first '/' or '?' after "://", or at 0 in a text without an address.
int addressEnd(const QString& text)
{
    const int colon = text.indexOf(QLatin1String("://"));
    int at = colon < 0 ? 0 : colon + 3;
    if (colon >= 0) {
        while (at < text.size() && text.at(at) != QLatin1Char('/') && text.at(at) != QLatin1Char('?'))
            ++at;
    }
    return at;
}

} // namespace

QUrl finished(const QString& text)
{
    int at = addressEnd(text);
    QByteArray encoded = QStringView(text).left(at).toUtf8();
    encoded.reserve(text.size() + text.size() / 2);
    at = appendPath(encoded, text, at);
    if (at < text.size()) {
        encoded += '?';
        appendQuery(encoded, text, at + 1);
    }
    return QUrl::fromEncoded(encoded);
}

QString origin(const QUrl& url)
{
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

bool isSameOrigin(const QUrl& a, const QUrl& b)
{
    const auto usualPort = [](const QUrl& url) {
        return url.scheme() == QLatin1String("https") ? 443 : 80;
    };
    return a.scheme() == b.scheme() && a.host() == b.host() && a.port(usualPort(a)) == b.port(usualPort(b));
}

} // namespace KvUrlText
