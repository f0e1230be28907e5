#pragma once

#include <support/ScriptedMessages.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

Q_DECLARE_METATYPE(KvTest::Reply)

namespace KvTest {

/// Rows ("reply") of answers that are no success whatever was asked: refusals that come with a body which a
/// success would be read from, and bodies that are no JSON. @p object stands in them; it must not be
/// believed.
inline void failedReplies(const QJsonObject& object)
{
    QTest::addColumn<Reply>("reply");
    for (const int status : {400, 401, 403, 404, 409, 413, 422, 500, 502, 503}) {
        QTest::newRow(qPrintable(QStringLiteral("%1 with an object").arg(status)))
            << Reply::json(object, status);
    }
    QTest::newRow("404 with a list") << Reply::json(QJsonArray{object, object}, 404);
    QTest::newRow("500 without a word") << Reply::empty(500);
    const auto body = [](const QByteArray& text, int status = 200) {
        return Reply::text(text, "application/json", status);
    };
    const QByteArray told = QJsonDocument(object).toJson(QJsonDocument::Compact);
    QTest::newRow("a page for people") << Reply::text("<html>told</html>", "text/html");
    QTest::newRow("a page of a gateway") << Reply::text("<html>told</html>", "text/html", 502);
    QTest::newRow("half an object") << body(told.left(told.size() - 1));
    QTest::newRow("half a list") << body('[' + told + ',');
    QTest::newRow("two objects") << body(told + told);
    QTest::newRow("a word behind") << body(told + "and so on");
    QTest::newRow("100,000 lists in one another")
        << body(QByteArray(100000, '[') + told + QByteArray(100000, ']'));
    QTest::newRow("connection closed in the body") << body(told).with(Reply::Truncate);
    QTest::newRow("connection reset in the body") << body(told).with(Reply::ResetInBody);
}

} // namespace KvTest
