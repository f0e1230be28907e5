#include "ApiStatus.h"
#include "FreshDatabase.h"
#include "Text.h"
#include "access/Caller.h"
#include "access/Tokens.h"
#include "http/Reply.h"
#include "store/OpenStore.h"

#include <QtTest>

using namespace PlanService;
using KvTest::statusOf;
using KvTest::operator""_s;

namespace {

RightsRecord rightsOf(const QString& project, const QString& category, const QString& text)
{
    RightsRecord rights;
    rights.projectId = project;
    rights.category = category;
    readRights(text, rights);
    return rights;
}

} // namespace

class TestAccess : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    std::unique_ptr<KvTest::FreshDatabase> m_database;
    std::unique_ptr<Store> m_store;

    QByteArray addToken(const QString& user, const QList<RightsRecord>& rights, const QString& expiresAt = {})
    {
        const QByteArray text = newToken();
        TokenRecord token;
        token.hash = tokenHash(text);
        token.userId = user;
        token.createdAt = "2026-01-01T00:00:00Z"_s;
        token.expiresAt = expiresAt;
        const qint64 id = m_store->addToken(token);
        for (const RightsRecord& entry : rights) {
            m_store->setRights(id, entry);
        }
        return text;
    }

private Q_SLOTS:
    void init()
    {
        static int number = 0;
        m_store.reset();
        m_database = std::make_unique<KvTest::FreshDatabase>(m_folder.filePath("%1.db"_s.arg(++number)));
        m_store = openStore(m_database->name(), MissingDatabase::Create);
    }

    void tokensDifferAndAreStoredHashed()
    {
        const QByteArray one = newToken();
        QVERIFY(one != newToken());
        QCOMPARE(QByteArray::fromBase64(one, QByteArray::Base64UrlEncoding).size(), 32);
        QCOMPARE(tokenHash(one), tokenHash(one));
        QVERIFY(tokenHash(one) != tokenHash(one + 'x'));
        QVERIFY(!tokenHash(one).contains(one));
        QVERIFY(looksLikeToken(one));
    }

    void tokensOfOlderDatabasesStayGood()
    {
        const QByteArray token = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8";
        QCOMPARE(tokenHash(token).toHex(),
                 QByteArray("ba285d7e0208bffd223ed32a2051a84f463d139b7e0d100a9b30efab23fbf04b"));
    }

    void aHashHasToBeTheSameToItsEnd_data()
    {
        QTest::addColumn<int>("place"); // of the byte that differs; 32: one more
        for (const int place : {0, 7, 8, 9, 31, 32}) {
            QTest::addRow("byte %d", place) << place;
        }
    }
    void aHashHasToBeTheSameToItsEnd()
    {
        QFETCH(int, place);
        const QByteArray text = newToken();
        TokenRecord token;
        token.userId = "ann"_s;
        token.createdAt = "2026-01-01T00:00:00Z"_s;
        token.hash = tokenHash(text);
        if (place == 32) {
            token.hash.append('\0');
        } else {
            token.hash[place] = static_cast<char>(token.hash.at(place) ^ 1);
        }
        m_store->addToken(token);
        QVERIFY(!findToken(*m_store, text));
        token.hash = tokenHash(text);
        const qint64 id = m_store->addToken(token);
        QCOMPARE(findToken(*m_store, text)->id, id);
    }

    void findsHashesOfTheHighestBytes()
    {
        TokenRecord token;
        token.userId = "ann"_s;
        token.createdAt = "2026-01-01T00:00:00Z"_s;
        token.hash = QByteArray(32, '\xff');
        const qint64 id = m_store->addToken(token);
        QCOMPARE(m_store->tokensByHashBeginning(QByteArray(8, '\xff')).size(), 1);
        QCOMPARE(m_store->tokensByHashBeginning(QByteArray(8, '\xff')).first().id, id);
        QVERIFY(m_store->tokensByHashBeginning(QByteArray(8, '\xfe')).isEmpty());
    }

    void readsRights()
    {
        const RightsRecord all = rightsOf("p"_s, ""_s, "read=all,create,edit,delete,export"_s);
        QCOMPARE(rightsText(all), "read=all,create,edit,delete,export"_s);
        QCOMPARE(rightsText(rightsOf("p"_s, ""_s, "export,read=own"_s)), "read=own,export"_s);
        QCOMPARE(rightsText(rightsOf("p"_s, ""_s, "read"_s)), "read=all"_s);
        QCOMPARE(rightsText(rightsOf("p"_s, ""_s, ""_s)), QString());
        QVERIFY_EXCEPTION_THROWN(rightsOf("p"_s, ""_s, "read=some"_s), Failure);
        QVERIFY_EXCEPTION_THROWN(rightsOf("p"_s, ""_s, "create, edit"_s), Failure);
    }

    void withoutTokensEverythingIsAllowed()
    {
        const Caller caller = Caller::fromAuthorization(QByteArray(), *m_store);
        QCOMPARE(caller.userId(), QString());
        QCOMPARE(statusOf([&] { caller.requireRead({"any"_s, "any"_s, {}}); }), 200);
        QCOMPARE(rightsText(caller.rightsIn("any"_s, "any"_s)), "read=all,create,edit,delete,export"_s);
        QCOMPARE(caller.visibilityIn("any"_s).elsewhere, ReadScope::All);
    }

    void needsAGoodToken_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<int>("status");
        QTest::newRow("good") << QByteArray("Bearer TOKEN") << 200;
        QTest::newRow("scheme in lower case") << QByteArray("bearer TOKEN") << 200;
        QTest::newRow("spaces around") << QByteArray("Bearer   TOKEN ") << 200;
        QTest::newRow("none") << QByteArray() << 401;
        QTest::newRow("token alone") << QByteArray("TOKEN") << 401;
        QTest::newRow("other scheme") << QByteArray("Basic TOKEN") << 401;
        QTest::newRow("empty token") << QByteArray("Bearer ") << 401;
        QTest::newRow("a letter too many") << QByteArray("Bearer TOKENx") << 401;
        QTest::newRow("another one") << "Bearer " + QByteArray(43, 'A') << 401;
        QTest::newRow("two tokens") << QByteArray("Bearer TOKEN, Bearer TOKEN") << 401;
        QTest::newRow("null character behind") << QByteArray("Bearer TOKEN") + '\0' << 401;
        QTest::newRow("letter of another alphabet") << "Bearer " + QByteArray(42, 'A') + "\xd0" << 401;
        QTest::newRow("its hash") << QByteArray("Bearer HASH") << 401;
        QTest::newRow("revoked") << QByteArray("Bearer REVOKED") << 401;
    }
    void needsAGoodToken()
    {
        QFETCH(QByteArray, header);
        QFETCH(int, status);
        const QByteArray good = addToken("ann"_s, {});
        const QByteArray revoked = addToken("bo"_s, {});
        QVERIFY(m_store->revokeToken(2, "2026-01-02T00:00:00Z"_s));
        header.replace("TOKEN", good).replace("REVOKED", revoked).replace("HASH", tokenHash(good).toHex());
        QCOMPARE(statusOf([&] { Caller::fromAuthorization(header, *m_store); }), status);
        if (status == 200) {
            QCOMPARE(Caller::fromAuthorization(header, *m_store).userId(), "ann"_s);
        }
    }

    void expires_data()
    {
        QTest::addColumn<QString>("expiresAt");
        QTest::addColumn<bool>("isGood");
        QTest::newRow("never") << QString() << true;
        QTest::newRow("a second later") << "2026-05-06T07:08:10Z"_s << true;
        QTest::newRow("now") << "2026-05-06T07:08:09Z"_s << false;
        QTest::newRow("a second ago") << "2026-05-06T07:08:08Z"_s << false;
        QTest::newRow("last year") << "2025-12-31T23:59:59Z"_s << false;
        QTest::newRow("ten thousand years from now") << "9999-12-31T00:00:00Z"_s << true;
    }
    void expires()
    {
        QFETCH(QString, expiresAt);
        QFETCH(bool, isGood);
        const QByteArray header = "Bearer " + addToken("ann"_s, {}, expiresAt);
        // In another time zone than that of the store.
        const QDateTime now =
            QDateTime(QDate(2026, 5, 6), QTime(7, 8, 9), Qt::UTC).toOffsetFromUtc(-9 * 3600);
        QCOMPARE(statusOf([&] { Caller::fromAuthorization(header, *m_store, now); }), isGood ? 200 : 401);
        QCOMPARE(m_store->tokens().first().expiresAt, expiresAt);
        QVERIFY(m_store->hasTokens());
    }

    void revokingTheLastTokenOpensNothing()
    {
        addToken("ann"_s, {});
        QVERIFY(m_store->revokeToken(1, "2026-01-02T00:00:00Z"_s));
        QVERIFY(m_store->revokeToken(1, "2026-01-03T00:00:00Z"_s));
        QVERIFY(!m_store->revokeToken(2, "2026-01-03T00:00:00Z"_s));
        QCOMPARE(m_store->tokens().first().revokedAt, "2026-01-02T00:00:00Z"_s);
        QVERIFY(m_store->hasTokens());
        QCOMPARE(statusOf([&] { Caller::fromAuthorization(QByteArray(), *m_store); }), 401);
    }

    void readsByProjectAndCategory_data()
    {
        QTest::addColumn<QString>("project");
        QTest::addColumn<QString>("category");
        QTest::addColumn<QStringList>("owners");
        QTest::addColumn<int>("status");
        const QStringList others{"bo"_s};
        const QStringList own{"bo"_s, "ann"_s};
        QTest::newRow("all, any category") << "all"_s
                                           << "x"_s << others << 200;
        QTest::newRow("category of its own says none") << "all"_s
                                                       << "secret"_s << own << 403;
        QTest::newRow("own, own record") << "own"_s
                                         << "x"_s << own << 200;
        QTest::newRow("own, another's record") << "own"_s
                                               << "x"_s << others << 403;
        QTest::newRow("one category only, that one") << "narrow"_s
                                                     << "c"_s << others << 200;
        QTest::newRow("one category only, another") << "narrow"_s
                                                    << "d"_s << own << 403;
        QTest::newRow("project without rights") << "none"_s
                                                << "x"_s << own << 403;
        QTest::newRow("unknown project") << "elsewhere"_s
                                         << "x"_s << own << 403;
    }
    void readsByProjectAndCategory()
    {
        QFETCH(QString, project);
        QFETCH(QString, category);
        QFETCH(QStringList, owners);
        QFETCH(int, status);
        const QByteArray token = addToken(
            "ann"_s, {rightsOf("all"_s, ""_s, "read=all"_s), rightsOf("all"_s, "secret"_s, "edit"_s),
                      rightsOf("own"_s, ""_s, "read=own"_s), rightsOf("narrow"_s, "c"_s, "read=all"_s),
                      rightsOf("none"_s, ""_s, "create,edit,delete,export"_s)});
        const Caller caller = Caller::fromAuthorization("Bearer " + token, *m_store);
        const Ownership what{project, category, owners};
        QCOMPARE(statusOf([&] { caller.requireRead(what); }), status);
        if (status == 403) {
            try {
                caller.requireRead(what);
            } catch (const ApiError& error) {
                const QByteArray body = error.reply().body.first();
                QVERIFY(body.contains("'read'") && body.contains("\"field\":\"read\""));
                // Whoever has no business there does not learn where it is.
                const QByteArray place = "project '" + project.toUtf8() + "', category '" + category.toUtf8();
                QCOMPARE(body.contains(place), project != "elsewhere"_s);
                QCOMPARE(body.contains(project.toUtf8()), project != "elsewhere"_s);
            }
        }
    }

    void tellsTheRightsThatItEnforces()
    {
        const QByteArray token = addToken(
            "ann"_s, {rightsOf("p"_s, ""_s, "read=own,edit,export"_s), rightsOf("p"_s, "c"_s, "create"_s)});
        const Caller caller = Caller::fromAuthorization("Bearer " + token, *m_store);
        QCOMPARE(rightsText(caller.rightsIn("p"_s, ""_s)), "read=own,edit,export"_s);
        QCOMPARE(rightsText(caller.rightsIn("p"_s, "other"_s)), "read=own,edit,export"_s);
        QCOMPARE(rightsText(caller.rightsIn("p"_s, "c"_s)), "create"_s);
        QCOMPARE(rightsText(caller.rightsIn("q"_s, ""_s)), QString());
        const Visibility visible = caller.visibilityIn("p"_s);
        QCOMPARE(visible.elsewhere, ReadScope::Own);
        QCOMPARE(visible.categories, (QMap<QString, ReadScope>{{"c"_s, ReadScope::None}}));
        QCOMPARE(statusOf([&] { caller.visibilityIn("q"_s); }), 403);
    }

    void replacesRightsOfTheSameProjectAndCategory()
    {
        addToken("ann"_s, {rightsOf("p"_s, ""_s, "read=all,create"_s), rightsOf("p"_s, ""_s, "edit"_s)});
        QCOMPARE(m_store->rights(1).size(), 1);
        QCOMPARE(rightsText(m_store->rights(1).first()), "edit"_s);
    }
};

QTEST_GUILESS_MAIN(TestAccess)
#include "TestAccess.moc"
