// The current user through the exported interface: rights, and the settings that the service keeps.

#include "FacadeCopies.h"
#include "KvPlanNodeOperationsFixture.h"

#include <functional>
#include <type_traits>

using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
static_assert(std::is_same_v<decltype(&KvPlanData::initAuth), Operation<void(const QString&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getCreateAuth), Operation<bool()>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getEditAuth), Operation<bool()>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getDeleteAuth), Operation<bool()>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getReadAuth), Operation<bool()>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getExportAuth), Operation<bool()>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::loadSetting), Operation<bool(const QString&, QJsonObject&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::saveSetting), Operation<bool(const QString&, const QJsonObject&)>>);

namespace {

const QStringList keys{QStringLiteral("create"), QStringLiteral("edit"), QStringLiteral("delete"),
                       QStringLiteral("read"), QStringLiteral("export")};

// The rights granted, "create edit delete read export" for all.
QString rightsOf(KvPlanData& facade)
{
    QStringList rights;
    const bool granted[] = {facade.getCreateAuth(), facade.getEditAuth(), facade.getDeleteAuth(),
                            facade.getReadAuth(), facade.getExportAuth()};
    for (int i = 0; i < keys.size(); ++i) {
        if (granted[i])
            rights.append(keys.at(i));
    }
    return rights.join(QLatin1Char(' '));
}

Reply valueReply(const QJsonValue& value, int status = 200)
{
    return Reply::json(QJsonObject{{QStringLiteral("value"), value}}, status);
}

// What grants the right: the one to read is granted by another word than the others.
QString grantOf(const QString& key)
{
    return key == QLatin1String("read") ? QStringLiteral("all") : QStringLiteral("true");
}

} // namespace

class KvUserOperationsTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void noRightsBeforeTheyAreAsked();
    void fiveRequestsInOrder();
    void categoryIsSentAsItIs_data();
    void categoryIsSentAsItIs();
    void oneValueForAll_data();
    void oneValueForAll();
    void eachRightAlone_data() { rowsOfKeys(); }
    void eachRightAlone();
    void failureAtOneRequest_data() { rowsOfKeys(); }
    void failureAtOneRequest();
    void failureOfAll();
    void failuresLeaveTheFirstRunsRights();
    void rightsOutliveTheCaches();
    void copyKeepsItsRights();
    void rightsAskedDuringTheAsking();
    void categoryChangedDuringTheAsking();

    void settingIsLoaded();
    void settingThatIsNotThere();
    void failedLoad();
    void settingIsSaved_data();
    void settingIsSaved();
    void nothingOfASettingIsCached();

private:
    static void rowsOfKeys()
    {
        QTest::addColumn<int>("place");
        for (int i = 0; i < keys.size(); ++i)
            QTest::newRow(qPrintable(keys.at(i))) << i;
    }
    /// Asks for all rights, with the replies in the order of the keys.
    void ask(const QList<Reply>& replies, KvPlanData& facade = data())
    {
        for (const Reply& reply : replies)
            m_server.enqueue(reply);
        facade.initAuth(QStringLiteral("c"));
    }
    static QList<Reply> fiveTimes(const Reply& reply) { return {reply, reply, reply, reply, reply}; }
    static QList<Reply> allGranted()
    {
        QList<Reply> replies;
        for (const QString& key : keys)
            replies.append(valueReply(grantOf(key)));
        return replies;
    }

    const QString all = QStringLiteral("create edit delete read export");
};

// The first test of the program, for rights are kept until they are asked again.
void KvUserOperationsTest::noRightsBeforeTheyAreAsked()
{
    QCOMPARE(rightsOf(data()), QString());
    QCOMPARE(m_server.requestCount(), 0);
}

void KvUserOperationsTest::fiveRequestsInOrder()
{
    ask(allGranted());
    QByteArrayList wanted;
    for (const QString& key : keys)
        wanted.append("GET /task-service/projects/project-1/auth?key=" + key.toLatin1() +
                      "&moduleKey=plan&category=c");
    QCOMPARE(targets(), wanted);
    QCOMPARE(rightsOf(data()), all);
    // Told from then on without a request.
    QCOMPARE(m_server.requestCount(), 5);
}

void KvUserOperationsTest::categoryIsSentAsItIs_data()
{
    QTest::addColumn<QString>("category");
    QTest::newRow("none") << QString();
    QTest::newRow("blank") << "a b";
    QTest::newRow("Chinese") << QStringLiteral("施工");
}

void KvUserOperationsTest::categoryIsSentAsItIs()
{
    QFETCH(QString, category);
    for (int i = 0; i < 5; ++i)
        m_server.enqueue(valueReply(QStringLiteral("false")));
    data().initAuth(category);
    for (const KvTest::Request& request : m_server.requests())
        QCOMPARE(request.queryValue("category"), category);
}

void KvUserOperationsTest::oneValueForAll_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("granted");
    const auto row = [](const char* name, const QJsonValue& value, const char* granted = "") {
        QTest::newRow(name) << value << QString::fromLatin1(granted);
    };
    row("true", QStringLiteral("true"), "create edit delete export");
    row("all", QStringLiteral("all"), "read");
    for (const char* text : {"own", "false", "none", "", "True", "TRUE", "All", "ALL", " true", "true ",
                             "all ", "true\n", "1", "yes", "truetrue", "t"})
        row(text, QString::fromLatin1(text));
    row("flag", true);
    row("number", 1);
    row("null", QJsonValue());
    row("list", QJsonArray{QStringLiteral("true"), QStringLiteral("all")});
    row("object", QJsonObject{{QStringLiteral("value"), QStringLiteral("true")}});
}

void KvUserOperationsTest::oneValueForAll()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, granted);
    // Whatever was granted before.
    for (const QList<Reply>& before : {allGranted(), fiveTimes(Reply::json(QJsonObject()))}) {
        ask(before);
        ask(fiveTimes(valueReply(value)));
        QCOMPARE(rightsOf(data()), granted);
    }
    // A success that tells no value grants nothing.
    ask(allGranted());
    ask(fiveTimes(Reply::json(QJsonArray{QJsonObject{{QStringLiteral("value"), value}}})));
    QCOMPARE(rightsOf(data()), QString());
}

void KvUserOperationsTest::eachRightAlone()
{
    QFETCH(int, place);
    ask(fiveTimes(Reply::json(QJsonObject())));
    QList<Reply> replies = fiveTimes(valueReply(QStringLiteral("false")));
    replies[place] = valueReply(grantOf(keys.at(place)));
    ask(replies);
    QCOMPARE(rightsOf(data()), keys.at(place));
    replies = allGranted();
    replies[place] = valueReply(QStringLiteral("own"));
    ask(replies);
    QStringList others = keys;
    others.removeAt(place);
    QCOMPARE(rightsOf(data()), others.join(QLatin1Char(' ')));
}

// It keeps what it had, and the others are asked all the same.
void KvUserOperationsTest::failureAtOneRequest()
{
    QFETCH(int, place);
    for (const int status : {400, 401, 403, 404, 500}) {
        // Not granted before, and the failure says that it is.
        ask(fiveTimes(Reply::json(QJsonObject())));
        QList<Reply> replies = allGranted();
        replies[place] = valueReply(grantOf(keys.at(place)), status);
        m_server.forgetRequests();
        ask(replies);
        QCOMPARE(m_server.requestCount(), 5);
        QStringList others = keys;
        others.removeAt(place);
        QCOMPARE(rightsOf(data()), others.join(QLatin1Char(' ')));
        // Granted before, and the failure says that it is not.
        ask(allGranted());
        replies = fiveTimes(valueReply(QStringLiteral("false")));
        replies[place] = valueReply(QStringLiteral("false"), status);
        ask(replies);
        QCOMPARE(rightsOf(data()), keys.at(place));
    }
}

void KvUserOperationsTest::failureOfAll()
{
    ask(allGranted());
    for (const Reply& reply : {valueReply(QStringLiteral("false"), 500), Reply::text("no JSON", "text/plain"),
                               Reply::text(R"({"value": "false")", "application/json")}) {
        ask(fiveTimes(reply));
        QCOMPARE(rightsOf(data()), all);
    }
    KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
    data().initAuth(QStringLiteral("c"));
    QCOMPARE(rightsOf(data()), all);
}

void KvUserOperationsTest::failuresLeaveTheFirstRunsRights()
{
    QList<Reply> replies = fiveTimes(valueReply(QStringLiteral("true")));
    ask(replies);
    QCOMPARE(rightsOf(data()), QStringLiteral("create edit delete export"));
    ask(fiveTimes(valueReply(QStringLiteral("all"), 503)));
    QCOMPARE(rightsOf(data()), QStringLiteral("create edit delete export"));
}

void KvUserOperationsTest::rightsOutliveTheCaches()
{
    ask(allGranted());
    data().clear();
    QCOMPARE(rightsOf(data()), all);
    m_server.enqueue(Reply::json(QJsonArray()));
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(rightsOf(data()), all);
}

void KvUserOperationsTest::copyKeepsItsRights()
{
    ask(allGranted());
    KvPlanData& second = *copyOf(data());
    QCOMPARE(rightsOf(second), all);
    ask(fiveTimes(valueReply(QStringLiteral("all"))));
    QCOMPARE(rightsOf(data()), QStringLiteral("read"));
    QCOMPARE(rightsOf(second), all);
    ask(fiveTimes(valueReply(QStringLiteral("true"))), second);
    QCOMPARE(rightsOf(second), QStringLiteral("create edit delete export"));
    QCOMPARE(rightsOf(data()), QStringLiteral("read"));
    second = data();
    QCOMPARE(rightsOf(second), QStringLiteral("read"));
}

void KvUserOperationsTest::rightsAskedDuringTheAsking()
{
    ask(fiveTimes(Reply::json(QJsonObject())));
    m_server.forgetRequests();
    QList<Reply> replies{held(valueReply(QStringLiteral("true")))}; // "create" of the outer
    replies += fiveTimes(valueReply(QStringLiteral("false")));      // all of the inner
    for (int i = 1; i < keys.size(); ++i)
        replies.append(valueReply(grantOf(keys.at(i))));
    duringTheWait([&] {
        data().initAuth(QStringLiteral("inner"));
        QCOMPARE(rightsOf(data()), QString());
    });
    ask(replies);
    QCOMPARE(m_server.requestCount(), 10);
    QCOMPARE(rightsOf(data()), all); // the outer one ends last
    QByteArrayList categories;
    for (const KvTest::Request& request : m_server.requests())
        categories.append(request.queryValue("category").toLatin1());
    QCOMPARE(categories.join(' '), QByteArray("c inner inner inner inner inner c c c c"));
}

// The rights are those in one category, whatever the host does with its text meanwhile.
void KvUserOperationsTest::categoryChangedDuringTheAsking()
{
    QString category = QStringLiteral("c");
    m_server.enqueue(held(valueReply(grantOf(keys.first()))));
    m_server.enqueue(Reply::json(QJsonObject())); // lets the held reply go
    for (int i = 1; i < keys.size(); ++i)
        m_server.enqueue(valueReply(grantOf(keys.at(i))));
    duringTheWait([&] {
        category = QStringLiteral("another");
        QJsonObject setting;
        QVERIFY(data().loadSetting(QStringLiteral("k"), setting));
    });
    data().initAuth(category);
    QCOMPARE(m_server.requestCount(), 6);
    for (const KvTest::Request& request : m_server.requests())
        QVERIFY(!request.target.contains("category=another"));
    QCOMPARE(rightsOf(data()), all);
}

void KvUserOperationsTest::settingIsLoaded()
{
    const QJsonArray columns{QStringLiteral("name"), QStringLiteral("start")};
    m_server.enqueue(valueReply(columns));
    QJsonObject value{{QStringLiteral("before"), 1}};
    QVERIFY(data().loadSetting(QStringLiteral("plan_hideHeader"), value));
    QCOMPARE(targets(), QByteArrayList{"GET /user-service/settings/plan_hideHeader"});
    QCOMPARE(value, (QJsonObject{{QStringLiteral("plan_hideHeader"), columns}}));
}

void KvUserOperationsTest::settingThatIsNotThere()
{
    for (const Reply& reply : {valueReply(QJsonValue()), Reply::json(QJsonObject())}) {
        m_server.enqueue(reply);
        QJsonObject value{{QStringLiteral("before"), 1}};
        QVERIFY(data().loadSetting(one, value));
        QVERIFY(value.isEmpty());
    }
}

void KvUserOperationsTest::failedLoad()
{
    m_server.enqueue(valueReply(1, 500));
    QJsonObject value{{QStringLiteral("before"), 1}};
    QVERIFY(!data().loadSetting(one, value));
    QVERIFY(value.isEmpty());
}

void KvUserOperationsTest::settingIsSaved_data()
{
    QTest::addColumn<QJsonObject>("value");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("list") << QJsonObject{{QStringLiteral("value"), QJsonArray{1, QStringLiteral("b")}}}
                          << QByteArray(R"({"value":[1,"b"]})");
    QTest::newRow("null") << QJsonObject{{QStringLiteral("value"), QJsonValue()}}
                          << QByteArray(R"({"value":null})");
    QTest::newRow("other keys, as they are")
        << QJsonObject{{QStringLiteral("x"), 1}} << QByteArray(R"({"x":1})");
    QTest::newRow("empty") << QJsonObject() << QByteArray("{}");
}

void KvUserOperationsTest::settingIsSaved()
{
    QFETCH(QJsonObject, value);
    QFETCH(QByteArray, body);
    for (const int status : {200, 403}) {
        m_server.enqueue(Reply::json(value, status));
        QCOMPARE(data().saveSetting(QStringLiteral("a key"), value), status == 200);
        QCOMPARE(targets().last(), QByteArray("PUT /user-service/settings/a%20key"));
        QCOMPARE(m_server.lastRequest().body, body);
    }
}

void KvUserOperationsTest::nothingOfASettingIsCached()
{
    m_server.enqueue(valueReply(1));
    m_server.enqueue(valueReply(1));
    m_server.enqueue(valueReply(2));
    QVERIFY(data().saveSetting(one, {{QStringLiteral("value"), 1}}));
    for (const int expected : {1, 2}) {
        QJsonObject value;
        QVERIFY(data().loadSetting(one, value));
        QCOMPARE(value.value(one).toInt(), expected);
    }
    QCOMPARE(m_server.requestCount(), 3);
}

QTEST_GUILESS_MAIN(KvUserOperationsTest)
#include "KvUserOperationsTest.moc"
