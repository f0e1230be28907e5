#include "KvFailureText.h"

#include "KvUrlText.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace KvFailureText {

namespace {

// Error bodies are a few hundred bytes; a larger one is no message for people.
constexpr int longestErrorBody = 64 * 1024;

// Secrets go before the text is cut, which could leave half of one.
QString foreign(const QString& text, const QNetworkRequest& request, int maximum = 200)
{
    return oneLine(withoutSecrets(text, request), maximum);
}

QString advice(int status)
{
    if (status >= 300 && status < 400)
        return QStringLiteral("; check the base address");
    if (status == 401)
        return QStringLiteral("; check the access token");
    if (status == 403)
        return QStringLiteral("; the user has no right to this");
    if (status >= 500)
        return QStringLiteral("; look into the service's log");
    return {};
}

// Whether a change was made cannot be told without its reply, and made twice it may do harm: a second plan,
// say.
QString againAdvice(const QNetworkReply& reply)
{
    const auto operation = reply.operation();
    const bool isChange =
        operation == QNetworkAccessManager::PostOperation || operation == QNetworkAccessManager::PutOperation;
    return isChange ? QStringLiteral("the change may have been made, so look before you try again")
                    : QStringLiteral("try again");
}

} // namespace

QString oneLine(const QString& text, int maximum)
{
    // Cut first: a hostile text may be megabytes long.
    QString line = text.left(maximum + 1);
    for (QChar& c : line) {
        const bool isControl = c.category() == QChar::Other_Control || c.category() == QChar::Other_Format ||
                               c.category() == QChar::Separator_Line ||
                               c.category() == QChar::Separator_Paragraph;
        if (isControl)
            c = QLatin1Char(' ');
    }
    if (line.size() > maximum) {
        line.truncate(maximum - 1);
        if (line.at(line.size() - 1).isHighSurrogate())
            line.chop(1);
        line += QChar(0x2026);
    }
    return line.simplified();
}

QString serviceError(const QByteArray& body, const QNetworkRequest& request)
{
    if (body.size() > longestErrorBody)
        return {};
    const QJsonObject error = QJsonDocument::fromJson(body).object().value(QLatin1String("error")).toObject();
    const QString message = foreign(error.value(QLatin1String("message")).toString(), request);
    const QString code = foreign(error.value(QLatin1String("code")).toVariant().toString(), request, 60);
    const QString field = foreign(error.value(QLatin1String("field")).toString(), request, 60);
    QString text = message.isEmpty() ? code : message;
    if (!message.isEmpty() && !code.isEmpty())
        text += QLatin1String(" (") + code + QLatin1Char(')');
    if (!text.isEmpty() && !field.isEmpty())
        text += QLatin1String(", field ") + field;
    return text;
}

QString unreachable(const QNetworkReply& reply)
{
    return QStringLiteral(
               "cannot reach %1: %2; check that the service runs and that the base address is right")
        .arg(KvUrlText::origin(reply.request().url()), foreign(reply.errorString(), reply.request()));
}

QString untrusted(const QNetworkReply& reply, const QString& certificateFaults)
{
    return QStringLiteral("no secure connection to %1: %2")
        .arg(KvUrlText::origin(reply.request().url()),
             oneLine(certificateFaults.isEmpty() ? reply.errorString() : certificateFaults, 300));
}

QString httpStatus(const QNetworkReply& reply, int status, const QByteArray& body)
{
    QString text = QStringLiteral("the service answered %1").arg(status);
    const QString ownWords = serviceError(body, reply.request());
    if (!ownWords.isEmpty())
        return text + QLatin1String(": ") + ownWords + advice(status);
    const QString reason =
        foreign(reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString(), reply.request());
    if (!reason.isEmpty())
        text += QLatin1Char(' ') + reason;
    // A followed redirect that went wrong has its cause in the error alone.
    if (reply.error() == QNetworkReply::TooManyRedirectsError)
        text += QStringLiteral(", redirected too often");
    else if (reply.error() == QNetworkReply::InsecureRedirectError)
        text += QStringLiteral(", redirected to another origin");
    return text + advice(status);
}

QString connectionLost(const QNetworkReply& reply, qint64 received)
{
    if (!reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
        return QStringLiteral(
                   "the connection to %1 was lost before an answer in HTTP came; %2, or check that "
                   "the base address is that of the service")
            .arg(KvUrlText::origin(reply.request().url()), againAdvice(reply));
    return QStringLiteral("the connection to %1 was lost after %2 bytes of the reply; %3")
        .arg(KvUrlText::origin(reply.request().url()))
        .arg(received)
        .arg(againAdvice(reply));
}

QString notHttp(const QNetworkReply& reply)
{
    return QStringLiteral("%1 does not answer in HTTP; check the base address")
        .arg(KvUrlText::origin(reply.request().url()));
}

QString unusableAddress(const QUrl& url)
{
    QString fault = QStringLiteral("the base address is no valid URL");
    if (url.isEmpty() || (url.isValid() && url.scheme().isEmpty()))
        fault = QStringLiteral("no base address is set");
    else if (url.isValid() && !url.scheme().startsWith(QLatin1String("http")))
        fault = QStringLiteral("the base address begins with \"%1:\"").arg(oneLine(url.scheme(), 40));
    return fault + QStringLiteral("; set one that begins with http:// or https:// (KV_BASE_API)");
}

QString idleTimeout(const QNetworkReply& reply, int milliseconds)
{
    return QStringLiteral(
               "the service sent nothing for %1 ms; %2, or allow more time (KV_NETWORK_TIMEOUT_MS)")
        .arg(milliseconds)
        .arg(againAdvice(reply));
}

QString totalTimeout(int milliseconds)
{
    return QStringLiteral("the reply was not complete after %1 ms; ask for less at a time").arg(milliseconds);
}

QString tooLarge(qint64 limit)
{
    return QStringLiteral("the reply is larger than %1 bytes; ask for less at a time").arg(limit);
}

QString withoutSecrets(const QString& text, const QNetworkRequest& request)
{
    const QByteArray authorization = request.rawHeader("Authorization");
    if (text.isEmpty() || authorization.isEmpty())
        return text;
    QString clean = text;
    const QByteArray credentials = authorization.mid(authorization.indexOf(' ') + 1);
    const QString token = QString::fromLatin1(credentials);
    QString password;
    if (authorization.startsWith("Basic ")) {
        const QByteArray user = QByteArray::fromBase64(credentials);
        password = QString::fromUtf8(user.mid(user.indexOf(':') + 1));
    }
    for (const QString& secret : {token, password}) {
        if (secret.isEmpty())
            continue;
        clean.replace(secret, QLatin1String("***"));
        clean.replace(QString::fromLatin1(QUrl::toPercentEncoding(secret)), QLatin1String("***"));
    }
    return clean;
}

} // namespace KvFailureText
