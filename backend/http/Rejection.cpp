#include "Rejection.h"

namespace PlanService {

ApiError malformedRequest()
{
    return {400, QStringLiteral("malformedRequest"), QStringLiteral("the request is not well-formed HTTP")};
}

ApiError refusalOf(const std::string& message)
{
    const auto has = [&](const char* name) {
        return message.find(name) != std::string::npos;
    };
    if (has("HPE_CB_url")) {
        return {414, QStringLiteral("urlTooLong"),
                QStringLiteral("the URL is longer than this service accepts")};
    }
    if (has("HPE_CB_headers_complete") || has("HPE_CB_body")) {
        return {413, QStringLiteral("bodyTooLarge"),
                QStringLiteral("the body is larger than this service accepts")};
    }
    if (has("HPE_CB_header_field") || has("HPE_CB_header_value") || has("HPE_HEADER_OVERFLOW")) {
        return {431, QStringLiteral("headersTooLarge"),
                QStringLiteral("the headers are longer or more than this service accepts")};
    }
    return malformedRequest();
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 413:
        return "Payload Too Large";
    case 414:
        return "URI Too Long";
    case 431:
        return "Request Header Fields Too Large";
    case 503:
        return "Service Unavailable";
    default:
        return status < 500 ? "Error" : "Internal Server Error";
    }
}

Rejection rejectionOf(const ApiError& error)
{
    const Reply reply = error.reply();
    const QByteArray body = reply.body.constFirst();
    QByteArray text = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reasonPhrase(reply.status) +
                      "\r\nContent-Type: " + reply.contentType +
                      "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n";
    for (const auto& extra : reply.headers) {
        text += extra.first + ": " + extra.second + "\r\n";
    }
    return {reply.status, text + "\r\n" + body};
}

Rejection crowdedOut()
{
    return rejectionOf(
        ApiError(503, QStringLiteral("busy"),
                 QStringLiteral("too many large requests are on their way; try again in a moment"))
            .withHeader("Retry-After", "1"));
}

} // namespace PlanService
