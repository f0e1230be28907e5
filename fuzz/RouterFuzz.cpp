// The service's router: any method and target finds a route of the service or is refused in its own words.

#include "FuzzTarget.h"

#include <endpoints/Endpoints.h>

#include <QtCore/QUrl>

namespace {

void checkMatch(const QByteArray& method, const QByteArray& target)
{
    static const PlanService::Router router(PlanService::serviceRoutes());
    try {
        const PlanService::RouteMatch match = router.match(method, target);
        KvFuzz::require(match.route != nullptr, "a match without a route");
        KvFuzz::require(match.route->method == method, "a route of another method");
        const int placeholders = match.route->pathTemplate.count('{');
        KvFuzz::require(match.parameters.size() == placeholders, "a value for each placeholder");
        for (const QString& value : match.parameters)
            KvFuzz::require(!value.isEmpty() && !value.contains(QChar(0)), "an empty value of a placeholder");
    } catch (const PlanService::ApiError& error) {
        const int status = error.status();
        KvFuzz::require(status == 400 || status == 404 || status == 405, "another refusal");
    }
}

void checkDecoding(const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    try {
        const QByteArray encoded = QUrl::toPercentEncoding(text);
        KvFuzz::require(PlanService::percentDecoded(encoded) == text, "decoded to something else");
    } catch (const PlanService::ApiError&) {
        KvFuzz::require(text.contains(QChar(0)), "a good encoding refused");
    }
    try {
        PlanService::percentDecoded(bytes);
    } catch (const PlanService::ApiError& error) {
        KvFuzz::require(error.status() == 400, "another refusal");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = KvFuzz::bytesOf(data, size);
    const int space = bytes.indexOf(' '); // "GET /task-service/plans/p1"
    checkMatch(bytes.left(qMax(0, space)), bytes.mid(space + 1));
    for (const char* method : {"GET", "PUT"})
        checkMatch(method, bytes);
    checkDecoding(bytes);
    return 0;
}
