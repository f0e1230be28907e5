#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QList>
#include <QtCore/QStringList>

/// Every kind of JSON value, and what a reader of each kind of field makes of it.
namespace KvTest::Meetings {

enum Kind
{
    Text,
    Whole,
    Real,
    Flag,
    NumberAsFlag,
    Date,
    Ids
};

// One JSON value, and what a reader of each kind makes of it.
struct Meeting
{
    const char* name;
    QJsonValue value;
    QString text;
    int whole;
    double real;
    bool flag;
    QJsonValue date; // text, or null
    QStringList ids;

    QJsonValue readAs(Kind kind) const
    {
        switch (kind) {
        case Text:
            return text;
        case Whole:
            return whole;
        case Real:
            return real;
        case Flag:
            return flag;
        case NumberAsFlag:
            return whole != 0;
        case Date:
            return date;
        case Ids:
            return QJsonArray::fromStringList(ids);
        }
        return {};
    }
};

inline QList<Meeting> meetings()
{
    const QString u1 = QStringLiteral("u1");
    const QString u2 = QStringLiteral("u2");
    const QString day = QStringLiteral("2024-03-15T08:30:00.125");
    const QJsonValue null(QJsonValue::Null);
    const QJsonArray users{u1, u2};
    return {
        {"missing", QJsonValue::Undefined, {}, 0, 0.0, false, null, {}},
        {"null", null, {}, 0, 0.0, false, null, {}},
        {"true", true, {}, 0, 0.0, true, null, {}},
        {"false", false, {}, 0, 0.0, false, null, {}},
        {"0", 0, {}, 0, 0.0, false, null, {}},
        {"1", 1, {}, 1, 1.0, false, null, {}},
        {"-1", -1, {}, -1, -1.0, false, null, {}},
        {"100", 100, {}, 100, 100.0, false, null, {}},
        {"2.0", 2.0, {}, 2, 2.0, false, null, {}},
        {"a fraction", 62.5, {}, 0, 62.5, false, null, {}},
        {"largest whole", 2147483647, {}, 2147483647, 2147483647.0, false, null, {}},
        {"beyond whole", 2147483648.0, {}, 0, 2147483648.0, false, null, {}},
        {"huge", 1e300, {}, 0, 1e300, false, null, {}},
        {"empty text", QString(QLatin1String("")), {}, 0, 0.0, false, null, {}},
        {"text",
         QStringLiteral("施工 — “quoted” 🏗"),
         QStringLiteral("施工 — “quoted” 🏗"),
         0,
         0.0,
         false,
         null,
         {}},
        {"number as text", QStringLiteral("12"), QStringLiteral("12"), 0, 0.0, false, null, {}},
        {"true as text", QStringLiteral("true"), QStringLiteral("true"), 0, 0.0, false, null, {}},
        {"date text", day, day, 0, 0.0, false, day, {}},
        {"no date",
         QStringLiteral("2024-02-30T08:30:00.000"),
         QStringLiteral("2024-02-30T08:30:00.000"),
         0,
         0.0,
         false,
         null,
         {}},
        {"empty array", QJsonArray(), {}, 0, 0.0, false, null, {}},
        {"array", users, {}, 0, 0.0, false, null, {u1, u2}},
        {"array with repetition", QJsonArray{u2, u1, u2}, {}, 0, 0.0, false, null, {u2, u1, u2}},
        {"array of all kinds",
         QJsonArray{u1, 7, true, null, QJsonObject(), QJsonArray()},
         {},
         0,
         0.0,
         false,
         null,
         {u1, QStringLiteral("7"), QStringLiteral("true"), QString(), QString(), QString()}},
        {"object", QJsonObject{{QStringLiteral("_id"), u1}}, {}, 0, 0.0, false, null, {}},
    };
}

} // namespace KvTest::Meetings
