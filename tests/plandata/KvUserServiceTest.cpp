// Rights and settings of the current user on the real service: what initAuth() tells is what the service
// does.

#include "FacadeCopies.h"

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <ServiceProcess.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

namespace {

const QString project = QStringLiteral("site");
const QString category = QStringLiteral("c");

struct User
{
    const char* name;
    const char* rights;
    const char* category; ///< of the rights; empty: every one
};

// Each right alone, each one missing, and the sorts of reading.
const User users[] = {{"maker", "read=all,create,edit,delete,export", ""},
                      {"creator", "create", ""},
                      {"editor", "edit", ""},
                      {"deleter", "delete", ""},
                      {"exporter", "export", ""},
                      {"reader", "read=all", ""},
                      {"own reader", "read=own", ""},
                      {"no creator", "read=all,edit,delete,export", ""},
                      {"no editor", "read=all,create,delete,export", ""},
                      {"no deleter", "read=all,create,edit,export", ""},
                      {"no reader", "create,edit,delete,export", ""},
                      {"own maker", "read=own,create,edit,delete,export", ""},
                      {"of the category", "read=all,create,edit,delete,export", "c"},
                      {"of another category", "read=all,create,edit,delete,export", "d"}};

} // namespace

class KvUserServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void rightsAreWhatTheServiceDoes_data();
    void rightsAreWhatTheServiceDoes();
    void rightsOfAnotherCategory();
    void nobodyHasNoRights();
    void strangersGetNothing();
    void settingsBelongToTheirUser();
    void settingsOfAllSorts_data();
    void settingsOfAllSorts();

private:
    static KvPlanData& data() { return *KvPlanData::instance(); }
    void signIn(const QString& name)
    {
        NetworkManager::instance().setAccessToken(QString::fromLatin1(m_tokens.value(name)));
    }
    // As "create edit delete read export", as far as they are granted.
    static QString granted()
    {
        QStringList rights;
        const auto add = [&](bool right, const char* name) {
            if (right)
                rights.append(QString::fromLatin1(name));
        };
        add(data().getCreateAuth(), "create");
        add(data().getEditAuth(), "edit");
        add(data().getDeleteAuth(), "delete");
        add(data().getReadAuth(), "read");
        add(data().getExportAuth(), "export");
        return rights.join(QLatin1Char(' '));
    }
    static void forgetRights()
    {
        NetworkManager::instance().setAccessToken(QString());
        static const KvPlanData& fresh = *copyOf(data()); // made before the first asking
        data() = fresh;
    }

    KvTest::ServiceProcess m_service;
    QMap<QString, QByteArray> m_tokens;
    QString m_planId;
    QList<KvPlanNode> m_nodes;
};

void KvUserServiceTest::initTestCase()
{
    QVERIFY2(m_service.start({QStringLiteral("--create")}), qPrintable(m_service.failure()));
    for (const User& user : users) {
        const QByteArray token =
            m_service.createToken(QString::fromLatin1(user.name), project, QString::fromLatin1(user.rights),
                                  QString::fromLatin1(user.category));
        QVERIFY2(!token.isEmpty(), qPrintable(m_service.failure()));
        m_tokens.insert(QString::fromLatin1(user.name), token);
    }
    m_tokens.insert(QStringLiteral("stranger"),
                    m_service.createToken(QStringLiteral("stranger"), QStringLiteral("elsewhere"),
                                          QStringLiteral("read=all,create,edit,delete,export")));
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
}

void KvUserServiceTest::init()
{
    forgetRights();
    QCOMPARE(granted(), QString());
    GetSoftCache()->setCurrentProjectId(project);
    signIn(QStringLiteral("maker"));
    KvPlan plan;
    plan.category = category;
    QVERIFY(data().createPlan(plan));
    m_planId = plan.id;
    m_nodes = {KvPlanNode(), KvPlanNode()};
    QVERIFY(data().createPlanNodes(m_planId, m_nodes));
}

void KvUserServiceTest::rightsAreWhatTheServiceDoes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("rights");
    QTest::addColumn<bool>("isHere");
    for (const User& user : users)
        QTest::newRow(user.name) << QString::fromLatin1(user.name) << QString::fromLatin1(user.rights)
                                 << (qstrcmp(user.category, "d") != 0);
}

void KvUserServiceTest::rightsAreWhatTheServiceDoes()
{
    QFETCH(QString, name);
    QFETCH(QString, rights);
    QFETCH(bool, isHere);
    const QStringList list = isHere ? rights.split(QLatin1Char(',')) : QStringList();
    QStringList wanted;
    for (const char* key : {"create", "edit", "delete", "read", "export"}) {
        const QString word = QString::fromLatin1(key);
        if (list.contains(word) || list.contains(word + QStringLiteral("=all")))
            wanted.append(word);
    }
    signIn(name);
    data().initAuth(category);
    QCOMPARE(granted(), wanted.join(QLatin1Char(' ')));

    // And what the service does, with both requests of each kind.
    const bool mayCreate = data().getCreateAuth();
    const bool mayEdit = data().getEditAuth();
    const bool mayDelete = data().getDeleteAuth();
    const bool mayRead = data().getReadAuth();
    KvPlanNode read;
    QCOMPARE(data().getPlanNodeById(m_nodes.first().id, read), mayRead);
    KvPlanNode single;
    single.planId = m_planId;
    QCOMPARE(data().createPlanNode(single), mayCreate);
    QList<KvPlanNode> many{KvPlanNode()};
    QCOMPARE(data().createPlanNodes(m_planId, many), mayCreate);
    QList<KvPlanNode> edited{m_nodes.first()};
    edited[0].name = QStringLiteral("changed");
    QCOMPARE(data().updatePlanNodes(edited), mayEdit);
    KvPlanNodeResponse response;
    response.percentage = 10;
    QCOMPARE(data().createPlanNodeResponse(m_nodes.first().id, response), mayEdit && mayRead);
    KvMeteringState state;
    state.taskId = m_nodes.first().id;
    QCOMPARE(data().updateMeteringState(state), mayEdit && mayRead);
    QCOMPARE(data().deletePlanNodeById(m_nodes.first().id), mayDelete);
    QCOMPARE(data().deletePlanNodesByIds({m_nodes.last().id}), mayDelete);

    // Afterwards exactly that has happened.
    signIn(QStringLiteral("maker"));
    KvPlanNodeCondition condition;
    condition.allTime = true;
    condition.planId = m_planId;
    condition.finishState = -1;
    int count = -1;
    QVERIFY(data().getPlanNodeRangeCount(condition, count));
    QCOMPARE(count, 2 + (mayCreate ? 2 : 0) - (mayDelete ? 2 : 0));
}

void KvUserServiceTest::rightsOfAnotherCategory()
{
    signIn(QStringLiteral("of the category"));
    data().initAuth(QStringLiteral("d"));
    QCOMPARE(granted(), QString());
    data().initAuth(category);
    QCOMPARE(granted(), QStringLiteral("create edit delete read export"));
    GetSoftCache()->setCurrentProjectId(QStringLiteral("elsewhere"));
    data().initAuth(category);
    QCOMPARE(granted(), QString());
}

void KvUserServiceTest::nobodyHasNoRights()
{
    for (const char* token : {"", "not-a-token"}) {
        forgetRights();
        NetworkManager::instance().setAccessToken(QString::fromLatin1(token));
        data().initAuth(category);
        QCOMPARE(granted(), QString());
        KvPlanNode node;
        QVERIFY(!data().getPlanNodeById(m_nodes.first().id, node));
    }
    // Refused, they keep what was known before.
    signIn(QStringLiteral("maker"));
    data().initAuth(category);
    NetworkManager::instance().setAccessToken(QStringLiteral("not-a-token"));
    data().initAuth(category);
    QCOMPARE(granted(), QStringLiteral("create edit delete read export"));
}

void KvUserServiceTest::strangersGetNothing()
{
    signIn(QStringLiteral("stranger"));
    data().initAuth(category);
    QCOMPARE(granted(), QString());
    QList<KvPlanNode> nodes;
    QVERIFY(data().getPlanNodesByPlanId(m_planId, nodes));
    QVERIFY(!data().getAllPlanNodes(0, 10, nodes, QString()));
    QList<KvPlanNodeResponse> responses;
    QVERIFY(!data().getPlanNodeResponses(m_nodes.first().id, responses));
    KvPlanStatistics statistics;
    QVERIFY(!data().geStatistics(QString(), statistics));
    QList<KvStatisticsQuantity> quantities;
    QVERIFY(!data().getPlanNodeQuantities(quantities, QString(), QStringLiteral("day")));
    QList<KvMeteringState> states;
    QVERIFY(!data().getMeteringState({m_planId}, states));
    QVERIFY(nodes.isEmpty() && responses.isEmpty() && quantities.isEmpty() && states.isEmpty());
    QCOMPARE(statistics.total, 0);
}

void KvUserServiceTest::settingsBelongToTheirUser()
{
    const QString key = QStringLiteral("plan_hideHeader");
    const QString valueKey = QStringLiteral("value");
    QJsonObject value;
    QVERIFY(data().loadSetting(key, value));
    QVERIFY(value.isEmpty());
    QVERIFY(data().saveSetting(key, {{valueKey, QJsonArray{QStringLiteral("a")}}}));
    signIn(QStringLiteral("reader")); // needs no right
    QVERIFY(data().loadSetting(key, value));
    QVERIFY(value.isEmpty());
    QVERIFY(data().saveSetting(key, {{valueKey, 5}}));
    signIn(QStringLiteral("maker"));
    QVERIFY(data().loadSetting(key, value));
    QCOMPARE(value, (QJsonObject{{key, QJsonArray{QStringLiteral("a")}}}));
    NetworkManager::instance().setAccessToken(QStringLiteral("not-a-token"));
    QVERIFY(!data().saveSetting(key, {{valueKey, 6}}));
    QVERIFY(!data().loadSetting(key, value));
    QVERIFY(value.isEmpty());
}

void KvUserServiceTest::settingsOfAllSorts_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("text") << "a" << QJsonValue(QStringLiteral("墙 \"x\"\n"));
    QTest::newRow("number") << "a" << QJsonValue(1.5);
    QTest::newRow("flag") << "a" << QJsonValue(false);
    QTest::newRow("object") << "a"
                            << QJsonValue(QJsonObject{{QStringLiteral("b"), QJsonArray{1, QJsonValue()}}});
    QTest::newRow("key with a blank") << "a b" << QJsonValue(1);
    QTest::newRow("Chinese key") << QStringLiteral("层") << QJsonValue(2);
    QTest::newRow("key that URLs cut at") << "a?b#c&d=%" << QJsonValue(3);
}

void KvUserServiceTest::settingsOfAllSorts()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    QVERIFY(data().saveSetting(key, {{QStringLiteral("value"), value}}));
    QJsonObject loaded{{QStringLiteral("before"), 1}};
    QVERIFY(data().loadSetting(key, loaded));
    QCOMPARE(loaded, (QJsonObject{{key, value}}));
}

QTEST_GUILESS_MAIN(KvUserServiceTest)
#include "KvUserServiceTest.moc"
