#include "Router.h"

#include "../json/ClientJson.h"

#include <QJsonDocument>

namespace PlanService {

namespace {

bool isPlaceholder(const QString& segment)
{
    return segment.startsWith(QLatin1Char('{')) && segment.endsWith(QLatin1Char('}'));
}

bool fits(const QStringList& pattern, const QStringList& segments, QMap<QString, QString>& parameters)
{
    if (pattern.size() != segments.size()) {
        return false;
    }
    for (int i = 0; i < pattern.size(); ++i) {
        if (isPlaceholder(pattern.at(i))) {
            if (segments.at(i).isEmpty()) {
                return false;
            }
            parameters.insert(pattern.at(i).mid(1, pattern.at(i).size() - 2), segments.at(i));
        } else if (pattern.at(i) != segments.at(i)) {
            return false;
        }
    }
    return true;
}

/// The placeholder whose segment was left empty in the middle of a path that would fit otherwise: a client
/// filled in an id that it does not have. Empty: there is none.
QString emptyPlaceholder(const QStringList& pattern, const QStringList& segments)
{
    QStringList filled = segments;
    for (int i = 0; i + 1 < segments.size(); ++i) {
        if (segments.at(i).isEmpty()) {
            filled[i] = QStringLiteral("-");
        }
    }
    QMap<QString, QString> parameters;
    if (filled == segments || !fits(pattern, filled, parameters)) {
        return QString();
    }
    return pattern.at(segments.indexOf(QString())).mid(1).chopped(1);
}

} // namespace

bool Call::queryFlag(const char* name) const
{
    const QString value = query.value(QLatin1String(name), QStringLiteral("false"));
    if (value != QLatin1String("true") && value != QLatin1String("false")) {
        throw ApiError(
            400, QStringLiteral("badParameter"),
            QStringLiteral("'%1' has to be true or false, not '%2'").arg(QLatin1String(name), value),
            QLatin1String(name));
    }
    return value == QLatin1String("true");
}

int Call::queryNumber(const char* name, int missing) const
{
    const auto found = query.constFind(QLatin1String(name));
    if (found == query.constEnd()) {
        return missing;
    }
    bool isNumber = false;
    const int number = found->toInt(&isNumber);
    if (!isNumber || number < 0) {
        throw ApiError(400, QStringLiteral("badParameter"),
                       QStringLiteral("'%1' has to be a whole number from 0 on, not '%2'")
                           .arg(QLatin1String(name), found->left(40)),
                       QLatin1String(name));
    }
    return number;
}

QString Call::queryWord(const char* name, const QStringList& known, const QString& missing) const
{
    const QString value = query.value(QLatin1String(name), missing);
    if (!known.contains(value)) {
        throw ApiError(400, QStringLiteral("badParameter"),
                       QStringLiteral("'%1' has to be one of %2, not '%3'")
                           .arg(QLatin1String(name), known.join(QLatin1String(", ")), value.left(40)),
                       QLatin1String(name));
    }
    return value;
}

QJsonObject Call::bodyObject(int limit) const
{
    if (request.body.size() > limit) {
        throw ApiError(413, QStringLiteral("bodyTooLarge"),
                       QStringLiteral("the body has %1 bytes, at most %2 are accepted here")
                           .arg(request.body.size())
                           .arg(limit));
    }
    QJsonParseError error;
    const QJsonDocument document = clientDocument(request.body, &error);
    if (error.error != QJsonParseError::NoError) {
        throw ApiError(
            400, QStringLiteral("badJson"),
            QStringLiteral("the body is not JSON: %1 at byte %2").arg(error.errorString()).arg(error.offset));
    }
    if (!document.isObject()) {
        throw ApiError(400, QStringLiteral("badJson"), QStringLiteral("the body has to be a JSON object"));
    }
    return document.object();
}

Router::Router(const std::vector<Route>& routes)
    : m_routes(routes)
{
    for (const Route& route : m_routes) {
        m_templates.push_back(QString::fromLatin1(route.pathTemplate).mid(1).split(QLatin1Char('/')));
    }
}

RouteMatch Router::match(const QByteArray& method, const QByteArray& target) const
{
    const UrlText url = parsedTarget(target);
    QByteArray allowed;
    QString empty;
    for (std::size_t i = 0; i < m_routes.size(); ++i) {
        QMap<QString, QString> parameters;
        if (!fits(m_templates[i], url.segments, parameters)) {
            empty = empty.isEmpty() ? emptyPlaceholder(m_templates[i], url.segments) : empty;
            continue;
        }
        if (m_routes[i].method == method) {
            return {&m_routes[i], parameters, url.query};
        }
        allowed += (allowed.isEmpty() ? "" : ", ") + m_routes[i].method;
    }
    const QString path = QString::fromUtf8(pathOf(target).left(200));
    if (allowed.isEmpty() && !empty.isEmpty()) {
        throw ApiError(400, QStringLiteral("emptyParameter"),
                       QStringLiteral("the path '%1' names no %2").arg(path, empty), empty);
    }
    if (allowed.isEmpty()) {
        throw ApiError(404, QStringLiteral("pathNotFound"),
                       QStringLiteral("there is nothing at '%1' on this service").arg(path));
    }
    throw ApiError(405, QStringLiteral("methodNotAllowed"),
                   QStringLiteral("'%1' does not answer %2, only %3")
                       .arg(path, QString::fromLatin1(method), QString::fromLatin1(allowed)))
        .withHeader("Allow", allowed);
}

} // namespace PlanService
