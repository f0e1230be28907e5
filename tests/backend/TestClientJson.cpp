// JSON as clients send it: keys that stand twice in one object are refused before Qt's parser sees them.

#include "Text.h"
#include "http/Reply.h"
#include "json/ClientJson.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

/// JSON with ' in the place of ".
QByteArray quoted(QByteArray json)
{
    return json.replace('\'', '"');
}

} // namespace

class TestClientJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repeatedKeys_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("key");
        const QString none;
        QTest::newRow("nothing") << QByteArray() << none;
        QTest::newRow("each once") << quoted("{'a':[1],'b':{'a':[2]},'c':[{'a':[]},{'a':[]}]}") << none;
        QTest::newRow("a list twice") << quoted("{'a':[1],'a':[2]}") << "a"_s;
        QTest::newRow("a list, then a number") << quoted("{'a':[1],'a':2}") << "a"_s;
        QTest::newRow("an object, far behind") << quoted("{'a':{'b':1},'c':[{'a':1}],'a':null}") << "a"_s;
        // Qt's parser keeps the last of them and frees the others.
        QTest::newRow("numbers and texts twice") << quoted("{'a':1,'a':'x','a':true}") << none;
        QTest::newRow("a number, then a list") << quoted("{'a':1,'a':[2]}") << none;
        QTest::newRow("deep inside") << quoted("[[{'x':{'y':[{'k':[],'k':[]}]}}]]") << "k"_s;
        QTest::newRow("written with escapes") << quoted("{'a':[],'\\u0061':[]}") << "a"_s;
        QTest::newRow("the empty key") << quoted("{'':[],'':[]}") << ""_s;
        QTest::newRow("a key with a quote") << quoted("{'a\\'':[],'b':1,'a\\'':[]}") << "a\""_s;
        QTest::newRow("texts that look like keys")
            << quoted("{'a':['a','a'],'b':'a','c':'\\'a\\':['}") << none;
        QTest::newRow("seventeen keys, then the first")
            << QByteArray("{") + many(17) + quoted(",'k0':1}") << "k0"_s;
        QTest::newRow("seventeen keys, then the last")
            << QByteArray("{") + many(17) + quoted(",'k16':1}") << "k16"_s;
        QTest::newRow("as deep as the parser goes")
            << quoted("{'a':[],'a':") + QByteArray(1023, '[') << "a"_s;
        QTest::newRow("behind what is too deep for the parser")
            << QByteArray(1025, '[') + quoted("{'a':[],'a':[]}") << none;
        QTest::newRow("broken off") << quoted("{'a':[{'b':'\\") << none;
        QTest::newRow("brackets that close nothing") << quoted("}]}{'a':[],'a':1") << "a"_s;
    }

    void repeatedKeys()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, key);
        QCOMPARE(repeatedKey(json), key);
        QCOMPARE(repeatedKey(json).isNull(), key.isNull());
    }

    void documentOfAClient()
    {
        QJsonParseError error;
        QCOMPARE(clientDocument(quoted("{'a':1,'a':2}"), &error).object(), (QJsonObject{{"a"_s, 2}}));
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(clientDocument("{", &error).isNull());
        QVERIFY(error.error != QJsonParseError::NoError);
        try {
            clientDocument(quoted("{'ids':[1],'ids':[2]}"));
            QFAIL("not refused");
        } catch (const ApiError& refusal) {
            QCOMPARE(refusal.status(), 400);
            QCOMPARE(QString::fromUtf8(refusal.what()), "the JSON names the key 'ids' twice in one object"_s);
        }
    }

    void manyKeysTakeLinearTime()
    {
        const QByteArray json = '{' + many(200000) + '}';
        QElapsedTimer clock;
        clock.start();
        QVERIFY(repeatedKey(json).isNull());
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    }

private:
    static QByteArray many(int count)
    {
        QByteArray members;
        for (int i = 0; i < count; ++i) {
            members += (i == 0 ? "\"k" : ",\"k") + QByteArray::number(i) + "\":[]";
        }
        return members;
    }
};

QTEST_GUILESS_MAIN(TestClientJson)
#include "TestClientJson.moc"
