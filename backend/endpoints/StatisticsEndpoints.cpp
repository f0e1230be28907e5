#include "../access/Caller.h"
#include "../json/ClientJson.h"
#include "../json/JsonWriter.h"
#include "../records/FieldReader.h"
#include "../store/Store.h"
#include "Endpoints.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

/// Something that nodes are counted by, with its values in the order in which they are told.
struct Dimension
{
    const char* name;
    QStringList words;
    int (*valueOf)(const NodeCount& count);
};

const QVector<Dimension>& allDimensions()
{
    static const QVector<Dimension> dimensions{
        {"status",
         {QStringLiteral("unstart"), QStringLiteral("processing"), QStringLiteral("finished")},
         [](const NodeCount& count) {
             return static_cast<int>(count.status);
         }},
        {"situation",
         {QStringLiteral("normal"), QStringLiteral("delay"), QStringLiteral("ahead")},
         [](const NodeCount& count) {
             return static_cast<int>(count.situation);
         }}};
    return dimensions;
}

[[noreturn]] void refuseDimensions(const QString& message)
{
    throw ApiError(400, QStringLiteral("badParameter"), message, QStringLiteral("dimensions"));
}

Dimension dimensionNamed(const QJsonValue& name)
{
    for (const Dimension& dimension : allDimensions()) {
        if (name == QJsonValue(QLatin1String(dimension.name))) {
            return dimension;
        }
    }
    refuseDimensions(QStringLiteral("nodes are counted by status and situation, not by '%1'")
                         .arg(shortened(name.toVariant().toString())));
}

/// Each inside the one before it; both when the parameter is missing.
QVector<Dimension> dimensionsOf(const Call& call)
{
    const auto text = call.query.constFind(QStringLiteral("dimensions"));
    if (text == call.query.constEnd()) {
        return allDimensions();
    }
    const QJsonDocument document = clientDocument(text->toUtf8());
    if (!document.isArray()) {
        refuseDimensions(QStringLiteral("'dimensions' has to be a JSON list, as [\"status\",\"situation\"]"));
    }
    QVector<Dimension> dimensions;
    const QJsonArray names = document.array();
    for (const QJsonValue& name : names) {
        const Dimension dimension = dimensionNamed(name);
        for (const Dimension& earlier : qAsConst(dimensions)) {
            if (QLatin1String(earlier.name) == QLatin1String(dimension.name)) {
                refuseDimensions(QStringLiteral("'dimensions' names '%1' twice").arg(name.toString()));
            }
        }
        dimensions.append(dimension);
    }
    return dimensions;
}

NodeScope scopeOf(const Call& call)
{
    NodeScope scope;
    scope.projectId = call.parameter("projectId");
    scope.visible = call.caller.visibilityIn(scope.projectId);
    const QString category = call.query.value(QStringLiteral("category"));
    if (!category.isEmpty()) {
        scope.category = category;
    }
    // Without tokens nobody is told from anybody, and everything is theirs.
    if (call.queryFlag("personal") && !call.caller.userId().isEmpty()) {
        scope.person = call.caller.userId();
    }
    return scope;
}

int totalOf(const QVector<NodeCount>& counts)
{
    int total = 0;
    for (const NodeCount& count : counts) {
        total += count.total;
    }
    return total;
}

/// "items" by the dimension at @p at, and inside each item by the next one; at most two deep.
void writeItems(JsonWriter& json, const QVector<NodeCount>& counts, const QVector<Dimension>& dimensions,
                int at)
{
    if (at == dimensions.size()) {
        return;
    }
    const Dimension& dimension = dimensions.at(at);
    json.key("items").beginArray();
    for (int value = 0; value < dimension.words.size(); ++value) {
        QVector<NodeCount> group;
        for (const NodeCount& count : counts) {
            if (dimension.valueOf(count) == value) {
                group.append(count);
            }
        }
        if (group.isEmpty()) {
            continue;
        }
        json.beginObject().key("total").number(totalOf(group));
        json.key(dimension.name).text(dimension.words.at(value));
        writeItems(json, group, dimensions, at + 1);
        json.endObject();
    }
    json.endArray();
}

struct Period
{
    int year = 0;
    int month = 0;
    int week = 0;
    int day = 0;
    int total = 0;

    bool isSameAs(const Period& other) const
    {
        return year == other.year && month == other.month && week == other.week && day == other.day;
    }
};

/// What the period does not tell by stays 0. A week's year is the one that its Thursday lies in.
Period periodOf(const QDate& date, const QString& word)
{
    Period period;
    period.year = date.year();
    if (word == QLatin1String("week")) {
        period.week = date.weekNumber(&period.year);
    } else if (word != QLatin1String("year")) {
        period.month = date.month();
        period.day = word == QLatin1String("day") ? date.day() : 0;
    }
    return period;
}

} // namespace

Reply getStatistics(const Call& call)
{
    const QVector<Dimension> dimensions = dimensionsOf(call);
    const QVector<NodeCount> counts = call.store.nodeCounts(scopeOf(call), siteNow().left(10));
    JsonWriter json;
    json.beginObject().key("total").number(totalOf(counts));
    writeItems(json, counts, dimensions, 0);
    json.endObject();
    return {200, {json.take()}, {}, {}};
}

Reply getQuantities(const Call& call)
{
    const QString word = call.queryWord("period", {QStringLiteral("day"), QStringLiteral("week"),
                                                   QStringLiteral("month"), QStringLiteral("year")});
    QVector<Period> periods;
    const QVector<DayCount> days = call.store.finishedPerDay(scopeOf(call));
    for (const DayCount& day : days) {
        const Period period = periodOf(QDate::fromString(day.day, Qt::ISODate), word);
        if (periods.isEmpty() || !periods.last().isSameAs(period)) {
            periods.append(period);
        }
        periods.last().total += day.total;
    }
    JsonWriter json;
    json.beginArray();
    for (const Period& period : qAsConst(periods)) {
        json.beginObject();
        json.key("type").text(word);
        json.key("year").number(period.year);
        json.key("month").number(period.month);
        json.key("week").number(period.week);
        json.key("day").number(period.day);
        json.key("total").number(period.total);
        json.endObject();
    }
    json.endArray();
    return {200, {json.take()}, {}, {}};
}

} // namespace PlanService
