#pragma once

#include "EndpointsFixture.h"

#include <functional>

using Call = std::function<bool()>;
Q_DECLARE_METATYPE(Call)

/// The test "request" of endpoint functions, over rows that the inheritor's request_data() adds.
class EndpointRequestsFixture : public EndpointsFixture
{
    Q_OBJECT

protected:
    static void requestColumns()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target"); // behind "/task-service/", or whole
        QTest::addColumn<QByteArray>("body");
    }

    static void row(const char* name, const char* method, const QByteArray& target, const Call& call,
                    const QByteArray& body = QByteArray())
    {
        QTest::newRow(name) << call << QByteArray(method) << target << body;
    }

    /// Project ids with what stands for them in a target.
    static QList<QPair<QString, QByteArray>> projects()
    {
        return {{QStringLiteral("one"), "one"},
                {QStringLiteral("第 2#+"), "%E7%AC%AC%202%23%2B"},
                {QString(), ""}};
    }

private Q_SLOTS:
    void request()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        // The flag is the reply's, one way and the other. An object where a list is expected parses, too.
        m_server.enqueue(KvTest::Reply::json(QJsonObject()));
        QVERIFY(call());
        QCOMPARE(m_server.requestCount(), 1);
        const KvTest::Request request = m_server.lastRequest();
        QCOMPARE(request.method, method);
        QCOMPARE(request.target, target.startsWith('/') ? target : "/task-service/" + target);
        QCOMPARE(request.body, body);
        QCOMPARE(request.header("Content-Type"),
                 body.isEmpty() ? QByteArray() : QByteArray("application/json"));
        m_server.enqueue(KvTest::Reply::json(QJsonObject(), 409));
        QVERIFY(!call());
        QCOMPARE(m_server.requestCount(), 2);
        QCOMPARE(m_server.lastRequest().target, request.target);
        QCOMPARE(m_server.lastRequest().body, request.body);
    }
};
