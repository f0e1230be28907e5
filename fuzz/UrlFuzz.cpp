// URL finishing of any text, and that what the library puts into a URL is what the service takes out of it.

#include "FuzzTarget.h"

#include <KvUrlText.h>

#include <http/Reply.h>
#include <http/UrlText.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

const QString address = QStringLiteral("http://127.0.0.1:8700/");

QByteArray finished(const QString& text)
{
    return KvUrlText::finished(text).toEncoded();
}

void checkAnyText(const QString& text)
{
    const QByteArray once = finished(text);
    for (const char byte : once)
        KvFuzz::require(byte > ' ' && byte < 127, "a character that cannot stand in a URL");
    KvUrlText::origin(KvUrlText::finished(text));
}

/// Behind an address: always valid, without a fragment, and encoded once for all.
void checkPathAndQuery(const QString& text)
{
    const QUrl url = KvUrlText::finished(address + text);
    KvFuzz::require(url.isValid(), "a URL that is not valid");
    KvFuzz::require(!url.hasFragment(), "a fragment");
    KvFuzz::require(KvUrlText::isSameOrigin(url, QUrl(address)), "another origin");
    const QByteArray once = url.toEncoded();
    KvFuzz::require(finished(QString::fromLatin1(once)) == once, "encoded twice");
}

/// The target as the service gets it.
PlanService::UrlText received(const QString& text)
{
    const QUrl url = KvUrlText::finished(address + text);
    return PlanService::parsedTarget(url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority));
}

/// A filter with any text in it, between two parameters.
void checkFilter(const QString& text)
{
    const QJsonObject filter{{QStringLiteral("name"), QJsonObject{{QStringLiteral("$regex"), text}}},
                             {text, QStringLiteral("c")}};
    const QString json = QString::fromUtf8(QJsonDocument(filter).toJson(QJsonDocument::Compact));
    const PlanService::UrlText url = received(
        QStringLiteral("task-service/plans?a=1&where=%1&limit=20").replace(QLatin1String("%1"), json));
    KvFuzz::require(url.query.size() == 3, "number of parameters");
    KvFuzz::require(url.query.value(QStringLiteral("where")) == json, "a filter that changed on its way");
    KvFuzz::require(url.query.value(QStringLiteral("limit")) == QLatin1String("20"), "the next parameter");
}

/// An identifier of any characters but those that are structure, or encoded already.
void checkIdentifier(const QString& text)
{
    QString id;
    for (const QChar c : text) {
        if (c != QLatin1Char('/') && c != QLatin1Char('?') && c != QLatin1Char('%'))
            id += c;
    }
    if (id.isEmpty() || id == QLatin1String(".") || id == QLatin1String(".."))
        return;
    const PlanService::UrlText url = received(QStringLiteral("task-service/plans/") + id);
    KvFuzz::require(url.segments.size() == 3, "number of segments");
    KvFuzz::require(url.segments.last() == id, "an identifier that changed on its way");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(KvFuzz::bytesOf(data, size));
    checkAnyText(text);
    checkPathAndQuery(text);
    if (text.contains(QChar(0)) || !text.isValidUtf16())
        return 0; // cannot stand in a URL
    try {
        checkFilter(text);
        checkIdentifier(text);
    } catch (const PlanService::ApiError& error) {
        KvFuzz::fail(QStringLiteral("refused by the service: ") + QString::fromUtf8(error.what()));
    }
    return 0;
}
